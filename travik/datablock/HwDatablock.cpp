#include <travik/datablock/Bytes.h>
#include <travik/datablock/Checksum.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/datablock/ShortImages.h>
#include <travik/platform/Debug.h>

#include <cstddef>
#include <limits>
#include <utility>

namespace Travik {

namespace detail {

namespace {

thread_local unsigned int longestNewImage = std::numeric_limits<unsigned int>::max();

} // namespace

ShortImages::ShortImages(unsigned int longest) noexcept : outer_(std::exchange(longestNewImage, longest)) {}

ShortImages::~ShortImages() { longestNewImage = outer_; }

unsigned int ShortImages::lengthOf(unsigned int size) noexcept { return std::min(size, longestNewImage); }

} // namespace detail

namespace {

constexpr std::size_t idOffset = offsetof(HwSDatablockHeader, id);
constexpr std::size_t sizeOffset = offsetof(HwSDatablockHeader, blockSize);
constexpr std::size_t checksumOffset = offsetof(HwSDatablockHeader, checksum);
constexpr std::size_t alignmentOffset = offsetof(HwSDatablockHeader, alignment);
constexpr std::size_t crcOffset = sizeof(HwSDatablockHeader);
constexpr unsigned short endBlockId = 0xFFFF;
constexpr unsigned short endBlockSize = 4;

void complainOfOddSize() {
    Debug::debugMessageBox(QStringLiteral("Compute datablock checksum"),
                           QStringLiteral("Block size not an even number !"), true, 2, 17, 0, 0);
}

constexpr unsigned short complement(unsigned int sum) { return static_cast<unsigned short>(0x10000U - sum); }

} // namespace

HwDatablock::HwDatablock(bool stopConversionOnError)
    : HwDatablock(0, sizeof(HwSDatablockHeader), stopConversionOnError) {}

HwDatablock::HwDatablock(unsigned short id, unsigned short size, bool stopConversionOnError)
    : stopConversionOnError_(stopConversionOnError), data_(detail::ShortImages::lengthOf(size)) {
    bytes::store(image(), idOffset, id);
    bytes::store(image(), sizeOffset, size);
}

HwDatablock::~HwDatablock() = default;

// Checksums

std::size_t HwDatablock::summedBytes() {
    // As a signed number: of 32768 and more no word is summed, which is how 60 KB blocks pass.
    const int words = static_cast<short>(getBlockSize()) / 2;
    if (words <= 0)
        return 0;
    return std::min<std::size_t>(std::size_t{2} * static_cast<unsigned int>(words), data_.size());
}

unsigned short HwDatablock::computeChecksum() {
    const HwEDataFormatTyp format = getDataFormatTyp();
    const unsigned short id = getId();
    const std::size_t size = summedBytes();
    swapDataTo(HwDataFormatFirmware, id, this);
    if (getBlockSize() % 2 != 0)
        complainOfOddSize();
    setChecksum(0);
    const unsigned short checksum = complement(sum16(data_.data(), size));
    swapDataTo(format, id, this);
    return checksum;
}

unsigned short HwDatablock::computeChecksum(unsigned short* record, unsigned short size) {
    if (!record)
        return 0;
    if (size % 2 != 0)
        complainOfOddSize();
    // Taken out of the sum instead of out of the record: the caller's memory may be read-only.
    const std::span<const char> bytes(reinterpret_cast<const char*>(record), size & ~1U);
    return complement(sum16(record, size) - unsigned{bytes::load<unsigned short>(bytes, checksumOffset)});
}

bool HwDatablock::verifyChecksum() {
    const HwEDataFormatTyp format = getDataFormatTyp();
    const unsigned short id = getId();
    const bool sized = getBlockSize() != 0;
    const std::size_t size = summedBytes();
    swapDataTo(HwDataFormatFirmware, id, this);
    const bool holds = sized && sum16(data_.data(), size) == 0;
    if (!holds)
        reportWrongChecksum();
    swapDataTo(format, id, this);
    return holds;
}

bool HwDatablock::verifyChecksum(unsigned short* record, unsigned short size, bool /*flag*/) {
    const bool holds = record ? sum16(record, size) == 0 : size < sizeof *record;
    if (!holds)
        reportWrongChecksum();
    return holds;
}

unsigned int HwDatablock::getChecksum32() { return bytes::load<unsigned int>(image(), crcOffset); }

unsigned int HwDatablock::computeChecksum32() {
    return blockCrc32(data_.data(), std::min<std::size_t>(getBlockSize(), data_.size()));
}

unsigned int HwDatablock::computeChecksum32(unsigned char* bytes, unsigned int size) {
    return bytes ? blockCrc32(bytes, size) : 0;
}

bool HwDatablock::verifyChecksum32() {
    const bool holds = getChecksum32() == computeChecksum32();
    if (!holds)
        reportWrongChecksum();
    return holds;
}

bool HwDatablock::verifyChecksum32(unsigned char* bytes, unsigned int size) {
    const bool holds = bytes && getChecksum32() == computeChecksum32(bytes, size);
    if (!holds)
        reportWrongChecksum();
    return holds;
}

void HwDatablock::reportWrongChecksum() {
    if (chkdbg(HwProtocolTypeEeprom, HwProtocolLevelWarning))
        dbgout(QString::asprintf("verifyChecksum(): Wrong checksum! at EepromBlockId %u", unsigned{getId()}));
}

void HwDatablock::refreshChecksum() { setChecksum(computeChecksum()); }

// Header

unsigned short HwDatablock::getId() { return bytes::load<unsigned short>(image(), idOffset); }

unsigned short HwDatablock::getBlockSize() {
    if (data_.size() < sizeOffset + sizeof(unsigned short))
        return 0;
    return getId() == endBlockId ? endBlockSize : bytes::load<unsigned short>(image(), sizeOffset);
}

unsigned short HwDatablock::getChecksum() { return bytes::load<unsigned short>(image(), checksumOffset); }

unsigned short HwDatablock::getAlignment() { return bytes::load<unsigned short>(image(), alignmentOffset); }

void HwDatablock::setBlockId(unsigned short id) {
    SwapIntel2Ppc(id);
    if (bytes::store(image(), idOffset, id))
        refreshChecksum();
}

void HwDatablock::setBlockSize(unsigned short size) {
    SwapIntel2Ppc(size);
    if (bytes::store(image(), sizeOffset, size))
        refreshChecksum();
}

void HwDatablock::setAlignment(unsigned short alignment) {
    SwapIntel2Ppc(alignment);
    if (bytes::store(image(), alignmentOffset, alignment))
        refreshChecksum();
}

void HwDatablock::setChecksum(unsigned short checksum) {
    SwapIntel2Ppc(checksum);
    bytes::store(image(), checksumOffset, checksum);
}

void HwDatablock::initialise(unsigned short id, unsigned short size) {
    data_ = QMemArray<char>(detail::ShortImages::lengthOf(size));
    bytes::store(image(), idOffset, id);
    bytes::store(image(), sizeOffset, size);
}

void HwDatablock::storeHeader(unsigned short id, unsigned short size, unsigned short alignment) {
    bytes::store(image(), idOffset, id);
    bytes::store(image(), sizeOffset, size);
    bytes::store(image(), alignmentOffset, alignment);
}

// Object fields

unsigned int HwDatablock::getEepromAddress() { return eepromAddress_; }

unsigned int HwDatablock::getEepromSector() { return eepromSector_; }

HwEDataFormatTyp HwDatablock::getDataFormatTyp() { return dataFormatTyp_; }

bool HwDatablock::getStopConversionOnError() { return stopConversionOnError_; }

bool HwDatablock::setEepromAddress(unsigned int address) {
    eepromAddress_ = address;
    return true;
}

bool HwDatablock::setEepromSector(unsigned int sector) {
    eepromSector_ = sector;
    return true;
}

bool HwDatablock::setDataFormatTyp(HwEDataFormatTyp format) {
    dataFormatTyp_ = format;
    return true;
}

// Buffer

char* HwDatablock::getData() { return data_.data(); }

QMemArray<char> HwDatablock::getByteArrayData() { return data_; }

void HwDatablock::resizeData(unsigned int size) { data_.resize(size); }

void HwDatablock::replaceDataInList(HwDatablock* other) {
    if (other)
        data_ = other->getByteArrayData();
}

bool HwDatablock::setData(QMemArray<char> data) { // NOLINT(performance-unnecessary-value-param): shares, does not copy
    data_ = std::move(data);
    return verifyChecksum();
}

bool HwDatablock::setData(const unsigned char* bytes, unsigned int size) {
    if (!bytes)
        return false;
    QMemArray<char> copy;
    copy.duplicate(reinterpret_cast<const char*>(bytes), size);
    data_ = copy;
    return verifyChecksum();
}

bool HwDatablock::setData(HwDatablock* source) {
    return setDataWithoutChecksumCheck(source) && source->verifyChecksum();
}

bool HwDatablock::setDataWithoutChecksumCheck(HwDatablock* source) {
    if (!source)
        return false;
    data_ = source->getByteArrayData();
    dataFormatTyp_ = source->getDataFormatTyp();
    return true;
}

bool HwDatablock::setHwDatablockFirmwareConform(HwDatablock* source) {
    if (!source)
        return false;
    if (source->getDataFormatTyp() != HwDataFormatFirmware) {
        setDataWithoutChecksumCheck(source);
        swapDataTo(HwDataFormatFirmware, source->getId(), source);
        source->setDataFormatTyp(HwDataFormatFirmware);
    }
    return setData(source);
}

std::ostream& HwDatablock::printToStream(std::ostream& os) { return os; }

} // namespace Travik
