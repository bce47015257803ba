#include <travik/datablock/PackedDate.h>
#include <travik/registry/ModuleInfo.h>
#include <travik/service/Values.h>
#include <travik/tables/SecondEditionFields.h>

#include <algorithm>
#include <charconv>

namespace Travik {

namespace {

std::vector<std::string> textsOf(std::span<const char> image, const Field& field) {
    const unsigned int count = field.elements();
    std::vector<std::string> texts;
    texts.reserve(count);
    for (unsigned int i = 0; i < count; ++i)
        texts.push_back(toUtf8(bytes::text(image, field.elementOffset(i), field.width)));
    return texts;
}

std::size_t endOf(const Field& field) {
    const unsigned int count = field.elements();
    return count == 0 ? 0 : field.elementOffset(count - 1) + field.width;
}

void readInto(FieldValues& values, std::span<const char> image) {
    const Field& field = *values.field;
    if (field.stored == Stored::Text) {
        values.texts = textsOf(image, field);
        return;
    }
    values.values.resize(field.elements());
    fieldValues(image, field, values.values);
    if (field.role == Role::Date) {
        for (const double packed : values.values)
            values.texts.push_back(dateText(static_cast<unsigned int>(packed)));
    }
}

// The field that labels the entries of a dimension of another block, or of that name in the block itself.
const Field* axisField(std::span<const Field> fields, std::string_view dimension = {}) {
    const auto found = std::ranges::find_if(fields, [&](const Field& field) {
        return field.role == Role::Axis && field.rank > 0 &&
               (dimension.empty() || field.dimensions[0].name == dimension);
    });
    return found == fields.end() ? nullptr : &*found;
}

// A matrix of frequencies counts as their list: the entries in use, row after row.
// `rows` is the array's first dimension: where the labels go along it, too, each of its entries has its own.
std::shared_ptr<const Axis> readAxis(std::span<const char> image, int block, std::span<const Field> fields,
                                     const Field& field, std::string_view rows) {
    if (endOf(field) > image.size())
        return nullptr;
    FieldValues all;
    all.field = &field;
    readInto(all, image);
    for (unsigned int d = 0; d < field.rank; ++d) {
        ValueDimension& dimension = all.dimensions.emplace_back();
        dimension.extent = field.dimensions[d].extent;
        dimension.used = usedEntries(image, fields, field.dimensions[d]);
    }
    const auto axis = std::make_shared<Axis>();
    axis->block = block;
    axis->name = field.name;
    axis->unit = field.unit;
    axis->format = NumberFormat(field);
    if (field.rank == 2 && field.dimensions[1].extent > 1 && rows == field.dimensions[0].name && !all.isText()) {
        const unsigned int columns = field.dimensions[1].extent;
        for (unsigned int row = 0; row < field.dimensions[0].extent; ++row) {
            const auto first = all.values.begin() + static_cast<std::ptrdiff_t>(std::size_t{row} * columns);
            axis->byRow.emplace_back(first, first + usedEntries(image, fields, field.dimensions[1], row));
        }
        return axis;
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all.isUsed(i))
            continue;
        if (all.isText())
            axis->texts.push_back(std::move(all.texts[i]));
        else
            axis->values.push_back(all.values[i]);
    }
    return axis;
}

} // namespace

std::size_t Axis::size() const {
    std::size_t most = std::max(values.size(), texts.size());
    for (const std::vector<double>& row : byRow)
        most = std::max(most, row.size());
    return most;
}

bool FieldValues::isUsed(std::size_t element) const {
    std::size_t first = element;
    for (std::size_t d = dimensions.size(); d-- > 1;)
        first /= dimensions[d].extent;
    for (std::size_t d = dimensions.size(); d-- > 0; element /= dimensions[d].extent) {
        const bool differs = !usedByRow.empty() && d == variesIn;
        if (element % dimensions[d].extent >= (differs ? usedByRow[first] : dimensions[d].used))
            return false;
    }
    return true;
}

BlockLayout::BlockLayout(const ImageBlock& block) {
    if (block.isSecondEdition) {
        const auto table = std::make_shared<SecondEditionFields>(block.bytes);
        fields_ = table->fields();
        names_ = table;
    } else if (block.entry) {
        fields_ = block.entry->fields(*block.entry, block.id);
    }
}

BlockLayout::BlockLayout(int id) {
    if (const CatalogueEntry* const entry = findEntry(id))
        fields_ = entry->fields(*entry, id);
}

const Field* BlockLayout::find(std::string_view name) const {
    const auto found =
        std::ranges::find(fields_, name, [](const Field& field) { return std::string_view(field.name); });
    return found == fields_.end() ? nullptr : &*found;
}

std::vector<BlockLayout::Range> BlockLayout::uncovered(std::size_t size) const {
    std::vector<bool> covered(size);
    const auto cover = [&](std::size_t offset, std::size_t length) {
        for (std::size_t i = offset; i < std::min(offset + length, size); ++i)
            covered[i] = true;
    };
    cover(0, sizeof(HwSDatablockHeader));
    for (const Field& field : fields_) {
        const unsigned int count = field.elements();
        for (unsigned int i = 0; i < count; ++i)
            cover(field.elementOffset(i), field.width);
    }
    std::vector<Range> ranges;
    for (std::size_t i = 0; i < size; ++i) {
        if (covered[i])
            continue;
        if (ranges.empty() || ranges.back().offset + ranges.back().length != i)
            ranges.push_back({i, 0});
        ++ranges.back().length;
    }
    return ranges;
}

const FieldValues* BlockValues::find(std::string_view name) const {
    const auto found =
        std::ranges::find(fields, name, [](const FieldValues& values) { return std::string_view(values.field->name); });
    return found == fields.end() ? nullptr : &*found;
}

