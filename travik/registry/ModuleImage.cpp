#include <travik/datablock/Bytes.h>
#include <travik/registry/ModuleImage.h>
#include <travik/tables/SecondEdition.h>

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace Travik {

namespace {

constexpr unsigned short endBlockId = 0xFFFF;
constexpr unsigned short endBlockSize = 4;
constexpr std::size_t headerSize = sizeof(HwSDatablockHeader);

bool cannotBeTrue(ImageFault fault) { return fault < ImageFault::OddSize; }

std::unique_ptr<HwDatablock> makeBlock(const CatalogueEntry* entry, int id) {
    return entry ? entry->create(*entry, id) : std::make_unique<HwDatablock>(false);
}

void setBytes(HwDatablock& block, std::span<const char> bytes) {
    block.setData(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
}

} // namespace

ModuleImage::ModuleImage(std::span<const char> bytes) : bytes_(bytes) {
    while (end_ < bytes_.size()) {
        ImageBlock& block = blocks_.emplace_back(blockAt(end_));
        end_ = block.offset + block.bytes.size();
        if (block.id == endBlockId)
            break;
        if (!block.faults.empty() && cannotBeTrue(block.faults.front())) {
            const auto next = soundBlockBehind(block);
            if (!next)
                break;
            block.bytes = bytes_.subspan(block.offset, *next - block.offset);
            end_ = *next;
        }
    }
}

ImageBlock ModuleImage::blockAt(std::size_t offset) const {
    const std::span<const char> rest = bytes_.subspan(offset);
    ImageBlock block;
    block.offset = offset;
    block.id = bytes::load<unsigned short>(rest, 0);
    block.entry = rest.size() >= sizeof block.id ? findEntry(block.id) : nullptr;
    const bool isEnd = rest.size() >= sizeof block.id && block.id == endBlockId;
    block.sizeWord = isEnd ? endBlockSize : bytes::load<unsigned short>(rest, offsetof(HwSDatablockHeader, blockSize));
    block.bytes = rest.first(std::min<std::size_t>(block.sizeWord, rest.size()));

    const auto fault = [&](ImageFault found) { block.faults.push_back(found); };
    if (rest.size() < (isEnd ? endBlockSize : headerSize)) {
        fault(ImageFault::TruncatedHeader);
        block.bytes = rest;
    } else if (block.sizeWord == 0) {
        fault(ImageFault::ZeroSize);
        block.bytes = rest.first(headerSize);
    } else if (block.sizeWord < headerSize && !isEnd) {
        fault(ImageFault::SizeBelowHeader);
        block.bytes = rest.first(headerSize);
    } else if (block.sizeWord > rest.size()) {
        fault(ImageFault::SizePastEnd);
    }
    if (block.sizeWord % 2 != 0 && block.faults.empty())
        fault(ImageFault::OddSize);

    // A fresh base block verifies as every block but the end block does.
    HwDatablock plain(false);
    setBytes(plain, block.bytes);
    block.checksumHolds = isEnd || plain.verifyChecksum();
    block.crcHolds = !isEnd && block.bytes.size() >= headerSize + 4 && plain.verifyChecksum32();
    block.isSecondEdition =
        block.crcHolds && !block.entry && SecondEditionLayout(block.bytes).end <= block.bytes.size();
    if (!block.checksumHolds && (block.faults.empty() || !cannotBeTrue(block.faults.front())))
        fault(ImageFault::WrongChecksum);
    return block;
}

std::optional<std::size_t> ModuleImage::soundBlockBehind(const ImageBlock& block) const {
    if (!block.entry)
        return std::nullopt;
    const std::size_t recordSize = makeBlock(block.entry, block.id)->getBlockSize();
    const std::size_t next = block.offset + recordSize;
    if (recordSize == block.sizeWord || next >= bytes_.size())
        return std::nullopt;
    const ImageBlock candidate = blockAt(next);
    // From 32768 bytes on every checksum passes, which says nothing of an identifier that nobody knows.
    const bool known = candidate.entry || candidate.isSecondEdition || candidate.sizeWord < 0x8000;
    return known && candidate.faults.empty() ? std::optional(next) : std::nullopt;
}

std::string_view faultName(ImageFault fault) {
    switch (fault) {
    case ImageFault::TruncatedHeader:
        return "truncated header";
    case ImageFault::ZeroSize:
        return "size word 0";
    case ImageFault::SizeBelowHeader:
        return "size word below the header";
    case ImageFault::SizePastEnd:
        return "size word past the end of the data";
    case ImageFault::OddSize:
        return "odd size word";
    case ImageFault::WrongChecksum:
        return "wrong checksum";
    }
    return "";
}

std::vector<ImageProblem> ModuleImage::problems() const {
    std::vector<ImageProblem> all;
    for (const ImageBlock& block : blocks_) {
        std::vector<ImageProblem> some = problems(block);
        all.insert(all.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
    }
    return all;
}

std::vector<ImageProblem> ModuleImage::problems(const ImageBlock& block) const {
    std::vector<ImageProblem> problems;
    for (const ImageFault fault : block.faults) {
        std::string text(faultName(fault));
        if (fault == ImageFault::SizeBelowHeader || fault == ImageFault::SizePastEnd || fault == ImageFault::OddSize)
            text += " (" + std::to_string(block.sizeWord) + ")";
        const bool isLast = !blocks_.empty() && block.offset == blocks_.back().offset;
        if (cannotBeTrue(fault) && isLast && block.id != endBlockId)
            text += ", what follows cannot be found";
        problems.push_back({block.offset, block.id, fault, std::move(text)});
    }
    return problems;
}

std::vector<ImageProblem> checkImage(std::span<const char> bytes) { return ModuleImage(bytes).problems(); }

std::unique_ptr<HwDatablock> makeBlock(const ImageBlock& block) {
    std::unique_ptr<HwDatablock> made =
        block.isSecondEdition ? std::make_unique<HwDatablock2Edition>() : makeBlock(block.entry, block.id);
    setBytes(*made, block.bytes);
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
