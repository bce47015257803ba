#include "JsonText.h"
#include "Support.h"

#include <travik/service/ImageFile.h>
#include <travik/service/Report.h>
#include <travik/service/ValueText.h>

#include <cmath>
#include <set>

namespace ReportTest {

using namespace Travik;
using Json = nlohmann::json;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

std::vector<char> sample(const std::string& name) {
    std::vector<char> bytes;
    EXPECT_EQ(readImageFile(TRAVIK_SAMPLES "/" + name + ".bin", bytes), "");
    return bytes;
}

/// The documents, parsed; what stands in an HTML element must not end it.
struct Parsed {
    Json head;
    std::vector<Json> blocks;

    explicit Parsed(const ReportDocuments& documents) : head(parse(documents.head)) {
        for (const std::string& block : documents.blocks)
            blocks.push_back(parse(block));
    }
    const Json& block(int id) const {
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            if (head["blocks"][i]["id"] == id)
                return blocks[i];
        }
        throw std::out_of_range("no block " + std::to_string(id));
    }
    const Json& entry(int id) const {
        return *std::ranges::find_if(head["blocks"], [id](const Json& entry) { return entry["id"] == id; });
    }

private:
    static Json parse(const std::string& text) {
        EXPECT_EQ(text.find_first_of("<>&"), std::string::npos);
        return Support::parsed(text);
    }
};

Parsed reported(const std::vector<std::vector<char>>& images, ReportForm form, const ReportLimits& limits = {}) {
    std::vector<ReportImage> named;
    for (std::size_t i = 0; i < images.size(); ++i)
        named.push_back({"image " + std::to_string(i), images[i]});
    return Parsed(reportOf(named, form, "test", limits));
}

/// A copy with an element of a field put another way; the sums are left.
void change(std::vector<char>& image, int id, std::size_t element, int stored) {
    const ModuleImage module(image);
    const auto block = std::ranges::find(module.blocks(), id, &ImageBlock::id);
    const BlockLayout layout(*block);
    const Field& field = *layout.find("values");
    const std::size_t at = block->offset + field.elementOffset(static_cast<unsigned int>(element));
    for (unsigned int i = 0; i < field.width; ++i)
        image[at + i] = static_cast<char>(stored >> (8 * i));
}

TEST(Report, HasEveryTableOfEverySampleAsItIsInUse) {
    for (const auto& entry : std::filesystem::directory_iterator(TRAVIK_SAMPLES)) {
        if (entry.path().extension() != ".bin")
            continue;
        const std::vector<char> bytes = sample(entry.path().stem());
        const Parsed report = reported({bytes}, ReportForm::Module);
        const ModuleImage image(bytes);
        ASSERT_EQ(report.blocks.size(), image.blocks().size()) << entry.path();
        const ImageValues values(image);
        for (std::size_t i = 0; i < report.blocks.size(); ++i) {
            std::size_t scalars = 0;
            for (const FieldValues& field : values.read(image.blocks()[i]).fields)
                scalars += field.dimensions.empty() && field.field->role != Role::Reserved ? 1 : 0;
            EXPECT_GE(report.blocks[i]["fields"].size(), scalars);
            EXPECT_EQ(report.head["blocks"][i]["tables"].size(), report.blocks[i]["tables"].size());
            for (const Json& table : report.blocks[i]["tables"]) {
                for (const Json& curve : table["curves"])
                    EXPECT_THAT(curve["values"][0].size(), table["rows"].get<std::size_t>());
                if (table["axis"].contains("values")) {
                    EXPECT_EQ(table["axis"]["values"].size(), table["rows"]) << table["name"];
                }
            }
        }
    }
}

TEST(Report, HasTheValuesAxesAndUnitsOfATable) {
    const Parsed report = reported({sample("dac-board")}, ReportForm::Module);
    const Json& table = report.block(13600)["tables"][0];
    EXPECT_EQ(table["name"], "amplitude");
    EXPECT_EQ(table["rows"], 26); // not the capacity
    EXPECT_EQ(table["plotted"], true);
    EXPECT_EQ(table["axis"]["name"], "DACB_FREQUENCY_COMP_FREQ (13500)");
    EXPECT_EQ(table["axis"]["unit"], "Hz");
    EXPECT_EQ(table["axis"]["values"][0], -40e6);
    EXPECT_FALSE(table["axis"].contains("logarithmic"));
    EXPECT_EQ(table["curves"][0]["values"][0][0], 0.0062);

    const Parsed board = reported({sample("rf-board")}, ReportForm::Module);
    const Json& levels = board.block(15716)["tables"][0];
    EXPECT_EQ(levels["axis"]["logarithmic"], true);
    EXPECT_EQ(levels["curves"][0]["decimals"], 2);
    EXPECT_EQ(board.block(15721)["tables"][0]["matrix"], true);
    EXPECT_EQ(board.block(15715)["tables"][0]["plotted"], false); // what labels others
    EXPECT_EQ(board.block(2)["fields"][9]["texts"][0], "RFBO");
    EXPECT_EQ(board.block(15716)["layout"][0]["name"], "identifier");
    EXPECT_EQ(board.block(65535)["layout"].size(), 2U);
}

