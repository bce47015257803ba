#include "Fleets.h"
#include "Images.h"
#include "JsonText.h"

#include <travik/fleet/FleetReport.h>

#include <cmath>

/// Pages of a fleet.
namespace FleetReportTest {

using namespace Travik;
using namespace Fleets;

std::string changed(const std::string& sample, std::initializer_list<std::string> assignments) {
    const Images::Bytes bytes = Images::changed(sample, assignments);
    return {bytes.begin(), bytes.end()};
}

/// The documents of a page, parsed.
struct Page {
    using Json = nlohmann::json;
    Json head;
    std::vector<Json> blocks;

    explicit Page(const ReportDocuments& documents) : head(Support::parsed(documents.head)) {
        for (const std::string& block : documents.blocks)
            blocks.push_back(Support::parsed(block));
    }
    /// Of each place of a block, the end of its source's name.
    std::vector<std::string> namesOf(const Json& block) const {
        std::vector<std::string> names;
        for (const Json& place : block["places"])
            names.push_back(fs::path(head["sources"][place["source"].get<std::size_t>()]["name"]).filename());
        return names;
    }
};

const Page::Json* named(const Page::Json& list, const Page::Json& name) {
    const auto found = std::ranges::find_if(list, [&](const Page::Json& one) { return one["name"] == name; });
    return found == list.end() ? nullptr : &*found;
}

/// Holds those of the members of two objects that are named against each other.
void expectSame(const Page::Json& one, const Page::Json& other, std::initializer_list<const char*> members,
                const std::string& what) {
    for (const char* const member : members)
        EXPECT_EQ(one.value(member, Page::Json()), other.value(member, Page::Json())) << what << ": " << member;
}

// What a page of a fleet shows of a module is what the page of its image shows.
TEST(FleetReport, ShowsWhatThePageOfAnImageShows) {
    const Folder folder;
    std::size_t compared = 0;
    for (const std::string name : {"dac-board.bin", "rf-board.bin", "step-attenuator.bin"}) {
        const std::string database = folder / name + ".sqlite";
        collected(database, {TRAVIK_SAMPLES + std::string("/") + name});
        OutlierQuestion question;
        question.blocks = BlockSelector({"*"});
        const Page fleet(outlierReport(FleetDatabase(database, FleetDatabase::Access::Read), question, "test"));
        const std::string bytes = sampleBytes(name);
        const std::vector<ReportImage> images{{name, bytes}};
        const Page alone(reportOf(images, ReportForm::Module, "test"));
        ASSERT_EQ(fleet.blocks.size(), alone.blocks.size());
        for (std::size_t f = 0; f < fleet.blocks.size(); ++f) {
            const Page::Json& entry = fleet.head["blocks"][f];
            const std::string what = entry["key"];
            std::size_t a = 0;
            while (alone.head["blocks"][a]["id"] != entry["id"])
                ++a;
            expectSame(entry, alone.head["blocks"][a], {"key", "class", "kind"}, what);
            const Page::Json& shown = fleet.blocks[f];
            const Page::Json& expected = alone.blocks[a];
            expectSame(shown["places"][0], expected["places"][0], {"source", "offset", "size", "checksum", "crc"},
                       what);
            for (const Page::Json& field : expected["fields"]) {
                const Page::Json* const same = named(shown["fields"], field["name"]);
                ASSERT_TRUE(same) << what << field;
                EXPECT_EQ((*same)["texts"], field["texts"]) << what << field;
            }
            for (const Page::Json& table : shown["tables"]) {
                const Page::Json* const same = named(expected["tables"], table["name"]);
                if (!same || (*same)["curves"][0].contains("text"))
                    continue;
                expectSame(table, *same, {"rows", "drawn"}, what);
                expectSame(table["axis"], (*same)["axis"], {"unit", "values", "logarithmic"}, what);
                ASSERT_EQ(table["curves"].size(), (*same)["curves"].size()) << what;
                for (std::size_t c = 0; c < table["curves"].size(); ++c)
                    expectSame(table["curves"][c], (*same)["curves"][c], {"unit", "values"}, what);
                compared += table["curves"].size();
            }
        }
    }
    EXPECT_GT(compared, 100U);
}

TEST(FleetReport, MarksTheModulesThatLieOutside) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (unsigned int serial = 11; serial <= 19; ++serial)
        write(folder / "images/" + std::to_string(serial), attenuator(serial, serial == 14 ? 90000 : 90 + serial % 2));
    collected(database, {folder / "images"});
    OutlierQuestion question;
    question.blocks = BlockSelector({"11302"});
    const Page page(outlierReport(FleetDatabase(database, FleetDatabase::Access::Read), question, "test 1.0"));
    EXPECT_EQ(page.head["title"], "1 of 9 modules outside");
    EXPECT_EQ(page.head["form"], "family");
    EXPECT_EQ(page.head["generator"], "test 1.0");
    ASSERT_EQ(page.blocks.size(), 1U);
    const std::vector<std::string> names = page.namesOf(page.blocks[0]);
    const auto odd = static_cast<std::size_t>(std::ranges::find(names, "14") - names.begin());
    ASSERT_LT(odd, 9U);
    const Page::Json& source = page.head["sources"][odd];
    EXPECT_EQ(source["title"], "SATT6C, serial number 14");
    EXPECT_EQ(source["facts"], Support::parsed(R"([
        {"group": "Module", "label": "Name", "value": "SATT6C"},
        {"group": "Module", "label": "Serial number", "value": "14"},
        {"group": "Module", "label": "Product index", "value": "02.04"},
        {"group": "Module", "label": "Production date", "value": "2018-11-15"}])"));
    const Page::Json& table = page.blocks[0]["tables"][0];
    EXPECT_EQ(table["name"], "counter_value");
    EXPECT_EQ(table["axis"], Support::parsed(R"({"name": "point"})"));
    EXPECT_EQ(table["rows"], 2);
    EXPECT_EQ(table["plotted"], true);
    EXPECT_EQ(table["matrix"], false);
    EXPECT_FALSE(table.contains("ownAxes"));
    EXPECT_EQ(table["drawn"].size(), 9U);
    EXPECT_EQ(table["odd"], std::vector<std::size_t>{odd});
    EXPECT_EQ(table["curves"][0]["values"][odd], (std::vector<int>{90000, 6}));
    EXPECT_EQ(table["curves"][0]["spread"]["median"], (std::vector<int>{91, 6}));
}

