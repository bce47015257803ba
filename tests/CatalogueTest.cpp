#include "Support.h"

#include <cmath>
#include <limits>
#include <set>

namespace CatalogueTest {

using namespace Travik;
using namespace Support;

struct Served {
    const CatalogueEntry* entry;
    int id;
};

/// Every identifier of the catalogue.
std::vector<Served> served() {
    std::vector<Served> all;
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id)
            all.push_back({&entry, id});
    }
    return all;
}

std::string named(const Served& block) { return std::string(block.entry->className) + " " + std::to_string(block.id); }

/// An image of the block's record size with random content, its identifier and a checksum that holds.
std::string randomImage(std::mt19937& random, const Served& block) {
    const std::unique_ptr<HwDatablock> fresh = makeBlock(block.id);
    std::string bytes = randomBytes(random, fresh->getByteArrayData().size());
    if (bytes.size() < 8)
        return bytesOf(*fresh);
    const unsigned short size = fresh->getBlockSize();
    bytes.replace(0, 4, image({static_cast<unsigned int>(block.id), size}));
    if (random() % 2 == 0) // counts that make sense, every other time
        bytes.replace(8, std::min<std::size_t>(8, bytes.size() - 8), image({3, 0, 2, 0}).substr(0, bytes.size() - 8));
    return sealed(bytes);
}

TEST(Catalogue, Rows) {
    int last = -1;
    for (const CatalogueEntry& entry : catalogue()) {
        EXPECT_GT(entry.first, last) << entry.className;
        EXPECT_GE(entry.last, entry.first) << entry.className;
        last = entry.last;
    }
    EXPECT_EQ(last, 65535);
}

TEST(Catalogue, FindsTheRowOfEveryIdentifier) {
    auto row = catalogue().begin();
    for (int id = -2; id <= 65536 + 2; ++id) {
        if (row != catalogue().end() && row->last < id)
            ++row;
        const bool isServed = row != catalogue().end() && row->first <= id;
        ASSERT_EQ(findEntry(id), isServed ? &*row : nullptr) << id;
    }
}

TEST(Catalogue, EveryClassMakesItsBlock) {
    // Prototypes that carry another identifier than the one they are registered under.
    const std::set<int> others{10, 10304, 10305, 10306, 10307, 10308, 10309, 10310, 10311, 10312, 10313, 10314};
    for (const Served& block : served()) {
        const std::unique_ptr<HwDatablock> made = makeBlock(block.id);
        ASSERT_NE(made, nullptr) << named(block);
        EXPECT_EQ(made->getId() == block.id, !others.contains(block.id)) << named(block);
        EXPECT_EQ(made->getBlockSize(), made->getByteArrayData().size()) << named(block);
        EXPECT_EQ(made->getByteArrayData().size() % 2, 0U) << named(block);
        EXPECT_EQ(block.entry->sizes.front(), made->getBlockSize()) << named(block);
    }
}

// The list covers the whole record, in order, without gap or overlap other than values that share a word.
TEST(Catalogue, FieldListsCoverTheirRecords) {
    for (const Served& block : served()) {
        const unsigned int size = makeBlock(block.id)->getByteArrayData().size();
        const FieldList fields = block.entry->fields(*block.entry, block.id);
        std::vector<int> covered(size, 0);
        std::set<std::string> names;
        for (const Field& field : fields) {
            EXPECT_TRUE(names.insert(field.name).second) << named(block) << ' ' << field.name;
            ASSERT_LE(field.rank, Field::maxRank);
            const unsigned int elements = field.elements();
            for (unsigned int i = 0; i < elements; ++i) {
                const std::size_t offset = field.elementOffset(i);
                ASSERT_TRUE(bytes::inside(size, offset, field.width)) << named(block) << ' ' << field.name;
                for (std::size_t byte = offset; byte < offset + field.width; ++byte)
                    covered[byte] += field.bits > 0 ? static_cast<int>(field.bits) * 1000 : 1;
            }
            for (unsigned int d = 0; d < field.rank; ++d) {
                const char* const count = field.dimensions[d].count;
                EXPECT_TRUE(!count || std::ranges::any_of(
                                          fields, [&](const Field& f) { return std::string_view(f.name) == count; }))
                    << named(block) << ' ' << field.name << " is counted by " << count;
            }
        }
        if (fields.empty())
            continue; // nothing but a header
        for (std::size_t byte = sizeof(HwSDatablockHeader); byte < size; ++byte)
            ASSERT_TRUE(covered[byte] == 1 || covered[byte] >= 8000)
                << named(block) << " byte " << byte << ": " << covered[byte];
    }
}

