#pragma once

#include <travik/datablock/TextWriter.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

/// The texts of hand-written tables differ in data only: comment lines, key fields, labels and separators. That data is
/// written down as constexpr values of these types; the printing is here, once.
namespace Travik {

/// Lines of a text that stand in static storage.
using Lines = std::span<const std::string_view>;

/// Such lines, written where they are used: `lines<"# Das ist", "# für alle">`.
template <detail::Latin1Literal... Texts>
inline constexpr std::array<std::string_view, sizeof...(Texts)> lines{detail::latin1Storage<Texts>.view()...};

/// The head of a block's text: comment lines, the identification line, and for most tables the count line.
struct HeadLayout {
    Lines comments;
    std::string_view id = "ID:              ";
    std::string_view count = "COUNT:           "; ///< empty: the block has no count line
};

/// A table of one value a line: label, separator, value.
struct ListLayout {
    HeadLayout head;
    std::string_view label{}; ///< in front of the number
    unsigned int firstNumber = 1;
    std::string_view separator = ":             ";
    Lines beforeRows{}; ///< lines between the count and the first value
    bool endsWithEmptyLine = true;
};

/// A table of one row a line: label, separator, then each value behind its own separator.
struct MatrixLayout {
    HeadLayout head;
    Lines beforeRows{};
    std::string_view labelSeparator = ": ";
    std::string_view valueSeparator = "\t\t ";
    bool endsWithEmptyLine = true;
};

inline void printLines(TextWriter& out, Lines lines) {
    for (const std::string_view line : lines)
        out.line(line);
}

/// Comments and identification line.
inline void printHead(TextWriter& out, const HeadLayout& head, std::string_view key) {
    printLines(out, head.comments);
    (out << head.id << key).endLine();
}

/// Comments, identification line and, where the layout has one, the count line.
inline void printHead(TextWriter& out, const HeadLayout& head, std::string_view key, unsigned int count) {
    printHead(out, head, key);
    if (!head.count.empty())
        (out << head.count << count).endLine();
}

/// The lines of a list: `printValue(out, k)` prints value k, counted from 0, of a count that nobody has checked.
template <class PrintValue>
void printEntries(TextWriter& out, const ListLayout& layout, unsigned int count, PrintValue printValue) {
    const unsigned int printed = std::min(count, printedEntriesLimit);
    for (unsigned int k = 0; k < printed; ++k) {
        out << layout.label << k + layout.firstNumber << layout.separator;
        printValue(out, k);
        out.endLine();
    }
}

/// A whole list block.
template <class PrintValue>
void printList(TextWriter& out, const ListLayout& layout, std::string_view key, unsigned int count,
               PrintValue printValue) {
    printHead(out, layout.head, key, count);
    printLines(out, layout.beforeRows);
    printEntries(out, layout, count, printValue);
    if (layout.endsWithEmptyLine)
        out.line();
}

/// The rows of a matrix: `printLabel(out, row)` and `printValue(out, row, column)`; at most `printedEntriesLimit`
/// values.
template <class PrintLabel, class PrintValue>
void printRows(TextWriter& out, const MatrixLayout& layout, unsigned int rows, unsigned int columns,
               PrintLabel printLabel, PrintValue printValue) {
    unsigned int left = printedEntriesLimit;
    for (unsigned int row = 0; row < rows && left > 0; ++row) {
        printLabel(out, row);
        out << layout.labelSeparator;
        left -= columns == 0;
        for (unsigned int column = 0; column < columns && left > 0; ++column, --left) {
            out << layout.valueSeparator;
            printValue(out, row, column);
        }
        out.endLine();
    }
}

} // namespace Travik
