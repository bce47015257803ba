#include <travik/service/BlockTables.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

namespace Travik {

namespace {

unsigned int entriesOf(const ValueDimension& dimension, bool isWhole) {
    return isWhole ? dimension.extent : dimension.used;
}

// Whether two fields stand side by side: along dimensions that are the same not only by chance.
bool runAlongTheSame(const ValueDimension& left, const ValueDimension& right) {
    const auto shape = [](const ValueDimension& along) {
        return std::tuple(std::string_view(along.name), along.extent, along.used, along.axisBlock);
    };
    return shape(left) == shape(right) && (!left.name.empty() || left.axisBlock != 0);
}

/// Which dimension of a field goes down, which across; the others are left over.
struct Orientation {
    std::size_t rows = 0;
    std::optional<std::size_t> columns;

    Orientation(std::span<const ValueDimension> dimensions, bool isWhole) {
        const auto rank = [&](const ValueDimension& dimension) {
            return std::pair(dimension.axis != nullptr, entriesOf(dimension, isWhole));
        };
        rows = static_cast<std::size_t>(std::ranges::max_element(dimensions, {}, rank) - dimensions.begin());
        // Labels that each index of the first dimension has of its own are those of one table each.
        const std::size_t first = dimensions[rows].axis && !dimensions[rows].axis->byRow.empty() ? 1 : 0;
        for (std::size_t d = dimensions.size(); d-- > first;) {
            if (d != rows) {
                columns = d;
                break;
            }
        }
    }

    bool isLeft(std::size_t dimension) const { return dimension != rows && dimension != columns; }
};

void addTables(std::vector<BlockTable>& tables, const FieldValues& values, bool isWhole) {
    const std::vector<ValueDimension>& dimensions = values.dimensions;
    std::vector<std::size_t> steps(dimensions.size(), 1);
    for (std::size_t d = dimensions.size() - 1; d-- > 0;)
        steps[d] = steps[d + 1] * dimensions[d + 1].extent;
    const Orientation orientation(dimensions, isWhole);
    for (std::size_t d = 0; d < dimensions.size(); ++d) {
        if (orientation.isLeft(d) && entriesOf(dimensions[d], isWhole) == 0)
            return;
    }
    const ValueDimension* const across = orientation.columns ? &dimensions[*orientation.columns] : nullptr;
    // The dimensions that are left, counted like an odometer.
    std::vector<unsigned int> index(dimensions.size());
    for (bool isOver = false; !isOver;) {
        BlockTable& table = tables.emplace_back();
        table.fields.emplace_back(values.field->name);
        table.rows = entriesOf(dimensions[orientation.rows], isWhole);
        table.rowDimension = &dimensions[orientation.rows];
        table.columnDimension = across;
        // Of a row of its own length, that.
        if (!isWhole && values.variesIn == orientation.rows && index[0] < values.usedByRow.size() &&
            orientation.isLeft(0))
            table.rows = values.usedByRow[index[0]];
        std::size_t first = 0;
        for (std::size_t d = 0; d < dimensions.size(); ++d) {
            if (!orientation.isLeft(d))
                continue;
            table.places.push_back({dimensions[d].name, d, index[d]});
            first += index[d] * steps[d];
        }
        for (unsigned int i = 0; i < (across ? entriesOf(*across, isWhole) : 1); ++i)
            table.columns.push_back(
                {&values, first + (across ? i * steps[*orientation.columns] : 0), steps[orientation.rows], i});
        isOver = true;
        for (std::size_t d = dimensions.size(); isOver && d-- > 0;) {
            if (!orientation.isLeft(d))
                continue;
            isOver = ++index[d] >= entriesOf(dimensions[d], isWhole);
            index[d] = isOver ? 0 : index[d];
        }
    }
}

} // namespace

std::vector<BlockTable> tablesOf(std::span<const FieldValues* const> fields, bool isWhole) {
    std::vector<BlockTable> tables;
    bool isOpen = false; // whether a further field may stand beside those of the last table
    for (const FieldValues* const values : fields) {
        if (values->dimensions.empty())
            continue;
        if (values->dimensions.size() > 1) {
            addTables(tables, *values, isWhole);
            isOpen = false;
            continue;
        }
        const ValueDimension& dimension = values->dimensions.front();
        if (!isOpen || !runAlongTheSame(*tables.back().rowDimension, dimension)) {
            BlockTable& table = tables.emplace_back();
            table.rows = entriesOf(dimension, isWhole);
            table.rowDimension = &dimension;
        }
        tables.back().fields.emplace_back(values->field->name);
        tables.back().columns.push_back({values});
        isOpen = true;
    }
    return tables;
}

std::string BlockTable::place() const {
    std::string text;
    for (const Place& place : places) {
        text.append(text.empty() ? " (" : ", ").append(place.dimension).append(place.dimension.empty() ? "" : " ");
        text.append(std::to_string(place.index));
    }
    return text.empty() ? text : text + ')';
}

std::span<const double> BlockTable::labelsOf(const Axis& axis) const {
    const bool isPlaced = !places.empty() && places.front().number == 0;
    return axis.at(isPlaced ? places.front().index : 0);
}

std::string BlockTable::label(const ValueDimension& dimension, unsigned int entry) const {
    const Axis* const axis = dimension.axis.get();
    if (!axis)
        return std::to_string(entry);
    if (entry < axis->texts.size())
        return axis->texts[entry];
    const std::span<const double> numbers = labelsOf(*axis);
    return entry < numbers.size() ? withReadableUnit(axis->format.text(numbers[entry]), axis->unit)
                                  : std::to_string(entry);
}

std::string BlockTable::exactRowLabel(unsigned int row) const {
    const Axis* const axis = rowDimension->axis.get();
    if (!axis)
        return std::to_string(row);
    if (row < axis->texts.size())
        return axis->texts[row];
    const std::span<const double> numbers = labelsOf(*axis);
    return row < numbers.size() ? axis->format.exact(numbers[row]) : std::string();
}

bool isPlainBytes(const FieldValues& values) {
    const Field& field = *values.field;
    constexpr std::size_t few = 16;
    return field.rank == 1 && field.width == 1 && field.bits == 0 && !values.isText() && field.scale == 1.0 &&
           field.zero == 0.0 && field.role != Role::Axis && std::string_view(field.unit).empty() &&
           values.size() > few && field.dimensions[0].stride == 1 && field.dimensions[0].axisBlock == 0;
}

std::string dimensionTitle(const ValueDimension& dimension, int block) {
    std::string name(dimension.name);
    if (dimension.axisBlock == 0 || (dimension.axisBlock == block && !dimension.axis))
        return name;
    std::string labels = axisName(dimension, block);
    if (dimension.axisBlock != block)
        labels += (labels.empty() ? "" : " ") + ('(' + std::to_string(dimension.axisBlock) + ')');
    return dimension.axis ? labels : name + ", not fitting " + labels;
}

std::string axisName(const ValueDimension& dimension, int block) {
    const CatalogueEntry* const entry = dimension.axisBlock == block ? nullptr : findEntry(dimension.axisBlock);
    const std::string key = entry ? toUtf8(entry->key(*entry, dimension.axisBlock)) : std::string();
    return key.empty() && dimension.axis ? dimension.axis->name : key;
}

} // namespace Travik