// A module may have an axis of its own; what has eight rows or more is shown as a matrix.
TEST(FleetReport, HasTheAxesOfTheModules) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    write(folder / "1", changed("rf-board", {"2.serial_number=1"}));
    write(folder / "2", changed("rf-board", {"2.serial_number=2", "15725.values[0][0]=1"}));
    std::string without = changed("rf-board", {"2.serial_number=3"});
    const ModuleImage image{std::span<const char>(without)};
    const auto axis = std::ranges::find(image.blocks(), 15725, &ImageBlock::id);
    ASSERT_NE(axis, image.blocks().end());
    without.erase(axis->offset, axis->bytes.size());
    write(folder / "3", without);
    collected(database, {folder / "1", folder / "2", folder / "3"}, nullptr, 1);
    OutlierQuestion question;
    question.blocks = BlockSelector({"15721", "15726"});
    const Page page(outlierReport(FleetDatabase(database, FleetDatabase::Access::Read), question, "test"));
    ASSERT_EQ(page.blocks.size(), 2U);
    EXPECT_EQ(page.namesOf(page.blocks[1]), (std::vector<std::string>{"1", "2", "3"}));
    const Page::Json& attenuation = *named(page.blocks[0]["tables"], "values");
    EXPECT_EQ(attenuation["curves"].size(), 27U);
    EXPECT_EQ(attenuation["curves"][26]["name"], "row 26");
    EXPECT_EQ(attenuation["matrix"], true);
    EXPECT_FALSE(attenuation.contains("ownAxes"));
    EXPECT_EQ(named(page.blocks[0]["tables"], "index")->at("matrix"), false);
    const Page::Json& level = *named(page.blocks[1]["tables"], "values");
    EXPECT_EQ(level["axis"]["name"], "RFBO_EXT_CAL_FREQ");
    EXPECT_EQ(level["curves"].size(), 5U);
    EXPECT_EQ(level["matrix"], false);
    ASSERT_EQ(level["ownAxes"].size(), 3U);
    EXPECT_TRUE(level["ownAxes"][0].is_null());
    EXPECT_TRUE(level["ownAxes"][2].is_null()) << "a module without labels has the others'";
    EXPECT_EQ(level["ownAxes"][1].size(), level["axis"]["values"].size());
    EXPECT_NE(level["ownAxes"][1][0], level["axis"]["values"][0]);
    EXPECT_EQ(level["ownAxes"][1][1], level["axis"]["values"][1]);
}

