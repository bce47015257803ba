#pragma once

#include <travik/service/BlockForms.h>

#include <string>
#include <vector>

/// The image format in the language of Kaitai Struct, for the viewers and parser generators of that ecosystem.
namespace Travik {

/// A whole description (a .ksy file, YAML): the blocks of an image as an array, the end block included, and a type for
/// each form of a block, chosen by identifier.
///
/// - A block's `body` is parsed when it is asked for, out of the bytes that the size word gives it. So a block whose
///   record is cut off, or longer than its class says, does not keep the others from being read. A record that ends
///   with an array may have fewer entries of it.
/// - A field keeps its name. The entries of tables whose fields alternate are `per_<dimension>`; a value that has some
///   bits of a word is computed from `<field>_word`; the rows of a table are an array of a type whose only field has
///   the table's name.
/// - Numbers are the stored ones: `-unit`, `-scale`, `-zero` and `-role` say what they mean, `doc` for people.
/// - `table` is a block of an identifier without a class, read as a table that describes itself. It is one where its
///   CRC-32 holds, which a description in this language cannot check.
TRAVIK_SERVICE_EXPORT std::string describeAsKaitai(const BlockForms& forms);

/// The name of the type that describes a block: the class's in lower case with underscores, with the first identifier
/// where the class has several forms.
TRAVIK_SERVICE_EXPORT std::vector<std::string> kaitaiTypeNames(const BlockForms& forms);

} // namespace Travik
