#include <travik/datablock/Bytes.h>
#include <travik/datablock/Checksum.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/service/Seal.h>
#include <travik/tables/SecondEdition.h>

#include <cstddef>

namespace Travik {

namespace {

constexpr std::size_t checksumOffset = offsetof(HwSDatablockHeader, checksum);
constexpr std::size_t crcOffset = sizeof(HwSDatablockHeader);
constexpr std::size_t crcEnd = crcOffset + sizeof(std::uint32_t);
constexpr unsigned short endBlockId = 0xFFFF;

// The upper half of a CRC-32 takes each value for exactly one pair of last bytes.
void keepUpperHalf(std::span<char> summed) {
    const std::size_t lastAt = summed.size() - sizeof(std::uint16_t);
    const auto wanted = bytes::load<std::uint16_t>(summed, crcOffset + 2);
    const std::uint32_t before = crc32(summed.data() + crcEnd, lastAt - crcEnd, crc32(summed.data(), checksumOffset));
    for (unsigned int last = 0; last <= 0xFFFF; ++last) {
        const auto word = static_cast<std::uint16_t>(last);
        if (crc32(&word, sizeof word, before) >> 16U == wanted) {
            bytes::store(summed, lastAt, word);
            return;
        }
    }
}

} // namespace

void sealBlock(std::span<char> block, Crc32 crc32) {
    const auto size = bytes::load<unsigned short>(block, offsetof(HwSDatablockHeader, blockSize));
    if (block.size() < sizeof(HwSDatablockHeader) || bytes::load<unsigned short>(block, 0) == endBlockId)
        return;
    const std::span<char> image = block.first(std::min<std::size_t>(size, block.size()));
    if (crc32 != Crc32::None && image.size() >= crcEnd) {
        if (crc32 == Crc32::SecondEdition) {
            const SecondEditionLayout layout(image);
            if (layout.packed && layout.end + sizeof(std::uint16_t) <= image.size())
                keepUpperHalf(image);
        }
        bytes::store(image, crcOffset, blockCrc32(image.data(), image.size()));
    }
    bytes::store(block, checksumOffset, std::uint16_t{0});
    const int words = static_cast<short>(size) / 2; // as a signed number: of the largest blocks none is summed
    const std::size_t summed = words > 0 ? std::min<std::size_t>(static_cast<std::size_t>(words) * 2, block.size()) : 0;
    bytes::store(block, checksumOffset, static_cast<std::uint16_t>(0x10000U - sum16(block.data(), summed)));
}

void sealAgain(std::span<char> bytes, const ImageBlock& before) {
    constexpr std::size_t smallestUnread = 0x8000; // from here on no class sums
    const auto word = bytes::load<std::uint16_t>(before.bytes, checksumOffset);
    sealBlock(bytes, before.isSecondEdition ? Crc32::SecondEdition : before.crcHolds ? Crc32::Carried : Crc32::None);
    if (before.isEnd() || bytes.size() < smallestUnread || word == 0)
        return;
    const auto sum = static_cast<std::uint16_t>(0x10000U - sum16(bytes.data(), bytes.size()));
    bytes::store(bytes, checksumOffset, before.checksumChecked ? sum : word);
}

} // namespace Travik