// Of large tables of many modules not all curves are drawn, but those that lie far off.
TEST(FleetReport, LeavesCurvesOutButNotTheOdd) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    constexpr unsigned int modules = 30;
    std::vector<std::string> paths;
    for (unsigned int serial = 1; serial <= modules; ++serial) {
        paths.push_back(folder / std::to_string(serial));
        write(paths.back(),
              changed("rf-board", {"2.serial_number=" + std::to_string(serial),
                                   serial == modules ? "15721.values[0][0]=90" : "15721.values[0][0]=1"}));
    }
    collected(database, paths, nullptr, 1);
    OutlierQuestion question;
    question.blocks = BlockSelector({"*"});
    const Page page(outlierReport(FleetDatabase(database, FleetDatabase::Access::Read), question, "test"));
    EXPECT_EQ(page.head["title"], "1 of 30 modules outside");
    EXPECT_EQ(page.head["remarks"].size(), 1U);
    for (std::size_t b = 0; b < page.blocks.size(); ++b) {
        if (page.head["blocks"][b]["id"] != 15721)
            continue;
        EXPECT_EQ(named(page.blocks[b]["tables"], "index")->at("drawn").size(), modules);
        const Page::Json& table = *named(page.blocks[b]["tables"], "values");
        EXPECT_EQ(table["odd"], std::vector<int>{29});
        EXPECT_EQ(table["drawn"], (std::vector<int>{0,  1,  2,  3,  5,  6,  7,  8,  10, 11, 12, 13,
                                                    15, 16, 17, 18, 20, 21, 22, 23, 25, 26, 27, 29}));
        EXPECT_EQ(table["curves"][0]["values"].size(), table["drawn"].size());
        EXPECT_EQ(table["curves"][0]["values"].back()[0], 90);
    }
}

// A counter that grows with the serial number and with the year.
TEST(FleetReport, DrawsTheLinesOfATrend) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (unsigned int serial = 1; serial <= 6; ++serial) {
        const std::string number = std::to_string(serial);
        write(folder / "images/" + number,
              changed("step-attenuator", {"2.serial_number=" + number, "2.product_date=201" + number + "-01-01",
                                          "11302.counter_value[0]=" + std::to_string(100 + 10 * serial)}));
    }
    collected(database, {folder / "images"});
    const FleetDatabase opened(database, FleetDatabase::Access::Read);
    TrendQuestion question;
    question.blocks = BlockSelector({"11302"});
    const Page bySerial(trendReport(opened, question, "test"));
    EXPECT_EQ(bySerial.head["title"], "Values over serial numbers");
    ASSERT_EQ(bySerial.blocks.size(), 2U);
    EXPECT_EQ(bySerial.head["blocks"][0]["key"], "SATTC_HPCOUNTER");
    EXPECT_EQ(bySerial.head["blocks"][1]["key"], "SATTC_HPCOUNTER over serial numbers");
    EXPECT_EQ(bySerial.blocks[1]["tables"][0], Support::parsed(R"({
        "name": "counter_value at 0", "rows": 6, "plotted": true, "matrix": false, "drawn": [0],
        "axis": {"name": "serial number", "values": [1, 2, 3, 4, 5, 6]},
        "curves": [{"name": "value", "values": [[110, 120, 130, 140, 150, 160]]},
                   {"name": "line", "values": [[110, 120, 130, 140, 150, 160]]}]})"));
    EXPECT_EQ(bySerial.blocks[1]["tables"].size(), 2U);

    question.over = TrendQuestion::Over::ProductionDate;
    const Page byDate(trendReport(opened, question, "test"));
    EXPECT_EQ(byDate.head["title"], "Values over dates of production");
    EXPECT_EQ(byDate.head["blocks"][1]["key"], "SATTC_HPCOUNTER over dates");
    const Page::Json& table = byDate.blocks[1]["tables"][0];
    EXPECT_EQ(table["axis"]["name"], "year of production");
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(table["axis"]["values"][i], 2011 + static_cast<double>(i), 0.01);
        EXPECT_NEAR(table["curves"][1]["values"][0][i], 110 + 10 * static_cast<double>(i), 0.1);
    }
}

