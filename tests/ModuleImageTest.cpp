#include "Support.h"

namespace ModuleImageTest {

using namespace Travik;
using namespace Support;

const std::string endBlock("\xFF\xFF\0\0", 4);

std::string ident() {
    HwDatablockIdent block;
    block.setSerialNumber(5);
    return bytesOf(block);
}

TEST(ModuleImage, BlocksAndClasses) {
    const std::string bytes =
        ident() + sealed(image({15501, 8, 0, 0})) + sealed(image({4711, 10, 0, 0, 99})) + endBlock + "rest";
    const ModuleImage module(bytes);
    ASSERT_EQ(module.blocks().size(), 4U);
    EXPECT_EQ(module.end(), 44U + 8 + 10 + 4);
    const ImageBlock& unknown = module.blocks()[2];
    EXPECT_EQ(unknown.entry, nullptr);
    EXPECT_EQ(unknown.offset, 52U);
    EXPECT_TRUE(unknown.checksumHolds);
    EXPECT_FALSE(unknown.crcHolds);
    const auto made = makeBlock(module.blocks()[1]);
    EXPECT_NE(dynamic_cast<HwWenDatablockAnalogOutputCalibration*>(made.get()), nullptr) << "not registered, but known";
    EXPECT_EQ(made->getEepromAddress(), 44U);
    EXPECT_NE(makeBlock(unknown), nullptr);
    EXPECT_EQ(makeBlock(4711), nullptr);

    std::vector<std::unique_ptr<HwDatablock>> owned;
    std::vector<HwDatablock*> blocks;
    for (const ImageBlock& block : module.blocks()) {
        owned.push_back(makeBlock(block));
        blocks.push_back(owned.back().get());
    }
    // What is found in the blocks and around them is all there is, as long as no identifier repeats.
    std::vector<ImageFinding> parts = module.imageFindings();
    for (const ImageBlock& block : module.blocks())
        std::ranges::copy(module.findings(block), std::back_inserter(parts));
    EXPECT_EQ(parts.size(), 2U) << "an unknown identifier, and bytes behind the end block";
    EXPECT_THAT(parts, testing::UnorderedElementsAreArray(module.findings()));

    const std::vector<char> composed = composeImage(blocks);
    EXPECT_EQ(std::string(composed.begin(), composed.end()), bytes.substr(0, module.end()));
}

// Every pair of flipped bits in a small image: whatever comes of it is walked and printed within the image.
TEST(ModuleImage, FlippedBits) {
    const std::string bytes =
        sealed(image({15501, 8, 0, 0})) + sealed(image({12311, 20, 0, 0, 1, 0, 1, 0, 7, 0})) + endBlock;
    HwDatablockOldStyleInterpreter interpreter;
    const std::size_t bits = bytes.size() * 8;
    for (std::size_t first = 0; first < bits; ++first) {
        for (std::size_t second = first; second < bits; second += 3) {
            std::vector<char> flipped(bytes.begin(), bytes.end());
            for (const std::size_t bit : {first, second})
                flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
            const ModuleImage module(flipped);
            std::size_t next = 0;
            for (const ImageBlock& block : module.blocks()) {
                ASSERT_EQ(block.offset, next);
                next = block.offset + block.bytes.size();
                ASSERT_LE(next, flipped.size());
                if (second % 24 == 0) {
                    std::ostringstream os;
                    interpreter.printHwDatablockOldStyleInfo(makeBlock(block).get(), os);
                }
            }
        }
    }
}

} // namespace ModuleImageTest
