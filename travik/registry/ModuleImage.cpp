#include <travik/datablock/Bytes.h>
#include <travik/datablock/Checksum.h>
#include <travik/registry/ModuleImage.h>
#include <travik/tables/ElementKernels.h>
#include <travik/tables/SecondEdition.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Travik {

namespace {

constexpr unsigned short endBlockSize = 4;
constexpr std::size_t headerSize = sizeof(HwSDatablockHeader);
constexpr std::size_t sizeOffset = offsetof(HwSDatablockHeader, blockSize);
constexpr std::size_t crcEnd = headerSize + sizeof(std::uint32_t);
/// From here on the checksum passes unread.
constexpr unsigned short smallestUnread = 0x8000;

bool beginsErased(std::span<const char> bytes) {
    return std::ranges::all_of(bytes.first(std::min<std::size_t>(endBlockSize, bytes.size())),
                               [](char byte) { return byte == '\xFF'; });
}

unsigned short sumOf(std::span<const char> bytes) { return sum16(bytes.data(), bytes.size()); }

/// The sum that a block would have if its size word were its size.
unsigned short sumAsSized(std::span<const char> bytes) {
    return static_cast<unsigned short>(sumOf(bytes) - bytes::load<unsigned short>(bytes, sizeOffset) + bytes.size());
}

/// Whether the CRC-32 matches, or would if the size word were the size.
bool crcMatches(std::span<const char> bytes) {
    if (bytes.size() < crcEnd)
        return false;
    std::array<char, sizeOffset + sizeof(unsigned short)> head;
    std::ranges::copy(bytes.first(head.size()), head.begin());
    bytes::store(head, sizeOffset, static_cast<unsigned short>(bytes.size()));
    const std::uint32_t crc = crc32(head.data(), head.size());
    return crc32(bytes.data() + crcEnd, bytes.size() - crcEnd, crc) == bytes::load<std::uint32_t>(bytes, headerSize);
}

/// The bytes of a second-edition table that has rows and columns and only known types, without what may follow the
/// values up to a whole word and, in the packed layout, two bytes more; 0 for anything else.
std::size_t tableSize(std::span<const char> bytes) {
    if (bytes.size() <= crcEnd)
        return 0;
    const SecondEditionHeader header(bytes);
    const auto isKnown = [](ETypeId type) { return detail::elementCoding(type).code == type; };
    if (header.rows == 0 || header.columns == 0 || !isKnown(header.rowIdType) || !isKnown(header.columnIdType))
        return 0;
    const std::span<const char> types = bytes::part(bytes, header.columnTypesAt, header.columns);
    if (types.size() < header.columns || !std::ranges::all_of(types, [&](char type) {
            return isKnown(static_cast<ETypeId>(static_cast<unsigned char>(type)));
        }))
        return 0;
    const SecondEditionLayout layout(bytes);
    return layout.rowSize > 0 && layout.end <= bytes.size() ? static_cast<std::size_t>(layout.end) : 0;
}

constexpr std::size_t mostBehindValues = 5;

} // namespace

ModuleImage::ModuleImage(std::span<const char> bytes) : bytes_(bytes) {
    if (beginsErased(bytes_))
        return;
    while (end_ < bytes_.size()) {
        // Faster than by itself: moving thousands of small blocks costs as much as looking at them.
        if (blocks_.size() == blocks_.capacity())
            blocks_.reserve(4 * blocks_.size() + 16);
        const ImageBlock& block = blocks_.emplace_back(blockAt(end_));
        end_ = block.offset + block.bytes.size();
        if (block.isEnd() || !block.endsKnown)
            break;
    }
}

ImageBlock ModuleImage::blockAt(std::size_t offset) const {
    ImageBlock block = asWritten(offset);
    if (block.isEnd() || block.findings.has(Finding::TruncatedHeader))
        return block;
    if (block.entry)
        believeClass(block);
    else
        believeTable(block);

    const bool isSized = block.sizeWord == block.bytes.size();
    if (block.endsKnown &&
        (isSized ? !block.checksumHolds : sumAsSized(block.bytes) != 0 && block.bytes.size() < smallestUnread))
        block.findings.add(Finding::WrongChecksum);
    if (block.isSecondEdition && isSized && !block.crcHolds)
        block.findings.add(Finding::WrongCrc);
    if (!block.entry && !block.isSecondEdition && block.endsKnown)
        block.findings.add(Finding::UnknownIdentifier);
    if (block.checksumHolds && !block.checksumChecked &&
        bytes::load<unsigned short>(block.bytes, offsetof(HwSDatablockHeader, checksum)) != 0)
        block.findings.add(Finding::StrayChecksum);
    return block;
}

/// The block by its own words.
ImageBlock ModuleImage::asWritten(std::size_t offset) const {
    const std::span<const char> rest = bytes_.subspan(offset);
    ImageBlock block;
    block.offset = offset;
    block.bytes = rest;
    block.id = bytes::load<unsigned short>(rest, 0);
    if (rest.size() >= sizeof block.id)
        block.entry = findEntry(block.id);
    const bool isEnd = block.isEnd();
    block.sizeWord = isEnd ? endBlockSize : bytes::load<unsigned short>(rest, sizeOffset);

    if (rest.size() < (isEnd ? endBlockSize : headerSize))
        block.findings.add(Finding::TruncatedHeader);
    else if (block.sizeWord == 0)
        block.findings.add(Finding::ZeroSize);
    else if (block.sizeWord < headerSize && !isEnd)
        block.findings.add(Finding::SizeBelowHeader);
    else if (block.sizeWord > rest.size())
        block.findings.add(Finding::SizePastEnd);
    block.endsKnown = block.findings.empty();
    if (isEnd) {
        block.bytes = rest.first(std::min<std::size_t>(endBlockSize, rest.size()));
        block.checksumHolds = true;
    } else if (block.endsKnown) {
        if (block.sizeWord % 2 != 0)
            block.findings.add(Finding::OddSize);
        resize(block, block.sizeWord);
    } else if (block.sizeWord < headerSize) {
        block.bytes = rest.first(std::min(headerSize, rest.size()));
    }
    return block;
}

