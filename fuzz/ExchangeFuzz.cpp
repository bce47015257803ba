// Reads any text as the exchange text of a block, which the first byte selects, then writes what was read; tolerantly,
// then strictly into the block that came of it.
#include <travik/rfboard/DunTables.h>
#include <travik/rfboard/KelTables.h>
#include <travik/text/StrictExchange.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <span>
#include <sstream>
#include <string>

using namespace Travik;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

template <class Block>
void read(const std::string& text, Block& block) {
    std::istringstream is(text);
    block.searchascii(is, block);
    require(is.eof() && block.verifyChecksum() && block.getByteArrayData().size() == Block::shape.size());
    require(block.getId() == Block::table.id || (block.getId() == 0 && block.getNumberOfRows() == 0));
}

/// What is accepted is written so that it changes nothing any more, and so is what was in the block.
void readStrictly(const std::string& text, const ExchangeFormat& format, std::span<const char> block) {
    const ExchangeReading reading = readExchangeStrictly(text, format, block);
    require(reading.findings.size() <= exchangeFindingsLimit && reading.findings.size() <= reading.findingCount);
    const auto isUnchanged = [&](std::span<const char> image) {
        std::ostringstream written;
        writeExchangeText(written, format, image);
        const ExchangeReading again = readExchangeStrictly(written.view(), format, image);
        return again.findingCount == 0 && again.changes.empty() && std::ranges::equal(again.image, image);
    };
    require(isUnchanged(block));
    require(reading.findingCount > 0 || isUnchanged(reading.image));
}

template <class Block>
void exchange(const std::string& text) {
    Block block;
    read(text, block);
    const auto image = block.getByteArrayData();
    readStrictly(text, Block::exchange, {image.data(), image.size()});
    std::ostringstream first;
    block.conv2ascii(first, block);
    if (block.getNumberOfRows() > block.getMaxRows() || block.getNumberOfColumns() > block.getMaxColumns())
        return;

    // What was written is read as it was written; a scaled number may come back as its neighbour.
    Block again;
    read(first.str(), again);
    std::ostringstream second;
    again.conv2ascii(second, again);
    if (Block::table.scale == 1.0)
        require(first.str() == second.str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    std::cout.rdbuf(nullptr); // the reader's messages
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    constexpr void (*exchanges[])(const std::string&) = {
        exchange<HwDatablockKelRfboAttRegData>,   exchange<HwDatablockDunRfboAttCalFreq>,
        exchange<HwDatablockDunRfboTempCompFreq>, exchange<HwDatablockDunRfboTempCompData>,
        exchange<HwDatablockDunRfboAttRegData>,   exchange<HwDatablockDunRfboAttRegAttenuation>,
    };
    exchanges[data[0] % std::size(exchanges)](text);
    return 0;
}
