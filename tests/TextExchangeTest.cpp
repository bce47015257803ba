#include "Support.h"

#include <cmath>
#include <fstream>
#include <iostream>
#include <limits>

namespace TextExchangeTest {

using namespace Travik;
using Support::bytesOf;

/// What is written to standard output while it lives.
class CapturedOutput {
public:
    CapturedOutput() : previous_(std::cout.rdbuf(text_.rdbuf())) {}
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput() { std::cout.rdbuf(previous_); }
    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* previous_;
};

template <class Block>
std::string exported(Block& block) {
    std::ostringstream os;
    // Left from an earlier text: must not show.
    os << std::hex << std::showbase << std::scientific;
    os.fill('*');
    os.width(9);
    Block().conv2ascii(os, block);
    return os.str();
}

template <class Block>
struct Imported {
    Block block;
    std::string messages;

    explicit Imported(const std::string& text) {
        std::istringstream is(text);
        const CapturedOutput output;
        Block().searchascii(is, block);
        messages = output.text();
        EXPECT_TRUE(is.eof());
        EXPECT_TRUE(block.verifyChecksum());
        EXPECT_EQ(block.getBlockSize(), sizeof(typename Block::Record));
    }
};

using Words = HwDatablockDunRfboAttRegData;
using Attenuations = HwDatablockDunRfboAttRegAttenuation;
using Integers = HwDatablockDunRfboTempCompData;
using Hundreds = HwDatablockDunRfboAttCalFreq;
using Reals = HwDatablockDunRfboTempCompFreq;
using KelWords = HwDatablockKelRfboAttRegData;

/// A text with one line of values.
template <class Block>
std::string textOf(const std::string& counts, const std::string& rows) {
    return std::string("ID: ") + Block::table.key + "\nCOUNT: " + counts + "\n" + rows;
}

template <class Block>
class TextExchangeOf : public testing::Test {
protected:
    std::mt19937 random_{15750};

    /// A user value that the text can hold.
    double randomUser() {
        const auto bits = static_cast<unsigned int>(random_());
        switch (Block::exchange.number) {
        case ExchangeNumber::Hexadecimal:
            return bits >> (bits % 32);
        case ExchangeNumber::Integer:
            return static_cast<int>(bits) >> (bits % 32);
        case ExchangeNumber::Hundredths:
            return (static_cast<int>(bits) >> (bits % 24 + 8)) * 0.01;
        case ExchangeNumber::Real:
            break;
        }
        return std::ldexp(static_cast<int>(bits), -static_cast<int>(bits % 8)) * Block::table.scale;
    }

