#pragma once

#include <travik/service/Values.h>

#include <span>
#include <string>
#include <string_view>

/// One table of a block as comma-separated values (RFC 4180), for spreadsheets and scripts.
namespace Travik {

/// Appends the table that the fields of a block make: a line of names, then a line a row, each ended by CR LF. The axis
/// is the first column, in the unit that its name says, else the number of the row from 0 on; of an array of more than
/// two dimensions the indices of the further ones follow; then the values, physical, with every digit. Fields that are
/// no arrays are left out, or where there is no array, make one row. What is not in use is left empty, or with
/// `isWhole` what the block is too short for.
///
/// The result is empty, or says why the fields make no single table; then nothing is appended.
TRAVIK_SERVICE_EXPORT std::string appendCsv(std::string& text, const ImageBlock& block,
                                            std::span<const FieldValues* const> fields, bool isWhole);

/// A text as a cell: in quotation marks where it holds a comma, a quotation mark or the end of a line.
TRAVIK_SERVICE_EXPORT std::string csvCell(std::string_view text);

} // namespace Travik
