#include <travik/tables/CountedTables.h>

#include <ostream>

namespace Travik {

namespace {

constexpr std::size_t countOffset = sizeof(HwSDatablockHeader);
constexpr std::size_t valuesOffset = countOffset + sizeof(unsigned int);

/// The name of the identifier, its "*" replaced; empty for an identifier that the key does not name.
std::string named(const KeyName& key, std::string_view pattern, int id, int firstId) {
    std::string name(pattern);
    if (key.paths == 0)
        return name;
    const int first = key.firstId != 0 ? key.firstId : firstId;
    if (id < first || id >= first + key.paths)
        return {};
    const int path = id - first;
    if (const std::size_t star = name.find('*'); star != std::string::npos)
        name[star] = static_cast<char>('A' + path);
    return name;
}

std::string named(const BlockName& block, std::string_view KeyName::*pattern, int id) {
    std::string name = named(block.key, block.key.*pattern, id, block.id);
    return name.empty() ? named(block.formerKey, block.formerKey.*pattern, id, block.id) : name;
}

template <class Value>
Value entry(std::span<const char> image, unsigned int capacity, unsigned int k) {
    return k < capacity ? bytes::load<Value>(image, valuesOffset + std::size_t{k} * sizeof(Value)) : Value{};
}

template <class Value>
void printValue(TextWriter& out, const ListTable& table, Value value) {
    if constexpr (std::is_floating_point_v<Value>) {
        if (table.decimals < 0)
            out.current(static_cast<double>(value));
        else
            out.fixed(static_cast<double>(value), static_cast<unsigned int>(table.decimals));
    } else if constexpr (std::is_same_v<Value, short>) {
        out << (table.shown == Shown::Negated ? static_cast<short>(-value) : value);
    } else {
        out << value;
    }
}

} // namespace

std::string BlockName::keyOf(int blockId) const { return named(*this, &KeyName::text, blockId); }

std::string BlockName::countKeyOf(int blockId) const { return named(*this, &KeyName::countedBy, blockId); }

namespace detail {

FieldList quantityFields(std::span<const Field> fields, const Quantity& quantity) {
    FieldList list(fields.begin(), fields.end());
    Field& values = list.back();
    values.name = quantity.name;
    values.unit = quantity.unit;
    values.scale = quantity.scale;
    values.role = quantity.role;
    values.dimensions.at(values.rank - 1U).axisBlock = quantity.axisBlock;
    return list;
}

double tenHertzPoint(std::span<const char> image, unsigned int capacity, unsigned int k) {
    using Point = unsigned int;
    if (k >= capacity || !bytes::inside(image.size(), valuesOffset + std::size_t{k} * sizeof(Point), sizeof(Point)))
        return 0.0;
    const auto point = entry<Point>(image, capacity, k);
    const double hertz = point * 10.0;
    return k > 0 && entry<Point>(image, capacity, k - 1) == point ? hertz + 0.01 : hertz;
}

template <class Value>
std::ostream& printListTable(std::ostream& os, const ListTable& table, int id, std::span<const char> image,
                             unsigned int capacity) {
    TextWriter out(os);
    const auto count = bytes::load<unsigned int>(image, countOffset);
    printHead(out, table.text.head, table.name.keyOf(id), count);
    printLines(out, table.text.beforeRows);
    const unsigned int printed = table.printsToCapacity ? std::min(count, capacity) : count;
    printEntries(out, table.text, printed, [&](TextWriter& line, unsigned int k) {
        if (table.shown == Shown::TenHertz)
            line.fixed(tenHertzPoint(image, capacity, k), 2);
        else
            printValue(line, table, entry<Value>(image, capacity, k));
    });
    if (table.text.endsWithEmptyLine)
        out.line();
    if (table.decimals >= 0)
        out.stream().precision(table.decimals);
    return os;
}

template <class Value>
std::ostream& printStepTable(std::ostream& os, const StepTable& table, int id, std::span<const char> image,
                             unsigned int rows, unsigned int columns) {
    TextWriter out(os);
    const unsigned int steps = bytes::load<unsigned int>(image, countOffset) & 0xFFFFU;
    printHead(out, table.text.head, table.name.keyOf(id));
    (out << table.text.head.count << steps << " *" << table.name.countKeyOf(id)).endLine();
    printLines(out, table.text.beforeRows);
    const unsigned int printed = table.printsBeyondCapacity ? steps : std::min(steps, rows);
    printRows(
        out, table.text, printed, columns, [&](TextWriter& line, unsigned int row) { line << row * table.labelStep; },
        [&](TextWriter& line, unsigned int row, unsigned int column) {
            line << entry<Value>(image, rows * columns, row * columns + column);
        });
    if (table.text.endsWithEmptyLine)
        out.line();
    return os;
}

using ListPrint = std::ostream&(std::ostream&, const ListTable&, int, std::span<const char>, unsigned int);
template ListPrint printListTable<short>;
template ListPrint printListTable<int>;
template ListPrint printListTable<unsigned int>;
template ListPrint printListTable<float>;
template ListPrint printListTable<double>;

using StepPrint = std::ostream&(std::ostream&, const StepTable&, int, std::span<const char>, unsigned int,
                                unsigned int);
template StepPrint printStepTable<short>;
template StepPrint printStepTable<int>;

} // namespace detail

} // namespace Travik