// A page holds the documents in a script: none of its characters may end one, and each comes back.
TEST(Report, TextsStandInAScript) {
    ReportHead head;
    for (const std::string text : {"</script>", "<!--", "a&amp;b",
                                   "a\xe2\x80\xa8"
                                   "b\xe2\x80\xa9"
                                   "c",
                                   "\xe2\x82\xac\xe2\x80\xa8"}) {
        head.title = text;
        const std::string json = reportHeadJson(head, {});
        EXPECT_EQ(Support::parsed(json)["title"], text);
        EXPECT_EQ(json.find_first_of("<>&"), std::string::npos) << json;
        EXPECT_THAT(json, AllOf(Not(HasSubstr("\xe2\x80\xa8")), Not(HasSubstr("\xe2\x80\xa9"))));
    }
}

TEST(Report, ShowsWhatIsWrongAndWhatCannotBeRead) {
    std::vector<char> bytes = sample("rf-board");
    change(bytes, 15716, 0, 7); // the sum is left
    bytes.resize(30000);
    const Parsed report = reported({bytes}, ReportForm::Module);
    std::vector<std::string> texts;
    for (const Json& finding : report.head["sources"][0]["findings"])
        texts.push_back(finding["text"]);
    EXPECT_THAT(texts, testing::Contains("wrong checksum"));
    EXPECT_EQ(report.entry(15716)["wrong"], 1);
    EXPECT_EQ(report.block(15716)["places"][0]["checksum"], "wrong");
    EXPECT_EQ(report.blocks.back()["places"][0]["checksum"], "cut off");
    // What lies behind the end is no point.
    EXPECT_TRUE(report.blocks.back()["tables"][0]["curves"].back()["values"][0].back().is_null());

    EXPECT_TRUE(reported({{}}, ReportForm::Module).blocks.empty());
    const std::string unchanged = Support::image({100, 28, 0xFF80, 0}) + std::string(20, '\0');
    EXPECT_THAT(reported({{unchanged.begin(), unchanged.end()}}, ReportForm::Module).head["sources"][0]["facts"].dump(),
                HasSubstr(R"("label":"Modifications","value":"none")"));
    EXPECT_EQ(reported({{'\xFF', '\xFF', 0, 0}}, ReportForm::Module).blocks.size(), 1U);

    std::string blocks;
    for (unsigned int id = 50000; id < 50300; ++id)
        blocks += Support::image({id, 8, 1, 0}); // unknown, and the sum is wrong
    const Parsed many = reported({{blocks.begin(), blocks.end()}}, ReportForm::Module);
    EXPECT_EQ(many.head["sources"][0]["findings"].size(), 500U);
    EXPECT_THAT(many.head["remarks"], testing::Contains("image 0: only 500 of 601 findings are shown"));
}

/// What the page of a sample says of its module in the groups named.
std::vector<std::string> factsOf(const std::string& name, const std::set<std::string>& groups) {
    std::vector<std::string> told;
    const Parsed report = reported({sample(name)}, ReportForm::Module);
    for (const Json& fact : report.head["sources"][0]["facts"]) {
        if (groups.contains(fact["group"]))
            told.push_back(fact["label"].get<std::string>() + ": " + fact["value"].get<std::string>() +
                           (fact.contains("mark") ? ", " + fact["mark"].get<std::string>() : ""));
    }
    return told;
}

TEST(Report, SaysWhichModuleItIs) {
    EXPECT_THAT(factsOf("rf-board", {"Module"}),
                ElementsAre("Name: RFBO", "Part number: 1141.5002.02", "Variant: 2", "Serial number: 101337",
                            "Production date: 2018-11-15", "Hardware code: 3", "Product index: 02.04"));
}

TEST(Report, HasCountersAndWhichOfThemDiffer) {
    EXPECT_THAT(factsOf("step-attenuator", {"Counters", "Statistics"}),
                ElementsAre("Overload counter 1: 57", "Overload counter 2: 3",
                            "Overload counter, value 1: 412, backup 412", "Overload counter, value 2: 17, backup 17",
                            "High-power counter, value 1: 91, backup 91",
                            "High-power counter, value 2: 6, backup 5, differs from its backup",
                            "Power-on count: 16 bytes, backup 16 bytes",
                            "Operating time count: 16 bytes, backup 16 bytes, differs from its backup"));
}

