#include <travik/datablock/Bytes.h>
#include <travik/datablock/Checksum.h>
#include <travik/tables/ElementKernels.h>
#include <travik/tables/SecondEditionBuilder.h>

#include <cmath>
#include <cstddef>

namespace Travik {

namespace {

using detail::elementCoding;

constexpr unsigned short endBlockId = 0xFFFF;
constexpr std::size_t largestCount = 0xFFFF;
constexpr std::size_t largestImage = 0xFFFE;
constexpr std::size_t checksumOffset = offsetof(HwSDatablockHeader, checksum);
constexpr std::size_t crcOffset = sizeof(HwSDatablockHeader);
constexpr std::size_t sealSize = 2; // behind the values of a packed image

class Builder {
public:
    explicit Builder(const SecondEditionTable& table) : table_(table) {}

    SecondEditionImage build() {
        if (checkHead() && writeHeader() && writeAreas())
            seal();
        else
            result_.bytes.clear();
        return std::move(result_);
    }

private:
    const SecondEditionTable& table_;
    SecondEditionImage result_;

    std::span<char> image() { return result_.bytes; }

    bool refuse(SecondEditionFault fault, std::string text) {
        result_.fault = fault;
        result_.text = std::move(text);
        return false;
    }

    bool checkHead() {
        if (table_.id == endBlockId)
            return refuse(SecondEditionFault::Identifier, "65535 is the identifier of the end block");
        const double hundredths = std::round(table_.updateIndex * 100.0);
        if (!(hundredths >= 0.0 && hundredths <= 65535.0))
            return refuse(SecondEditionFault::UpdateIndex, "the update index is not within 0 to 655.35");
        if (table_.rows.size() > largestCount || table_.columns.size() > largestCount)
            return refuse(SecondEditionFault::Size, "the table has more than 65535 rows or columns");
        if (!checkType(table_.rowIdType, "the row identifiers") ||
            !checkType(table_.columnIdType, "the column identifiers"))
            return false;
        for (std::size_t i = 0; i < table_.columns.size(); ++i) {
            if (!checkType(table_.columns[i].type, "column " + counted(i)))
                return false;
        }
        return true;
    }

    bool checkType(ETypeId type, const std::string& whose) {
        return elementCoding(type).code == type ||
               refuse(SecondEditionFault::Type,
                      "unknown type " + std::to_string(static_cast<int>(type)) + " of " + whose);
    }

    bool writeHeader() {
        result_.bytes.resize(SecondEditionHeader::startsAt(table_.packed));
        bytes::store(image(), offsetof(HwSDatablockHeader, id), table_.id);
        bytes::store(image(), offsetof(HwSDatablockHeader, alignment), static_cast<unsigned short>(table_.packed));
        append(static_cast<unsigned short>(std::round(table_.updateIndex * 100.0)));
        append(static_cast<unsigned short>(table_.rows.size()));
        append(static_cast<unsigned short>(table_.columns.size()));
        append(static_cast<unsigned char>(table_.rowIdType));
        append(static_cast<unsigned char>(table_.columnIdType));
        for (const SecondEditionColumn& column : table_.columns)
            append(static_cast<unsigned char>(column.type));
        return true;
    }

    template <class T>
    void append(T value) {
        result_.bytes.resize(result_.bytes.size() + sizeof value);
        bytes::store(image(), result_.bytes.size() - sizeof value, value);
    }

    bool writeAreas() {
        // The header that stands by now says where everything goes.
        const SecondEditionLayout layout(image());
        const std::uint64_t size = layout.end + layout.end % 2 + (table_.packed ? sealSize : 0);
        if (size > largestImage)
            return refuse(SecondEditionFault::Size, "the table takes " + std::to_string(size) +
                                                        " bytes, a block holds " + std::to_string(largestImage));
        result_.bytes.resize(static_cast<std::size_t>(size));
        bytes::store(image(), offsetof(HwSDatablockHeader, blockSize), static_cast<unsigned short>(size));

        std::uint64_t at = layout.rowIdsAt;
        for (std::size_t i = 0; i < table_.rows.size(); ++i) {
            if (!write(at, table_.rowIdType, table_.rows[i].id))
                return refuseValue("identifier of row " + counted(i), table_.rowIdType);
        }
        at = layout.columnIdsAt;
        for (std::size_t i = 0; i < table_.columns.size(); ++i) {
            if (!write(at, table_.columnIdType, table_.columns[i].id))
                return refuseValue("identifier of column " + counted(i), table_.columnIdType);
        }
        at = layout.valuesAt;
        for (std::size_t i = 0; i < table_.rows.size(); ++i) {
            if (!writeRow(at, i))
                return false;
        }
        return true;
    }

    bool writeRow(std::uint64_t& at, std::size_t row) {
        const std::vector<ElementValue>& values = table_.rows[row].values;
        if (values.size() != table_.columns.size())
            return refuse(SecondEditionFault::RowLength, "row " + counted(row) + " has " +
                                                             std::to_string(values.size()) + " values for " +
                                                             std::to_string(table_.columns.size()) + " columns");
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!write(at, table_.columns[i].type, values[i]))
                return refuseValue("value in row " + counted(row) + ", column " + counted(i), table_.columns[i].type);
        }
        return true;
    }

    bool write(std::uint64_t& at, ETypeId code, const ElementValue& value) {
        const detail::ElementCoding& type = elementCoding(code);
        const std::span<char> place = image().subspan(static_cast<std::size_t>(at), type.size);
        at += type.size;
        return type.store(place, value);
    }

    bool refuseValue(const std::string& which, ETypeId type) {
        return refuse(SecondEditionFault::Value, "the " + which + " does not fit " + elementCoding(type).name);
    }

    static std::string counted(std::size_t index) { return std::to_string(index + 1); }

    // The CRC-32 first: the 16-bit checksum covers it.
    void seal() {
        if (table_.packed)
            sealPacked();
        else
            bytes::store(image(), crcOffset, blockCrc32(image().data(), image().size()));
        bytes::store(image(), checksumOffset, static_cast<unsigned short>(-sum16(image().data(), image().size())));
    }

    // The upper half of a CRC-32 takes each value for exactly one pair of last bytes.
    void sealPacked() {
        const std::size_t sealAt = image().size() - sealSize;
        const std::uint32_t before =
            crc32(image().data() + crcOffset + sizeof(std::uint32_t), sealAt - crcOffset - sizeof(std::uint32_t),
                  crc32(image().data(), checksumOffset));
        const auto wanted = bytes::load<unsigned short>(image(), SecondEditionHeader::startsAt(true));
        std::uint16_t last = 0;
        std::uint32_t crc = crc32(&last, sealSize, before);
        while (crc >> 16U != wanted) {
            ++last;
            crc = crc32(&last, sealSize, before);
        }
        bytes::store(image(), sealAt, last);
        bytes::store(image(), crcOffset, crc);
    }
};

} // namespace

SecondEditionImage buildSecondEdition(const SecondEditionTable& table) { return Builder(table).build(); }

} // namespace Travik
