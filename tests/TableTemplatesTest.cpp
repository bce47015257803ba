#include "Support.h"

namespace TableTemplatesTest {

using namespace Travik;
using namespace Support;

template <class StoreT, class UserT, unsigned int N, unsigned int M>
std::string printed(const std::vector<StoreT>& values, unsigned int rows, unsigned int columns, double scale) {
    HwDatablockBaseTemplate<StoreT, UserT, N, M> block("KEY", 100, 5, scale, false);
    auto* const record = block.getBlock();
    record->rows = rows;
    record->columns = columns;
    for (std::size_t i = 0; i < values.size(); ++i)
        record->values[i / M][i % M] = values[i];
    return textOf(block);
}

TEST(TableTemplates, FreshImages) {
    HwDatablockBaseTemplate<int, int, 4, 10> base("A", 15731, 0, 1.0, true);
    EXPECT_EQ(bytesOf(base), image({15731, 176}) + std::string(172, '\0'));
    EXPECT_TRUE(base.getStopConversionOnError());
    EXPECT_EQ(textOf(base), "ID:  A\nCOUNT:  0*0\n\n");
    HwDatablockBaseTemplateIndex<int, int, 40, 200> index("B", 65535, 3, 1.0, false);
    EXPECT_EQ(index.getByteArrayData().size(), 32176U);
    EXPECT_EQ(index.getId(), 2) << "the sum is cut to 16 bits";
    HwDatablockBaseTemplateExtended<int, int, 10, 4, 350> extended("C", 1, 0, 1.0, false);
    EXPECT_EQ(extended.getByteArrayData().size(), 5776U);
    HwDatablockTemplateWithoutChecksum<MiscData<unsigned char, 1, 2048>, unsigned char, double, 1, 2048> bytes(
        "D", 1, 0, 1, 1, 2048, true);
    EXPECT_EQ(bytes.getByteArrayData().size(), 2064U);
}

TEST(TableTemplates, ValuesAsPrinted) {
    EXPECT_EQ((printed<int, double, 4, 1>({12345}, 2, 1, 0.01)), "ID:  KEY\nCOUNT:  2*1\n1:  123.450\n2:  0.000\n\n");
    EXPECT_EQ((printed<int, int, 1, 1>({-7}, 1, 1, 1.0)), "ID:  KEY\nCOUNT:  1*1\n1: \t-7.000\n\n");
    EXPECT_EQ((printed<int, int, 1, 2>({5, -5}, 1, 2, 0.5)), "ID:  KEY\nCOUNT:  1*2\n1: \t2.000\t-2.000\n\n");
    EXPECT_EQ((printed<int, int, 1, 2>({-1, 2147483647}, 1, 2, 0.5)),
              "ID:  KEY\nCOUNT:  1*2\n1: \t0.000\t1073741823.000\n\n");
    EXPECT_EQ((printed<int, short, 1, 2>({70000, -70000}, 1, 2, 1.0)),
              "ID:  KEY\nCOUNT:  1*2\n1: \t32767.000\t-32768.000\n\n")
        << "a product outside the user type stops at its bounds";
    EXPECT_EQ((printed<char, double, 2, 1>({'\xFF'}, 2, 1, 1.0)), "ID:  KEY\nCOUNT:  2*1\n1:  -1.000\n2:  0.000\n\n");
    EXPECT_EQ((printed<float, float, 1, 1>({0.1F}, 1, 1, 1.0)), "ID:  KEY\nCOUNT:  1*1\n1: \t0.100\n\n");
    EXPECT_EQ((printed<double, double, 1, 1>({1e300}, 1, 1, 1.0)).size(), 27U + 301 + 4);
}

// The shape is chosen by the counts; cells beyond the capacity are zero and nothing there is read.
TEST(TableTemplates, CountsBeyondTheCapacity) {
    const std::vector<int> values{1, 2, 3, 4};
    EXPECT_EQ((printed<int, int, 2, 2>(values, 3, 2, 1)),
              "ID:  KEY\nCOUNT:  3*2\n1:  1.000\n1:  2.000\n2:  3.000\n2:  4.000\n3:  0.000\n3:  0.000\n\n");
    EXPECT_EQ((printed<int, int, 2, 2>(values, 1, 3, 1)), "ID:  KEY\nCOUNT:  1*3\n1: \t1.000\t2.000\t0.000\n\n");
    EXPECT_EQ((printed<int, int, 2, 2>(values, 4000000000U, 0, 1)), "ID:  KEY\nCOUNT:  4000000000*0\n\n");
    const std::string wide = printed<int, int, 2, 2>(values, 4000000000U, 4000000000U, 1);
    EXPECT_EQ(std::count(wide.begin(), wide.end(), '\t'), 65535);
    EXPECT_TRUE(wide.ends_with("\t0.000\n\n"));
    const std::string tall = printed<int, int, 2, 2>(values, 4000000000U, 1, 1);
    EXPECT_EQ(std::count(tall.begin(), tall.end(), '\n'), 65535 + 3);
}

TEST(TableTemplates, IndexAndDescriptors) {
    HwDatablockBaseTemplateIndex<int, double, 2, 2> index("IDX", 1, 0, 0.5, false);
    index.setNumberOfRows(2);
    index.setNumberOfColumns(2);
    index.setIndexValue(-30, 1);
    index.setIndexValue(99, 2);
    index.setValue(1.5, 1, 0);
    EXPECT_EQ(textOf(index), "ID:  IDX\nCOUNT:  2*2\n0: \t0.000\t0.000\n-30: \t1.500\t0.000\n\n");
    EXPECT_EQ(index.getIndexValue(2), 0);
    index.getBlock()->rows = 3;
    index.getBlock()->columns = 0;
    EXPECT_EQ(textOf(index), "ID:  IDX\nCOUNT:  3*0\n0: \n-30: \n0: \n\n") << "no index is read beyond the last";

    HwDatablockBaseTemplateExtended<short, int, 2, 2, 1> extended("EXT", 1, 0, 1, false);
    extended.setDescriptor(QStringLiteral("0123456789abcdefXYZ"), 0);
    extended.setDescriptor(QStringLiteral("k\u00FCrzer"), 1);
    extended.setDescriptor(QStringLiteral("beyond"), 2);
    extended.setNumberOfRows(2);
    extended.setNumberOfColumns(1);
    extended.setValue(-40000, 0, 0);
    EXPECT_EQ(textOf(extended), "ID:  EXT\n\nDESCRIPTOR1: 0123456789abcdef\nDESCRIPTOR2: k\xFCrzer\n\n\nCOUNT:  2*1\n"
                                "1:  -32768.000\n2:  0.000\n\n");
    EXPECT_EQ(extended.getDescriptor(1), QStringLiteral("k\u00FCrzer"));
    EXPECT_TRUE(extended.getDescriptor(2).isNull());
    EXPECT_TRUE(extended.verifyChecksum());
}

TEST(TableTemplates, UserValuesKeepTheirBounds) {
    HwDatablockBaseTemplate<unsigned int, double, 3, 2> table("T", 1, 0, 100.0, false);
    const std::string fresh = bytesOf(table);
    table.setNumberOfRows(4);
    table.setNumberOfColumns(3);
    table.setValue(100.0, 3, 0);
    table.setValue(100.0, 0, 2);
    EXPECT_EQ(bytesOf(table), fresh);
    table.setValue(12349.0, 2, 1);
    EXPECT_EQ(table.getBlock()->values[2][1], 123U) << "the nearest that the image can hold";
    EXPECT_EQ(table.getValue(2, 1), 12300.0);
    table.setValue(-1.0, 0, 0);
    EXPECT_EQ(table.getValue(0, 0), 0.0);
    table.setValue(1e300, 0, 0);
    EXPECT_EQ(table.getBlock()->values[0][0], 4294967295U);
    EXPECT_TRUE(table.verifyChecksum());
    HwDatablockTemplate<MiscData<int, 10, 10>, int, double, 10, 10> limited("L", 1, 0, 1.0, 2, 3, false);
    limited.setValue(5.0, 2, 0);
    limited.setValue(5.0, 1, 2);
    EXPECT_EQ(limited.getValue(2, 0), 0.0) << "beyond the run-time limit";
    EXPECT_EQ(limited.getValue(1, 2), 5.0);
}

// The text of a block ends, and its values are zero, where a damaged image ends.
TEST(TableTemplates, TruncatedImages) {
    HwDatablockBaseTemplate<int, int, 2, 2> table("T", 1, 0, 1, false);
    table.getBlock()->rows = table.getBlock()->columns = 2;
    std::fill_n(&table.getBlock()->values[0][0], 4, 9);
    const std::string full = bytesOf(table);
    for (unsigned int size = 0; size <= full.size(); ++size) {
        HwDatablockBaseTemplate<int, int, 2, 2> cut("T", 1, 0, 1, false);
        setBytes(cut, full.substr(0, size));
        const unsigned int whole = size < 16 ? 0 : (size - 16) / 4;
        const std::string text = textOf(cut);
        EXPECT_EQ(std::count(text.begin(), text.end(), '9'), size < 16 ? 0 : whole) << size;
        cut.setValue(7, 1, 1);
        EXPECT_EQ(bytesOf(cut).size(), size);
        EXPECT_EQ(cut.getValue(1, 1), size == full.size() ? 7 : 0) << size;
    }
}

TEST(TableTemplates, TakeOver) {
    Signals signals;
    using Table = HwDatablockBaseTemplateExtended<short, int, 2, 2, 3>;
    std::mt19937 random(3);
    std::string record = randomBytes(random, sizeof(Table::Record));
    Table block("T", 1, 0, 1, false);
    const std::string fresh = bytesOf(block);
    record[0] = 0x34;
    record[1] = 0x12;
    EXPECT_EQ(block.setBlock(reinterpret_cast<const Table::Record*>(record.data())), 1);
    EXPECT_THAT(signals.all(), testing::ElementsAre(std::pair<int, std::string>(1040001, "4660")));
    EXPECT_EQ(bytesOf(block), fresh);

    record.replace(8, 32, std::string("ab\0defghijklmnop", 16) + "0123456789abcdef");
    record = sealed(record);
    EXPECT_EQ(block.setBlock(reinterpret_cast<const Table::Record*>(record.data())), 0);
    std::string expected = record;
    expected.replace(2, 2, image({sizeof(Table::Record)}));
    expected.replace(6, 2, image({0}));
    expected.replace(8, 16, "ab" + std::string(14, '\0'));
    EXPECT_EQ(bytesOf(block), expected) << "every value, the record's own checksum, descriptors up to their NUL";
    const std::string before = sealed(bytesOf(block));
    setBytes(block, before);
    EXPECT_EQ(block.setBlock(block.getBlock()), 0);
    EXPECT_EQ(bytesOf(block), before);

    setBytes(block, before.substr(0, 51));
    EXPECT_EQ(block.setBlock(reinterpret_cast<const Table::Record*>(record.data())), 0);
    EXPECT_EQ(bytesOf(block).substr(48), before.substr(48, 2) + before.substr(50, 1)) << "half a value is not stored";

    HwDatablockTemplateWithoutChecksum<MiscData<short, 1, 1>, short, double, 1, 1> unchecked("U", 1, 0, 1, 1, 1, false);
    std::string wrong = image({1, 18, 5, 0, 1, 0, 1, 0, 77});
    EXPECT_EQ(unchecked.setBlock(reinterpret_cast<const MiscData<short, 1, 1>*>(wrong.data())), 0);
    EXPECT_EQ(bytesOf(unchecked), wrong);
}

} // namespace TableTemplatesTest
