#include <travik/datablock/Bytes.h>
#include <travik/datablock/DigitKernels.h>
#include <travik/datablock/ErrorDefinitions.h>
#include <travik/datablock/TextWriter.h>
#include <travik/platform/ErrorManager.h>
#include <travik/text/TableBlock.h>

#include <cmath>
#include <ostream>
#include <vector>

namespace Travik {

using detail::withStoredType;

namespace {

double toUser(const TableShape& shape, double product) {
    switch (shape.user) {
    case UserNumber::Integral:
        return std::isnan(product) ? 0.0 : std::trunc(std::clamp(product, shape.lowest, shape.highest)) + 0.0;
    case UserNumber::Float:
        return static_cast<double>(static_cast<float>(product));
    case UserNumber::Double:
        break;
    }
    return product;
}

} // namespace

TableBlock::TableBlock(const TableShape& shape, const char* keyName, unsigned int idBase, unsigned int idOffset,
                       double scaleFactor, unsigned int maxRows, unsigned int maxColumns, bool stopConversionOnError)
    : HwDatablock(static_cast<unsigned short>(idBase + idOffset), static_cast<unsigned short>(shape.size()),
                  stopConversionOnError),
      keyName_(keyName ? keyName : ""), scaleFactor_(scaleFactor), maxRows_(std::min(maxRows, shape.rows)),
      maxColumns_(std::min(maxColumns, shape.columns)), descriptorCount_(shape.descriptors), shape_(&shape) {}

TableBlock::TableBlock(const TableShape& shape, const HwDatablock& block)
    : HwDatablock(block), scaleFactor_(1.0), maxRows_(shape.rows), maxColumns_(shape.columns),
      descriptorCount_(shape.descriptors), shape_(&shape) {}

unsigned int TableBlock::getNumberOfRows() const {
    return bytes::load<unsigned int>(image(), shape_->rowCountOffset());
}

unsigned int TableBlock::getNumberOfColumns() const {
    return bytes::load<unsigned int>(image(), shape_->columnCountOffset());
}

void TableBlock::setNumberOfRows(unsigned int rows) {
    if (rows <= maxRows_ && bytes::store(image(), shape_->rowCountOffset(), rows))
        refreshChecksum();
}

void TableBlock::setNumberOfColumns(unsigned int columns) {
    if (columns <= maxColumns_ && bytes::store(image(), shape_->columnCountOffset(), columns))
        refreshChecksum();
}

double TableBlock::product(unsigned int row, unsigned int column) const {
    if (row >= maxRows_ || column >= maxColumns_)
        return 0.0;
    const std::size_t offset = shape_->valueOffset(row, column);
    return withStoredType(shape_->stored, [&]<class StoreT>(StoreT) {
        return static_cast<double>(bytes::load<StoreT>(image(), offset)) * scaleFactor_;
    });
}

double TableBlock::userValue(unsigned int row, unsigned int column) const {
    return toUser(*shape_, product(row, column));
}

void TableBlock::storeProduct(double value, unsigned int row, unsigned int column) {
    if (row >= maxRows_ || column >= maxColumns_)
        return;
    const std::size_t offset = shape_->valueOffset(row, column);
    const bool stored = withStoredType(shape_->stored, [&]<class StoreT>(StoreT) {
        double number = value / scaleFactor_;
        if constexpr (std::is_integral_v<StoreT>) {
            using Limits = std::numeric_limits<StoreT>;
            number = std::isnan(number) ? 0.0 : std::clamp<double>(std::round(number), Limits::lowest(), Limits::max());
        }
        return bytes::store(image(), offset, static_cast<StoreT>(number));
    });
    if (stored)
        refreshChecksum();
}

int TableBlock::indexValue(unsigned int row) const {
    return row < maxRows_ ? bytes::load<int>(image(), shape_->indexOffset() + std::size_t{4} * row) : 0;
}

void TableBlock::storeIndexValue(int value, unsigned int row) {
    if (row < maxRows_ && bytes::store(image(), shape_->indexOffset() + std::size_t{4} * row, value))
        refreshChecksum();
}

QString TableBlock::descriptor(unsigned int index) const {
    if (index >= descriptorCount_)
        return {};
    const std::size_t offset = shape_->descriptorsOffset() + std::size_t{TableShape::descriptorLength} * index;
    return fromLatin1(bytes::text(image(), offset, TableShape::descriptorLength));
}

void TableBlock::storeDescriptor(const QString& text, unsigned int index) {
    if (index >= descriptorCount_)
        return;
    const std::size_t offset = shape_->descriptorsOffset() + std::size_t{TableShape::descriptorLength} * index;
    if (bytes::storeText(image(), offset, TableShape::descriptorLength, toLatin1(text)))
        refreshChecksum();
}

int TableBlock::takeOver(const void* record) {
    const unsigned int size = shape_->size();
    const std::span source(static_cast<const char*>(record), record ? size : 0);
    const auto header = bytes::load<HwSDatablockHeader>(source, 0);
    auto* words = static_cast<unsigned short*>(const_cast<void*>(record));
    if (!record || (shape_->checked && !verifyChecksum(words, static_cast<unsigned short>(size), true))) {
        ErrorManager()->signal(DownloadDenied, QString::number(header.id));
        return 1;
    }
    storeHeader(header.id, static_cast<unsigned short>(size), 0);
    for (unsigned int i = 0; i < descriptorCount_; ++i) {
        const std::size_t offset = shape_->descriptorsOffset() + std::size_t{TableShape::descriptorLength} * i;
        bytes::storeText(image(), offset, TableShape::descriptorLength,
                         bytes::text(source, offset, TableShape::descriptorLength));
    }
    const auto copy = [&](unsigned int offset, unsigned int length, unsigned int width) {
        bytes::storeElements(image(), offset, source.data() + offset, length, width);
    };
    copy(shape_->rowCountOffset(), 2 * sizeof(unsigned int), sizeof(unsigned int));
    copy(shape_->valuesOffset(), shape_->valuesSize(), shape_->width);
    copy(shape_->indexOffset(), size - shape_->indexOffset(), sizeof(int));
    setChecksum(header.checksum);
    return 0;
}

void TableBlock::takeOverItself(const TableShape& shape, HwDatablock& block) {
    TableBlock table(shape, block);
    const std::span<const char> image = table.image();
    if (image.size() >= shape.size()) {
        table.takeOver(image.data());
    } else {
        std::vector<char> record(shape.size());
        std::ranges::copy(image, record.begin());
        table.takeOver(record.data());
    }
}

// Text

template <class StoreT, class Append>
void TableBlock::printValues(TextWriter& out, Append append) const {
    constexpr std::size_t valueRoom = 1 + detail::fixedRoom;
    const unsigned int rows = getNumberOfRows();
    const unsigned int columns = getNumberOfColumns();
    // Of a row that has no values only the label is an entry.
    unsigned int left = printedEntriesLimit;

    // The values of a row, of which only those inside capacity and buffer are read.
    const auto rowValues = [&](unsigned int row) {
        if (row >= maxRows_)
            return std::span<const char>{};
        const std::size_t stride = std::size_t{shape_->columns} * sizeof(StoreT);
        return bytes::part(image(), shape_->valuesOffset() + row * stride, std::size_t{maxColumns_} * sizeof(StoreT));
    };
    const auto stored = [](std::span<const char> values, unsigned int column) {
        return bytes::load<StoreT>(values, std::size_t{column} * sizeof(StoreT));
    };

    if (!shape_->indexed && columns < rows) {
        for (unsigned int row = 0; columns > 0 && row < rows && left > 0; ++row) {
            const std::span<const char> values = rowValues(row);
            for (unsigned int column = 0; column < columns && left > 0; ++column, --left) {
                out << row + 1 << ":  ";
                out.commit(append(out.reserve(valueRoom), stored(values, column)));
                out.endLine();
            }
        }
        return;
    }
    for (unsigned int row = 0; row < rows && left > 0; ++row) {
        if (shape_->indexed)
            out << indexValue(row) << ": ";
        else
            out << row + 1 << ": ";
        const std::span<const char> values = rowValues(row);
        const unsigned int printed = std::min(columns, left);
        for (unsigned int column = 0; column < printed;) {
            const unsigned int end = std::min(printed, column + 16);
            char* text = out.reserve((end - column) * valueRoom);
            for (; column < end; ++column) {
                *text++ = '\t';
                text = append(text, stored(values, column));
            }
            out.commit(text);
        }
        left -= std::max(printed, 1U);
        out.endLine();
    }
}

void TableBlock::printCounts(TextWriter& out) const {
    (out << "COUNT:  " << getNumberOfRows() << '*' << getNumberOfColumns()).endLine();
}

std::ostream& TableBlock::printToStream(std::ostream& os) {
    TextWriter out(os);
    (out << "ID:  " << keyName_).endLine();
    if (descriptorCount_ > 0) {
        out.line();
        for (unsigned int i = 0; i < descriptorCount_; ++i) {
            const std::size_t offset = shape_->descriptorsOffset() + std::size_t{TableShape::descriptorLength} * i;
            (out << "DESCRIPTOR" << i + 1 << ": " << bytes::text(image(), offset, TableShape::descriptorLength))
                .endLine();
        }
        out.line().line();
    }
    printCounts(out);
    withStoredType(shape_->stored, [&]<class StoreT>(StoreT) {
        const unsigned int decimals = shape_->decimals;
        const auto product = [this](StoreT stored) { return static_cast<double>(stored) * scaleFactor_; };
        if (!shape_->printsUserType || shape_->user == UserNumber::Double) {
            printValues<StoreT>(
                out, [&](char* text, StoreT stored) { return detail::appendFixed(text, product(stored), decimals); });
        } else if (std::is_integral_v<StoreT> && shape_->user == UserNumber::Integral && scaleFactor_ == 1.0) {
            const auto lowest = static_cast<long long>(shape_->lowest);
            const auto highest = static_cast<long long>(shape_->highest);
            printValues<StoreT>(out, [&](char* text, StoreT stored) {
                return detail::appendWhole(text, std::clamp(static_cast<long long>(stored), lowest, highest), decimals);
            });
        } else {
            printValues<StoreT>(out, [&](char* text, StoreT stored) {
                return detail::appendFixed(text, toUser(*shape_, product(stored)), decimals);
            });
        }
    });
    out.line();
    return os;
}

FieldList tableFields(const TableShape& shape, const TableSpec& spec) {
    FieldList fields;
    if (shape.descriptors > 0) {
        Field descriptors{.name = "descriptors", .role = Role::Text, .stored = Stored::Text};
        descriptors.width = TableShape::descriptorLength;
        descriptors.offset = shape.descriptorsOffset();
        descriptors.rank = 1;
        descriptors.dimensions[0] = {
            .name = "row", .extent = shape.descriptors, .stride = TableShape::descriptorLength};
        fields.push_back(descriptors);
    }
    const auto count = [&](const char* name, unsigned int offset) {
        fields.push_back({.name = name, .role = Role::Count, .stored = Stored::U32, .width = 4, .offset = offset});
    };
    count("rows", shape.rowCountOffset());
    count("columns", shape.columnCountOffset());
    Field values{.name = "values", .role = spec.role, .stored = shape.stored, .width = shape.width};
    values.offset = shape.valuesOffset();
    values.unit = spec.unit;
    values.scale = spec.scale;
    values.rank = 2;
    values.dimensions[0] = {"row", shape.rows, shape.columns * shape.width, "rows", spec.rowAxis};
    values.dimensions[1] = {"column", shape.columns, shape.width, "columns", spec.columnAxis};
    fields.push_back(values);
    if (shape.indexed) {
        Field index{
            .name = "index", .role = Role::Axis, .stored = Stored::I32, .width = 4, .offset = shape.indexOffset()};
        index.rank = 1;
        index.dimensions[0] = {"row", shape.rows, 4, "rows", 0};
        fields.push_back(index);
    }
    return fields;
}

} // namespace Travik