/// Gives the block its extent, and sees to its sums.
void ModuleImage::resize(ImageBlock& block, std::size_t size) const {
    block.bytes = bytes_.subspan(block.offset, size);
    block.endsKnown = true;
    const bool isSized = size == block.sizeWord;
    const bool isRight = isSized && sumOf(block.bytes) == 0;
    const bool isUnread = isSized && size >= smallestUnread;
    block.checksumHolds = isRight || isUnread;
    block.checksumChecked = isRight || !isUnread;
    block.crcHolds = isSized && crcMatches(block.bytes);
}

/// Holds the size word against the class, and goes by the class where that is the better guess.
void ModuleImage::believeClass(ImageBlock& block) const {
    if (block.entry->comesIn(block.sizeWord))
        return;
    block.findings.remove(Finding::OddSize);
    if (block.findings.empty())
        block.findings.add(Finding::WrongSize);
    if (block.checksumHolds && block.checksumChecked)
        return; // it vouches for the size word, too

    const std::size_t rest = bytes_.size() - block.offset;
    const auto isPossible = [&](std::size_t size) { return size != 0 && size <= rest; };
    const auto fits = [&](std::size_t size) {
        return isPossible(size) && sumAsSized(bytes_.subspan(block.offset, size)) == 0;
    };
    const auto leadsOn = [&](std::size_t size) { return isPossible(size) && makesSense(block.offset + size); };
    const auto& sizes = block.entry->sizes;
    auto size = std::ranges::find_if(sizes, fits);
    if (size == sizes.end())
        size = std::ranges::find_if(sizes, leadsOn);
    if (size != sizes.end())
        resize(block, *size);
    else if (!block.endsKnown) // the record may be there even so
        block.bytes = bytes_.subspan(block.offset, std::min<std::size_t>(sizes.front(), rest));
}

/// Whether the block is a second-edition table, also by its shape alone, or with another size than it says.
void ModuleImage::believeTable(ImageBlock& block) const {
    if (block.crcHolds && SecondEditionLayout(block.bytes).end <= block.bytes.size()) {
        block.isSecondEdition = true;
        return;
    }
    if (block.endsKnown) {
        const std::size_t own = tableSize(block.bytes);
        block.isSecondEdition = own != 0 && block.bytes.size() - own <= mostBehindValues;
        if (block.isSecondEdition || (block.checksumHolds && block.checksumChecked))
            return;
    }
    const std::span<const char> rest = bytes_.subspan(block.offset);
    const std::span<const char> most = rest.first(std::min<std::size_t>(rest.size(), 0xFFFF));
    const std::size_t least = tableSize(most);
    if (least == 0)
        return;
    for (std::size_t size = least + least % 2; size <= std::min(least + mostBehindValues, most.size()); size += 2) {
        if (!crcMatches(most.first(size)))
            continue;
        block.isSecondEdition = true;
        block.findings.remove(Finding::OddSize);
        if (block.findings.empty())
            block.findings.add(Finding::WrongSize);
        resize(block, size);
        return;
    }
}

/// Whether a block stands there, going by its header and sums, or the data end there.
bool ModuleImage::makesSense(std::size_t offset) const {
    if (offset == bytes_.size())
        return true;
    const ImageBlock block = asWritten(offset);
    if (!block.endsKnown || block.isEnd())
        return block.endsKnown;
    return block.entry ? block.entry->comesIn(block.sizeWord)
                       : block.crcHolds || (block.checksumHolds && block.checksumChecked);
}

std::vector<ImageFinding> checkImage(std::span<const char> bytes) { return ModuleImage(bytes).problems(); }

std::unique_ptr<HwDatablock> makeBlock(const ImageBlock& block) {
    std::unique_ptr<HwDatablock> made;
    if (block.isSecondEdition)
        made = std::make_unique<HwDatablock2Edition>();
    else if (block.entry)
        made = block.entry->create(*block.entry, block.id);
    else
        made = std::make_unique<HwDatablock>(false);
    made->setData(reinterpret_cast<const unsigned char*>(block.bytes.data()),
                  static_cast<unsigned int>(block.bytes.size()));
    made->setEepromAddress(static_cast<unsigned int>(block.offset));
    return made;
}

std::unique_ptr<HwDatablock> makeBlock(int id) {
    const CatalogueEntry* const entry = findEntry(id);
    return entry ? entry->create(*entry, id) : nullptr;
}

std::vector<char> composeImage(std::span<HwDatablock* const> blocks) {
    std::vector<char> bytes;
    for (HwDatablock* const block : blocks) {
        if (!block)
            continue;
        const QMemArray<char> image = block->getByteArrayData();
        bytes.insert(bytes.end(), image.data(), image.data() + image.size());
    }
    return bytes;
}

} // namespace Travik