// Walks every class's values, whole images and truncated ones, and never leaves the image.
TEST(Catalogue, VisitorReachesEveryValue) {
    std::mt19937 random(5);
    for (const Served& block : served()) {
        const FieldList fields = block.entry->fields(*block.entry, block.id);
        const std::string bytes = randomImage(random, block);
        std::size_t expected = 0;
        for (const Field& field : fields)
            expected += field.elements();
        std::size_t whole = 0;
        std::size_t used = 0;
        visitFields(bytes, fields, Extent::Whole, [&](const FieldValue& value) {
            ++whole;
            EXPECT_EQ(value.index.size(), value.field.rank);
        });
        visitFields(bytes, fields, Extent::Used, [&](const FieldValue&) { ++used; });
        EXPECT_EQ(whole, expected) << named(block);
        EXPECT_LE(used, whole) << named(block);
        // On the heap, so that a read beyond it is seen.
        for (const std::size_t size : {std::size_t{0}, std::size_t{9}, bytes.size() / 2, bytes.size() - 1}) {
            const std::vector<char> cut(bytes.begin(),
                                        bytes.begin() + static_cast<std::ptrdiff_t>(std::min(size, bytes.size())));
            visitFields(cut, fields, Extent::Used, [](const FieldValue&) {});
        }
    }
}

TEST(Catalogue, PhysicalValues) {
    HwDatablockTemplate<MiscData<int, 100, 1>, int, double, 100, 1> limiter("", 12313, 0, 0.00001, 100, 1, false);
    limiter.setNumberOfRows(2);
    limiter.setNumberOfColumns(1);
    limiter.setValue(7.25, 1, 0);
    const CatalogueEntry& entry = *findEntry(12313);
    std::vector<std::string> seen;
    visitFields(bytesOf(limiter), entry.fields(entry, 12313), Extent::Used, [&](const FieldValue& value) {
        std::ostringstream os;
        os << value.field.name;
        for (const unsigned int index : value.index)
            os << ' ' << index;
        os << '=' << value.value;
        seen.push_back(os.str());
    });
    EXPECT_THAT(seen, testing::ElementsAre("rows=2", "columns=1", "values 0 0=0", "values 1 0=7.25"));

    Field bits{.name = "bits", .stored = Stored::U16, .width = 2, .offset = 1};
    bits.bits = 5;
    bits.shift = 4;
    const std::string bytes = std::string(1, '\0') + image({0x01F5});
    EXPECT_EQ(fieldValue(bytes, bits), 31.0);
    bits.isSigned = true;
    EXPECT_EQ(fieldValue(bytes, bits), -1.0);
    EXPECT_EQ(fieldValue(bytes.substr(0, 2), bits), 0.0) << "beyond the image";
    bits.stored = Stored::U8;
    bits.width = 1;
    bits.isSigned = false;
    EXPECT_EQ(fieldValue(bytes, bits), 15.0) << "0xF5 >> 4";

    // Numbers that no processor takes for one are none.
    Field extended{.name = "extended", .stored = Stored::F80, .width = 10};
    const auto value = [&](unsigned int top, unsigned int signAndExponent) {
        return fieldValue(image({0, 0, 0, top, signAndExponent}), extended);
    };
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(value(0x8000, 0x3FFF), 1.0);
    EXPECT_EQ(value(0x8000, 0x7FFF), infinity);
    EXPECT_EQ(value(0x8000, 0xFFFF), -infinity);
    EXPECT_TRUE(std::isnan(value(0xC000, 0x7FFF)));
    EXPECT_TRUE(std::isnan(value(0x4000, 0x3FFF))) << "without its integer bit";

    Field pair{.name = "pair", .stored = Stored::U16, .width = 2, .rank = 1};
    pair.dimensions[0] = {.name = "row", .extent = 2, .stride = 2, .count = "not there"};
    for (const auto& [index, expected] : {std::pair{0U, 7.0}, {1U, 8.0}, {2U, 0.0}})
        EXPECT_EQ(fieldValue(image({7, 8, 9}), pair, {&index, 1}), expected) << index;
    EXPECT_EQ(usedEntries(image({7, 8, 9}), {&pair, 1}, pair.dimensions[0]), 2U) << "by a count that no field is: all";
}