TEST(FleetReport, HasTheCountersThatWearFastestFirst) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    write(folder / "images/1", attenuator(1, 120));
    write(folder / "images/2", attenuator(2, 2000));
    write(folder / "images/board", sampleBytes("rf-board.bin"));
    collected(database, {folder / "images"});
    const Page page(wearReport(FleetDatabase(database, FleetDatabase::Access::Read), {}, "test"));
    EXPECT_EQ(page.head["title"], "Wear");
    ASSERT_EQ(page.blocks.size(), 1U);
    EXPECT_EQ(page.head["blocks"][0]["key"], "Wear counters");
    EXPECT_EQ(page.namesOf(page.blocks[0]), (std::vector<std::string>{"2", "1"}));
    EXPECT_EQ(page.blocks[0]["fields"], Support::parsed(R"([
        {"name": "operating_hours", "texts": ["10456 h", "10456 h"]},
        {"name": "sattc_high_power[0]", "texts": ["2000", "120"]},
        {"name": "sattc_overload[0]", "texts": ["412", "412"]},
        {"name": "satt6_overload_1[0]", "texts": ["57", "57"]},
        {"name": "sattc_overload[1]", "texts": ["17", "17"]},
        {"name": "sattc_high_power[1]", "texts": ["6", "6"]},
        {"name": "satt6_overload_2[0]", "texts": ["3", "3"]}])"));
}

TEST(FleetReport, TellsWhatDoesNotVerify) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    write(folder / "images/1", attenuator(1));
    std::string bytes = attenuator(2);
    constexpr std::size_t counterOffset = 1984;
    bytes[counterOffset + 8] ^= 1;
    write(folder / "images/2", bytes);
    collected(database, {folder / "images"});
    const Page page(damageReport(FleetDatabase(database, FleetDatabase::Access::Read), {}, "test"));
    EXPECT_EQ(page.head["title"], "1 of 2 images do not verify");
    EXPECT_TRUE(page.blocks.empty());
    ASSERT_EQ(page.head["sources"].size(), 1U);
    EXPECT_EQ(page.head["sources"][0]["facts"].back(), Support::parsed(R"({
        "group": "Verification", "label": "Problem", "value": "offset 1984, block 11313: wrong checksum", "mark": "damaged"})"));
}

// A module that does not say who it is has its path as a name, and a kind that has none; what is not meant is left out.
TEST(FleetReport, HasModulesThatHaveNoName) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (int i = 0; i < 6; ++i)
        write(folder / "images/" + std::to_string(i),
              changed("rf-board", {"2.serial_number=" + std::to_string(i)}).substr(44));
    write(folder / "images/named", changed("rf-board", {"2.serial_number=0", "2.product_index=0"}));
    write(folder / "images/other", changed("rf-board", {"2.name=OTHER", "15725.values[0][0]=7"}));
    collected(database, {folder / "images"});
    const FleetDatabase opened(database, FleetDatabase::Access::Read);
    OutlierQuestion question;
    question.blocks = BlockSelector({"RFBO_ALC_DATA"});
    const Page page(outlierReport(opened, question, "test"));
    // The same bytes are the same module, whatever their path: six of eight have no number of their own.
    EXPECT_EQ(page.head["kinds"], Support::parsed(R"(["not named", "RFBO", "OTHER"])"));
    const Page::Json& first = page.head["sources"][0];
    EXPECT_EQ(first["title"], first["name"]);
    EXPECT_FALSE(first.contains("facts") && !first["facts"].empty()) << first;
    const auto named = std::ranges::find(page.head["sources"], "RFBO", [](const auto& one) { return one["title"]; });
    ASSERT_NE(named, page.head["sources"].end());
    EXPECT_EQ((*named)["facts"].size(), 2U) << *named; // its name and date
    question.filter.name = "OTHER";
    question.blocks = BlockSelector({"15726"});
    const Page only(outlierReport(opened, question, "test"));
    EXPECT_EQ(only.head["title"], "0 of 1 module outside");
    EXPECT_EQ(only.head["sources"].size(), 1U);
    EXPECT_EQ(Page(damageReport(opened, question.filter, "test")).head["title"], "0 of 1 image do not verify");
}