ImageValues::ImageValues(const ModuleImage& image) : image_(&image) {}

std::shared_ptr<const Axis> ImageValues::axisOf(int id, std::string_view rows) const {
    const auto [known, isNew] = axes_.try_emplace({id, std::string(rows)});
    if (!isNew)
        return known->second;
    const ImageBlock* found = nullptr;
    for (const ImageBlock& block : image_->blocks()) {
        if (block.id == id && (!found || (block.checksumHolds && !found->checksumHolds)))
            found = &block;
    }
    if (!found)
        return nullptr;
    const BlockLayout layout(*found);
    if (const Field* const field = axisField(layout.fields()))
        known->second = readAxis(found->bytes, id, layout.fields(), *field, rows);
    return known->second;
}

FieldValues ImageValues::shape(const ImageBlock& block, const BlockLayout& layout, const Field& field) const {
    const std::span<const Field> fields = layout.fields();
    FieldValues values;
    values.field = &field;
    values.isWhole = endOf(field) <= block.bytes.size();
    for (unsigned int d = 0; d < field.rank; ++d) {
        const Dimension& dimension = field.dimensions[d];
        ValueDimension& made = values.dimensions.emplace_back();
        made.name = dimension.name;
        made.extent = dimension.extent;
        made.axisBlock = dimension.axisBlock;
        std::shared_ptr<const Axis> axis;
        if (dimension.axisBlock == block.id) {
            if (const Field* const own = axisField(fields, dimension.name))
                axis = readAxis(block.bytes, block.id, fields, *own, {});
        } else if (dimension.axisBlock != 0) {
            axis = axisOf(dimension.axisBlock, d > 0 ? field.dimensions[0].name : "");
        }
        if (!dimension.count) {
            made.used = axis && axis->size() <= made.extent ? static_cast<unsigned int>(axis->size()) : made.extent;
        } else if (d == 0) {
            made.used = usedEntries(block.bytes, fields, dimension);
        } else {
            // The count may be one of several, by the index of the first dimension.
            const Field* const count = layout.find(dimension.count);
            const unsigned int rows = count && count->rank > 0 ? field.dimensions[0].extent : 1;
            std::vector<unsigned int> used(rows);
            for (unsigned int row = 0; row < rows; ++row)
                used[row] = usedEntries(block.bytes, fields, dimension, row);
            made.used = *std::ranges::max_element(used);
            if (std::ranges::adjacent_find(used, std::not_equal_to<>()) != used.end()) {
                values.usedByRow = std::move(used);
                values.variesIn = d;
            }
        }
        const auto matches = [&] {
            if (axis->byRow.empty())
                return axis->size() == made.used;
            // Each entry of the first dimension has labels of its own, as many as it has points.
            if (!values.usedByRow.empty() && values.variesIn == d)
                return std::ranges::equal(axis->byRow, values.usedByRow, {}, &std::vector<double>::size);
            return std::ranges::all_of(axis->byRow,
                                       [&](const std::vector<double>& row) { return row.size() == made.used; });
        };
        if (axis && matches())
            made.axis = std::move(axis);
    }
    return values;
}

BlockValues ImageValues::read(const ImageBlock& block) const {
    BlockValues result{
        keyOf(block), block.entry ? std::string(block.entry->className) : std::string(), BlockLayout(block), {}};
    if (block.isSecondEdition)
        result.className = "HwDatablock2Edition";
    const std::span<const Field> fields = result.layout.fields();
    result.fields.reserve(fields.size());
    for (const Field& field : fields)
        readInto(result.fields.emplace_back(shape(block, result.layout, field)), block.bytes);
    return result;
}

std::string keyOf(const ImageBlock& block) {
    if (block.isSecondEdition)
        return "USER_" + std::to_string(block.id);
    return block.entry ? block.entry->key(*block.entry, block.id) : std::string();
}

std::string dateText(unsigned int packed) {
    const auto date = unpackDate(static_cast<unsigned short>(packed));
    return packed <= 0xFFFF && date.ok() ? isoDate(date) : std::string();
}

std::optional<unsigned int> packedDate(std::string_view iso) {
    if (iso.size() != 10 || iso[4] != '-' || iso[7] != '-')
        return std::nullopt;
    const auto number = [&](std::size_t offset, std::size_t length) {
        unsigned int value = 0;
        const char* const end = iso.data() + offset + length;
        return std::from_chars(iso.data() + offset, end, value).ptr == end ? static_cast<int>(value) : -1;
    };
    const int year = number(0, 4);
    const int month = number(5, 2);
    const int day = number(8, 2);
    if (year < 1980 || year > 2107 || month < 1 || day < 1)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned int>(month)),
                                           std::chrono::day(static_cast<unsigned int>(day))};
    return date.ok() ? std::optional<unsigned int>(packDate(date)) : std::nullopt;
}

std::string toUtf8(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char character : latin1) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            utf8 += character;
        } else {
            utf8 += static_cast<char>(0xC0U | (code >> 6U));
            utf8 += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return utf8;
}

std::optional<std::string> toLatin1(std::string_view utf8) {
    std::string latin1;
    latin1.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        if (lead < 0x80) {
            latin1 += utf8[i];
        } else {
            const auto trail = i + 1 < utf8.size() ? static_cast<unsigned char>(utf8[++i]) : 0U;
            if ((lead != 0xC2 && lead != 0xC3) || (trail & 0xC0U) != 0x80U)
                return std::nullopt;
            latin1 += static_cast<char>(((lead & 3U) << 6U) | (trail & 0x3FU));
        }
    }
    return latin1;
}

} // namespace Travik
