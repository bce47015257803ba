#pragma once

#include <travik/service/BlockSelector.h>
#include <travik/service/Values.h>

#include <cstddef>
#include <string>
#include <string_view>

/// The values of a block as text for a person.
namespace Travik {

struct ShowOptions {
    std::size_t width = 80;  ///< columns of the terminal; a table goes on below where it is wider
    bool isWhole = false;    ///< the whole capacity of every table, and what is reserved, too
    bool isColoured = false; ///< with the escape sequences of a terminal
    NameSelector fields;     ///< only these
};

/// Appends the text of a block (UTF-8, safe for a terminal): a line that says what it is; a line "name  value unit" for
/// each single value; each table with its axis as row labels and its columns side by side; bytes that no field covers
/// as numbers in hexadecimal.
TRAVIK_SERVICE_EXPORT void appendBlockText(std::string& text, const ImageBlock& block, const BlockValues& values,
                                           const ShowOptions& options);

/// The fields among those of the options that have something to show: all that were named; else what is not reserved,
/// unless something is stored there, and what does not only label the block's own tables.
TRAVIK_SERVICE_EXPORT std::vector<const FieldValues*> shownFields(const ImageBlock& block, const BlockValues& values,
                                                                  const ShowOptions& options);

} // namespace Travik