    void fill(Block& block, unsigned int rows, unsigned int columns) {
        for (unsigned int row = 0; row < rows; ++row) {
            for (unsigned int column = 0; column < columns; ++column)
                bytes::store(std::span(block.getData(), block.getBlockSize()), Block::shape.valueOffset(row, column),
                             stored(randomUser()));
        }
        block.setNumberOfRows(rows);
        block.setNumberOfColumns(columns);
        block.setChecksum(block.computeChecksum());
    }

private:
    using StoreT = std::remove_all_extents_t<decltype(Block::Record::values)>;
    static StoreT stored(double user) { return static_cast<StoreT>(user / Block::table.scale); }
};

using ExchangedBlocks = testing::Types<KelWords, Hundreds, Reals, Integers, Attenuations, Words>;
TYPED_TEST_SUITE(TextExchangeOf, ExchangedBlocks);

TYPED_TEST(TextExchangeOf, ExportThenImportGivesTheSameImage) {
    constexpr unsigned int rows = TypeParam::shape.rows;
    constexpr unsigned int columns = TypeParam::shape.columns;
    for (int i = 0; i < 20; ++i) {
        TypeParam block;
        this->fill(block, i == 0 ? rows : static_cast<unsigned int>(this->random_()) % (rows + 1),
                   i == 0 ? columns : static_cast<unsigned int>(this->random_()) % (columns + 1));
        // A line of its own for each value: without columns there are no lines to count.
        if (TypeParam::exchange.title.empty() && block.getNumberOfColumns() == 0)
            block.setNumberOfRows(0);
        const std::string text = exported(block);
        Imported<TypeParam> imported(text);
        EXPECT_EQ(imported.messages, "");
        ASSERT_EQ(bytesOf(imported.block), bytesOf(block)) << text;
        EXPECT_EQ(exported(imported.block), text);
    }
}

TYPED_TEST(TextExchangeOf, FindsWhatTheCatalogueKnows) {
    const CatalogueEntry* const entry = findEntry(TypeParam::table.id);
    ASSERT_EQ(entry->exchange, &TypeParam::exchange);
    TypeParam block;
    std::vector<const ExchangeFormat*> formats;
    for (const CatalogueEntry& other : catalogue()) {
        if (other.exchange)
            formats.push_back(other.exchange);
    }
    EXPECT_EQ(formats.size(), 6U);
    std::istringstream text(exported(block));
    EXPECT_EQ(findExchangeFormat(text, formats), &TypeParam::exchange);
    std::istringstream none("ID: # " + std::string(TypeParam::table.key) + "\nID: IDENT_2\n");
    EXPECT_EQ(findExchangeFormat(none, formats), nullptr);
    std::istringstream behind("a line\nCOUNT: 1*1\nID: " + std::string(TypeParam::table.key) + "\n");
    EXPECT_EQ(findExchangeFormat(behind, formats), &TypeParam::exchange);
    std::ifstream folder(TRAVIK_SAMPLES);
    EXPECT_EQ(findExchangeFormat(folder, formats), nullptr);
    EXPECT_TRUE(folder.bad());
}

TYPED_TEST(TextExchangeOf, DamagedCountsAreWrittenWithinBounds) {
    TypeParam block;
    for (const auto& [rows, columns] : {std::pair{~0U, ~0U}, {~0U, 0U}, {0U, ~0U}, {3U, 1000U}}) {
        block.getBlock()->rows = rows;
        block.getBlock()->columns = columns;
        const std::string text = exported(block);
        EXPECT_NE(text.find("COUNT:  " + std::to_string(rows) + " * " + std::to_string(columns) + "\n"),
                  std::string::npos);
        EXPECT_LT(text.size(), 65536U * 40);
    }
    block.resizeData(8);
    EXPECT_NE(exported(block).find("COUNT:  0 * 0\n"), std::string::npos);
    std::istringstream is(textOf<TypeParam>("1 * 1", "1: 1\n"));
    TypeParam().searchascii(is, block); // stores what the buffer holds
    EXPECT_EQ(block.getByteArrayData().size(), 8U);
}

TEST(TextExchange, WritesEachFormatAsItIsRead) {
    KelWords kel;
    kel.setNumberOfRows(3);
    kel.setNumberOfColumns(1);
    kel.setValue(0xDEADBEEF, 0, 0);
    kel.setValue(0x1F, 2, 0);
    EXPECT_EQ(exported(kel), "ID:  RFBO_ATTREG_DATA\nCOUNT:  3 * 1\n1:  0xdeadbeef\n2:  0\n3:  0x1f\n");

    Attenuations dun;
    dun.setNumberOfRows(10);
    dun.setNumberOfColumns(2);
    dun.setValue(-1.005F, 0, 0);
    dun.setValue(std::numeric_limits<float>::max(), 9, 1);
    std::string rows = " 1:             -1.00            0.00\n";
    for (int row = 2; row < 10; ++row)
        rows += " " + std::to_string(row) + ":              0.00            0.00\n";
    EXPECT_EQ(exported(dun), "#   Ombrel, DUN - RF-Board - ATT-REG-ATTENUATION - Data\n#   \n#   \n#   \n#   \n"
                             "ID:     DUN_RFBO_ATTREG_ATTENUATION\n#   \n"
                             "#       Parameter COUNT: <rows> * <columns>\nCOUNT:  10 * 2\n"
                             "#   \n#   \n#   \n#   \n#   \n" +
                                 rows + "10:              0.00    340282346638528859811704183484516925440.00\n");

    Hundreds large;
    large.setNumberOfRows(1);
    large.setNumberOfColumns(1);
    large.setValue(1e308, 0, 0);
    EXPECT_GT(exported(large).size(), 300U + 150U);
}

template <class Block>
void expectWords(std::initializer_list<std::pair<std::string, double>> words) {
    for (const auto& [word, stored] : words) {
        Imported<Block> imported(textOf<Block>("1 * 1", "1: " + word + "\n"));
        EXPECT_EQ(imported.messages, "") << word;
        EXPECT_EQ(static_cast<double>(imported.block.getBlock()->values[0][0]), stored) << word;
    }
}

TEST(TextExchange, ReadsAWordAsItsClassSays) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double highest = std::numeric_limits<int>::max();
    constexpr double lowest = std::numeric_limits<int>::min();
    const std::string zeros(400, '0');

