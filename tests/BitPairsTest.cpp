#include "Support.h"

#include <travik/datablock/Bytes.h>
#include <travik/service/Seal.h>
#include <travik/tables/SecondEditionBuilder.h>

using namespace Travik;
using namespace Support;

// Of a small image of each shape every pair of bits is turned over: as it then stands, and sealed again.
namespace {

using Indexed = HwDatablockBaseTemplateIndex<short, int, 2, 1>;
using Extended = HwDatablockBaseTemplateExtended<short, int, 1, 1, 2>;

std::unique_ptr<HwDatablock> fromImage(const ImageBlock& block) { return makeBlock(block); }

/// A block of a class that no identifier has.
template <class Block>
std::unique_ptr<HwDatablock> ofTemplate(const ImageBlock& image) {
    auto block = std::make_unique<Block>("TABLE", 20000, 0, 0.5, false);
    block->setData(reinterpret_cast<const unsigned char*>(image.bytes.data()),
                   static_cast<unsigned int>(image.bytes.size()));
    return block;
}

struct Shape {
    const char* name;
    std::string image; ///< of one block or two, with an end block or without
    std::unique_ptr<HwDatablock> (*make)(const ImageBlock& block) = fromImage;
    bool isForeign = false;
};
void PrintTo(const Shape& shape, std::ostream* os) { *os << shape.name; }

/// A block of the identifier with given data behind its header.
std::string blockOf(unsigned int id, const std::string& data) {
    return sealed(image({id, static_cast<unsigned int>(8 + data.size()), 0, 0}) + data);
}

std::string secondEdition(bool packed) {
    const SecondEditionImage built = buildSecondEdition({.id = 20000,
                                                         .packed = packed,
                                                         .updateIndex = packed ? 0.0 : 1.5,
                                                         .rowIdType = ETypeUint8,
                                                         .columns = {{ETypeInt16}, {ETypeFix16D2}},
                                                         .rows = {{{-3, 12.34}, 1}}});
    EXPECT_TRUE(built) << built.text;
    return {built.bytes.begin(), built.bytes.end()};
}

const std::string end = image({0xFFFF, 0});

std::vector<Shape> shapes() {
    return {
        {"EndBlock", end},
        {"HeaderOnly", blockOf(15500, "") + end},
        {"Record", blockOf(200, "DEPT-7" + image({0x2A5F, 0x1234, 0x0005, 77, 3}))},
        {"Text", blockOf(12001, "MODEL--1" + std::string(24, '\0'))},
        {"OneWord", blockOf(12000, image({54321, 1})) + end},
        {"Floats", blockOf(15504, image({0, 0x3F80, 0x6666, 0xBEE6})) + end},
        {"List", blockOf(13800, image({1, 0, 0xFFF0, 0})) + end},
        {"Bytes", blockOf(10900, image({4, 0}) + std::string("\x05\x06\x07\x08", 4) + std::string(28, '\0'))},
        // The block that its size word announces is not all there.
        {"StepsCutOff", blockOf(12200, image({1, 0}) + std::string(400, '\1')).substr(0, 24)},
        {"Table", blockOf(12311, image({1, 0, 1, 0, 500, 0})) + end},
        {"TableOfWords", blockOf(15690, image({2, 0, 2, 0, 1, 2, 3, 4, 5, 6}).substr(0, 20))},
        {"IndexedTable", blockOf(20000, image({2, 0, 1, 0, 10, 20, 5, 0, 6, 0})), ofTemplate<Indexed>},
        {"ExtendedTable", blockOf(20000, "DESCRIPTOR......" + image({1, 0, 2, 0, 10, 20})), ofTemplate<Extended>},
        {"SecondEditionPadded", secondEdition(false)},
        {"SecondEditionPacked", secondEdition(true)},
        {"Foreign", blockOf(200, "DEPT-7" + image({0x2A5F, 0x1234, 0x0005, 77, 3})), fromImage, true},
        {"TwoBlocks", blockOf(15500, "") + blockOf(300, image({99, 0})) + end},
    };
}

/// Whether a count says so much that printing takes a thousand times as long as everything else.
bool isLong(HwDatablock& made, const ImageBlock& block) {
    constexpr double many = 300;
    if (const auto* const table = dynamic_cast<TableBlock*>(&made))
        return static_cast<double>(table->getNumberOfRows()) * table->getNumberOfColumns() > many;
    if (!block.entry)
        return false;
    const FieldList fields = block.entry->fields(*block.entry, block.id);
    return std::ranges::any_of(fields, [&](const Field& field) {
        return field.role == Role::Count && std::abs(fieldValue(block.bytes, field)) > many;
    });
}

/// Long texts one time in four hundred.
bool isPrinted(HwDatablock& made, const ImageBlock& block) {
    static unsigned int longTexts = 0;
    return !isLong(made, block) || ++longTexts % 400 == 0;
}

/// All that can be done with an image: it is walked, judged, printed, its values read; nothing of that changes it.
void readAll(const std::string& bytes, const Shape& shape) {
    const ModuleImage module(bytes);
    std::size_t at = 0;
    for (const ImageBlock& block : module.blocks()) {
        ASSERT_EQ(block.offset, at);
        at += block.bytes.size();
        const auto made = shape.make(block);
        if (shape.isForeign) {
            made->setDataFormatTyp(HwDataFormatForeign);
            HwDatablock(false).setHwDatablockFirmwareConform(made.get());
            ASSERT_EQ(made->getDataFormatTyp(), HwDataFormatFirmware);
        }
        const std::string before = bytesOf(*made);
        static Support::NullBuffer buffer;
        static std::ostream os(&buffer);
        if (isPrinted(*made, block))
            made->printToStream(os);
        ASSERT_EQ(bytesOf(*made), before);
        if (block.entry)
            visitFields(block.bytes, block.entry->fields(*block.entry, block.id), Extent::Used,
                        [](const FieldValue&) {});
    }
    ASSERT_EQ(at, module.end());
    ASSERT_LE(at, bytes.size());
    ASSERT_EQ(module.problems().size(), checkImage(bytes).size());
}

bool bitOf(const std::string& bytes, std::size_t bit) { return ((bytes[bit / 8] >> (bit % 8)) & 1) != 0; }
void flip(std::string& bytes, std::size_t bit) {
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ (1 << (bit % 8)));
}

