#pragma once

#include <travik/service/BlockSelector.h>
#include <travik/service/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// An image put right: single values by name, and its sums. Whoever changes a file does it between the reading and the
/// writing of an `ImageEdit`. Where std::bad_alloc is thrown, the image is what it was.
namespace Travik {

/// A value that is to be put into an image, as a person writes it:
///
///     KEY.FIELD[INDEX]...=VALUE          15716.values[0][10]=1.25
///
/// KEY is the key name or the identifier of a block; of several blocks called so, KEY@OFFSET is the one at this offset
/// (decimal, or hexadecimal with 0x). An index for each dimension, from 0; a field without dimensions takes none. VALUE
/// is everything behind the first "=", blanks included.
struct Assignment {
    std::string text; ///< the whole
    std::string name; ///< what stands before the "="
    std::string block;
    std::optional<std::size_t> offset;
    std::string field;
    std::vector<unsigned int> indices;
    std::string value;
    std::string error; ///< why it is no assignment; empty where it is one
};
TRAVIK_SERVICE_EXPORT Assignment parseAssignment(std::string_view text);

struct AssignOptions {
    /// Values are numbers as they are stored, without scale and zero; a date's is its packed number.
    bool areStored = false;
    /// Take a block whose sums do not hold, too, and make them hold.
    bool reseals = false;
};

/// What an assignment does.
struct ValueChange {
    std::string name;
    std::size_t offset = 0; ///< of the block
    std::string before;     ///< as a person reads it, with its unit; a text in quotes
    std::string after;
    bool isRounded = false; ///< whether the value fell between two stored steps; `after` is the nearest
    bool isChange = false;  ///< whether any byte differs
};

/// Why an assignment was refused.
struct AssignRefusal {
    std::string text; ///< the assignment
    std::string why;  ///< in one line
};

struct TRAVIK_SERVICE_EXPORT AssignReport {
    std::vector<AssignRefusal> refusals;
    std::vector<ValueChange> changes; ///< one for each assignment; empty where anything was refused
    /// Whether a refusal is one of sums that do not hold, which `reseals` would not make.
    bool isDamaged = false;
    /// Offsets of the blocks whose sums did not hold and were made to. The damage that they told of cannot be seen any
    /// more.
    std::vector<std::size_t> resealed;

    bool succeeded() const { return refusals.empty(); }
    std::size_t changeCount() const;
};

/// Puts values into an image, all of them or, where anything is refused, none. The sums of a block are made anew where
/// they held before: the 16-bit checksum, and the CRC-32 of a block that carries one (with the two bytes behind the
/// values of a packed table, see `sealBlock`). Nothing else changes.
///
/// Refused is what the field cannot hold; a count beyond the capacity; a value that would change the shape of a table,
/// or one that the sums decide; an element that is set twice; a block whose sums do not hold or whose end is doubtful;
/// and a name that is none, or that of several.
TRAVIK_SERVICE_EXPORT AssignReport assignValues(std::vector<char>& image, std::span<const Assignment> assignments,
                                                const AssignOptions& options = {});

/// Values for elements of one field, as a program has them.
struct ArrayAssignment {
    std::size_t offset = 0; ///< of the block
    std::string field;
    std::vector<unsigned int> elements; ///< counted with the last dimension fastest, each once
    /// One for each element: physical values, or stored numbers (`AssignOptions::areStored`); whole numbers keep all
    /// their digits in fields that store 64 bits. Of text and date fields UTF-8 and ISO 8601.
    std::variant<std::vector<double>, std::vector<std::int64_t>, std::vector<std::uint64_t>, std::vector<std::string>>
        values;
};

/// What an array assignment did.
struct TRAVIK_SERVICE_EXPORT ArrayReport {
    std::optional<AssignRefusal> refusal; ///< the first; its text is "KEY.FIELD[INDEX]...=VALUE"
    bool isDamaged = false;               ///< whether the block was refused: its sums do not hold, its end is doubtful
    std::size_t changes = 0;              ///< how many elements have other bytes now
    std::size_t roundings = 0;            ///< how many values fell between two stored steps

    bool succeeded() const { return !refusal.has_value(); }
};

/// The same as `assignValues` for an array of values, without a text for each. An element that has the value already
/// keeps its bytes, whatever they are: the bits of a NaN, the digits that a double does not hold.
TRAVIK_SERVICE_EXPORT ArrayReport assignArray(std::vector<char>& image, const ArrayAssignment& assignment,
                                              const AssignOptions& options = {});

/// Words of a block that are sums.
enum class Sum : unsigned char {
    Checksum, ///< 16 bits
    Crc32,    ///< 32 bits
    Filler    ///< the last 16 bits of a packed table, made so that the CRC-32 keeps the update index
};
/// "checksum", "CRC-32" and "filler".
TRAVIK_SERVICE_EXPORT std::string_view nameOf(Sum sum);

struct SumChange {
    std::string block; ///< its key in UTF-8; its identifier where it has none
    std::size_t offset;
    Sum sum;
    std::uint32_t before;
    std::uint32_t after;
};

struct ResealReport {
    std::vector<SumChange> changes;
    /// A block that was left as it is, because it is doubtful where it ends.
    struct Left {
        std::size_t offset;
        unsigned short id;
    };
    std::vector<Left> left;
};

/// Makes those sums of the selected blocks right that are wrong, and changes nothing else. Blocks of 32768 bytes and
/// more are not summed by their class, which writes 0: there a word that is neither 0 nor the right sum becomes 0.
TRAVIK_SERVICE_EXPORT ResealReport resealImage(std::vector<char>& image, const BlockSelector& selector = {});

} // namespace Travik
