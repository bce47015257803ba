#include "Support.h"

#include <cmath>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <limits>

namespace SecondEditionTest {

using namespace Travik;
using namespace Support;

const HwDatablock2Edition anyTable;

template <class T>
std::string raw(T value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

/// Prints a value from memory of exactly its length, so that a read beyond is seen; checks the returned pointer.
void print(std::ostream& os, ETypeId type, const std::string& stored) {
    std::vector<unsigned char> exact(stored.begin(), stored.end());
    exact.reserve(1); // not null, even where there is nothing
    EXPECT_EQ(anyTable.printDataTypeToStream(os, exact.data(), type), exact.data() + anyTable.size_in_byte(type));
}

std::string printed(ETypeId type, const std::string& stored) {
    std::ostringstream os;
    print(os, type, stored);
    return os.str();
}

struct TypeCase {
    int code;
    const char* name;
    std::string stored;
    ElementValue value; ///< that the builder stores so
    std::string text;
};

const std::vector<TypeCase>& typeCases() {
    static const std::vector<TypeCase> cases = {
        {0, "NONE", "", {}, ""},
        {1, "UINT8", "\xFF", 255, "255"},
        {2, "INT8", "\x80", -128, "-128"},
        {3, "UINT16", raw<std::uint16_t>(65535), 65535U, "65535"},
        {4, "INT16", raw<std::int16_t>(-32768), -32768.0, "-32768"},
        {5, "UINT32", raw<std::uint32_t>(4294967295U), 4294967295U, "4294967295"},
        {6, "INT32", raw<std::int32_t>(-2147483647 - 1), -2147483648LL, "-2147483648"},
        {7, "UINT64", raw(~std::uint64_t{0}), ~std::uint64_t{0}, "18446744073709551615"},
        {8, "INT64", raw(std::numeric_limits<std::int64_t>::min()), std::numeric_limits<std::int64_t>::min(),
         "-9223372036854775808"},
        {9, "FLOAT", raw(0.1F), 0.1, "0.1"},
        {10, "DOUBLE", raw(-2.25), -2.25, "-2.25"},
        {11, "LONG DOUBLE", std::string("\0\0\0\0\0\0\0\xC0\xFF\x3F", 10), 1.5L, "1.5"},
        {12, "FIX16D1", raw<std::int16_t>(123), 12.3, "12.3"},
        {13, "FIX16D2", raw<std::int16_t>(-1234), -12.34, "-12.34"},
        {14, "FIX16D3", raw<std::int16_t>(32767), 32.767, "32.767"},
        {15, "FIX16D4", raw<std::int16_t>(-32768), -3.2768, "-3.2768"},
        {16, "FIX32D1", raw<std::int32_t>(-7), -0.7, "-0.7"},
        // As a single-precision number, which has seven digits.
        {17, "FIX32D2", raw<std::int32_t>(2147483647), 21474836.47L, "21474836.00"},
        {18, "FIX32D3", raw<std::int32_t>(0), 0, "0.000"},
        {19, "FIX32D4", raw<std::int32_t>(123456), 12.3456, "12.3456"},
        {20, "CHAR", "\xE4", '\xE4', "\xE4"},
        {21, "CHAR5", std::string("AB\0\0\0", 5), "AB", "AB"},
        {22, "CHAR10", "0123456789", "0123456789", "0123456789"},
        {23, "CHAR15", "\xFC" + std::string(14, '\0'), "\xFC", "\xFC"},
        {24, "CHAR20", std::string(20, '\0'), "", ""},
    };
    return cases;
}

TEST(ElementTypes, NamesSizesAndText) {
    for (const TypeCase& test : typeCases()) {
        const auto type = static_cast<ETypeId>(test.code);
        EXPECT_STREQ(anyTable.getTypeString(type), test.name);
        EXPECT_EQ(anyTable.size_in_byte(type), static_cast<int>(test.stored.size())) << test.name;
        EXPECT_EQ(printed(type, test.stored), test.stored.empty() ? "" : test.text + "    ") << test.name;
    }
    for (const int code : {25, 255, 256, -1, std::numeric_limits<int>::min()}) {
        const auto type = static_cast<ETypeId>(code);
        EXPECT_STREQ(anyTable.getTypeString(type), "NONE");
        EXPECT_EQ(anyTable.size_in_byte(type), 0);
        EXPECT_EQ(printed(type, "untouched"), "");
    }
    EXPECT_EQ(printed(ETypeChar5, std::string("AB\0XY", 5)), "AB    ");
    EXPECT_EQ(printed(ETypeChar, std::string(1, '\0')), std::string("\0    ", 5));
    EXPECT_EQ(anyTable.printDataTypeToStream(std::cout, nullptr, ETypeInt8), nullptr);
}

TEST(ElementTypes, StreamState) {
    std::ostringstream os;
    os << std::hex << std::showbase << std::scientific << std::setfill('*');
    os.width(20);
    print(os, ETypeUint16, raw<std::uint16_t>(4095));
    print(os, ETypeDouble, raw(2.25));
    print(os, ETypeFix16D1, raw<std::int16_t>(-5));
    print(os, ETypeFloat, raw(2.25F));
    print(os, ETypeFix32D3, raw<std::int32_t>(1));
    print(os, ETypeDouble, raw(2.25));
    print(os, ETypeLongDouble, std::string("\0\0\0\0\0\0\0\xC0\xFF\x3F", 10));
    EXPECT_EQ(os.str(), "4095    2.250000e+00    -0.5    2.2    0.001    2.250    1.500    ");
    EXPECT_EQ(os.flags() & std::ios_base::floatfield, std::ios_base::fixed);
    EXPECT_EQ(os.precision(), 3);
}

std::string extended(std::uint64_t significand, unsigned int word) {
    return raw(significand) + raw(static_cast<std::uint16_t>(word));
}

TEST(ElementTypes, LongDoubleByValue) {
    constexpr std::uint64_t top = std::uint64_t{1} << 63U;
    const auto of = [](long double value) {
        std::ostringstream os;
        os << value << "    ";
        return os.str();
    };
    struct Case {
        std::uint64_t significand;
        unsigned int word;
        std::string text;
    };
    const Case cases[] = {
        {0, 0, "0    "},
        {0, 0x8000, "-0    "},
        {top, 0x3FFF, "1    "},
        {top | (top >> 2U), 0xC000, "-2.5    "},
        {~std::uint64_t{0}, 0x403E, of(0x1p64L)},
        {top, 0x7FFF, "inf    "},
        {top, 0xFFFF, "-inf    "},
        {1, 0, of(std::ldexp(1.0L, -16445))},   // the smallest denormal
        {top, 0, of(std::ldexp(1.0L, -16382))}, // a pseudo-denormal
        {top, 1, of(std::ldexp(1.0L, -16382))}, // the smallest normal number
        {top | 1, 0x7FFF, "nan    "},
        {top | (top >> 1U), 0xFFFF, "-nan    "},
        {0, 0x7FFF, "nan    "},        // pseudo-infinity
        {1, 0x7FFF, "nan    "},        // pseudo-NaN
        {0, 0x3FFF, "nan    "},        // an unnormal
        {top - 1, 0xBFFF, "-nan    "}, // one with a sign
        {top - 1, 0x7FFE, "nan    "},
    };
    for (const Case& test : cases)
        EXPECT_EQ(printed(ETypeLongDouble, extended(test.significand, test.word)), test.text)
            << std::hex << test.significand << " " << test.word;
}

// Where the host has the format itself, its own reading of the bytes and its C library's digits are the measure.
TEST(ElementTypes, LongDoubleAsTheHostHasIt) {
    if (std::numeric_limits<long double>::digits != 64)
        GTEST_SKIP() << "another long double";
    std::mt19937_64 random(5); // NOLINT(bugprone-random-generator-seed): the same on every run
    for (unsigned int i = 0; i < 1500; ++i) {
        const std::uint64_t significand = random() | std::uint64_t{1} << 63U;
        // All of the range, and densely where the two ways of printing meet.
        const auto exponent = static_cast<unsigned int>(i % 3 == 0 ? random() % 0x7FFF : 16383 + 50 + i % 40);
        const std::string stored = extended(significand, exponent | (i % 2 != 0 ? 0x8000U : 0U));
        long double value = 0;
        std::memcpy(&value, stored.data(), stored.size());
        for (const bool fixed : {false, true}) {
            std::ostringstream expected;
            std::ostringstream os;
            for (std::ostringstream* stream : {&expected, &os}) {
                if (fixed)
                    stream->setf(std::ios_base::fixed, std::ios_base::floatfield);
                if (i % 7 == 0)
                    stream->setf(std::ios_base::showpos | std::ios_base::showpoint);
                stream->precision(i % 5);
            }
            expected << value << "    ";
            print(os, ETypeLongDouble, stored);
            ASSERT_EQ(os.str(), expected.str()) << std::hex << significand << " " << exponent << " " << fixed;
        }
    }
}

/// Two rows and two columns of everything that has a width.
SecondEditionTable smallTable(bool packed) {
    return {.id = 40000,
            .packed = packed,
            .updateIndex = 2.5,
            .rowIdType = ETypeUint16,
            .columnIdType = ETypeChar5,
            .columns = {{ETypeFix16D1, "GAIN"}, {ETypeNone, "GAP"}, {ETypeDouble, "LEVEL"}},
            .rows = {{{12.3, {}, 2.25}, 5}, {{-0.7, {}, -1e9}, 65535}}};
}

const std::string smallPage = "############# NEW CONCEPT  #####################################\n\n"
                              "# SECTOR:              3\n"
                              "# DATABLOCKADDRESS:  0xabc0\n\n\n"
                              "BLOCK ID:           USER_40000\n"
                              "UPDATE INDEX:       2.5\n"
                              "ROWS:               2\n"
                              "COLUMNS:            3\n"
                              "ROW_ID_TYPE:        UINT16\n"
                              "COLUMN_ID_TYPE:     CHAR5\n" +
                              ("#" + std::string(71, '=')) +
                              "\n\n"
                              "# COL         1         2         3\n"
                              "DESC:         GAIN    GAP    LEVEL    \n"
                              "TYPE:          FIX16D1         NONE         DOUBLE\n" +
                              ("#" + std::string(71, '=')) +
                              "\n\n"
                              "\n: 5    12.3    2.2    "
                              "\n: 65535    -0.7    -1000000000.0    \n";

HwDatablock2Edition blockOf(const std::string& bytes) {
    HwDatablock2Edition block;
    setBytes(block, bytes);
    return block;
}

std::string built(const SecondEditionTable& table) {
    const SecondEditionImage image = buildSecondEdition(table);
    EXPECT_TRUE(image) << image.text;
    return {image.bytes.begin(), image.bytes.end()};
}

std::string pageOf(HwDatablock2Edition& block) {
    std::ostringstream os;
    EXPECT_EQ(&block.printToStream2Edition(os, {}), &os);
    return os.str();
}

TEST(SecondEdition, SmallTable) {
    struct Case {
        bool packed;
        std::uint64_t rowIds, columnIds, values, end, size;
    };
    for (const Case& test : {Case{false, 24, 28, 44, 64, 64}, Case{true, 21, 25, 40, 60, 62}}) {
        const std::string bytes = built(smallTable(test.packed));
        const SecondEditionLayout layout(bytes);
        EXPECT_EQ(layout.rowIdsAt, test.rowIds);
        EXPECT_EQ(layout.columnIdsAt, test.columnIds);
        EXPECT_EQ(layout.valuesAt, test.values);
        EXPECT_EQ(layout.end, test.end);
        EXPECT_EQ(bytes.size(), test.size);

        HwDatablock2Edition block = blockOf(bytes);
        EXPECT_TRUE(block.fits());
        EXPECT_TRUE(block.verifyChecksum32());
        EXPECT_TRUE(block.verifyChecksum());
        EXPECT_EQ(block.getAlignment() != 0, test.packed);
        EXPECT_EQ(block.getUpdateIndex(), 2.5);
        EXPECT_EQ(block.getNumberOfRows(), 2);
        EXPECT_EQ(block.getNumberOfColumns(), 3);
        EXPECT_EQ(block.getRowIdType(), ETypeUint16);
        EXPECT_EQ(block.getColumnIdType(), ETypeChar5);
        EXPECT_EQ(block.getSizeOfRowIdType(), 2);
        EXPECT_EQ(block.getSizeOfColumnIdType(), 5);
        EXPECT_EQ(block.getColumnType(2), ETypeDouble);
        EXPECT_EQ(block.getColumnType(-1), ETypeNone);
        EXPECT_EQ(block.getColumnType(std::numeric_limits<int>::max()), ETypeNone);

        EXPECT_TRUE(block.columnTypes().isEmpty());
        block.setEepromSector(3);
        block.setEepromAddress(0xABC0);
        EXPECT_EQ(pageOf(block), smallPage);
        EXPECT_EQ(pageOf(block), smallPage);
        EXPECT_EQ(block.columnTypes(), (DatatypeMap2Print{{0, ETypeFix16D1}, {1, ETypeNone}, {2, ETypeDouble}}));
        EXPECT_EQ(bytesOf(block), bytes) << "a print changes nothing";
        EXPECT_EQ(textOf(block), "");
    }
}

TEST(SecondEdition, StreamState) {
    SecondEditionTable table = smallTable(false);
    table.columnIdType = ETypeFix16D2;
    for (SecondEditionColumn& column : table.columns)
        column = {ETypeDouble, 1.25};
    table.rows = {{{2.125, 1e6, 0}, 5}};
    HwDatablock2Edition block = blockOf(built(table));
    std::ostringstream os;
    os << std::hex << std::setfill('#');
    block.printToStream2Edition(os, {});
    // The identifiers' notation goes, their precision stays.
    EXPECT_NE(os.str().find("DESC:         1.25    1.25    1.25    \n"), std::string::npos);
    EXPECT_NE(os.str().find("\n: 5    2.1    1e+06    0    \n"), std::string::npos) << os.str();
    EXPECT_NE(os.str().find("ID:           USER_40000\n"), std::string::npos);
    EXPECT_EQ(os.flags() & std::ios_base::basefield, std::ios_base::dec);
}

TEST(SecondEdition, HeadingAndSummary) {
    HwDatablock2Edition block = blockOf(built(smallTable(true)));
    block.setEepromSector(17);
    const std::string hashes = std::string(50, '#') + "\n";
    for (const bool summary : {true, false}) {
        std::ostringstream os;
        block.printDebugPageHeading(os, summary);
        const std::string title = summary ? "         Block Summary                            \n"
                                          : "         Block Details                            \n";
        std::string expected = "\n" + hashes;
        expected += "         D E B U G - I N F O R M A T I O N        \n"
                    "         EEPROM / FLASH                           \n";
        expected.append(title).append(hashes).append("\n");
        EXPECT_EQ(os.str(), expected);
    }
    std::ostringstream os;
    block.printDebugPageSummary(os, {.blockName = QString::fromLatin1("D\xE4mpfer")});
    const std::string gap(20, ' ');
    EXPECT_EQ(os.str(), "############# NEW CONCEPT #####################################\nSECTOR:     17\n\n"
                        "Block Id:           Block Name:           Update Index:           Date:\n\n40000" +
                            gap + "D\xE4mpfer" + gap + "2.5" + gap + "\n\n");
}

TEST(SecondEdition, Empty) {
    HwDatablock2Edition block;
    EXPECT_TRUE(block.getStopConversionOnError());
    EXPECT_EQ(bytesOf(block), image({0, 12, 0, 0, 0, 0}));
    EXPECT_FALSE(block.fits());
    EXPECT_NE(pageOf(block).find("=\n\n\nTYPE: \n#="), std::string::npos) << "neither ruler nor DESC";
}

/// All 25 types as columns, as row and as column identifiers, in both layouts.
TEST(SecondEdition, EveryTypeEverywhere) {
    for (const TypeCase& id : typeCases()) {
        const auto idType = static_cast<ETypeId>(id.code);
        SecondEditionTable table{.id = 1234, .packed = id.code % 2 != 0, .rowIdType = idType, .columnIdType = idType};
        table.rows.resize(1);
        table.rows.front().id = id.value;
        std::string cells = id.stored.empty() ? "" : id.text + "    ";
        std::ostringstream values;
        values << cells;
        if (id.code >= 12 && id.code <= 19)
            values << std::fixed << std::setprecision(id.code % 4 + 1);
        std::string stored;
        for (const TypeCase& test : typeCases()) {
            table.columns.push_back({static_cast<ETypeId>(test.code), id.value});
            table.rows.front().values.push_back(test.value);
            stored += test.stored;
            print(values, static_cast<ETypeId>(test.code), test.stored);
        }
        const std::string bytes = built(table);
        const SecondEditionLayout layout(bytes);
        EXPECT_EQ(bytes.substr(layout.rowIdsAt, id.stored.size()), id.stored) << id.name;
        EXPECT_EQ(bytes.substr(layout.columnIdsAt + 24 * id.stored.size(), id.stored.size()), id.stored) << id.name;
        EXPECT_EQ(bytes.substr(layout.valuesAt, stored.size()), stored) << id.name;
        HwDatablock2Edition block = blockOf(bytes);
        EXPECT_TRUE(block.verifyChecksum32() && block.verifyChecksum()) << id.name;
        const std::string page = pageOf(block);
        if (id.code < 12 || id.code > 19) { // otherwise the DESC line's precision stays
            EXPECT_TRUE(page.ends_with("\n: " + values.str() + "\n")) << page << values.str();
        }
    }
}

std::string with(std::string bytes, std::size_t offset, unsigned int word) {
    return bytes.replace(offset, 2, image({word}));
}

TEST(SecondEdition, HostileHeaders) {
    const std::string good = built(smallTable(false));
    struct Case {
        const char* what;
        std::string bytes;
        std::vector<std::string> parts; ///< of the page
    };
    const std::string firstRow = ": 5    12.3    2.2    \n";
    const Case cases[] = {
        {"more rows than there are", with(good, 14, 65535), {"ROWS:               65535\n"}},
        {"more columns than there are",
         with(good, 16, 65535),
         {"COLUMNS:            65535\n", " 44\nDESC:         \n"}},
        {"a size word below the table", with(good, 2, 52), {": 5    12.3    \n"}},
        {"a size word in the column types",
         with(good, 2, 21),
         {"# COL         1\nDESC:         \nTYPE:          FIX16D1\n"}},
        {"a size word in the table header",
         with(good, 2, 18),
         {"ROWS:               2\n", "ROW_ID_TYPE:        NONE\n"}},
        {"a size word past the buffer", with(good, 2, 65535).substr(0, 54), {firstRow}},
        {"unknown types", with(good, 18, 0xFFFF), {"COLUMN_ID_TYPE:     NONE\n", "DESC:         \nTYPE:"}},
    };
    for (const Case& test : cases) {
        HwDatablock2Edition block = blockOf(test.bytes);
        const std::string page = pageOf(block);
        for (const std::string& part : test.parts)
            EXPECT_NE(page.find(part), std::string::npos) << test.what << "\n" << page;
    }
    EXPECT_FALSE(blockOf(with(good, 14, 3)).fits());
    EXPECT_FALSE(blockOf(with(good, 2, 63)).fits());
    EXPECT_FALSE(blockOf(good.substr(0, 63)).fits());
    EXPECT_TRUE(blockOf(good + "more").fits());
}

TEST(SecondEdition, EveryTruncationAndFlippedByte) {
    for (const bool packed : {false, true}) {
        const std::string good = built(smallTable(packed));
        for (std::size_t i = 0; i < good.size(); ++i) {
            HwDatablock2Edition cut = blockOf(good.substr(0, i));
            EXPECT_FALSE(i < SecondEditionLayout(good).end && cut.fits());
            EXPECT_LE(pageOf(cut).size(), smallPage.size());
            std::string flipped = good;
            flipped[i] = static_cast<char>(~flipped[i]);
            HwDatablock2Edition damaged = blockOf(flipped);
            EXPECT_LE(pageOf(damaged).size(), 250'000U) << i;
        }
    }
}

// Counts that multiply to four thousand million cells without a byte, and the longest numbers there are: seconds, if
// not minutes, for a print that is naive; under a sanitizer on a busy machine a second may be too little.
TEST(SecondEdition, LargestTables) {
    const auto timed = [](const std::string& bytes) {
        HwDatablock2Edition block = blockOf(bytes);
        const std::clock_t begin = std::clock(); // of the processor: other tests may run beside it
        std::string page = pageOf(block);
        for (int i = 0; i < block.getNumberOfColumns(); ++i)
            EXPECT_LE(block.size_in_byte(block.getColumnType(i)), 10);
        EXPECT_LT(std::clock() - begin, 5 * CLOCKS_PER_SEC);
        return page;
    };
    SecondEditionTable nothing{.id = 1};
    nothing.columns.resize(65000);
    const std::string rows = timed(with(built(nothing), 14, 65535));
    EXPECT_EQ(rows.size() - rows.find("\n: "), 65535U * 3 + 1);

    // Row identifiers for rows whose values lie outside.
    SecondEditionTable outside{.id = 1, .rowIdType = ETypeUint8};
    outside.columns.resize(30000, {ETypeUint8});
    EXPECT_TRUE(timed(with(with(built(outside), 2, 65535), 14, 30000).append(30000, '7')).ends_with("\n: 55    \n"));

    SecondEditionTable digits{.id = 1, .columns = {{ETypeFix16D1}, {ETypeLongDouble}}};
    digits.rows.resize(5000, {.values = {0.5, std::numeric_limits<long double>::max()}});
    EXPECT_TRUE(timed(built(digits)).ends_with(".0    \n"));
}

TEST(SecondEditionBuilder, Refusals) {
    struct Case {
        SecondEditionFault fault;
        const char* text;
        void (*spoil)(SecondEditionTable&);
    };
    using Table = SecondEditionTable;
    using Fault = SecondEditionFault;
    const Case cases[] = {
        {Fault::Identifier, "65535 is the identifier of the end block", [](Table& t) { t.id = 65535; }},
        {Fault::UpdateIndex, "the update index is not within 0 to 655.35", [](Table& t) { t.updateIndex = -0.01; }},
        {Fault::UpdateIndex, "the update index is not within 0 to 655.35", [](Table& t) { t.updateIndex = 655.36; }},
        {Fault::UpdateIndex, "the update index is not within 0 to 655.35", [](Table& t) { t.updateIndex = NAN; }},
        {Fault::Type, "unknown type 25 of the row identifiers",
         [](Table& t) { t.rowIdType = static_cast<ETypeId>(25); }},
        {Fault::Type, "unknown type -1 of the column identifiers",
         [](Table& t) { t.columnIdType = static_cast<ETypeId>(-1); }},
        {Fault::Type, "unknown type 256 of column 2", [](Table& t) { t.columns[1].type = static_cast<ETypeId>(256); }},
        {Fault::Size, "the table has more than 65535 rows or columns", [](Table& t) { t.rows.resize(65536); }},
        {Fault::Size, "the table takes 655354 bytes, a block holds 65534",
         [](Table& t) { t = {.id = 1, .columns = {{ETypeChar10}}}, t.rows.resize(65533); }},
        {Fault::RowLength, "row 2 has 2 values for 3 columns", [](Table& t) { t.rows[1].values.pop_back(); }},
        {Fault::Value, "the identifier of row 1 does not fit UINT16", [](Table& t) { t.rows[0].id = 65536; }},
        {Fault::Value, "the identifier of column 3 does not fit CHAR5", [](Table& t) { t.columns[2].id = "ABCDEF"; }},
        {Fault::Value, "the identifier of column 1 does not fit CHAR5", [](Table& t) { t.columns[0].id = 5; }},
        {Fault::Value, "the value in row 2, column 1 does not fit FIX16D1",
         [](Table& t) { t.rows[1].values[0] = 3276.75; }},
        {Fault::Value, "the value in row 1, column 2 does not fit NONE", [](Table& t) { t.rows[0].values[1] = 0; }},
        {Fault::Value, "the value in row 1, column 3 does not fit DOUBLE",
         [](Table& t) { t.rows[0].values[2] = "2.5"; }},
    };
    for (const Case& test : cases) {
        SecondEditionTable table = smallTable(false);
        test.spoil(table);
        const SecondEditionImage image = buildSecondEdition(table);
        EXPECT_FALSE(image);
        EXPECT_EQ(image.fault, test.fault) << test.text;
        EXPECT_EQ(image.text, test.text);
        EXPECT_TRUE(image.bytes.empty());
    }
}

TEST(SecondEditionBuilder, Values) {
    struct Case {
        ETypeId type;
        ElementValue value;
        std::string text; ///< as it prints; empty where it does not fit
    };
    constexpr long double nan = std::numeric_limits<long double>::quiet_NaN();
    constexpr long double infinity = std::numeric_limits<long double>::infinity();
    const Case cases[] = {
        {ETypeUint8, -1, ""},
        {ETypeUint8, 2.5, ""},
        {ETypeUint8, 'A', ""},
        {ETypeUint64, -1.0, ""},
        {ETypeUint64, 0x1p64, ""},
        {ETypeUint64, 0x1p63, "9223372036854775808"},
        {ETypeInt64, 0x1p63, ""},
        {ETypeInt64, ~0ULL, ""},
        {ETypeInt32, nan, ""},
        {ETypeFloat, 1e39, ""},
        {ETypeFloat, 3.4028235e38, "3.40282e+38"}, // the shortest text of the largest float
        {ETypeFloat, 0x1.fffffefffffffp127, "3.40282e+38"},
        {ETypeFloat, -0x1.ffffffp127, ""}, // half way to the next, which is none
        {ETypeFloat, infinity, "inf"},
        {ETypeFloat, 16777217, "1.67772e+07"},
        {ETypeFloat, ~0ULL, "1.84467e+19"},
        {ETypeFloat, "1", ""},
        {ETypeDouble, nan, "nan"},
        {ETypeDouble, -7, "-7"},
        {ETypeLongDouble, "1", ""},
        {ETypeLongDouble, ~0ULL, "1.84467e+19"},
        {ETypeLongDouble, -infinity, "-inf"},
        {ETypeLongDouble, nan, "nan"},
        {ETypeLongDouble, -0.0L, "-0"},
        {ETypeLongDouble, 1, "1"},
        {ETypeLongDouble, 1e-310L, "1e-310"},
        {ETypeFix16D1, 12.34, "12.3"},
        {ETypeFix16D1, -12.36, "-12.4"},
        {ETypeFix16D1, 5, "5.0"},
        {ETypeFix16D1, -3276.8, "-3276.8"},
        {ETypeFix32D4, 214748.3648, ""},
        {ETypeFix32D4, nan, ""},
        {ETypeChar, "", ""},
        {ETypeChar5, static_cast<const char*>(nullptr), ""},
        {ETypeChar, "AB", ""},
        {ETypeChar5, std::string("A\0B", 3), ""},
        {ETypeChar5, ElementValue(), ""},
    };
    for (const Case& test : cases) {
        const SecondEditionImage image =
            buildSecondEdition({.id = 1, .columns = {{test.type}}, .rows = {{.values = {test.value}}}});
        ASSERT_EQ(static_cast<bool>(image), !test.text.empty()) << image.text << " " << test.text;
        const std::string stored(image.bytes.begin(), image.bytes.end());
        const auto size = static_cast<std::size_t>(anyTable.size_in_byte(test.type));
        EXPECT_EQ(image ? printed(test.type, stored.substr(24, size)) : "", image ? test.text + "    " : "");
    }
}

// The packed layout's update index is half of its CRC-32: both hold, whatever it is.
TEST(SecondEditionBuilder, PackedUpdateIndex) {
    for (unsigned int hundredths = 0; hundredths <= 65535; hundredths += 4369) {
        SecondEditionTable table = smallTable(true);
        table.updateIndex = hundredths / 100.0;
        HwDatablock2Edition block = blockOf(built(table));
        EXPECT_EQ(block.getUpdateIndex(), hundredths * 0.01);
        EXPECT_TRUE(block.verifyChecksum32() && block.verifyChecksum() && block.fits()) << hundredths;
    }
}

TEST(SecondEditionBuilder, LargestImage) {
    SecondEditionTable table{.id = 1, .columns = {{ETypeUint16}}};
    table.rows.resize(32755, {.values = {1}});
    EXPECT_EQ(built(table).size(), 65534U);
    table.rows.push_back(table.rows.back());
    EXPECT_EQ(buildSecondEdition(table).fault, SecondEditionFault::Size);
}

TEST(SecondEdition, KnownInAModuleImage) {
    const auto resealed = [](std::string bytes) {
        HwDatablock block(false);
        setBytes(block, bytes);
        return bytes.replace(8, 4, raw(block.computeChecksum32()));
    };
    const std::string good = built(smallTable(false));
    SecondEditionTable known = smallTable(false);
    known.id = 12300;
    struct Case {
        const char* what;
        std::string bytes;
        bool isSecondEdition;
    };
    const Case cases[] = {
        {"padded", good, true},
        {"packed", built(smallTable(true)), true},
        {"a wrong 16-bit checksum", with(good, 4, 1), true},
        {"a wrong CRC-32", with(good, 8, 1), true},
        {"more rows than fit", sealed(resealed(with(good, 14, 3))), false},
        {"an identifier with a class", built(known), false},
    };
    for (const Case& test : cases) {
        const std::string bytes = image({4711, 8, 0, 0}) + test.bytes;
        const ModuleImage module(bytes);
        ASSERT_EQ(module.blocks().size(), 2U) << test.what;
        const ImageBlock& block = module.blocks()[1];
        EXPECT_EQ(block.isSecondEdition, test.isSecondEdition) << test.what;
        const auto made = makeBlock(block);
        EXPECT_EQ(dynamic_cast<HwDatablock2Edition*>(made.get()) != nullptr, test.isSecondEdition) << test.what;
        EXPECT_EQ(made->getEepromAddress(), 8U);
        EXPECT_EQ(made->getEepromSector(), 0U);
    }
}

} // namespace SecondEditionTest
