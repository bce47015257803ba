#pragma once

#include <travik/service/BlockForms.h>

#include <span>
#include <string>

/// Descriptions of the stored layouts: for a person at a terminal, as a reference, and for scripts. All UTF-8.
namespace Travik {

/// A line for each identifier: identifier, key, class, size in bytes and number of fields.
TRAVIK_SERVICE_EXPORT std::string listAsText(const BlockForms& forms);

/// A block byte by byte, the header included: a line a field, under the identifier, key, class and size.
TRAVIK_SERVICE_EXPORT std::string describeAsText(const BlockForms& forms, const BlockForm& form);

/// The reference of all blocks in Markdown: a section for each form, with what `describeAsText` says but
/// the header words.
TRAVIK_SERVICE_EXPORT std::string describeAsMarkdown(const BlockForms& forms);

/// A JSON array with an object for each form that is asked for, each of a single identifier. Its keys are stable:
///
/// - `id`, `key` (null where the class prints none), `class`, `size`: of the block; the size in bytes, header included
/// - `fields`: an array in the order of the image, of objects with
///   - `name`; `role`: "value", "count", "axis", "text", "date" or "reserved"; `purpose`: the same for people
///   - `offset`: bytes from the start of the block; `type`: "u16", "f32", "text" and so on; `width`: bytes of an
///   element
///   - `bits`: null, or an object `first`, `count`, `signed` where the value has only some bits of its word
///   - `unit`, `scale`, `zero`: a value in its unit is stored × scale + zero; the unit null where there is none
///   - `dimensions`: an array, outermost first, of objects with `name`, `extent` (entries stored), `stride` (bytes from
///     one to the next), `count` (the field with the number of entries in use, or null) and `axis_block` (the
///     identifier of the block that labels the entries, or null)
TRAVIK_SERVICE_EXPORT std::string describeAsJson(const BlockForms& forms, std::span<const BlockForm> asked);

/// "value", "count" and so on.
TRAVIK_SERVICE_EXPORT std::string_view roleName(Role role);

/// The shortest decimal that reads back as the number.
TRAVIK_SERVICE_EXPORT std::string shortestText(double number);

} // namespace Travik
