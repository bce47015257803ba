#include <travik/service/BlockTables.h>
#include <travik/service/CsvText.h>
#include <travik/service/ValueText.h>

#include <algorithm>

namespace Travik {

namespace {

std::string withUnit(std::string name, std::string_view unit) {
    if (!unit.empty())
        name.append(" (").append(unit).append(")");
    return name;
}

void appendRow(std::string& text, std::span<const std::string> cells) {
    bool isFirst = true;
    for (const std::string& cell : cells) {
        text.append(isFirst ? "" : ",").append(csvCell(cell));
        isFirst = false;
    }
    text += "\r\n";
}

std::string rowName(const ImageBlock& block, const BlockTable& table) {
    if (const Axis* const axis = table.rowDimension->axis.get())
        return withUnit(axisName(*table.rowDimension, block.id), axis->unit);
    return table.rowDimension->name.empty() ? "index" : std::string(table.rowDimension->name);
}

void appendHeading(std::string& text, const ImageBlock& block, const BlockTable& table) {
    std::vector<std::string> cells{rowName(block, table)};
    for (const BlockTable::Place& place : table.places)
        cells.push_back(place.dimension.empty() ? "index " + std::to_string(place.number)
                                                : std::string(place.dimension));
    for (const TableColumn& column : table.columns) {
        std::string name = column.values->field->name;
        if (table.columnDimension && table.columns.size() > 1)
            name += '[' + table.columnLabel(column) + ']';
        cells.push_back(withUnit(std::move(name), column.values->field->unit));
    }
    appendRow(text, cells);
}

void appendRows(std::string& text, const ImageBlock& block, const BlockTable& table, bool isWhole) {
    std::vector<ElementText> texts;
    for (const TableColumn& column : table.columns)
        texts.emplace_back(block, *column.values);
    std::vector<std::string> cells;
    for (unsigned int row = 0; row < table.rows; ++row) {
        cells.assign(1, table.exactRowLabel(row));
        for (const BlockTable::Place& place : table.places)
            cells.push_back(std::to_string(place.index));
        for (std::size_t c = 0; c < table.columns.size(); ++c) {
            const std::size_t element = table.columns[c].element(row);
            const bool isShown = isWhole || table.columns[c].values->isUsed(element);
            cells.push_back(isShown ? texts[c].exact(element) : std::string());
        }
        appendRow(text, cells);
    }
}

} // namespace

std::string appendCsv(std::string& text, const ImageBlock& block, std::span<const FieldValues* const> fields,
                      bool isWhole) {
    const std::vector<BlockTable> tables = tablesOf(fields, isWhole);
    if (tables.empty()) {
        std::vector<std::string> names;
        std::vector<std::string> cells;
        for (const FieldValues* const values : fields) {
            if (!values->dimensions.empty())
                continue;
            names.push_back(withUnit(values->field->name, values->field->unit));
            cells.push_back(ElementText(block, *values).exact(0));
        }
        if (names.empty())
            return "no values";
        appendRow(text, names);
        appendRow(text, cells);
        return {};
    }
    std::string names;
    bool isOne = true;
    for (const BlockTable& table : tables) {
        if (&table != &tables.front() && table.fields == (&table - 1)->fields)
            continue;
        isOne = isOne && &table == &tables.front();
        std::string_view separator = names.empty() ? "" : "; ";
        for (const std::string_view field : table.fields) {
            names.append(separator).append(field);
            separator = ", ";
        }
    }
    if (!isOne)
        return "more than one table: " + names;
    appendHeading(text, block, tables.front());
    for (const BlockTable& table : tables)
        appendRows(text, block, table, isWhole);
    return {};
}

std::string csvCell(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos)
        return std::string(text);
    std::string cell = "\"";
    for (const char character : text)
        cell.append(character == '"' ? 2 : 1, character);
    return cell + '"';
}

} // namespace Travik
