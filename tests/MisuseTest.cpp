#include "Support.h"

#include <array>

/// What the interface keeps its users from, by the compiler where it can.

namespace MisuseTest {

using namespace Travik;
using namespace Support;

enum Enumerator { Any };

// Neither a number nor a character.
static_assert(!std::is_constructible_v<ElementValue, bool>);
static_assert(!std::is_convertible_v<bool, ElementValue>);
static_assert(!std::is_constructible_v<ElementValue, Enumerator>);
static_assert(!std::is_constructible_v<ElementValue, ETypeId>);
static_assert(std::is_convertible_v<char, ElementValue> && std::is_convertible_v<unsigned char, ElementValue>);
static_assert(std::is_convertible_v<int, ElementValue> && std::is_convertible_v<float, ElementValue>);
static_assert(std::is_convertible_v<const char (&)[4], ElementValue>);

// A flag is no path.
template <class Block>
constexpr bool takesNoFlagForAPath =
    std::is_constructible_v<Block, int>&& std::is_constructible_v<Block, unsigned>&&
        std::is_constructible_v<Block, int, bool> &&
    !std::is_constructible_v<Block, bool> && !std::is_constructible_v<Block, bool, bool>;
static_assert(takesNoFlagForAPath<HwDatablockMbrdRfResponseLpAmp>);
static_assert(takesNoFlagForAPath<HwDatablockMbrdIqImbalanceRfFreq>);
static_assert(takesNoFlagForAPath<HwDatablockMbrdExtLevCalData>);
static_assert(takesNoFlagForAPath<HwDatablockCwopDetLinCorrFreq>);

// An image refers to bytes that outlive it.
static_assert(!std::is_constructible_v<ModuleImage, std::vector<char>>);
static_assert(!std::is_constructible_v<ModuleImage, const std::vector<char>>);
static_assert(!std::is_constructible_v<ModuleImage, std::string>);
static_assert(!std::is_constructible_v<ModuleImage, std::array<char, 8>>);
static_assert(std::is_constructible_v<ModuleImage, std::vector<char>&>);
static_assert(std::is_constructible_v<ModuleImage, const std::string&>);
static_assert(std::is_constructible_v<ModuleImage, std::string_view>);
static_assert(std::is_constructible_v<ModuleImage, std::span<const char>>);
static_assert(std::is_constructible_v<ModuleImage, std::span<char>&>);
template <class Image>
constexpr bool handsOutBlocks = requires(Image image) {
    std::forward<Image>(image).blocks();
};
static_assert(handsOutBlocks<const ModuleImage&> && !handsOutBlocks<ModuleImage&&>);

// A value of another type is refused where a field or a print is written down.
static_assert(detail::isStorable<double> && detail::isStorable<unsigned char> && detail::isStorable<char>);
static_assert(!detail::isStorable<long long> && !detail::isStorable<long double>);
static_assert(detail::isListValue<float> && !detail::isListValue<unsigned short>);
static_assert(detail::isStepValue<short> && !detail::isStepValue<float>);

TEST(Misuse, NullPointers) {
    HwDatablock block(false);
    EXPECT_EQ(block.computeChecksum(nullptr, 8), 0);
    EXPECT_EQ(block.computeChecksum(nullptr, 9), 0);
    EXPECT_FALSE(block.verifyChecksum(nullptr, 8, true));
    EXPECT_TRUE(block.verifyChecksum(nullptr, 1, true)) << "no word, as of any record of that size";
    EXPECT_EQ(block.computeChecksum32(nullptr, 16), 0U);
    EXPECT_FALSE(block.verifyChecksum32(nullptr, 16));
    EXPECT_FALSE(block.verifyChecksum32(nullptr, 0));
    block.swapDataTo(HwDataFormatForeign, 2, nullptr);
    EXPECT_EQ(bytesOf(block), image({0, 8, 0, 0}));

    HwDatablockOldStyleInterpreter interpreter;
    std::ostringstream os;
    EXPECT_FALSE(interpreter.swapHwDatablock(HwDataFormatForeign, 2, nullptr));
    EXPECT_FALSE(interpreter.printHwDatablockOldStyleInfo(nullptr, os));
    EXPECT_EQ(os.str(), "");

    HwDatablockEnd end;
    HwDatablock* const blocks[] = {nullptr, &block, nullptr, &end};
    const std::vector<char> composed = composeImage(blocks);
    EXPECT_EQ(std::string(composed.begin(), composed.end()), bytesOf(block) + bytesOf(end));

    HwDatablockWenWiqSensorData sensor;
    const std::string before = bytesOf(sensor);
    bool valid = true;
    EXPECT_NO_FATAL_FAILURE(sensor.getWenWiqSensorData(nullptr, nullptr, valid));
    EXPECT_FALSE(valid);
    sensor.setWenWiqSensorData(nullptr, nullptr);
    EXPECT_TRUE(sensor.verifyChecksum());
    EXPECT_EQ(bytesOf(sensor).substr(8), before.substr(8));
}

TEST(Misuse, EmptyTextsAndVisitors) {
    const ElementValue nothing(static_cast<const char*>(nullptr));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(nothing.variant()));
    EXPECT_TRUE(std::holds_alternative<std::monostate>(ElementValue(nullptr).variant()));
    HwDatablockIdent ident;
    EXPECT_NO_THROW(visitFields(bytesOf(ident), recordFields<HwSDatablockIdent>, Extent::Whole, {}));
    const std::string damaged(8, '\1');
    EXPECT_NO_THROW(ModuleImage(damaged).visitFindings({}));
    EXPECT_NO_THROW(ModuleImage(damaged).visitProblems({}));
    HwDatablockToviVectorLevconTempData unnamed(nullptr, 0);
    EXPECT_EQ(textOf(unnamed), "ID:  \nCOUNT:  0*0\n\n");
}

TEST(Misuse, KeyNamesOfNumbersThatAreNoIdentifier) {
    for (const int id : {std::numeric_limits<int>::min(), -1, 65536, std::numeric_limits<int>::max()}) {
        EXPECT_EQ(HwDatablockServiceData::keyOf(id), "") << id;
        EXPECT_EQ(HwDatablockMbrdIqImbalanceRfFreq::keyOf(id), "") << id;
        EXPECT_EQ(HwDatablockMiscIdent::keyOf(id), "") << id;
    }
    EXPECT_EQ(HwDatablockServiceData::keyOf(209), "SERVICE_209");
}

TEST(Misuse, ImagesThatDoNotStay) {
    const std::string bytes = sealed(image({4711, 8, 0, 0})) + image({4712, 0, 0, 0});
    const ModuleImage whole(bytes);
    const std::vector<ImageFinding> problems = ModuleImage({}).problems(whole.blocks().back());
    ASSERT_EQ(problems.size(), 1U) << "of a block of another image";
    EXPECT_THAT(problems.front().text, testing::StartsWith("size word 0"));
}

} // namespace MisuseTest
