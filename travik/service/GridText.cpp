#include <travik/service/GridText.h>
#include <travik/service/NumberFormat.h>

#include <algorithm>

namespace Travik {

namespace {

constexpr std::size_t gap = 2;      // between columns
constexpr std::size_t panelGap = 4; // between the parts of a table that stand side by side

// Makes the cells of a column equally wide where that puts one decimal point below the other, and says how wide.
std::size_t align(GridColumn& column) {
    const auto fraction = [](const std::string& cell) {
        const std::size_t point = cell.find('.');
        return point == std::string::npos ? 0 : cell.size() - point;
    };
    if (!column.isText) {
        std::size_t longest = 0;
        for (const std::string& cell : column.cells) {
            // Numbers with an exponent, or a unit behind them, have nothing to be aligned by.
            if (cell.find_first_not_of("+-.0123456789") != std::string::npos) {
                longest = 0;
                break;
            }
            longest = std::max(longest, fraction(cell));
        }
        for (std::string& cell : column.cells) {
            if (const std::size_t own = fraction(cell); !cell.empty() && cell != "-" && own < longest)
                cell.append(longest - own, ' ');
        }
    }
    std::size_t width = columnsOf(column.heading);
    for (const std::string& cell : column.cells)
        width = std::max(width, columnsOf(cell));
    return width;
}

class Line {
public:
    explicit Line(std::string& text) : text_(text) {}
    ~Line() {
        text_.erase(text_.find_last_not_of(' ') + 1);
        text_ += '\n';
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    void blanks(std::size_t count) { text_.append(count, ' '); }
    void cell(const std::string& cell, std::size_t width, bool isText) {
        const std::size_t rest = width - std::min(width, columnsOf(cell));
        blanks(isText ? 0 : rest);
        text_.append(cell);
        blanks(isText ? rest : 0);
    }

private:
    std::string& text_;
};

struct Grid {
    GridColumn labels;
    std::vector<GridColumn> columns;
    std::size_t labelWidth = 0;
    std::vector<std::size_t> widths;
};

/// The rows from `row` on, each `step` further, of the columns from `first` up to `last`.
void appendBand(std::string& text, const Grid& grid, std::size_t first, std::size_t last, std::size_t indent,
                std::size_t panels) {
    const std::size_t rows = grid.labels.cells.size();
    const std::size_t height = (rows + panels - 1) / panels;
    const auto isBare = [](const GridColumn& column) { return column.heading.empty(); };
    const bool hasHeading =
        !isBare(grid.labels) || !std::all_of(grid.columns.begin() + static_cast<std::ptrdiff_t>(first),
                                             grid.columns.begin() + static_cast<std::ptrdiff_t>(last), isBare);
    if (hasHeading) {
        Line line(text);
        line.blanks(indent);
        for (std::size_t panel = 0; panel * height < rows; ++panel) {
            line.blanks(panel > 0 ? panelGap : 0);
            line.cell(grid.labels.heading, grid.labelWidth, grid.labels.isText);
            for (std::size_t c = first; c < last; ++c) {
                line.blanks(gap);
                line.cell(grid.columns[c].heading, grid.widths[c], grid.columns[c].isText);
            }
        }
    }
    for (std::size_t top = 0; top < height; ++top) {
        Line line(text);
        line.blanks(indent);
        for (std::size_t row = top; row < rows; row += height) {
            line.blanks(row > top ? panelGap : 0);
            line.cell(grid.labels.cells[row], grid.labelWidth, grid.labels.isText);
            for (std::size_t c = first; c < last; ++c) {
                line.blanks(gap);
                line.cell(grid.columns[c].cells[row], grid.widths[c], grid.columns[c].isText);
            }
        }
    }
}

} // namespace

void appendGrid(std::string& text, GridColumn labels, std::vector<GridColumn> columns, std::size_t indent,
                std::size_t width) {
    Grid grid{std::move(labels), std::move(columns), 0, {}};
    grid.labelWidth = align(grid.labels);
    for (GridColumn& column : grid.columns)
        grid.widths.push_back(align(column));
    const std::size_t room = width > indent ? width - indent : 0;
    for (std::size_t first = 0; first < grid.columns.size();) {
        std::size_t last = first;
        std::size_t used = grid.labelWidth;
        // One at least, however narrow the terminal is.
        for (; last < grid.columns.size() && (last == first || used + gap + grid.widths[last] <= room); ++last)
            used += gap + grid.widths[last];
        constexpr std::size_t leastHeight = 8; // lower parts are not worth the eye's way back to the top
        const bool isAlone = first == 0 && last == grid.columns.size();
        const std::size_t fitting = std::max<std::size_t>(1, (room + panelGap) / (used + panelGap));
        const std::size_t useful = std::max<std::size_t>(1, grid.labels.cells.size() / leastHeight);
        if (first > 0)
            text += '\n';
        appendBand(text, grid, first, last, indent, isAlone ? std::min(fitting, useful) : 1);
        first = last;
    }
}

void appendList(std::string& text, GridColumn cells, std::size_t indent, std::size_t width) {
    const std::size_t cellWidth = align(cells);
    const std::size_t count = cells.cells.size();
    const std::size_t labelWidth = std::to_string(count > 0 ? count - 1 : 0).size();
    const std::size_t room = width > indent + labelWidth ? width - indent - labelWidth : 0;
    const std::size_t fitting = std::max<std::size_t>(1, room / (cellWidth + gap));
    // Numbers that are easy to count on from.
    std::size_t perLine = fitting;
    for (const std::size_t step : {std::size_t{10}, std::size_t{5}}) {
        if (fitting >= step) {
            perLine = fitting - fitting % step;
            break;
        }
    }
    for (std::size_t first = 0; first < count; first += perLine) {
        Line line(text);
        line.blanks(indent);
        line.cell(count > perLine ? std::to_string(first) : std::string(), count > perLine ? labelWidth : 0, false);
        for (std::size_t i = first; i < std::min(first + perLine, count); ++i) {
            line.blanks(count > perLine || i > first ? gap : 0);
            line.cell(cells.cells[i], cellWidth, cells.isText);
        }
    }
}

} // namespace Travik
