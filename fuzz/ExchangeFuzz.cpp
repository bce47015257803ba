// Reads any text as the exchange text of a block, which the first byte selects, then writes what was read.
#include <travik/rfboard/DunTables.h>
#include <travik/rfboard/KelTables.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
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

template <class Block>
void exchange(const std::string& text) {
    Block block;
    read(text, block);
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