    for (const auto expectHexadecimal : {expectWords<Words>, expectWords<KelWords>})
        expectHexadecimal({{"1f", 0x1F},
                           {"0x10", 0x10},
                           {"0XfFfFfFfF", 0xFFFFFFFF},
                           {"100000000", 0xFFFFFFFF},
                           {"+5", 5},
                           {"-5", 0},
                           {"+-5", 0},
                           {"0x", 0},
                           {"0x0x5", 0},
                           {"word", 0},
                           {"12.5", 0x12},
                           {std::string("7\0007", 3), 7}});
    expectWords<Reals>({{"1f", 1},
                        {"0x10", 0},
                        {"-12.5e3,", -12500},
                        {".5", 0.5},
                        {"5.", 5},
                        {"+.5", 0.5},
                        {"+-5", 0},
                        {"--5", 0},
                        {"1e", 1},
                        {"inf", infinity},
                        {"1e400", infinity},
                        {"-1e400x", -infinity},
                        {"1" + zeros + ".5", infinity},
                        {"1" + zeros + "e-400", 1},
                        {"-0." + zeros + "1e4", 0},
                        {"0." + zeros + "1e401", 1},
                        {"1e-400", 0},
                        {"1e99999999999999999999", infinity},
                        {"1e+99999999999999999999", infinity},
                        {"1e-99999999999999999999", 0},
                        {"0e99999999999999999999", 0},
                        {"1e9223372036854775807", infinity},
                        {"word", 0}});
    expectWords<Hundreds>({{"12345.5", 123.455}, {"-7", -0.07}});
    expectWords<Attenuations>({{"1.004", 1.0F * 1.0},
                               {"-1.006", -1.01F},
                               {"-0.001", 0},
                               {"2.995", static_cast<double>(static_cast<float>(std::floor(2.995 * 100 + 0.5) * 0.01))},
                               {"1e39", infinity}});
    expectWords<Integers>({{"2.999", 2},
                           {"-2.999", -2},
                           {"2147483648", highest},
                           {"-1e300", lowest},
                           {"1e400", highest},
                           {"nan", 0},
                           {"0x7", 0}});
}