TEST(Report, ComparesByIdentifierAndOccurrenceAndPutsChangesFirst) {
    const std::vector<char> before = sample("rf-board");
    std::vector<char> after = before;
    change(after, 15731, 3, 99);
    change(after, 15725, 0, 1); // the axis of 15726
    const ModuleImage image(before);
    after.resize(image.blocks().back().offset); // no end block
    const Parsed report = reported({before, after}, ReportForm::Comparison);
    std::vector<std::string> order;
    for (const Json& entry : report.head["blocks"])
        order.push_back(entry["change"]);
    EXPECT_EQ(std::vector<std::string>(order.begin(), order.begin() + 3),
              (std::vector<std::string>{"changed", "changed", "removed"}));
    EXPECT_THAT(std::vector<std::string>(order.begin() + 3, order.end()), Each("equal"));
    EXPECT_EQ(report.entry(15731)["changedValues"], 1);
    EXPECT_EQ(report.entry(15731)["changedBytes"], 2);
    EXPECT_EQ(report.block(15731)["tables"][0]["changedValues"], 1);
    const Json& other = report.block(15726)["tables"][0];
    EXPECT_FALSE(other.contains("changedValues"));
    EXPECT_TRUE(other["ownAxes"][0].is_null());
    EXPECT_EQ(other["ownAxes"][1][0], 100);
}

/// A table of a curve for each list.
ReportTable family(const std::vector<std::vector<double>>& curves) {
    ReportTable table;
    table.rows = curves.front().size();
    ReportCurve& curve = table.curves.emplace_back();
    curve.format = NumberFormat(Field{.stored = Stored::I16, .scale = 0.01});
    for (std::size_t i = 0; i < curves.size(); ++i) {
        table.drawn.push_back(i);
        curve.values.push_back({curves[i], {}});
    }
    return table;
}

TEST(ReportFamily, FindsWhatLiesFarOffAllOthers) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        std::string what;
        std::vector<std::vector<double>> curves;
        std::vector<std::size_t> odd;
    };
    const std::vector<Case> cases{
        {"one point", {{1, 1}, {1.1, 1.1}, {0.9, 1}, {1, 1.1}, {1, 3}, {1, 0.9}}, {4}},
        {"the farthest first", {{1}, {1.1}, {0.9}, {1}, {1.1}, {9}, {0.9}, {1}, {1}, {20}}, {9, 5}},
        {"all alike but for a step", {{1}, {1}, {1}, {1}, {1.01}, {1}}, {}},
        {"all alike but for one", {{1}, {1}, {1}, {1}, {1.5}, {1}}, {4}},
        {"too few", {{1}, {1}, {1}, {9}}, {}},
        {"spread far, but all of them", {{1}, {2}, {3}, {4}, {5}, {6}}, {}},
        {"a number too few", {{1, 1}, {1, none}, {1, 1}, {1, 1}, {1, 1}, {1, 7}}, {5}},
        {"nothing at all", {{none}, {none}, {none}, {none}, {none}}, {}},
    };
    for (const Case& one : cases) {
        ReportTable table = family(one.curves);
        judgeFamily(table, 100);
        EXPECT_EQ(table.odd, one.odd) << one.what;
        EXPECT_EQ(table.drawn.size(), one.curves.size());
    }
}

TEST(ReportFamily, LeavesCurvesOutButNoExtremes) {
    std::vector<std::vector<double>> curves;
    for (int i = 0; i < 100; ++i)
        curves.push_back({i % 7 + 0.0, i % 5 + 0.0});
    curves[42] = {500, 0};
    curves[77] = {0, -300};
    ReportTable table = family(curves);
    judgeFamily(table, 10);
    EXPECT_EQ(table.drawn.size(), 10U);
    EXPECT_EQ(table.deviations.size(), 100U);
    EXPECT_THAT(table.drawn, testing::IsSupersetOf({42U, 77U}));
    EXPECT_TRUE(std::ranges::is_sorted(table.drawn));
    const ReportSpread& spread = *table.curves[0].spread;
    EXPECT_THAT(spread.highest, ElementsAre(500, 4));
    EXPECT_THAT(spread.lowest, ElementsAre(0, -300));
    EXPECT_THAT(spread.median, ElementsAre(3, 2));
    for (std::size_t i = 0; i < table.drawn.size(); ++i)
        EXPECT_EQ(table.curves[0].values[i].values, curves[table.drawn[i]]);
}

