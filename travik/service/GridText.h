#pragma once

#include <travik/service/Export.h>

#include <cstddef>
#include <string>
#include <vector>

/// Cells laid out for a terminal of some width: the one place that counts columns.
namespace Travik {

/// A column of cells under a heading.
struct GridColumn {
    std::string heading;
    std::vector<std::string> cells;
    bool isText = false; ///< on the left; numbers stand on the right, one point below the other
};

/// Appends the columns side by side, each line after `indent` blanks, the labels first. What is wider than the terminal
/// goes on below, under the same labels; of a table that is much narrower the lower part stands beside the upper one.
/// Without headings where all are empty. Texts are safe to be shown.
TRAVIK_SERVICE_EXPORT void appendGrid(std::string& text, GridColumn labels, std::vector<GridColumn> columns,
                                      std::size_t indent, std::size_t width);

/// Appends cells one after the other, as many on a line as fit, each line headed by the number of its first cell.
TRAVIK_SERVICE_EXPORT void appendList(std::string& text, GridColumn cells, std::size_t indent, std::size_t width);

} // namespace Travik