// Each text read as `Words` (50 rows, 4 columns; limit 6) unless it says otherwise.
TEST(TextExchange, ReadsAnyText) {
    const std::string id = "ID: DUN_RFBO_ATTREG_DATA\n";
    const std::string noId = "ERROR: FOUND NO ID !\n";
    const std::string noCount = "ERROR: FOUND NO COUNT VALUES !\n";
    const std::string distance = "ERROR: Number of lines between ID and Count to large\n";
    const std::string rowsDiffer = "ERROR: Row value (COUNT) don't not equal with number of rows\n";
    const auto columnsDiffer = [](int row) {
        return "ERROR: In Row =" + std::to_string(row) + ": Number of columns read inadequate!\n";
    };
    std::string rows51;
    for (int row = 0; row < 51; ++row)
        rows51 += "r: ff\n";

    struct Case {
        std::string text;
        int id;
        unsigned int rows, columns;
        std::vector<unsigned int> firstRow;
        std::string messages;
    };
    const Case cases[] = {
        // The block is found by its key name, in what is no remark.
        {"", 0, 0, 0, {}, noId},
        {"\n\n   \n\t\r\n#" + id, 0, 0, 0, {}, noId},
        {"ID: OTHER\nDUN_RFBO_ATTREG_DATA\nID: # DUN_RFBO_ATTREG_DATA\n", 0, 0, 0, {}, noId},
        {"xDUN_RFBO_ATTREG_DATAx ID:\nCOUNT: 0 * 0\n", 15799, 0, 0, {}, ""},
        {std::string("\0 ", 2) + id + "COUNT: 0 * 0", 15799, 0, 0, {}, ""},
        // The counts.
        {id, 15799, 0, 0, {}, noCount},
        {id + "# COUNT: 1 * 1\n", 15799, 0, 0, {}, noCount},
        {id + "COUNT: 50 * 4\n", 15799, 50, 4, {}, rowsDiffer},
        {id + "COUNT: 50*4", 15799, 5, 4, {}, rowsDiffer},
        {id + "  5COUNT:0 *4x", 15799, 50, 4, {}, rowsDiffer},
        {id + "COUNT:\n", 15799, 0, 0, {}, ""},
        {id + "COUNT: 5\n", 15799, 0, 0, {}, ""},
        {id + "COUNT:*4\n", 15799, 0, 4, {}, ""},
        {id + "COUNT:1*4\n", 15799, 0, 4, {}, ""},
        {id + "COUNT: * * 4\n", 15799, 0, 0, {}, ""},
        {id + "COUNT: -1 * -1\n", 15799, 0, 0, {}, ""},
        {id + "COUNT: 99999999999999999999 * 4294967296\n", 15799, ~0U, ~0U, {}, rowsDiffer},
        {id + "a\nb\nc\nd\ne\nCOUNT: 0 * 0\n", 15799, 0, 0, {}, ""},
        {id + "a\nb\nc\nd\ne\nf\n #\nCOUNT: 0 * 0\n", 15799, 0, 0, {}, distance},
        {id + "1\n2\n3\n4\n5\n6\n7", 15799, 0, 0, {}, distance + distance + noCount},
        // The rows.
        {id + "COUNT: 1 * 2\n3: 0x1f\t\v a #: 5\n", 15799, 1, 2, {0x1F, 0xA}, ""},
        {id + "COUNT: 1 * 2\r\n1: 1 2\r\n", 15799, 1, 2, {1, 2}, ""},
        {id + "COUNT: 1 * 1\n\n# 1: 5\n  # 1: 6\n :7: 8", 15799, 1, 1, {7, 8}, columnsDiffer(1)},
        {id + "COUNT: 1 * 1\nlabel 9 : 7 : 8", 15799, 1, 1, {7, 0, 8}, columnsDiffer(1)},
        {id + "COUNT: 1 * 1\n1: 7\nEND\n2: 9\nCOUNT: 3 * 3\n", 15799, 1, 1, {7}, ""},
        {id + "COUNT: 2 * 1\n1: 7\nEND\n2: 9\n", 15799, 2, 1, {7}, rowsDiffer},
        {id + "COUNT: 1 * 1\n1: 7\n:\n", 15799, 1, 1, {7}, columnsDiffer(2) + rowsDiffer},
        {id + "COUNT: 1 * 6\n1: 1 2 3 4 5 6\n", 15799, 1, 6, {1, 2, 3, 4}, ""},
        {id + "COUNT: 1 * 4\n1: 1 2 3 4 5 6\n2: 8\n",
         15799,
         1,
         4,
         {1, 2, 3, 4},
         columnsDiffer(1) + columnsDiffer(2) + rowsDiffer},
        {id + "COUNT: 51 * 1\n" + rows51, 15799, 51, 1, {0xFF}, ""},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.text);
        Imported<Words> imported(expected.text);
        const auto& record = *imported.block.getBlock();
        EXPECT_EQ(imported.block.getId(), expected.id);
        EXPECT_EQ(record.rows, expected.rows);
        EXPECT_EQ(record.columns, expected.columns);
        EXPECT_EQ(imported.messages, expected.messages);
        for (std::size_t column = 0; column < 4; ++column)
            EXPECT_EQ(record.values[0][column], column < expected.firstRow.size() ? expected.firstRow[column] : 0);
    }
    // What stood behind the fourth column went nowhere.
    EXPECT_EQ(Imported<Words>(cases[std::size(cases) - 2].text).block.getBlock()->values[1][0], 8U);
}

template <class Block>
void expectMessages(const std::string& distance, unsigned int limit, const std::string& column,
                    const std::string& rowsDiffer) {
    SCOPED_TRACE(Block::table.key);
    std::string lines;
    for (unsigned int line = 1; line < limit; ++line)
        lines += "line\n";
    const std::string id = std::string("ID: ") + Block::table.key + "\n";
    EXPECT_EQ(Imported<Block>(id + lines + "COUNT: 0 * 0").messages, "");
    EXPECT_EQ(Imported<Block>(id + lines + "last\nCOUNT: 2 * 1\n1: 1 2").messages,
              "ERROR: " + distance + "\nERROR: In Row =1" + column + "\n" + rowsDiffer + "\n");
}