// Of many points only some have lines; each says at which place, and of which row.
TEST(FleetReport, DrawsAHundredLinesAtMost) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (int i = 1; i <= 5; ++i)
        write(folder / "images/" + std::to_string(i),
              changed("rf-board",
                      {"2.serial_number=" + std::to_string(i), "15716.values[1][0]=" + std::to_string(2 * i)}));
    collected(database, {folder / "images"});
    const FleetDatabase opened(database, FleetDatabase::Access::Read);
    TrendQuestion question;
    question.fields = NameSelector({"values"});
    question.blocks = BlockSelector({"15716", "15725"});
    const Page many(trendReport(opened, question, "test"));
    EXPECT_THAT(many.head["remarks"].dump(), testing::HasSubstr("Lines are drawn of the first 100 of 606 points"));
    question.blocks = BlockSelector({"15721"});
    const Page matrix(trendReport(opened, question, "test"));
    EXPECT_EQ(matrix.blocks[0]["tables"].size(), 1U) << "its other table is not asked for";
    question.blocks = BlockSelector({"15716", "15725"});
    question.at = "1 Hz";
    EXPECT_TRUE(Page(trendReport(opened, question, "test")).blocks.empty()) << "no line, no block";
    question.row = 1;
    question.at = "9 kHz";
    const Page one(trendReport(opened, question, "test"));
    ASSERT_EQ(one.blocks.size(), 2U);
    EXPECT_TRUE(one.blocks[0]["fields"].empty()) << "rows and columns are not asked for";
    const Page::Json& table = one.blocks[1]["tables"][0];
    EXPECT_EQ(table["name"], "values, 1 at 9 kHz");
    EXPECT_EQ(table["curves"][1]["values"], Support::parsed("[[2, 4, 6, 8, 10]]"));
}

TEST(FleetReport, NamesCurvesByTheirPlaces) {
    const Folder folder;
    collected(folder / "fleet.sqlite", {TRAVIK_SAMPLES + std::string("/main-board.bin")});
    OutlierQuestion question;
    question.blocks = BlockSelector({"PATH_A_RF_RESPONSE_LP_AMP"});
    const Page page(
        outlierReport(FleetDatabase(folder / "fleet.sqlite", FleetDatabase::Access::Read), question, "test"));
    const Page::Json& curves = named(page.blocks[0]["tables"], "c1")->at("curves");
    EXPECT_EQ(curves[0]["name"], "0, filter 0");
    EXPECT_EQ(curves[5]["name"], "1, filter 1");
}

// Where a counter lacks, so does its text; hours that were never recorded are not shown.
TEST(FleetReport, HasCountersOfModulesWithoutHours) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    write(folder / "images/1", changed("step-attenuator", {"300.operating_hours=4294967295"}));
    write(folder / "images/2", changed("step-attenuator", {"2.serial_number=2", "11302.counter_value[1]=4294967295"}));
    collected(database, {folder / "images"});
    const Page page(wearReport(FleetDatabase(database, FleetDatabase::Access::Read), {}, "test"));
    EXPECT_EQ(page.namesOf(page.blocks[0]), (std::vector<std::string>{"2", "1"}));
    EXPECT_EQ(named(page.blocks[0]["fields"], "operating_hours")->at("texts"), Support::parsed(R"(["10456 h", ""])"));
    EXPECT_EQ(named(page.blocks[0]["fields"], "sattc_high_power[1]")->at("texts"), Support::parsed(R"(["", "6"])"));
}

} // namespace FleetReportTest