// Curves over another axis cannot be compared: they are shown before all others, unless they are empty.
TEST(ReportFamily, PutsAnotherAxisFirst) {
    std::vector<std::vector<double>> curves(100, {1, 2});
    curves[60].clear();
    curves[70] = {1, 9};
    ReportTable table = family(curves);
    table.ownAxes.resize(curves.size());
    table.ownAxes[50] = {5, 6};
    table.ownAxes[60] = {7, 8};
    judgeFamily(table, 10);
    EXPECT_THAT(table.odd, ElementsAre(50, 70));
    EXPECT_THAT(table.drawn, testing::SizeIs(10));
    EXPECT_THAT(table.drawn, testing::IsSupersetOf({50U, 70U}));
    ASSERT_EQ(table.ownAxes.size(), table.drawn.size());
    for (std::size_t i = 0; i < table.drawn.size(); ++i)
        EXPECT_EQ(table.ownAxes[i].size(), table.drawn[i] == 50 ? 2U : 0U) << table.drawn[i];
}

TEST(ReportFamily, IsOfOneKindAndStaysWithinItsLimits) {
    const std::vector<char> board = sample("rf-board");
    std::vector<char> odd = board;
    change(odd, 15731, 3, 3000);
    std::vector<std::vector<char>> images(30, board);
    images[11] = odd;
    images.push_back(sample("dac-board"));
    const Parsed report = reported(images, ReportForm::Family, {.values = 200'000, .bytes = 1000, .blocks = 25});
    EXPECT_THAT(report.head["kinds"], ElementsAre("RFBO", "DACB"));
    EXPECT_EQ(report.blocks.size(), 25U);
    EXPECT_EQ(report.head["remarks"].size(), 3U); // blocks, bytes and curves
    EXPECT_EQ(report.entry(15731)["odd"][0][0], 11);
    const Json& table = report.block(15731)["tables"][0];
    EXPECT_LT(table["drawn"].size(), 30U);
    EXPECT_EQ(table["odd"], Json({11}));
    EXPECT_FALSE(report.block(15731)["places"][0].contains("bytes"));
}

TEST(Report, LeavesBytesOutBeyondTheLimit) {
    const std::vector<char> board = sample("rf-board");
    ReportLimits limits;
    limits.bytes = board.size();
    EXPECT_EQ(reported({board}, ReportForm::Module, limits).head["remarks"].size(), 0U);
    --limits.bytes;
    EXPECT_THAT(reported({board}, ReportForm::Module, limits).head["remarks"],
                ElementsAre(HasSubstr("The bytes of the blocks are not on this page")));
}

TEST(Report, KnowsALogarithmicAxis) {
    struct Case {
        std::vector<double> values;
        bool isLogarithmic;
    };
    const std::vector<Case> cases{{{1, 10, 100, 1000}, true},
                                  {{1, 2, 5, 10, 20, 50, 100}, true},
                                  {{100, 200, 300, 400}, false},
                                  {{10, 20, 30, 40, 50, 60, 70, 80, 90, 100}, false},
                                  {{0, 1, 10, 100}, false},
                                  {{-1, 1, 10, 100}, false},
                                  {{1, 100, 10, 1000}, false},
                                  {{1, 1000}, false},
                                  {{}, false}};
    for (const Case& one : cases)
        EXPECT_EQ(isLogarithmic(one.values), one.isLogarithmic) << testing::PrintToString(one.values);
}

TEST(Report, HoldsTextsOfAnImageThatWouldBreakOut) {
    std::vector<char> bytes = sample("rf-board");
    const std::string name = "</script><!--";
    const ModuleImage module(bytes);
    const BlockLayout layout(module.blocks().front());
    std::ranges::copy(name.substr(0, layout.find("name")->width), bytes.begin() + layout.find("name")->offset);
    std::vector<ReportImage> images{{"</title><script>\xe2\x80\xa8&\x1b.bin", bytes}};
    const ReportDocuments documents = reportOf(images, ReportForm::Module, "test");
    const Parsed report(documents);
    EXPECT_THAT(std::string(report.head["title"]), HasSubstr("</script>"));
    EXPECT_THAT(std::string(report.head["sources"][0]["name"]), HasSubstr("</title><script>"));
    EXPECT_THAT(std::string(report.head["sources"][0]["name"]), HasSubstr("\\x1b"));
    EXPECT_THAT(documents.head, Not(HasSubstr("\xe2\x80\xa8")));
}

TEST(Report, MakesWellFormedPagesOfRandomBytes) {
    std::mt19937 random(14);
    const std::vector<char> board = sample("dac-board");
    for (int round = 0; round < 15; ++round) {
        std::vector<char> bytes = board;
        bytes.resize(200 + random() % 2000);
        for (int i = 0; i < 40; ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        reported({bytes, board}, ReportForm::Comparison);
        reported({bytes, board, bytes, board, board}, ReportForm::Family, {.values = 1000});
    }
}

} // namespace ReportTest