// Hostile content, whole and cut at any length, through the dictionary's own prototypes.
TEST(Interpreter, PrintsAnyImage) {
    std::mt19937 random(6);
    NullBuffer text;
    HwDatablockOldStyleInterpreter interpreter;
    for (const Served& block : served()) {
        const std::string bytes = randomImage(random, block);
        for (std::size_t size = bytes.size(); size > 2; size = size > 24 ? size / 3 : size - 1) {
            const std::unique_ptr<HwDatablock> made = makeBlock(block.id);
            setBytes(*made, bytes.substr(0, size));
            std::ostream os(&text);
            EXPECT_EQ(interpreter.printHwDatablockOldStyleInfo(made.get(), os), block.entry->registered)
                << named(block);
            EXPECT_EQ(bytesOf(*made), bytes.substr(0, size)) << named(block) << ": a print changes nothing";
            made->printToStream(os);
        }
    }
}

TEST(Interpreter, Dictionary) {
    HwDatablockOldStyleInterpreter interpreter;
    std::size_t registered = 0;
    for (const Served& block : served()) {
        registered += block.entry->registered;
        EXPECT_EQ(interpreter.dictionary().contains(block.id), block.entry->registered) << named(block);
    }
    EXPECT_EQ(interpreter.dictionary().size(), registered);
    for (const auto& [id, prototype] : interpreter.dictionary())
        EXPECT_EQ(bytesOf(*prototype), bytesOf(*makeBlock(id)).substr(0, id == 65535 ? 4 : 8)) << id;
}

TEST(Interpreter, PrintsDoNotDisturbEachOther) {
    HwDatablockOldStyleInterpreter interpreter;
    HwDatablockTemplate<MiscData<int, 10, 1>, int, double, 10, 1> large("", 12310, 0, 1, 10, 1, true);
    large.setNumberOfRows(1);
    large.setNumberOfColumns(1);
    large.setValue(41, 0, 0);
    HwDatablock small(false);
    setBytes(small, bytesOf(large).substr(0, 18));
    small.setBlockSize(18);
    const std::string before = bytesOf(large);
    for (int i = 0; i < 2; ++i) {
        std::ostringstream os;
        EXPECT_TRUE(interpreter.printHwDatablockOldStyleInfo(&large, os));
        EXPECT_TRUE(interpreter.printHwDatablockOldStyleInfo(&small, os));
        EXPECT_EQ(os.str(), "ID:  POK_DCON_VTRIM_VALUE\nCOUNT:  1*1\n1: \t41.00000\n\n"
                            "ID:  POK_DCON_VTRIM_VALUE\nCOUNT:  1*1\n1: \t0.00000\n\n");
        EXPECT_EQ(bytesOf(large), before);
    }
    HwDatablock unknown(false);
    std::ostringstream os;
    EXPECT_FALSE(interpreter.printHwDatablockOldStyleInfo(&unknown, os));
    EXPECT_EQ(os.str(), "");
}

