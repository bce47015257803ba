#include "Support.h"

#include <travik/text/StrictExchange.h>

#include <cmath>
#include <limits>

namespace StrictExchangeTest {

using namespace Travik;

using KelWords = HwDatablockKelRfboAttRegData;
using Words = HwDatablockDunRfboAttRegData;
using Integers = HwDatablockDunRfboTempCompData;
using Hundredths = HwDatablockDunRfboAttRegAttenuation;
using Reals = HwDatablockDunRfboTempCompFreq;

std::span<const char> spanOf(const std::string& bytes) { return {bytes.data(), bytes.size()}; }

std::string exported(const ExchangeFormat& format, const std::string& block) {
    std::ostringstream os;
    writeExchangeText(os, format, spanOf(block));
    return os.str();
}

std::vector<const ExchangeFormat*> allFormats() {
    std::vector<const ExchangeFormat*> formats;
    for (const CatalogueEntry& entry : catalogue()) {
        if (entry.exchange)
            formats.push_back(entry.exchange);
    }
    return formats;
}

/// A block with random bytes everywhere, NaNs and values behind the count included.
std::string randomBlock(std::mt19937& random, const ExchangeFormat& format, ExchangeCounts counts) {
    std::string block = Support::randomBytes(random, format.shape.size());
    bytes::store(std::span(block), format.shape.rowCountOffset(), counts.rows);
    bytes::store(std::span(block), format.shape.columnCountOffset(), counts.columns);
    return block;
}

const std::string unicodeMinus = "\xE2\x88\x92\x35"; // with a digit behind it

/// "line word: text; ..." of a reading into an empty block of two rows.
template <class Block>
std::string findings(const std::string& rows, const std::string& head = "COUNT: 2 * 1\n") {
    const std::string text = "ID: " + std::string(Block::table.key) + "\n" + head + rows;
    const ExchangeReading reading =
        readExchangeStrictly(text, Block::exchange, spanOf(std::string(Block::shape.size(), '\0')));
    std::string all;
    for (const ExchangeFinding& finding : reading.findings)
        all += std::to_string(finding.line) + " " + finding.word + ": " + finding.text + "; ";
    return all;
}

template <class Block>
double stored(const std::string& word) {
    const std::string text = "ID:" + std::string(Block::table.key) + "\nCOUNT:1*1\n1:" + word + "\n";
    const ExchangeReading reading =
        readExchangeStrictly(text, Block::exchange, spanOf(std::string(Block::shape.size(), '\0')));
    EXPECT_EQ(reading.findingCount, 0U) << word;
    return detail::withStoredType(Block::shape.stored, [&]<class StoreT>(StoreT) {
        return static_cast<double>(bytes::load<StoreT>(reading.image, Block::shape.valuesOffset()));
    });
}

// Whatever rounding the format has, and whatever the image holds beside what the text shows.
TEST(StrictExchange, ATextThatWasNotEditedChangesNoByte) {
    std::mt19937 random(15751);
    for (const ExchangeFormat* const format : allFormats()) {
        const TableShape& shape = format->shape;
        for (const ExchangeCounts counts :
             {ExchangeCounts{shape.rows, shape.columns}, ExchangeCounts{shape.rows / 2, 1}, ExchangeCounts{0, 0},
              ExchangeCounts{0, 1}, ExchangeCounts{3, 0}, ExchangeCounts{shape.rows + 9, shape.columns + 2},
              ExchangeCounts{1, 70000}, ExchangeCounts{70000, 1}, ExchangeCounts{0xFFFFFFFF, 0xFFFFFFFF},
              ExchangeCounts{40000, 7}}) {
            const std::string block = randomBlock(random, *format, counts);
            const std::string text = exported(*format, block);
            for (const char* const ending : {"\n", "\r\n", "\r"}) {
                const std::string ended = QByteArray::fromStdString(text).replace('\n', ending).toStdString();
                const ExchangeReading reading = readExchangeStrictly(ended, *format, spanOf(block));
                ASSERT_EQ(reading.findingCount, 0U)
                    << format->table.key << " " << counts.rows << "*" << counts.columns << ": line "
                    << reading.findings[0].line << " " << reading.findings[0].word << " " << reading.findings[0].text;
                EXPECT_TRUE(reading.changes.empty());
                EXPECT_EQ(std::string(reading.image.begin(), reading.image.end()), block) << format->table.key;
            }
        }
    }
}

// Each edited cell is stored as the tolerant reader stores it; no other byte changes.
TEST(StrictExchange, OnlyEditedWordsAreStored) {
    std::mt19937 random(15752);
    for (const ExchangeFormat* const format : allFormats()) {
        const TableShape& shape = format->shape;
        const std::string block = randomBlock(random, *format, {shape.rows, shape.columns});
        std::string text = exported(*format, block);
        std::size_t row = std::string::npos;
        for (const std::string label : {"\n2:", "\n 2:", "\n  2:"}) // as wide as the last one
            row = std::min(row, text.find(label));
        ++row;
        const std::size_t end = text.find('\n', row);
        const std::string word = format->number == ExchangeNumber::Hexadecimal ? "0x17" : "42";
        std::string line = "2:";
        for (unsigned int column = 0; column < shape.columns; ++column)
            line += " " + word;
        text.replace(row, end - row, line);

        const ExchangeReading reading = readExchangeStrictly(text, *format, spanOf(block));
        ASSERT_EQ(reading.findingCount, 0U) << reading.findings[0].text;
        ASSERT_EQ(reading.changes.size(), shape.columns);
        EXPECT_EQ(reading.changes[0].row, 2U);
        EXPECT_EQ(reading.changes.back().column, shape.columns);
        std::istringstream is(text);
        const std::vector<char> tolerant = readExchangeText(is, *format, [](std::string_view) {});
        const std::size_t first = shape.valueOffset(1, 0);
        const std::size_t last = shape.valueOffset(2, 0);
        EXPECT_TRUE(std::equal(tolerant.begin() + static_cast<long>(first), tolerant.begin() + static_cast<long>(last),
                               reading.image.begin() + static_cast<long>(first)));
        for (std::size_t i = 0; i < block.size(); ++i) {
            if (i < first || i >= last) {
                ASSERT_EQ(reading.image[i], block[i]) << i;
            }
        }
    }
}

TEST(StrictExchange, WordsAreWholeNumbersOfTheirKind) {
    EXPECT_EQ(stored<KelWords>("0x1F"), 0x1F);
    EXPECT_EQ(stored<KelWords>("ffffffff"), 0xFFFFFFFF);
    EXPECT_EQ(stored<KelWords>("0X0000000000012"), 0x12);
    EXPECT_EQ(stored<Integers>("-12.000"), -12);
    EXPECT_EQ(stored<Integers>("1e3"), 1000);
    EXPECT_EQ(stored<Integers>("-2147483648"), std::numeric_limits<int>::min());
    EXPECT_EQ(stored<Reals>("+1.5E+2"), 150.0);
    EXPECT_EQ(stored<Reals>(".5"), 0.5);
    EXPECT_EQ(stored<HwDatablockDunRfboAttCalFreq>("250"), 2.5);
    EXPECT_EQ(stored<Hundredths>("12.345"), static_cast<double>(static_cast<float>(1235 * 0.01)));

    const auto expectRefused = [](auto block, std::initializer_list<std::string> words, const std::string& why) {
        using Block = decltype(block);
        for (const std::string& word : words)
            EXPECT_EQ(findings<Block>("1: " + word + "\n2: 0\n"), "3 " + std::string(word).append(": " + why + "; "));
    };
    expectRefused(KelWords(), {"-5", "+5", "0x", "0x0x1", "12.0", "g", "1_0", unicodeMinus, "nan"},
                  "not a hexadecimal number");
    expectRefused(KelWords(), {"100000000", "0x123456789"}, "more than 32 bits");
    expectRefused(Reals(),
                  {"12,5", "abc", "0x10", "nano", "nan", "inf", "-infinity", unicodeMinus, "1e", "+-1", "--1", "1.5.",
                   "1d3", ".", "5\xC2\xB0"},
                  "not a decimal number");
    expectRefused(Reals(), {"1e400", "-1e400", "1e-400"}, "outside the range of the table");
    expectRefused(Hundredths(), {"1e40", "-3.5e38", "1e308"}, "outside the range of the table");
    expectRefused(Integers(), {"2147483648", "-2147483649", "1e300"}, "outside the range of the table");
    expectRefused(Integers(), {"12.5", "1e-1"}, "not a whole number");
}

TEST(StrictExchange, LinesStandInTheirForm) {
    const auto rows = [](const std::string& text) { return findings<KelWords>(text); };
    EXPECT_EQ(rows("1: 5\n2: 6\n"), "");
    EXPECT_EQ(rows(" 01 : 5 # remark\n\n# 7: 7\n\t2:6\n\n"), "");
    EXPECT_EQ(rows("1: 5\n2: 6 # remark without a line end"), "");
    EXPECT_EQ(rows("1: 5\n2: 6"), "4 : the text ends within this line; ");
    EXPECT_EQ(rows("1: 5\n"), "3 : the table ends ahead of row 2 of 2; ");
    EXPECT_EQ(rows(""), "2 : the table ends ahead of row 1 of 2; ");
    EXPECT_EQ(rows("1: 5\n2: 6\n3: 7\n"), "5 3: a row more than COUNT says; ");
    EXPECT_EQ(rows("1: 5\n2: 6 7 8\n"), "4 7: a value more than COUNT says; ");
    EXPECT_EQ(rows("1: 5\n2:\n"), "4 2: row of 0 values, not 1; ");
    EXPECT_EQ(rows("1: 5\n1: 6\n2: 7\n"), "4 1: the label of row 2 is expected here; ");
    EXPECT_EQ(rows("2: 6\n"), "3 2: the label of row 1 is expected here; ");
    EXPECT_EQ(rows("1: 5\n+2: 6\n"), "4 +2: the label of row 2 is expected here; ");
    EXPECT_EQ(rows("1: 5\n2 6\n2: 6\n"), "4 2: not understood, a row begins with its number and a colon; ");
    EXPECT_EQ(rows("1: 2: 5\n2: 6\n"), "3 2:: not a hexadecimal number; 3 5: a value more than COUNT says; ");
    EXPECT_EQ(rows("1: 5\n2: 6\nThe end\n"), "5 The: not understood, a row begins with its number and a colon; ");

    const auto head = [](const std::string& text) { return findings<KelWords>("1: 5\n2: 6\n", text); };
    EXPECT_EQ(head("COUNT:2*1\n"), "");
    EXPECT_EQ(head("# COUNT: 3 * 1\nCOUNT :2*1\nCOUNT: 2 * 1\n"),
              "3 COUNT: not understood, the line \"COUNT:\" is expected here; ");
    for (const std::string pair :
         {"2", "2 * ", "* 1", "2 x 1", "2 * 1 1", "2 * 1 * 1", "-2 * 1", "2.0 * 1", "9999999999 * 1"})
        EXPECT_EQ(head("COUNT: " + pair + "\n"), "2 " + std::string(pair.substr(0, pair.find_last_not_of(' ') + 1)) +
                                                     ": COUNT is not of the form \"<rows> * <columns>\"; ");
    EXPECT_EQ(head("COUNT: 51 * 1\n"), "2 51 * 1: more than the 50 * 1 that the block holds; ");
    EXPECT_EQ(head("COUNT: 0 * 1\n"), "2 0 * 1: a table without values would empty the block; ");
    EXPECT_EQ(head(""), "2 1:: not understood, the line \"COUNT:\" is expected here; ");
}

TEST(StrictExchange, TablesAreFoundByTheirWholeName) {
    const std::string dun = "ID: DUN_RFBO_ATTREG_DATA\nCOUNT: 1 * 1\n1: 7\n";
    const std::string kel = "ID: RFBO_ATTREG_DATA\nCOUNT: 1 * 1\n1: 5\n";
    const std::string empty(KelWords::shape.size(), '\0');
    const auto read = [&](const std::string& text) {
        return readExchangeStrictly(text, KelWords::exchange, spanOf(empty));
    };
    EXPECT_EQ(read(dun).findings.at(0).text, "no line \"ID:\" with the key name RFBO_ATTREG_DATA");
    EXPECT_EQ(read("").findings.at(0).line, 0U);
    EXPECT_EQ(read("ID: RFBO_ATTREG_DATA\n").findings.at(0).text, R"(no line "COUNT:" behind "ID:")");
    EXPECT_EQ(read("\xEF\xBB\xBF" + kel).findingCount, 0U);
    const std::string other = "ID: IDENT_2\nwhatever: it says\n";
    for (const std::string& text : {dun + kel, kel + dun, other + kel}) {
        const ExchangeReading reading = read(text);
        EXPECT_EQ(reading.findingCount, 0U);
        ASSERT_EQ(reading.changes.size(), 1U);
        EXPECT_EQ(reading.changes[0].before, "0");
        EXPECT_EQ(reading.changes[0].after, "0x5");
    }
    EXPECT_EQ(read(kel + kel).findings.at(0).text, "a second table of this name");
    EXPECT_EQ(read("GRID: RFBO_ATTREG_DATA\n" + kel).findings.at(0).word, "GRID:");

    const std::vector<ExchangeTableName> tables = exchangeTablesIn(dun + "ID: RFBO_ATTREG\n" + kel, allFormats());
    ASSERT_EQ(tables.size(), 3U);
    EXPECT_EQ(tables[0].format, &Words::exchange);
    EXPECT_EQ(tables[1].line, 4U);
    EXPECT_EQ(tables[1].format, nullptr);
    EXPECT_EQ(tables[2].format, &KelWords::exchange);
}

TEST(StrictExchange, FindingsEndAfterTwentyAndAreCounted) {
    std::string rows = "COUNT: 50 * 1\n";
    for (int row = 1; row <= 50; ++row)
        rows += std::to_string(row) + ": " + std::string(1000, 'z') + "\n";
    const std::string text = "ID: RFBO_ATTREG_DATA\n" + rows;
    const ExchangeReading reading =
        readExchangeStrictly(text, KelWords::exchange, spanOf(std::string(KelWords::shape.size(), '\0')));
    EXPECT_EQ(reading.findings.size(), 20U);
    EXPECT_EQ(reading.findingCount, 50U);
    EXPECT_EQ(reading.findings[0].word, std::string(60, 'z') + "...");
}

// What an edit stores may be less than the text shows; the change is seen all the same.
TEST(StrictExchange, AChangeThatRoundingHidesIsShownInFull) {
    Hundredths block;
    bytes::store(std::span(block.getData(), block.getBlockSize()), Hundredths::shape.valuesOffset(), 12.3049F);
    block.setNumberOfRows(1);
    block.setNumberOfColumns(1);
    const ExchangeReading reading = readExchangeStrictly("ID: DUN_RFBO_ATTREG_ATTENUATION\nCOUNT: 1 * 1\n1: 12.3\n",
                                                         Hundredths::exchange, spanOf(Support::bytesOf(block)));
    ASSERT_EQ(reading.changes.size(), 1U);
    EXPECT_EQ(reading.changes[0].before, "12.3049");
    EXPECT_EQ(reading.changes[0].after, "12.3");

    const ExchangeReading tiny = readExchangeStrictly("ID: BLOCK_DUN_RFBO_TEMP_COMP_FREQ\nCOUNT: 1 * 1\n1: 1e-09\n",
                                                      Reals::exchange, spanOf(std::string(Reals::shape.size(), '\0')));
    ASSERT_EQ(tiny.changes.size(), 1U);
    EXPECT_EQ(tiny.changes[0].before + " " + tiny.changes[0].after, "0.0000000000 0.0000000010");
}

TEST(StrictExchange, BehindTheCapacityStandsNothing) {
    std::mt19937 random(4);
    const std::string block = randomBlock(random, Reals::exchange, {Reals::shape.rows + 1, 1});
    const std::string text = exported(Reals::exchange, block);
    const std::string edited = text.substr(0, text.find("51:")) + "51: 7\n";
    const ExchangeReading reading = readExchangeStrictly(edited, Reals::exchange, spanOf(block));
    ASSERT_EQ(reading.findingCount, 1U);
    EXPECT_EQ(reading.findings[0].word + ": " + reading.findings[0].text, "7: beyond the capacity of the block");
    EXPECT_TRUE(std::ranges::equal(reading.image, block));
}

// Counts may change within the capacity; what falls behind them stays.
TEST(StrictExchange, CountsChange) {
    std::mt19937 random(3);
    const std::string block = randomBlock(random, Words::exchange, {50, 4});
    const ExchangeReading reading =
        readExchangeStrictly("ID: DUN_RFBO_ATTREG_DATA\nCOUNT: 2 * 1\n1: 1\n2: 2\n", Words::exchange, spanOf(block));
    EXPECT_EQ(reading.findingCount, 0U);
    EXPECT_EQ(reading.before, (ExchangeCounts{50, 4}));
    EXPECT_EQ(reading.after, (ExchangeCounts{2, 1}));
    EXPECT_EQ(reading.changes.size(), 2U);
    std::size_t differing = 0;
    for (std::size_t i = 0; i < block.size(); ++i)
        differing += block[i] != reading.image[i];
    EXPECT_LE(differing, 16U);
}

} // namespace StrictExchangeTest
