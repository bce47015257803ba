#include <travik/datablock/Bytes.h>
#include <travik/tables/ElementKernels.h>
#include <travik/tables/SecondEdition.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <ostream>
#include <vector>

namespace Travik {

namespace {

using detail::elementCoding;
using detail::printElement;

constexpr unsigned short emptySize = 12;

// Of the table header, from its start.
constexpr unsigned int rowsOffset = 2;
constexpr unsigned int columnsOffset = 4;
constexpr unsigned int rowIdTypeOffset = 6;
constexpr unsigned int columnIdTypeOffset = 7;
constexpr unsigned int columnTypesOffset = 8;

constexpr std::string_view hashes = "##################################################";
constexpr std::string_view rule = "#=======================================================================";
constexpr std::string_view columnGap = "         ";
constexpr std::string_view summaryGap = "                    ";

constexpr ETypeId typeOf(char code) { return static_cast<ETypeId>(static_cast<unsigned char>(code)); }

/// The value's bytes; none where it does not lie wholly inside the block.
std::span<const char> valueAt(std::span<const char> block, std::uint64_t offset, unsigned int size) {
    if (offset > block.size() || size > block.size() - offset)
        return {};
    return block.subspan(static_cast<std::size_t>(offset), size);
}

TextWriter& updateIndexOf(TextWriter& out, double index) {
    return out.current(static_cast<double>(static_cast<float>(index)));
}

} // namespace

SecondEditionHeader::SecondEditionHeader(std::span<const char> block)
    : packed(bytes::load<unsigned short>(block, offsetof(HwSDatablockHeader, alignment)) != 0),
      updateIndex(bytes::load<unsigned short>(block, startsAt(packed))),
      rows(bytes::load<unsigned short>(block, startsAt(packed) + rowsOffset)),
      columns(bytes::load<unsigned short>(block, startsAt(packed) + columnsOffset)),
      rowIdType(typeOf(bytes::load<char>(block, startsAt(packed) + rowIdTypeOffset))),
      columnIdType(typeOf(bytes::load<char>(block, startsAt(packed) + columnIdTypeOffset))),
      columnTypesAt(startsAt(packed) + columnTypesOffset) {}

SecondEditionLayout::SecondEditionLayout(std::span<const char> block) : SecondEditionHeader(block) {
    const auto aligned = [&](std::uint64_t offset) { return packed ? offset : (offset + 3) / 4 * 4; };
    rowIdsAt = aligned(std::uint64_t{columnTypesAt} + columns);
    columnIdsAt = aligned(rowIdsAt + std::uint64_t{rows} * elementCoding(rowIdType).size);
    valuesAt = aligned(columnIdsAt + std::uint64_t{columns} * elementCoding(columnIdType).size);
    for (const char type : bytes::part(block, columnTypesAt, columns))
        rowSize += elementCoding(typeOf(type)).size;
    end = valuesAt + rows * rowSize;
}

HwDatablock2Edition::HwDatablock2Edition() : HwDatablock(0, emptySize, true) {}

HwDatablock2Edition::~HwDatablock2Edition() = default;

std::span<const char> HwDatablock2Edition::block() const {
    return bytes::part(image(), 0, bytes::load<unsigned short>(image(), offsetof(HwSDatablockHeader, blockSize)));
}

// Lookups

unsigned short HwDatablock2Edition::getNumberOfRows() const { return static_cast<unsigned short>(header().rows); }

unsigned short HwDatablock2Edition::getNumberOfColumns() const { return static_cast<unsigned short>(header().columns); }

double HwDatablock2Edition::getUpdateIndex() const { return header().updateIndex * 0.01; }

ETypeId HwDatablock2Edition::getRowIdType() const { return header().rowIdType; }

ETypeId HwDatablock2Edition::getColumnIdType() const { return header().columnIdType; }

ETypeId HwDatablock2Edition::getColumnType(int column) const {
    if (column < 0)
        return ETypeNone;
    return typeOf(bytes::load<char>(block(), header().columnTypesAt + static_cast<std::size_t>(column)));
}

const char* HwDatablock2Edition::getTypeString(ETypeId type) const { return elementCoding(type).name; }

int HwDatablock2Edition::size_in_byte(ETypeId type) const { return static_cast<int>(elementCoding(type).size); }

int HwDatablock2Edition::getSizeOfRowIdType() const { return size_in_byte(getRowIdType()); }

int HwDatablock2Edition::getSizeOfColumnIdType() const { return size_in_byte(getColumnIdType()); }

bool HwDatablock2Edition::fits() const { return SecondEditionLayout(block()).end <= block().size(); }

// Pages

unsigned char* HwDatablock2Edition::printDataTypeToStream(std::ostream& os, unsigned char* value, ETypeId type) const {
    const detail::ElementCoding& element = elementCoding(type);
    if (!value || element.size == 0)
        return value;
    TextWriter out(os);
    printElement(out, {reinterpret_cast<const char*>(value), element.size}, element);
    return value + element.size;
}

void HwDatablock2Edition::printDebugPageHeading(std::ostream& os, bool summary) {
    TextWriter out(os);
    out.line();
    out.line(hashes);
    out.line("         D E B U G - I N F O R M A T I O N        ");
    out.line("         EEPROM / FLASH                           ");
    out.line(summary ? "         Block Summary                            "
                     : "         Block Details                            ");
    out.line(hashes);
    out.line();
}

// The configuration goes by value, as the interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)
void HwDatablock2Edition::printDebugPageSummary(std::ostream& os, HwSDataBlockCfg cfg) {
    TextWriter out(os);
    out.line("############# NEW CONCEPT #####################################");
    (out << "SECTOR:     " << getEepromSector()).endLine().line();
    out.line("Block Id:           Block Name:           Update Index:           Date:").line();
    out << getId() << summaryGap << toLatin1(cfg.blockName) << summaryGap;
    (updateIndexOf(out, getUpdateIndex()) << summaryGap).endLine().line();
}

void HwDatablock2Edition::printDebugPageDetail(std::ostream& os, HwSDataBlockCfg /*cfg*/) {
    const SecondEditionLayout layout(block());
    std::array<char, 8> hex;
    const char* const hexEnd = std::to_chars(hex.data(), hex.data() + hex.size(), getEepromAddress(), 16).ptr;

    TextWriter out(os);
    out.line("############# NEW CONCEPT  #####################################").line();
    (out << "# SECTOR:              " << getEepromSector()).endLine();
    (out << "# DATABLOCKADDRESS:  0x" << std::string_view(hex.data(), hexEnd)).endLine().line().line();
    out.stream().setf(std::ios_base::dec, std::ios_base::basefield);
    (out << "BLOCK ID:           USER_" << getId()).endLine();
    updateIndexOf(out << "UPDATE INDEX:       ", getUpdateIndex()).endLine();
    (out << "ROWS:               " << layout.rows).endLine();
    (out << "COLUMNS:            " << layout.columns).endLine();
    (out << "ROW_ID_TYPE:        " << getTypeString(layout.rowIdType)).endLine();
    (out << "COLUMN_ID_TYPE:     " << getTypeString(layout.columnIdType)).endLine();
    out.line(rule).line();
    printColumns(out, layout);
    out.line(rule).line();
    printRows(out, layout);
    out.endLine();
}

// NOLINTEND(performance-unnecessary-value-param)

void HwDatablock2Edition::printColumns(TextWriter& out, const SecondEditionLayout& layout) {
    const std::span<const char> types = bytes::part(block(), layout.columnTypesAt, layout.columns);
    for (std::size_t i = 0; i < types.size(); ++i)
        out << (i == 0 ? "# COL         " : columnGap) << i + 1;
    out.endLine();

    if (layout.columnIdType != ETypeNone) {
        const std::ios_base::fmtflags flags = out.stream().flags();
        const detail::ElementCoding& type = elementCoding(layout.columnIdType);
        out << "DESC:         ";
        for (std::size_t i = 0; i < types.size(); ++i)
            printElement(out, valueAt(block(), layout.columnIdsAt + i * type.size, type.size), type);
        out.endLine().stream().flags(flags);
    }

    columnTypes_.clear();
    out << "TYPE: ";
    for (std::size_t i = 0; i < types.size(); ++i) {
        columnTypes_.insert(columnTypes_.cend(), static_cast<int>(i), typeOf(types[i]));
        out << columnGap << getTypeString(typeOf(types[i]));
    }
    out.endLine();
}

void HwDatablock2Edition::printRows(TextWriter& out, const SecondEditionLayout& layout) const {
    const std::span<const char> bytes = block();
    // Without the columns that print nothing: there can be 65000 of them in each of 65535 rows.
    std::vector<const detail::ElementCoding*> cells;
    for (const ETypeId code : columnTypes_) {
        if (elementCoding(code).size > 0)
            cells.push_back(&elementCoding(code));
    }
    const detail::ElementCoding& rowIdType = elementCoding(layout.rowIdType);

    for (unsigned int row = 0; row < layout.rows; ++row) {
        std::uint64_t offset = layout.valuesAt + row * layout.rowSize;
        const auto rowId = valueAt(bytes, layout.rowIdsAt + std::uint64_t{row} * rowIdType.size, rowIdType.size);
        // A row without identifier and values is still a row where the table ends inside the block.
        const bool inside = !rowId.empty() || (cells.empty() ? rowIdType.size == 0 && offset <= bytes.size()
                                                             : !valueAt(bytes, offset, cells.front()->size).empty());
        if (!inside)
            break;
        out.endLine() << ": ";
        printElement(out, rowId, rowIdType);
        for (const detail::ElementCoding* const type : cells) {
            const auto value = valueAt(bytes, offset, type->size);
            if (value.empty()) // nor does any cell behind it lie inside
                break;
            printElement(out, value, *type);
            offset += type->size;
        }
    }
}

std::ostream& HwDatablock2Edition::printToStream2Edition(std::ostream& os, HwSDataBlockCfg cfg) {
    printDebugPageDetail(os, std::move(cfg));
    return os;
}

} // namespace Travik
