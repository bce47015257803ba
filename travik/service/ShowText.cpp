#include <travik/datablock/Bytes.h>
#include <travik/service/BlockTables.h>
#include <travik/service/GridText.h>
#include <travik/service/NumberFormat.h>
#include <travik/service/ShowText.h>
#include <travik/service/TerminalText.h>
#include <travik/service/ValueText.h>

#include <algorithm>
#include <array>
#include <utility>

namespace Travik {

namespace {

constexpr std::size_t indent = 2;
constexpr std::size_t gap = 2;

// What is shown of a text of an image.
std::string escaped(std::string_view utf8) { return terminalText(utf8, TextCharset::Utf8, TextLines::One); }

std::string unitOf(const FieldValues& values) { return values.field->unit; }

bool isZero(const FieldValues& values) {
    return std::ranges::all_of(values.values, [](double value) { return value == 0; }) &&
           std::ranges::all_of(values.texts, &std::string::empty);
}

/// Composes the lines of one block.
class Writer {
public:
    Writer(std::string& text, const ImageBlock& block, const ShowOptions& options)
        : text_(text), block_(block), options_(options) {}

    void heading(const BlockValues& values) {
        std::string key = escaped(values.key);
        if (key.empty())
            key = values.className.empty() ? "unknown" : values.className;
        std::vector<std::string> parts{key, std::to_string(block_.id)};
        if (!values.className.empty() && key != values.className)
            parts.push_back(values.className);
        parts.push_back(std::to_string(block_.bytes.size()) + " bytes at " + std::to_string(block_.offset));
        const std::size_t start = text_.size();
        wrapped(parts, 0);
        if (options_.isColoured) {
            text_.insert(start + key.size(), "\x1b[m");
            text_.insert(start, "\x1b[1m");
        }
        if (!block_.checksumHolds) {
            text_.append(indent, ' ').append(options_.isColoured ? "\x1b[31mwrong checksum\x1b[m" : "wrong checksum");
            text_ += '\n';
        }
    }

    void scalars(std::span<const FieldValues* const> fields) {
        GridColumn names{{}, {}, true};
        GridColumn values{{}, {}, true};
        for (const FieldValues* const field : fields) {
            if (!field->dimensions.empty())
                continue;
            names.cells.emplace_back(field->field->name);
            const std::string value = ElementText(block_, *field)(0);
            values.cells.push_back(field->isText() ? escaped(value)
                                   : value.empty() ? std::string(cutOff)
                                                   : withReadableUnit(value, field->field->unit));
        }
        hasLines_ = !names.cells.empty();
        // One a line, however wide the terminal is.
        if (hasLines_)
            appendGrid(text_, std::move(names), {std::move(values)}, indent, 0);
    }

    void table(const BlockTable& table) {
        if (hasLines_)
            text_ += '\n';
        hasLines_ = true;
        if (table.rows == 0 || table.columns.empty()) {
            tableHeading(table, {}, true);
            return;
        }
        const bool isList = table.columns.size() == 1 && !table.hasRowAxis() && !table.hasColumnAxis();
        const FieldValues& first = *table.columns.front().values;
        if (isList && isPlainBytes(first)) {
            bytes(first.field->name, first.field->offset, table.rows);
            return;
        }
        const bool isReadable = isList && isFrequencyUnit(first.field->unit);
        const std::string unit = isReadable ? std::string() : commonUnit(table);
        tableHeading(table, unit, isList);
        if (isList) {
            GridColumn cells = columnOf(table, table.columns.front());
            for (std::string& cell : cells.cells)
                cell = isReadable && cell != cutOff ? withReadableUnit(cell, first.field->unit) : cell;
            appendList(text_, std::move(cells), 2 * indent, options_.width);
        } else {
            grid(table, unit);
        }
    }

    /// Bytes as numbers, lines that repeat the one before left out as in other dumps.
    void bytes(std::string_view name, std::size_t offset, std::size_t length) {
        const std::span<const char> all = bytes::part(block_.bytes, offset, length);
        wrapped(std::array{std::string(indent, ' ') + std::string(name), std::to_string(all.size()) + " bytes"}, 2);
        const std::size_t digits = all.size() > 0x1000 ? 4 : 3;
        std::size_t perLine = 32;
        while (perLine > 4 && 2 * indent + digits + 1 + 3 * perLine > options_.width)
            perLine /= 2;
        bool isRepeating = false;
        for (std::size_t at = 0; at < all.size(); at += perLine) {
            const std::span<const char> line = bytes::part(all, at, perLine);
            const bool isLast = at + perLine >= all.size();
            if (!isLast && at > 0 && std::ranges::equal(line, all.subspan(at - perLine, perLine))) {
                if (!std::exchange(isRepeating, true))
                    text_.append(2 * indent, ' ').append("*\n");
                continue;
            }
            isRepeating = false;
            text_.append(2 * indent, ' ');
            appendHex(text_, at, digits);
            text_ += ' ';
            for (const char byte : line) {
                text_ += ' ';
                appendHex(text_, static_cast<unsigned char>(byte), 2);
            }
            text_ += '\n';
        }
    }

private:
    static constexpr std::string_view cutOff = "-"; // what lies behind the end of the block

    std::string& text_;
    const ImageBlock& block_;
    const ShowOptions& options_;
    bool hasLines_ = false; // below the heading