TEST(TextExchange, ComplainsInTheWordsOfTheClass) {
    const std::string toLarge = "Number of lines between ID and Count to large";
    const std::string inadequate = ": Number of columns read inadequate!";
    const std::string rowsInadequate = "ERROR: Number of rows read inadequate!";
    const std::string rowsNotEqual = "ERROR: Row value (COUNT) don't not equal with number of rows";
    expectMessages<KelWords>(toLarge, 6, " correspondent the number of columns not with the given value", rowsNotEqual);
    expectMessages<Hundreds>("Number of lines between ID: and COUNT: to large!", 3, inadequate, rowsInadequate);
    expectMessages<Attenuations>(toLarge, 6, inadequate, rowsNotEqual);
    expectMessages<Words>(toLarge, 6, inadequate, rowsNotEqual);
    expectMessages<Integers>("Number of lines between ID: and COUNT: too large!", 52, inadequate, rowsInadequate);
    expectMessages<Reals>("Number of lines between ID: and COUNT: too large!", 3, inadequate, rowsInadequate);
}

TEST(TextExchange, TheKelReaderTakesADunText) {
    Words dun;
    dun.setNumberOfRows(2);
    dun.setNumberOfColumns(1);
    dun.setValue(0xAB, 1, 0);
    Imported<KelWords> kel(exported(dun));
    EXPECT_EQ(kel.messages, "");
    EXPECT_EQ(kel.block.getId(), 15750);
    EXPECT_EQ(kel.block.getValue(1, 0), 0xABU);
}

TEST(TextExchange, IndexValuesAreNotInTheText) {
    Integers block;
    block.setNumberOfRows(1);
    block.setNumberOfColumns(1);
    block.setIndexValue(77, 0);
    Imported<Integers> imported(exported(block));
    EXPECT_EQ(imported.messages, "");
    EXPECT_EQ(imported.block.getIndexValue(0), 0);
}

/// A source that cannot seek and hands its text out in small portions, the same portion over and over.
class Repeating : public std::streambuf {
public:
    Repeating(std::string head, std::string portion, unsigned int times)
        : head_(std::move(head)), portion_(std::move(portion)), times_(times) {
        setg(head_.data(), head_.data(), head_.data() + head_.size());
    }

protected:
    int_type underflow() override {
        if (times_ == 0)
            return traits_type::eof();
        --times_;
        setg(portion_.data(), portion_.data(), portion_.data() + portion_.size());
        return traits_type::to_int_type(portion_.front());
    }

private:
    std::string head_;
    std::string portion_;
    unsigned int times_;
};

template <class Block>
void expectFromLongLine(const std::string& begin, std::string_view piece, double value) {
    std::string portion;
    while (portion.size() < 10000)
        portion += piece;
    Repeating source(textOf<Block>("1 * 1", begin), portion, 2000);
    std::istream is(&source);
    is.setstate(std::ios_base::failbit); // of an earlier reading: cleared
    Block block;
    const CapturedOutput output;
    block.searchascii(is, block);
    EXPECT_EQ(block.getNumberOfRows(), 1U) << piece;
    EXPECT_EQ(static_cast<double>(block.getBlock()->values[0][0]), value) << piece;
}

// 20 MB each: what cost the square of the length would not end.
TEST(TextExchange, ALongLineCostsItsLength) {
    expectFromLongLine<Words>("1: 9 #", "#:* ", 9);
    expectFromLongLine<Words>("1: ", "f", 0xFFFFFFFF);
    expectFromLongLine<Words>("1: 5", " 7", 5);
    expectFromLongLine<Reals>("1: 1.", "0", 1);
    expectFromLongLine<Reals>("1: 1", "0", std::numeric_limits<double>::infinity());
}

TEST(TextExchange, AStreamIsReadFromItsBeginning) {
    std::istringstream is(textOf<Words>("1 * 1", "1: 5\n"));
    std::string all;
    std::getline(is, all, '\0');
    ASSERT_TRUE(is.eof());
    Words block;
    block.searchascii(is, block);
    EXPECT_EQ(block.getValue(0, 0), 5U);

    std::istream without(nullptr);
    const CapturedOutput output;
    block.searchascii(without, block);
    EXPECT_EQ(output.text(), "ERROR: FOUND NO ID !\n");
    EXPECT_EQ(block.getId(), 0);
}

} // namespace TextExchangeTest