/// Whether the sum of 16-bit words stays the same: one bit goes up, and one of the same weight down; of the highest bit
/// the carry is lost, so that both may go the same way.
bool isUnseen(const std::string& bytes, std::size_t first, std::size_t second) {
    return first % 16 == second % 16 && (first % 16 == 15 || bitOf(bytes, first) != bitOf(bytes, second));
}

class BitPairs : public testing::TestWithParam<Shape> {
protected:
    void SetUp() override {
        Debug::setMessageBoxHandler([](const QString&, const QString&) {}); // of odd sizes
        CErrorManager::setSignalHandler([](int, const QString&) {});
    }
    void TearDown() override {
        Debug::setMessageBoxHandler({});
        CErrorManager::setSignalHandler({});
    }

    const std::string& image() const { return GetParam().image; }

    template <class Each>
    void everyPair(Each each) {
        std::string bytes = image();
        for (std::size_t first = 0; first < bytes.size() * 8; ++first) {
            flip(bytes, first);
            for (std::size_t second = first + 1; second < bytes.size() * 8; ++second) {
                flip(bytes, second);
                each(bytes, first, second);
                if (HasFatalFailure())
                    FAIL() << "bits " << first << " and " << second;
                flip(bytes, second);
            }
            flip(bytes, first);
        }
    }
};

TEST_P(BitPairs, Unsealed) {
    const ModuleImage whole(image());
    const std::size_t size = whole.blocks().front().bytes.size();
    const bool isSummed = whole.blocks().front().checksumHolds && size >= 8;
    everyPair([&](const std::string& bytes, std::size_t first, std::size_t second) {
        readAll(bytes, GetParam());
        // Identifier and size word decide what is summed.
        if (isSummed && first >= 32 && second < size * 8) {
            const ModuleImage module(bytes);
            const ImageBlock& block = module.blocks().front();
            ASSERT_EQ(block.bytes.size(), size);
            ASSERT_EQ(block.checksumHolds, isUnseen(image(), first, second));
            ASSERT_TRUE(block.checksumHolds || !module.problems(block).empty());
        }
    });
}

TEST_P(BitPairs, Sealed) {
    everyPair([&](std::string bytes, std::size_t first, std::size_t second) {
        const ModuleImage changed(bytes);
        for (const ImageBlock& block : changed.blocks())
            sealAgain(std::span(bytes).subspan(block.offset, block.bytes.size()), block);
        readAll(bytes, GetParam());

        HwDatablock block(false);
        setBytes(block, bytes);
        if (first < 32) // with another size word, other blocks may be found than those that were sealed
            block.setChecksum(block.computeChecksum());
        const bool isSummed =
            block.getBlockSize() >= sizeof(HwSDatablockHeader) && bytes.size() >= sizeof(HwSDatablockHeader);
        ASSERT_TRUE(!isSummed || block.verifyChecksum()) << second;
    });
}

INSTANTIATE_TEST_SUITE_P(Shapes, BitPairs, testing::ValuesIn(shapes()),
                         [](const auto& shape) { return std::string(shape.param.name); });

} // namespace