    /// Words of a line, those that do not fit below.
    void wrapped(std::span<const std::string> parts, std::size_t further) {
        std::size_t used = 0;
        for (const std::string& part : parts) {
            const std::size_t width = columnsOf(part);
            if (used > 0 && used + gap + width > options_.width) {
                text_.append("\n").append(2 * indent + further, ' ');
                used = 2 * indent + further;
            } else if (used > 0) {
                text_.append(gap, ' ');
                used += gap;
            }
            text_ += part;
            used += width;
        }
        text_ += '\n';
    }

    // The unit of all columns; empty where they have none, or not the same.
    static std::string commonUnit(const BlockTable& table) {
        const std::string unit = unitOf(*table.columns.front().values);
        const bool isCommon = std::ranges::all_of(
            table.columns, [&](const TableColumn& column) { return unitOf(*column.values) == unit; });
        return isCommon ? unit : std::string();
    }

    std::string along(const ValueDimension& dimension) const { return escaped(dimensionTitle(dimension, block_.id)); }

    void tableHeading(const BlockTable& table, std::string_view unit, bool isList) {
        std::vector<std::string> parts;
        for (const std::string_view field : table.fields)
            parts.push_back(std::string(field) + ',');
        parts.front().insert(0, indent, ' ');
        parts.back().pop_back();
        parts.back() += table.place();
        if (!unit.empty())
            parts.push_back("in " + std::string(unit));
        const bool isSaid = !isList || table.rowDimension->axisBlock != 0;
        const std::string rows = isSaid ? along(*table.rowDimension) : std::string();
        const std::string columns = table.columnDimension ? along(*table.columnDimension) : std::string();
        if (!rows.empty())
            parts.push_back("by " + rows);
        if (!columns.empty() && table.columns.size() > 1)
            parts.push_back("and " + columns);
        if (table.rows == 0 || table.columns.empty())
            parts.emplace_back("none in use");
        wrapped(parts, indent);
    }

    GridColumn columnOf(const BlockTable& table, const TableColumn& column) const {
        GridColumn made;
        made.isText = column.values->isText();
        const ElementText textOf(block_, *column.values);
        for (unsigned int row = 0; row < table.rows; ++row) {
            const std::size_t element = column.element(row);
            std::string& cell = made.cells.emplace_back();
            if (!options_.isWhole && !column.values->isUsed(element))
                continue;
            cell = textOf(element);
            if (made.isText)
                cell = escaped(cell);
            else if (cell.empty())
                cell = cutOff;
        }
        return made;
    }

    void grid(const BlockTable& table, const std::string& unit) {
        GridColumn labels;
        for (unsigned int row = 0; row < table.rows; ++row)
            labels.cells.push_back(escaped(table.rowLabel(row)));
        std::vector<GridColumn> columns;
        for (const TableColumn& column : table.columns) {
            GridColumn& made = columns.emplace_back(columnOf(table, column));
            if (table.columnDimension) {
                made.heading = table.columns.size() > 1 || table.hasColumnAxis() ? escaped(table.columnLabel(column))
                                                                                 : std::string();
            } else if (table.columns.size() > 1) {
                made.heading = column.values->field->name;
                if (unit.empty() && !unitOf(*column.values).empty())
                    made.heading += " (" + unitOf(*column.values) + ')';
            }
        }
        appendGrid(text_, std::move(labels), std::move(columns), 2 * indent, options_.width);
    }
};

bool labelsOwnTables(const ImageBlock& block, const BlockValues& values, const FieldValues& field) {
    return field.field->role == Role::Axis && std::ranges::any_of(values.fields, [&](const FieldValues& other) {
               return std::ranges::any_of(other.dimensions, [&](const ValueDimension& dimension) {
                   return dimension.axis && dimension.axis->name == field.field->name &&
                          dimension.axisBlock == block.id;
               });
           });
}

} // namespace

std::vector<const FieldValues*> shownFields(const ImageBlock& block, const BlockValues& values,
                                            const ShowOptions& options) {
    std::vector<const FieldValues*> shown;
    for (const FieldValues& field : values.fields) {
        const bool isWanted = options.fields.selectsAll()
                                  ? options.isWhole || !((field.field->role == Role::Reserved && isZero(field)) ||
                                                         labelsOwnTables(block, values, field))
                                  : options.fields.selects(field.field->name);
        if (isWanted)
            shown.push_back(&field);
    }
    return shown;
}

void appendBlockText(std::string& text, const ImageBlock& block, const BlockValues& values,
                     const ShowOptions& options) {
    Writer writer(text, block, options);
    writer.heading(values);
    const std::vector<const FieldValues*> fields = shownFields(block, values, options);
    writer.scalars(fields);
    for (const BlockTable& table : tablesOf(fields, options.isWhole))
        writer.table(table);
    if (!options.fields.selectsAll())
        return;
    for (const BlockLayout::Range& range : values.layout.uncovered(block.bytes.size())) {
        const std::span<const char> bytes = bytes::part(block.bytes, range.offset, range.length);
        const bool isEmpty = std::ranges::all_of(bytes, [](char byte) { return byte == 0; });
        if (options.isWhole || !isEmpty || values.fields.empty()) {
            text += '\n';
            writer.bytes("bytes from " + std::to_string(range.offset) + " on", range.offset, range.length);
        }
    }
}

} // namespace Travik
