#include "Support.h"

#include <travik/service/BlockTables.h>
#include <travik/service/CsvText.h>
#include <travik/service/GridText.h>
#include <travik/service/ImageFile.h>
#include <travik/service/OrderedJobs.h>
#include <travik/service/ShowText.h>
#include <travik/service/ValueText.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <thread>

namespace ShowTest {

using namespace Travik;
using testing::HasSubstr;

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(NumberFormat, HasTheDecimalsOfAStoredStep) {
    struct Case {
        Stored stored;
        double scale;
        double zero;
        double value;
        std::string text;
        std::string exact;
    };
    const std::vector<Case> cases{
        {Stored::U16, 1, 0, 65535, "65535", "65535"},
        {Stored::I16, 0.01, 0, 150 * 0.01, "1.50", "1.50"},
        {Stored::I16, 0.1, 0, 3 * 0.1, "0.3", "0.3"},
        {Stored::I16, -0.01, 0, -0.0, "0.00", "0.00"},
        {Stored::U16, 0.25, 0, 0.75, "0.75", "0.75"},
        {Stored::U8, 0.02, -1, 2 * 0.02 - 1, "-0.96", "-0.96"},
        {Stored::U16, 1e6, 0, 3e9, "3000000000", "3000000000"},
        {Stored::I16, 1.0 / 128, 0, 10.00390625, "10.004", "10.00390625"},
        {Stored::I8, 1.0 / 460, 0, 29.0 / 460, "0.063", "0.06304347826086956"},
        {Stored::F32, 1, 0, static_cast<double>(0.1F), "0.1", "0.1"},
        {Stored::F32, 1, 0, 1e6, "1000000", "1000000"},
        {Stored::F64, 1, 0, 1e300, "1e+300", "1e+300"},
        {Stored::F64, 1, 0, -infinity, "-inf", "-inf"},
        {Stored::F64, 1, 0, 0.1, "0.1", "0.1"},
    };
    for (const Case& one : cases) {
        const NumberFormat format(Field{.stored = one.stored, .scale = one.scale, .zero = one.zero});
        EXPECT_EQ(format.text(one.value), one.text);
        EXPECT_EQ(format.exact(one.value), one.exact);
    }
}

TEST(Units, AreReadableWithoutADigitLost) {
    struct Case {
        std::string number;
        std::string unit;
        std::string text;
    };
    const std::vector<Case> cases{
        {"3000", "MHz", "3 GHz"},      {"12500000", "Hz", "12.5 MHz"},
        {"0", "MHz", "0 MHz"},         {"0.00", "Hz", "0 Hz"},
        {"999", "Hz", "999 Hz"},       {"1000", "Hz", "1 kHz"},
        {"0.5", "Hz", "0.5 Hz"},       {"0.05", "MHz", "50 kHz"},
        {"-40", "MHz", "-40 MHz"},     {"4294967295", "Hz", "4.294967295 GHz"},
        {"10000", "GHz", "10000 GHz"}, {"123456.789", "kHz", "123.456789 MHz"},
        {"1e+30", "Hz", "1e+30 Hz"},   {"nan", "MHz", "nan MHz"},
        {"1500", "dB", "1500 dB"},     {"7", "", "7"},
    };
    for (const Case& one : cases)
        EXPECT_EQ(withReadableUnit(one.number, one.unit), one.text) << one.number << one.unit;
}

TEST(Grid, GoesOnBelowWhereTheTerminalEnds) {
    const GridColumn labels{"", {"1 MHz", "10 MHz"}};
    const std::vector<GridColumn> columns{
        {"0", {"1.5", "-2"}}, {"1", {"0.25", "7"}}, {"name", {"\xC3\xA4", "b"}, true}};
    struct Case {
        std::size_t width;
        std::string text;
    };
    const std::vector<Case> cases{
        {80, "             0     1  name\n"
             "   1 MHz   1.5  0.25  \xC3\xA4\n"
             "  10 MHz  -2    7     b\n"},
        {20, "             0     1\n"
             "   1 MHz   1.5  0.25\n"
             "  10 MHz  -2    7\n"
             "\n"
             "          name\n"
             "   1 MHz  \xC3\xA4\n"
             "  10 MHz  b\n"},
    };
    for (const Case& one : cases) {
        std::string text;
        appendGrid(text, labels, columns, 2, one.width);
        EXPECT_EQ(text, one.text) << one.width;
    }
    std::string narrow;
    appendGrid(narrow, labels, columns, 2, 0);
    EXPECT_THAT(narrow, HasSubstr("\n  10 MHz  -2\n\n")) << "a column at a time, however narrow";
}

TEST(Grid, PutsTheLowerPartOfANarrowTableBesideTheUpper) {
    GridColumn labels;
    GridColumn values;
    for (int i = 0; i < 17; ++i) {
        labels.cells.push_back(std::to_string(i));
        values.cells.push_back(std::to_string(100 + i));
    }
    std::string text;
    appendGrid(text, labels, {values}, 0, 80);
    EXPECT_THAT(text, testing::StartsWith(" 0  100     9  109\n 1  101    10  110\n"));
    EXPECT_THAT(text, testing::EndsWith(" 7  107    16  116\n 8  108\n"));
    text.clear();
    appendList(text, values, 0, 40);
    EXPECT_THAT(text, testing::StartsWith(" 0  100  101  102  103  104\n 5  105"));
}

TEST(Names, MayBeGlobs) {
    struct Case {
        std::string pattern;
        std::string name;
        bool matches;
    };
    for (const auto& [pattern, name, matches] : std::vector<Case>{{"RFBO_*", "RFBO_TEMP", true},
                                                                  {"rfbo_*", "RFBO_TEMP", false},
                                                                  {"RFBO", "RFBO_TEMP", false},
                                                                  {"157?[0-5]", "15701", true},
                                                                  {"157?[0-5]", "15709", false},
                                                                  {"[", "[", true},
                                                                  {"", "", true}})
        EXPECT_EQ(NameSelector::matches(pattern, name), matches) << pattern << ' ' << name;
    EXPECT_TRUE(NameSelector().selects("anything"));
    EXPECT_TRUE(BlockSelector({"99", "IDENT*"}).selects(2, "IDENT_2"));
    EXPECT_FALSE(BlockSelector({""}).selects(2, "")) << "a block without a key";
}

TEST(Names, ThatAreWrongHaveNearOnes) {
    const std::vector<std::string> keys{
        "RFBO_RFLEVEL_MAX_DATA", "RFBO_RFLEVEL_MAX_FREQ", "IDENT_2", "POK_TEMPERATURE", "TEMP_MAX",
        std::string(101, 'T')};
    struct Case {
        std::string name;
        std::vector<std::string> near;
    };
    for (const auto& [name, near] : std::vector<Case>{
             {"RFBO_RFLEVL_MAX_DATA", {"RFBO_RFLEVEL_MAX_DATA", "RFBO_RFLEVEL_MAX_FREQ"}},
             {"ident_2", {"IDENT_2"}},
             {"IDNET_2", {"IDENT_2"}},
             {"TEMP", {"TEMP_MAX", "POK_TEMPERATURE"}},
             {"IDENT_2", {}},
             {"TE", {}},
             {std::string(100, 'T'), {}},
             {"WHATEVER", {}},
             {"15716", {}},
             {"RFBO_RFLEVL*", {}},
             {"", {}},
             {std::string(100000, 'A'), {}},
         })
        EXPECT_EQ(nearNames(name, keys), near) << name.substr(0, 40);
    EXPECT_EQ(noSuchName("block", "IDENT", keys), "no block IDENT; near: IDENT_2");
}

TEST(Jobs, DeliverInOrderAndHoldLittle) {
    // Little work is handed out in runs, more of it one by one.
    for (const auto& [pause, longest] : {std::pair(0, longestRun), std::pair(200, std::size_t{1})})
        for (const unsigned int jobs : {1U, 2U, 7U, 64U}) {
            std::atomic<std::size_t> begun = 0;
            std::size_t delivered = 0;
            runOrdered(
                200, jobs,
                [&, pause = pause](std::size_t i) {
                    ++begun;
                    std::this_thread::sleep_for(std::chrono::microseconds(i % 16 == 0 ? 1000 : pause));
                    return i;
                },
                [&, longest = longest](std::size_t i, std::size_t result) {
                    EXPECT_EQ(i, delivered++);
                    EXPECT_EQ(result, i);
                    EXPECT_LT(begun, delivered + (4 * jobs + 1) * longest);
                });
            EXPECT_EQ(delivered, 200U);
        }
}

TEST(Jobs, RunAllAtOnce) {
    // Each waits for as many others as there are jobs, which the calling thread is one of.
    std::atomic<int> here = 0;
    std::set<std::thread::id> threads;
    runOrdered(
        4, 4,
        [&](std::size_t) {
            for (++here; here < 4;)
                std::this_thread::yield();
            return std::this_thread::get_id();
        },
        [&](std::size_t, std::thread::id id) { threads.insert(id); });
    EXPECT_EQ(threads.size(), 4U);
    EXPECT_TRUE(threads.contains(std::this_thread::get_id()));
}

TEST(Jobs, EndWithTheFirstFailureInOrder) {
    for (const unsigned int jobs : {1U, 4U}) {
        std::size_t delivered = 0;
        const auto run = [&] {
            runOrdered(
                100, jobs, [](std::size_t i) { return i == 20 ? throw std::runtime_error("20") : i; },
                [&](std::size_t, std::size_t) { ++delivered; });
        };
        EXPECT_THROW(run(), std::runtime_error);
        EXPECT_EQ(delivered, 20U);
    }
}

TEST(Jobs, AFailureWakesThoseThatWaitForRoom) {
    // The first fails when the others have begun all that they may, and wait.
    constexpr std::size_t mayWait = 4 * 4;
    std::atomic<std::size_t> begun = 0;
    const auto work = [&](std::size_t i) {
        ++begun;
        if (i == 0) {
            while (begun < mayWait)
                std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            throw std::runtime_error("0");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // each a run of its own
        return i;
    };
    EXPECT_THROW(runOrdered(100, 4, work, [](std::size_t, std::size_t) {}), std::runtime_error);
}

/// An image's blocks as text or CSV.
class Shown {
public:
    explicit Shown(std::string_view sample) {
        const std::string path = std::string(TRAVIK_SAMPLES "/").append(sample);
        EXPECT_EQ(readImageFile(path, bytes_), "");
    }
    explicit Shown(std::vector<char> bytes) : bytes_(std::move(bytes)) {}

    std::string text(const std::string& block, const ShowOptions& options = {}) const {
        std::string text;
        visit(block, [&](const ImageBlock& found, const BlockValues& values) {
            appendBlockText(text, found, values, options);
        });
        return text;
    }
    /// The table, or why there is none.
    std::string csv(const std::string& block, const ShowOptions& options = {}) const {
        std::string text;
        visit(block, [&](const ImageBlock& found, const BlockValues& values) {
            const std::string why = appendCsv(text, found, shownFields(found, values, options), options.isWhole);
            EXPECT_TRUE(why.empty() || text.empty());
            text += why;
        });
        return text;
    }

private:
    std::vector<char> bytes_;

    void visit(const std::string& block, const auto& visitor) const {
        const ModuleImage image(bytes_);
        const ImageValues values(image);
        const BlockSelector selector({block});
        for (const ImageBlock& found : image.blocks()) {
            if (selector.selects(found))
                visitor(found, values.read(found));
        }
    }
};

ShowOptions only(const std::string& field, bool isWhole = false) {
    ShowOptions options;
    options.fields = NameSelector({field});
    options.isWhole = isWhole;
    return options;
}

TEST(Show, PutsTheAxisBesideTheRows) {
    const Shown board("rf-board.bin");
    const std::string text = board.text("RFBO_RFLEVEL_MAX_DATA");
    EXPECT_THAT(text, testing::StartsWith("RFBO_RFLEVEL_MAX_DATA  15716  HwDatablockKelRfboRfLevelMaxData\n"
                                          "    1040 bytes at 2300\n  rows     2\n  columns  128\n\n"
                                          "  values  by RFBO_RFLEVEL_MAX_FREQ (15715)  and row\n"));
    EXPECT_THAT(text, HasSubstr("\n            9 kHz  19.50  18.50       5.4629 MHz  18.22  17.22\n"));
    ShowOptions wide;
    wide.width = 200;
    EXPECT_THAT(board.text("15716", wide), HasSubstr("  1040 bytes at 2300\n"));
    EXPECT_THAT(Shown("main-board.bin").text("12230", only("c1")),
                HasSubstr("\n  c1 (filter 8)  by PATH_A_RF_RESPONSE_LP_FREQ (12210)  and iq_peak_level\n"
                          "                    0       1       2       3\n"
                          "      1.6 GHz   0.147   0.097  -0.040  -0.100\n"));
    EXPECT_THAT(Shown("second-edition.bin").text("USER_40100"),
                testing::AllOf(HasSubstr("\n  update_index    2.50\n"), HasSubstr("by row_ids\n"),
                               HasSubstr("\n     2    175000     12.89      23.6  1.015625\n")));
}

TEST(Show, WritesSingleValuesWithTheirUnits) {
    EXPECT_EQ(Shown("step-attenuator.bin").text("SERVICE_202"),
              "SERVICE_202  202  HwDatablockServiceData  24 bytes at 120\n"
              "  department      SRV-SG\n"
              "  service_date    2021-06-01\n"
              "  operating_time  5560 h\n"
              "  turn_on_count   702\n"
              "  repair_number   3390\n"
              "  service_code    22\n");
    EXPECT_THAT(Shown("step-attenuator.bin").text("203", only("service_date")),
                testing::EndsWith("\n  service_date  0\n"))
        << "the stored number where it is no date";
}

/// A block with its header.
std::vector<char> block(unsigned short id, std::string_view body) {
    const unsigned int size = static_cast<unsigned int>(8 + body.size());
    const std::string bytes = Support::sealed(Support::image({id, size, 0, 0}).append(body));
    return {bytes.begin(), bytes.end()};
}

TEST(Show, WritesBytesThatNobodyKnowsAsNumbers) {
    std::string body(100, '\1');
    body.append("\xFF\2");
    EXPECT_EQ(Shown(block(4711, body)).text("4711"), "unknown  4711  110 bytes at 0\n\n"
                                                     "  bytes from 8 on  102 bytes\n"
                                                     "    000  01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01\n"
                                                     "    *\n"
                                                     "    060  01 01 01 01 ff 02\n");
    for (const auto& [size, first] : {std::pair(0x1000U, "\n    000  01 "), std::pair(0x1001U, "\n    0000  01 ")})
        EXPECT_THAT(Shown(block(4711, std::string(size, '\1'))).text("4711"), HasSubstr(first)) << size;
    const Shown zeros(block(300, std::string("\x0A\0\0\0\0\0", 6)));
    EXPECT_THAT(zeros.text("300"), testing::EndsWith("  operating_hours  10 h\n"));
    EXPECT_THAT(zeros.text("300", only("*", true)), testing::EndsWith("  operating_hours  10 h\n"));
    ShowOptions whole;
    whole.isWhole = true;
    EXPECT_THAT(zeros.text("300", whole), testing::EndsWith("\n\n  bytes from 12 on  2 bytes\n    000  00 00\n"));
    EXPECT_THAT(Shown(block(4711, std::string(2, '\0'))).text("4711"), testing::EndsWith("\n    000  00 00\n"))
        << "all there is of an unknown block";
    EXPECT_THAT(Shown(block(300, std::string("\x0A\0\0\0\xAB\xCD", 6))).text("300"),
                testing::EndsWith("  operating_hours  10 h\n\n  bytes from 12 on  2 bytes\n    000  ab cd\n"))
        << "what no field covers";
}

TEST(Show, IsSafeForATerminal) {
    std::string model(32, '\0');
    const std::string evil = "a\x1b[31m\x9b\n\xE4";
    model.replace(0, evil.size(), evil);
    EXPECT_THAT(Shown(block(12001, model)).text("12001"), testing::EndsWith("  a\\x1b[31m\\u009b\\x0a\xC3\xA4\n"));
}

TEST(Show, MarksWhatABlockIsTooShortFor) {
    EXPECT_EQ(Shown(block(300, "")).text("300"), "STATISTICS_300  300  HwDatablockStatistic  8 bytes at 0\n"
                                                 "  operating_hours  -\n");
    EXPECT_THAT(Shown(block(12310, "")).text("12310"),
                testing::EndsWith("\n  rows     -\n  columns  -\n\n  values  none in use\n"));
    EXPECT_EQ(Shown(block(12310, "")).csv("12310"), "row\r\n");
    std::vector<char> wrong = block(300, std::string(4, '\1'));
    wrong[4] = static_cast<char>(wrong[4] + 1);
    ShowOptions coloured;
    coloured.isColoured = true;
    EXPECT_THAT(Shown(wrong).text("300", coloured), testing::StartsWith("\x1b[1mSTATISTICS_300\x1b[m  300"));
    EXPECT_THAT(Shown(wrong).text("300", coloured), HasSubstr("\n  \x1b[31mwrong checksum\x1b[m\n"));
}

// Whatever the width is, nothing is cut off, and lines of several columns keep to it.
TEST(Show, KeepsToTheWidth) {
    for (const auto& file : std::filesystem::directory_iterator(TRAVIK_SAMPLES)) {
        if (file.path().extension() != ".bin")
            continue;
        const Shown sample(file.path().filename().string());
        for (const std::size_t width : {60U, 80U, 200U}) {
            ShowOptions options;
            options.width = width;
            std::istringstream lines(sample.text("*", options));
            for (std::string line; std::getline(lines, line);) {
                ASSERT_LE(columnsOf(line), width) << file.path() << ": " << line;
                ASSERT_FALSE(line.ends_with(' '));
            }
        }
    }
}

TEST(Csv, IsOneTableWithTheAxisFirst) {
    EXPECT_THAT(
        Shown("rf-board.bin").csv("15716", only("values")),
        testing::StartsWith("RFBO_RFLEVEL_MAX_FREQ (Hz),values[0],values[1]\r\n9000,19.50,18.50\r\n9900,19.48,"));
    EXPECT_THAT(Shown("rf-board.bin").csv("15700"), testing::StartsWith("row,values\r\n0,1000\r\n1,1007\r\n"))
        << "counts are no part of the table";
    EXPECT_THAT(
        Shown("main-board.bin").csv("12230", only("c1")),
        testing::StartsWith("PATH_A_RF_RESPONSE_LP_FREQ (MHz),filter,c1[0],c1[1],c1[2],c1[3]\r\n100,0,0.1466666"));
    EXPECT_THAT(Shown("step-attenuator.bin").csv("100"),
                testing::StartsWith("modification,circular_number,action\r\n0,1203,1\r\n1,1288,2\r\n"))
        << "fields along the same dimension";
    EXPECT_EQ(Shown("step-attenuator.bin").csv("300"), "operating_hours (h)\r\n10456\r\n") << "no array, one row";
    EXPECT_EQ(Shown("main-board.bin").csv("12230"), "more than one table: counts; c0; c1; c2; c3");
    EXPECT_EQ(Shown(block(4711, "ab")).csv("4711"), "no values");
}

TEST(Csv, QuotesWhatWouldEndACell) {
    for (const auto& [text, cell] : std::vector<std::pair<std::string, std::string>>{{"", ""},
                                                                                     {"a b", "a b"},
                                                                                     {"a,b", "\"a,b\""},
                                                                                     {"\"", "\"\"\"\""},
                                                                                     {"a\nb", "\"a\nb\""},
                                                                                     {"a\rb", "\"a\rb\""}})
        EXPECT_EQ(csvCell(text), cell);
}

/// A field of the bytes 0, 1, 2 and so on, along these dimensions.
struct Made {
    Field field;
    FieldValues values;

    explicit Made(std::vector<ValueDimension> dimensions) : field{.name = "n", .width = 1} {
        unsigned int size = 1;
        for (const ValueDimension& dimension : dimensions) {
            field.dimensions[field.rank++] = {.extent = dimension.extent, .stride = 1};
            size *= dimension.extent;
        }
        values.field = &field;
        values.dimensions = std::move(dimensions);
        for (unsigned int i = 0; i < size; ++i)
            values.values.push_back(i);
    }
    Made(const Made&) = delete;
    Made& operator=(const Made&) = delete;

    std::string csv(bool isWhole = false) const {
        std::string text;
        const FieldValues* const one = &values;
        const std::string why = appendCsv(text, ImageBlock(), {&one, 1}, isWhole);
        return why.empty() ? text : why;
    }
};

ValueDimension along(std::string_view name, unsigned int extent, unsigned int used) {
    return {.name = name, .extent = extent, .used = used, .axisBlock = 0, .axis = nullptr};
}

ValueDimension labelled(std::string_view name, unsigned int extent, const Axis& axis) {
    ValueDimension dimension = along(name, extent, static_cast<unsigned int>(axis.size()));
    dimension.axis = std::make_shared<Axis>(axis);
    return dimension;
}

TEST(Csv, LabelsRowsWithWhateverThereIs) {
    Axis texts;
    texts.name = "letter";
    texts.texts = {"x", "y"};
    Axis numbers;
    numbers.name = "frequency";
    numbers.unit = "Hz";
    Axis rows = numbers;
    numbers.values = {10, 20};
    rows.byRow = {{10, 20}, {30, 40}};
    const struct {
        std::vector<ValueDimension> dimensions;
        bool isWhole;
        std::string csv;
    } cases[] = {
        {{along("", 2, 2)}, false, "index,n\r\n0,0\r\n1,1\r\n"},
        {{labelled("a", 3, texts)}, true, "letter,n\r\nx,0\r\ny,1\r\n,2\r\n"},
        {{along("a", 3, 2), along("b", 2, 1)}, false, "a,n\r\n0,0\r\n1,2\r\n"},
        {{along("a", 3, 2), along("b", 2, 1)}, true, "a,n[0],n[1]\r\n0,0,1\r\n1,2,3\r\n2,4,5\r\n"},
        {{along("a", 2, 2), along("b", 2, 0), along("c", 2, 2)}, false, "no values"},
        {{labelled("a", 2, numbers), along("", 1, 1), along("", 2, 2), along("", 2, 2)},
         false,
         "frequency (Hz),index 1,index 2,n[0],n[1]\r\n"
         "10,0,0,0,1\r\n20,0,0,4,5\r\n10,0,1,2,3\r\n20,0,1,6,7\r\n"},
        // Labels of its own for each: a table each, of one column.
        {{along("f", 2, 2), labelled("p", 2, rows)},
         false,
         "frequency (Hz),f,n\r\n10,0,0\r\n20,0,1\r\n30,1,2\r\n40,1,3\r\n"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(Made(one.dimensions).csv(one.isWhole), one.csv);
    const Made cube({along("", 3, 3), along("", 2, 2), along("b", 2, 2), along("", 1, 1)});
    const FieldValues* const field = &cube.values;
    EXPECT_EQ(tablesOf({&field, 1}, false).back().place(), " (1, b 1)");
}

TEST(Tables, HaveFieldsSideBySideThatBelongTogether) {
    const auto count = [](const ValueDimension& left, const ValueDimension& right) {
        const Made one({left});
        const Made other({right});
        return tablesOf(std::array{&one.values, &other.values}, false).size();
    };
    ValueDimension byBlock = along("", 3, 2);
    byBlock.axisBlock = 7;
    ValueDimension byOther = byBlock;
    byOther.axisBlock = 8;
    EXPECT_EQ(count(along("p", 3, 2), along("p", 3, 2)), 1U);
    EXPECT_EQ(count(byBlock, byBlock), 1U);
    EXPECT_EQ(count(along("", 3, 2), along("", 3, 2)), 2U) << "of one length by chance";
    EXPECT_EQ(count(byBlock, byOther), 2U);
    for (const ValueDimension& other : {along("q", 3, 2), along("p", 4, 2), along("p", 3, 3)})
        EXPECT_EQ(count(along("p", 3, 2), other), 2U);
}

TEST(Tables, KnowPlainBytes) {
    EXPECT_TRUE(isPlainBytes(Made({along("", 17, 17)}).values));
    const std::vector<std::function<void(Made&)>> others{
        [](Made& made) { made.field.rank = 2; },
        [](Made& made) { made.field.width = 2; },
        [](Made& made) { made.field.bits = 4; },
        [](Made& made) { made.field.stored = Stored::Text; },
        [](Made& made) { made.field.scale = 0.5; },
        [](Made& made) { made.field.zero = 1; },
        [](Made& made) { made.field.role = Role::Axis; },
        [](Made& made) { made.field.unit = "V"; },
        [](Made& made) { made.values.values.pop_back(); },
        [](Made& made) { made.field.dimensions[0].stride = 2; },
        [](Made& made) { made.field.dimensions[0].axisBlock = 7; },
    };
    for (std::size_t i = 0; i < others.size(); ++i) {
        Made made({along("", 17, 17)});
        others[i](made);
        EXPECT_FALSE(isPlainBytes(made.values)) << i;
    }
}

TEST(Tables, SayWhatTheirRowsAre) {
    Axis axis;
    axis.name = "f";
    const struct {
        int axisBlock;
        bool hasAxis;
        std::string title; ///< in the block 15716
    } cases[] = {
        {0, false, "row"},
        {15716, false, "row"},
        {15716, true, "f"},
        {15715, true, "RFBO_RFLEVEL_MAX_FREQ (15715)"},
        {4711, true, "f (4711)"},
        {15715, false, "row, not fitting RFBO_RFLEVEL_MAX_FREQ (15715)"},
        {4711, false, "row, not fitting (4711)"},
    };
    for (const auto& one : cases) {
        ValueDimension dimension = one.hasAxis ? labelled("row", 2, axis) : along("row", 2, 2);
        dimension.axisBlock = one.axisBlock;
        EXPECT_EQ(dimensionTitle(dimension, 15716), one.title);
    }
}

// Every number in use is in the table, once, with the text that JSON and dump have for it.
TEST(Csv, HoldsEveryValueInUse) {
    std::vector<char> bytes;
    ASSERT_EQ(readImageFile(TRAVIK_SAMPLES "/main-board.bin", bytes), "");
    const ModuleImage image(bytes);
    const ImageValues values(image);
    for (const ImageBlock& block : image.blocks()) {
        const BlockValues read = values.read(block);
        for (const FieldValues& field : read.fields) {
            const FieldValues* const one = &field;
            std::string text;
            ASSERT_EQ(appendCsv(text, block, {&one, 1}, true), "");
            const std::size_t rows = static_cast<std::size_t>(std::ranges::count(text, '\n')) - 1;
            const std::size_t commas = static_cast<std::size_t>(std::ranges::count(text, ','));
            const std::size_t perRow = commas / (rows + 1);
            const std::size_t labels =
                field.dimensions.empty() ? 0 : std::max<std::size_t>(1, field.dimensions.size() - 1);
            EXPECT_EQ(commas % (rows + 1), 0U);
            EXPECT_EQ(rows * (perRow + 1 - labels), field.size()) << read.key << '.' << field.field->name;
        }
    }
}

} // namespace ShowTest