// A foreign-order block of every convertible identifier survives every operation that converts it on the way.
TEST(Interpreter, ForeignOrderEnds) {
    std::mt19937 random(7);
    const Signals signals;
    int convertible = 0;
    for (const Served& block : served()) {
        HwDatablockOldStyleInterpreter interpreter;
        const std::unique_ptr<HwDatablock> made = makeBlock(block.id);
        const std::string bytes = randomImage(random, block);
        setBytes(*made, bytes);
        made->setDataFormatTyp(HwDataFormatForeign);
        if (!block.entry->restore) {
            EXPECT_FALSE(interpreter.swapHwDatablock(HwDataFormatFirmware, block.id, made.get())) << named(block);
            EXPECT_EQ(made->getDataFormatTyp(), HwDataFormatForeign);
            continue;
        }
        ++convertible;
        made->verifyChecksum();
        EXPECT_EQ(made->getDataFormatTyp(), HwDataFormatForeign) << named(block);
        made->setAlignment(0);
        made->setBlockId(static_cast<unsigned short>(block.id));
        made->setChecksum(made->computeChecksum());
        EXPECT_TRUE(made->verifyChecksum()) << named(block);
        EXPECT_FALSE(interpreter.swapHwDatablock(HwDataFormatFirmware, block.id + 65536, made.get()))
            << "an int, not a word";
        EXPECT_TRUE(interpreter.swapHwDatablock(HwDataFormatFirmware, block.id, made.get())) << named(block);
        EXPECT_EQ(made->getDataFormatTyp(), HwDataFormatFirmware);
        made->setDataFormatTyp(HwDataFormatForeign);
        HwDatablock target(false);
        target.setHwDatablockFirmwareConform(made.get());
        EXPECT_EQ(made->getDataFormatTyp(), HwDataFormatFirmware) << named(block);
        EXPECT_EQ(target.getData(), made->getData());
        // Damaged ones too, which end before their record does.
        for (const std::size_t size :
             {std::size_t{2}, std::size_t{6}, std::size_t{9}, bytes.size() / 2 + 1, bytes.size() - 1}) {
            setBytes(*made, bytes.substr(0, size));
            made->setDataFormatTyp(HwDataFormatForeign);
            made->verifyChecksum();
            EXPECT_TRUE(interpreter.swapHwDatablock(HwDataFormatFirmware, block.id, made.get())) << named(block);
            EXPECT_EQ(made->getByteArrayData().size(), size);
        }
    }
    EXPECT_GT(convertible, 0);
}

// An error for each conversion that finds a wrong checksum, and for none besides.
TEST(Interpreter, ForeignTablesSignalWhatTheirConversionsFind) {
    HwDatablockKelRfboAlcData table;
    table.setNumberOfRows(1);
    table.setDataFormatTyp(HwDataFormatForeign);
    const Signals signals;
    EXPECT_TRUE(table.verifyChecksum());
    EXPECT_EQ(signals.count(), 0U);
    table.setNumberOfRows(2);
    EXPECT_EQ(signals.count(), 2U) << "there with the sum of one row, back with the sum taken out";
    EXPECT_TRUE(table.verifyChecksum());
    EXPECT_EQ(signals.count(), 2U);
    table.computeChecksum();
    EXPECT_EQ(signals.count(), 3U) << "back with the sum taken out";
    EXPECT_THAT(signals.all(), testing::Each(std::pair(1040001, std::string("15731"))));
}

TEST(Interpreter, AConversionCountsAsADictionary) {
    const unsigned int& counter = HwDatablockIqOp3RfmCalibData::instanceCounter;
    const unsigned int before = counter;
    HwDatablockStatistic block;
    block.setOpHours(5);
    EXPECT_EQ(counter, before) << "in the firmware order";
    block.setDataFormatTyp(HwDataFormatForeign);
    block.setOpHours(6);
    EXPECT_EQ(counter, before + 24) << "there and back";
    HwDatablock unknown(false);
    unknown.setDataFormatTyp(HwDataFormatForeign);
    unknown.swapDataTo(HwDataFormatFirmware, 11, &unknown);
    EXPECT_EQ(counter, before + 36) << "of an identifier that is not converted, too";
    unknown.swapDataTo(HwDataFormatFirmware, 11, nullptr);
    EXPECT_EQ(counter, before + 36);
    EXPECT_FALSE(HwDatablockOldStyleInterpreter().swapHwDatablock(HwDataFormatFirmware, 2, nullptr));
}

} // namespace CatalogueTest
