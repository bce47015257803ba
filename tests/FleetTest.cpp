#include "JsonText.h"
#include "Support.h"

#include <travik/fleet/ClickHouse.h>
#include <travik/fleet/Collect.h>
#include <travik/fleet/FleetDatabase.h>
#include <travik/fleet/FleetReport.h>
#include <travik/fleet/JsonLines.h>
#include <travik/fleet/Questions.h>
#include <travik/fleet/TrendLine.h>
#include <travik/service/ImageChange.h>
#include <travik/service/ImageFile.h>
#include <travik/service/RobustStatistics.h>
#include <travik/service/Values.h>

#include <sqlite3.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <numeric>

namespace FleetTest {

using namespace Travik;
namespace fs = std::filesystem;
using Counts =
    std::vector<std::size_t>; // images, added, changed, unchanged, vanished, returned, damaged, aliens, unreadable

/// A folder of its own, removed with it.
class Folder {
public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "travik-fleet-XXXXXX").string();
        path_ = fs::canonical(::mkdtemp(name.data()));
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(path_); }

    std::string operator/(const std::string& name) const { return (path_ / name).string(); }
    std::string path() const { return path_.string(); }

private:
    fs::path path_;
};

void write(const std::string& path, std::string_view bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    // So long ago that its time can be relied on.
    fs::last_write_time(path, fs::last_write_time(path) - std::chrono::hours(1));
}

std::string sampleBytes(const std::string& name) {
    std::vector<char> bytes;
    EXPECT_EQ(readImageFile(std::string(TRAVIK_SAMPLES) + '/' + name, bytes), "");
    return {bytes.begin(), bytes.end()};
}

/// An attenuator of a serial number; its high-power counter may be set.
std::string attenuator(unsigned int serial, unsigned int highPower = 91) {
    std::string bytes = sampleBytes("step-attenuator.bin");
    const ModuleImage image{std::span<const char>(bytes)};
    const auto put = [&](const ImageBlock& block, std::size_t offset, unsigned int value) {
        for (std::size_t i = 0; i < 4; ++i)
            bytes[block.offset + offset + i] = static_cast<char>(value >> (8 * i));
        const std::string sealed = Support::sealed(bytes.substr(block.offset, block.bytes.size()));
        bytes.replace(block.offset, sealed.size(), sealed);
    };
    for (const ImageBlock& block : image.blocks()) {
        if (block.id == 2)
            put(block, 20, serial);
        if (block.id == 11302)
            put(block, BlockLayout(block).fields().back().offset, highPower);
    }
    return bytes;
}

Counts collected(const std::string& database, std::vector<std::string> paths, std::vector<std::string>* told = nullptr,
                 unsigned int jobs = 2) {
    FleetDatabase sink(database, FleetDatabase::Access::Write);
    CollectOptions options;
    options.jobs = jobs;
    if (told)
        options.tell = [&](const CollectNews& news) { told->push_back(news.path + ": " + news.text); };
    const CollectCounts counts = collect(std::move(paths), sink, options);
    return {counts.images,   counts.added,   counts.changed, counts.unchanged, counts.vanished,
            counts.returned, counts.damaged, counts.aliens,  counts.unreadable};
}

/// The answer of plain SQL, cells by "|", rows by line feeds.
std::string asked(const std::string& database, const std::string& sql) {
    sqlite3* opened = nullptr;
    EXPECT_EQ(sqlite3_open_v2(database.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    std::string text;
    char* error = nullptr;
    const auto add = [](void* to, int count, char** cells, char** /*names*/) {
        std::string& all = *static_cast<std::string*>(to);
        all += all.empty() ? "" : "\n";
        for (int i = 0; i < count; ++i)
            all.append(i == 0 ? "" : "|").append(cells[i] ? cells[i] : "NULL");
        return 0;
    };
    if (sqlite3_exec(opened, sql.c_str(), add, &text, &error) != SQLITE_OK)
        text = error;
    sqlite3_free(error);
    sqlite3_close(opened);
    return text;
}

constexpr auto soundly = "PRAGMA integrity_check; PRAGMA foreign_key_check";

TEST(FleetRows, HoldWhatTheImageHolds) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    EXPECT_EQ(collected(database, {TRAVIK_SAMPLES + std::string("/rf-board.bin"),
                                   TRAVIK_SAMPLES + std::string("/step-attenuator.bin"),
                                   TRAVIK_SAMPLES + std::string("/second-edition.bin")}),
              (Counts{3, 3, 0, 0, 0, 0, 0, 0, 0}));
    const struct {
        std::string sql;
        std::string answer;
    } rows[] = {
        {"SELECT name, part_number, variant, serial_number, production_date, product_index, problems, module FROM "
         "images "
         "WHERE path LIKE '%/rf-board.bin'",
         "RFBO|1141.5002.02|2|101337|2018-11-15|02.04|0|1141.5002.02/101337"},
        {"SELECT operating_hours, last_service, wear_names ->> 4, wear_values ->> 4, wear_differs FROM images WHERE "
         "name = 'SATT6C'",
         "10456|2022-10-24|sattc_high_power[0]|91|1"},
        {"SELECT block, offset, identifier, key, class, size, checksum, crc FROM blocks WHERE key = 'USER_40100'",
         "1|44|40100|USER_40100|HwDatablock2Edition|624|ok|ok"},
        {"SELECT number, text, unit FROM scalars JOIN images USING (image) WHERE name = 'RFBO' AND field IN "
         "('eeprom_size', 'name') ORDER BY field",
         "131072.0|NULL|byte\nNULL|RFBO|"},
        {"SELECT row, row_label, unit, step, points, axis, axis_unit, axis_values ->> 0, point_values ->> 0, "
         "json_array_length(axis_values) FROM curves WHERE key = 'RFBO_RFLEVEL_MAX_DATA'",
         "0|0||0.01|128|RFBO_RFLEVEL_MAX_FREQ|Hz|9000|19.5|128\n1|1||0.01|128|RFBO_RFLEVEL_MAX_FREQ|Hz|9000|18.5|128"},
        {"SELECT axis_value, axis_unit, value, unit FROM points WHERE key = 'RFBO_RFLEVEL_MAX_DATA' AND axis_value = "
         "3e9",
         "3000000000|Hz|16.96|\n3000000000|Hz|15.96|"},
        {"SELECT counter, value, round(per_1000_hours, 3) FROM wear WHERE counter LIKE 'sattc_high%' ORDER BY counter",
         "sattc_high_power[0]|91|8.703\nsattc_high_power[1]|6|0.574"},
        {soundly, "ok"},
    };
    for (const auto& [sql, answer] : rows)
        EXPECT_EQ(asked(database, sql), answer) << sql;
    // Each value in use once.
    const std::vector<char> bytes = [] {
        std::vector<char> read;
        readImageFile(TRAVIK_SAMPLES + std::string("/rf-board.bin"), read);
        return read;
    }();
    const ModuleImage image(bytes);
    const ImageValues values(image);
    std::size_t used = 0;
    for (const ImageBlock& block : image.blocks()) {
        const BlockValues read = values.read(block);
        for (const FieldValues& field : read.fields) {
            for (std::size_t i = 0; field.field->role != Role::Reserved && i < field.size(); ++i)
                used += field.isUsed(i) ? 1U : 0U;
        }
    }
    EXPECT_EQ(asked(database,
                    "SELECT (SELECT sum(points) FROM curves NATURAL JOIN images WHERE name = 'RFBO') + (SELECT "
                    "count(*) FROM scalars NATURAL JOIN images WHERE name = 'RFBO')"),
              std::to_string(used));
}

TEST(Collect, FollowsWhatBecomesOfTheFiles) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    const std::string images = folder / "images";
    write(images + "/a.bin", attenuator(1));
    write(images + "/deep/er/b.bin", attenuator(2));
    write(images + "/notes.txt", "no image at all");
    write(images + "/empty", "");
    const std::vector<std::string> all{images};
    EXPECT_EQ(collected(database, all), (Counts{2, 2, 0, 0, 0, 0, 0, 2, 0}));
    EXPECT_EQ(collected(database, all), (Counts{2, 0, 0, 2, 0, 0, 0, 2, 0}));
    // Another time, the same content: not a change.
    write(images + "/a.bin", attenuator(1));
    fs::last_write_time(images + "/a.bin", fs::last_write_time(images + "/a.bin") - std::chrono::hours(5));
    EXPECT_EQ(collected(database, all), (Counts{2, 0, 0, 2, 0, 0, 0, 2, 0}));
    std::string damaged = attenuator(1);
    damaged[48] = static_cast<char>(damaged[48] ^ 1);
    write(images + "/a.bin", damaged);
    std::vector<std::string> told;
    EXPECT_EQ(collected(database, all, &told), (Counts{2, 0, 1, 1, 0, 0, 1, 2, 0}));
    EXPECT_THAT(told, testing::Contains(testing::StartsWith(images + "/a.bin: offset 44, block ")));
    // A damaged image stays one that is told by the count.
    EXPECT_EQ(collected(database, all), (Counts{2, 0, 0, 2, 0, 0, 1, 2, 0}));
    fs::rename(images + "/deep", folder / "elsewhere");
    EXPECT_EQ(collected(database, all), (Counts{1, 0, 0, 1, 1, 0, 1, 2, 0}));
    EXPECT_EQ(asked(database, "SELECT path, vanished >= '2020-01-01T00:00:00Z' FROM images WHERE vanished IS NOT NULL; "
                              "SELECT count(*) FROM latest"),
              images + "/deep/er/b.bin|1\n1");
    EXPECT_EQ(collected(database, all), (Counts{1, 0, 0, 1, 0, 0, 1, 2, 0}));
    fs::rename(folder / "elsewhere", images + "/deep");
    EXPECT_EQ(collected(database, all), (Counts{2, 0, 0, 2, 0, 1, 1, 2, 0}));
    // What is no image any more has vanished as one.
    write(images + "/a.bin", "overwritten with a text");
    EXPECT_EQ(collected(database, all), (Counts{1, 0, 0, 1, 1, 0, 0, 3, 0}));
    EXPECT_EQ(asked(database, soundly), "ok");
}

TEST(Collect, TellsWhatItCannotUse) {
    const Folder folder;
    const std::string images = folder / "images";
    write(images + "/a.bin", attenuator(1));
    fs::create_directory_symlink("..", images + "/loop");
    fs::create_symlink("itself", images + "/itself");
    fs::create_symlink("nowhere", images + "/dangling");
    fs::create_symlink("a.bin", images + "/same.bin");
    ASSERT_EQ(::mkfifo((images + "/pipe").c_str(), 0600), 0);
    std::ofstream(images + "/large").close();
    fs::resize_file(images + "/large", FolderWalk::largestFile + 1);
    std::vector<std::string> told;
    // The link to the folder above leads to the database, which is passed over.
    EXPECT_EQ(collected(folder / "fleet.sqlite", {images, folder / "missing"}, &told, 1),
              (Counts{2, 1, 0, 1, 0, 0, 0, 2, 3}));
    EXPECT_THAT(told, testing::UnorderedElementsAre(images + "/itself: Too many levels of symbolic links",
                                                    images + "/dangling: No such file or directory",
                                                    folder / "missing: No such file or directory",
                                                    images + "/pipe: no regular file",
                                                    images + "/large: larger than 64 MiB"));
    EXPECT_EQ(asked(folder / "fleet.sqlite", "SELECT path FROM images"), images + "/a.bin");
}

TEST(Collect, ErasedAndCutImagesAreImages) {
    const struct {
        std::string bytes;
        std::string why;
    } rows[] = {
        {std::string(64, '\xff'), ""},
        {attenuator(1).substr(0, 100), ""},
        {Support::image({0xFFFF, 0}), ""},
        {std::string(64, '\0'), "no block of it is known"},
        {"#!/bin/sh\necho\n", "no block of it is known"},
        {"", "empty"},
    };
    for (const auto& [bytes, why] : rows)
        EXPECT_EQ(whyNoImage(bytes, ModuleImage(std::span<const char>(bytes))), why) << bytes;
}

// Names and texts that mean something to SQL, JSON or a terminal are data.
TEST(Collect, TakesHostileTexts) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    const std::string name = folder / "images/it's \"a\"; DROP TABLE images; --\x1b[2J\n\xff.bin";
    HwDatablockIdent ident;
    ident.setName(QString::fromLatin1("');\x1b\"\\\xe9"));
    ident.setPartNumber(11415002);
    ident.setSerialNumber(5);
    ident.setChecksum(ident.computeChecksum());
    write(name, Support::bytesOf(ident));
    EXPECT_EQ(collected(database, {folder / "images"}), (Counts{1, 1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(asked(database,
                    "SELECT path FROM images; SELECT name FROM images; SELECT text FROM scalars WHERE field = 'name'"),
              name + "\n');\x1b\"\\\xc3\xa9\n');\x1b\"\\\xc3\xa9");
    std::string lines;
    JsonLines sink(Relation::Images, [&](std::string_view text) { lines += text; });
    collect({folder / "images"}, sink, {});
    EXPECT_EQ(lines.find('\x1b'), std::string::npos);
    EXPECT_EQ(lines.find('\n'), lines.size() - 1);
    const nlohmann::json object = Support::parsed(lines);
    EXPECT_EQ(object["name"], "');\x1b\"\\\xc3\xa9");
    EXPECT_EQ(object["content_hash"], asked(database, "SELECT content_hash FROM images"));
}

TEST(Collect, RowsDoNotDependOnJobs) {
    const Folder folder;
    std::string alone;
    for (const unsigned int jobs : {1U, 3U}) {
        std::string lines;
        CollectOptions options;
        options.jobs = jobs;
        JsonLines sink(Relation::Curves, [&](std::string_view text) { lines += text; });
        collect({TRAVIK_SAMPLES}, sink, options);
        if (alone.empty())
            alone = lines;
        EXPECT_EQ(lines, alone);
    }
    std::size_t points = 0;
    std::istringstream stream(alone);
    for (std::string line; std::getline(stream, line);) {
        const nlohmann::json object = Support::parsed(line);
        ASSERT_EQ(object["points"], object["point_values"].size()) << line;
        ASSERT_LE(object["axis_values"].size(), object["point_values"].size()) << line;
        ASSERT_EQ(object.size(), 2 + fleetRelations()[3].columns.size());
        points += object["points"].get<std::size_t>();
    }
    EXPECT_GT(points, 100000U);
}

TEST(FleetDatabase, RefusesWhatIsNoneOfItsOwn) {
    const Folder folder;
    write(folder / "text", std::string(5000, 'x'));
    sqlite3* made = nullptr;
    ASSERT_EQ(sqlite3_open((folder / "other").c_str(), &made), SQLITE_OK);
    sqlite3_exec(made, "CREATE TABLE t(x)", nullptr, nullptr, nullptr);
    sqlite3_close(made);
    { const FleetDatabase later(folder / "later", FleetDatabase::Access::Write); }
    asked(folder / "later", "PRAGMA user_version = 2");
    write(folder / "empty", "");
    const struct {
        std::string file;
        std::string whyRead;
        std::string whyWrite;
    } rows[] = {
        {"text", "file is not a database", "file is not a database"},
        {"other", "a database of something else", "a database of something else"},
        {"later", "schema version 2, this tool knows 1", "schema version 2, this tool knows 1"},
        {"empty", "an empty database", ""},
        {"missing", "No such file or directory", ""},
        {"no/folder", "No such file or directory", "No such file or directory"},
        {".", "Is a directory", "Is a directory"},
    };
    const auto whyNot = [&](const std::string& file, FleetDatabase::Access access) {
        try {
            const FleetDatabase database(folder / file, access);
        } catch (const FleetError& error) {
            std::string why = error.what();
            EXPECT_EQ(why.find(folder / file + ": "), 0U) << why;
            return why.substr((folder / file).size() + 2);
        }
        return std::string();
    };
    for (const auto& [file, whyRead, whyWrite] : rows) {
        EXPECT_EQ(whyNot(file, FleetDatabase::Access::Read), whyRead) << file;
        EXPECT_EQ(whyNot(file, FleetDatabase::Access::Write), whyWrite) << file;
    }
    EXPECT_EQ(asked(folder / "other", "SELECT count(*) FROM t"), "0");
}

TEST(FleetDatabase, ArraysAreReadStrictly) {
    EXPECT_THAT(numbersOf("[1,-2.5,3e9]"), testing::ElementsAre(1, -2.5, 3e9));
    EXPECT_TRUE(std::isnan(numbersOf("[null]").front()));
    EXPECT_TRUE(numbersOf("[]").empty());
    for (const std::string_view text :
         {"", "[", "[1", "[1,]", "[,1]", "[1;2]", "[x]", "[1 ]", "{}", "[[1]]", "[\"1\"]"})
        EXPECT_THROW(numbersOf(text), FleetError) << text;
}

TEST(Questions, EachModuleCountsWithItsLatestImage) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (unsigned int serial = 1; serial <= 9; ++serial)
        write(folder / "images/" + std::to_string(serial), attenuator(serial, serial == 4 ? 90000 : 90 + serial % 2));
    // An older image of a module, worn as it never was, and a later one of another.
    write(folder / "images/old", attenuator(5, 70000));
    fs::last_write_time(folder / "images/old", fs::last_write_time(folder / "images/5") - std::chrono::hours(9));
    write(folder / "images/new", attenuator(6, 80000));
    fs::last_write_time(folder / "images/new", fs::last_write_time(folder / "images/6") + std::chrono::minutes(9));
    EXPECT_EQ(collected(database, {folder / "images"}), (Counts{11, 11, 0, 0, 0, 0, 0, 0, 0}));
    const FleetDatabase opened(database, FleetDatabase::Access::Read);
    const std::vector<WearCount> worn = wear(opened, {});
    ASSERT_EQ(worn.size(), 9U * 6);
    EXPECT_EQ(worn[0].module.serialNumber, 4);
    EXPECT_EQ(worn[0].counter, "sattc_high_power[0]");
    EXPECT_EQ(worn[1].module.path, folder / "images/new");
    EXPECT_LT(worn[2].value, 1000);
    FleetFilter other;
    other.productIndex = "09.09";
    EXPECT_TRUE(wear(opened, other).empty());

    OutlierQuestion question;
    question.blocks = BlockSelector({"11302"});
    const OutlierAnswer answer = outliers(opened, question);
    EXPECT_EQ(answer.modules, 9U);
    ASSERT_EQ(answer.outliers.size(), 2U);
    EXPECT_EQ(answer.outliers[0].module.serialNumber, 4);
    EXPECT_EQ(answer.outliers[0].value, 90000);
    EXPECT_EQ(answer.outliers[1].module.serialNumber, 6);
    question.filter.name = "none";
    EXPECT_EQ(outliers(opened, question).points, 0U);
}

TEST(Statistics, FollowTheirFormulas) {
    EXPECT_TRUE(std::isnan(median({})));
    EXPECT_EQ(median({3, 1, 2}), 2);
    EXPECT_EQ(median({4, 1, 2, 3}), 2.5);
    const RobustSpread spread({1, 1, 2, 2, 4, 6, 9}, 0); // a textbook's: median 2, MAD 1
    EXPECT_EQ(spread.median, 2);
    EXPECT_EQ(spread.mad, 1);
    EXPECT_DOUBLE_EQ(spread.score(9), 7 / 1.4826);
    const RobustSpread same({5, 5, 5, 5}, 0);
    EXPECT_EQ(same.score(5), 0);
    EXPECT_EQ(same.score(6), std::numeric_limits<double>::infinity());
    EXPECT_EQ(RobustSpread({5, 5, 5, 5}, 0.5).score(6), 2);

    const std::vector<double> x{1, 2, 3, 4, 5};
    const TrendLine line = theilSen(x, std::vector<double>{3, 5, 7, 9, 100});
    EXPECT_EQ(line.slope, 2);
    EXPECT_EQ(line.intercept, 1);
    EXPECT_TRUE(std::isnan(theilSen(std::vector<double>{1, 1}, std::vector<double>{1, 2}).slope));
    EXPECT_TRUE(std::isnan(theilSen({}, {}).slope));
}

// Many points take the way that lists no pairs; the answer is that of all pairs.
TEST(Statistics, ManyPointsHaveTheSlopesOfAllPairs) {
    std::mt19937 random(1);
    for (const bool withTies : {false, true}) {
        std::vector<double> x;
        std::vector<double> y;
        for (int i = 0; i < 800; ++i) {
            x.push_back(withTies ? static_cast<double>(random() % 100)
                                 : 1e5 + static_cast<double>(random() % 1000000) / 7);
            y.push_back(0.01 * x.back() + static_cast<double>(random() % 1000) / 3);
        }
        std::vector<double> slopes;
        for (std::size_t i = 0; i < x.size(); ++i) {
            for (std::size_t j = 0; j < x.size(); ++j) {
                if (x[j] > x[i])
                    slopes.push_back((y[j] - y[i]) / (x[j] - x[i]));
            }
        }
        const double expected = median(slopes);
        EXPECT_NEAR(theilSen(x, y).slope, expected, 1e-9 * std::abs(expected));
    }
}

/// A sample with values put in, by assignments as `set` takes them.
std::string changed(const std::string& sample, std::initializer_list<std::string> assignments) {
    std::vector<Assignment> parsed;
    for (const std::string& assignment : assignments)
        parsed.push_back(parseAssignment(assignment));
    const std::string bytes = sampleBytes(sample);
    std::vector<char> image(bytes.begin(), bytes.end());
    const AssignReport report = assignValues(image, parsed);
    EXPECT_TRUE(report.succeeded()) << (report.refusals.empty() ? "" : report.refusals[0].why);
    return {image.begin(), image.end()};
}

/// The documents of a page, parsed.
struct Page {
    using Json = nlohmann::json;
    Json head;
    std::vector<Json> blocks;

    explicit Page(const ReportDocuments& documents) : head(Json::parse(documents.head)) {
        for (const std::string& block : documents.blocks)
            blocks.push_back(Json::parse(block));
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
    EXPECT_EQ(source["facts"], Page::Json::parse(R"([
        {"group": "Module", "label": "Name", "value": "SATT6C"},
        {"group": "Module", "label": "Serial number", "value": "14"},
        {"group": "Module", "label": "Product index", "value": "02.04"},
        {"group": "Module", "label": "Production date", "value": "2018-11-15"}])"));
    const Page::Json& table = page.blocks[0]["tables"][0];
    EXPECT_EQ(table["name"], "counter_value");
    EXPECT_EQ(table["axis"], Page::Json::parse(R"({"name": "point"})"));
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
    write(folder / "1", changed("rf-board.bin", {"2.serial_number=1"}));
    write(folder / "2", changed("rf-board.bin", {"2.serial_number=2", "15725.values[0][0]=1"}));
    collected(database, {folder / "1", folder / "2"}, nullptr, 1);
    OutlierQuestion question;
    question.blocks = BlockSelector({"15721", "15726"});
    const Page page(outlierReport(FleetDatabase(database, FleetDatabase::Access::Read), question, "test"));
    ASSERT_EQ(page.blocks.size(), 2U);
    EXPECT_EQ(page.namesOf(page.blocks[1]), (std::vector<std::string>{"1", "2"}));
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
    ASSERT_EQ(level["ownAxes"].size(), 2U);
    EXPECT_TRUE(level["ownAxes"][0].is_null());
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
              changed("rf-board.bin", {"2.serial_number=" + std::to_string(serial),
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
              changed("step-attenuator.bin", {"2.serial_number=" + number, "2.product_date=201" + number + "-01-01",
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
    EXPECT_EQ(bySerial.blocks[1]["tables"][0], Page::Json::parse(R"({
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
    EXPECT_EQ(page.blocks[0]["fields"], Page::Json::parse(R"([
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
    EXPECT_EQ(page.head["sources"][0]["facts"].back(), Page::Json::parse(R"({
        "group": "Verification", "label": "Problem", "value": "offset 1984, block 11313: wrong checksum", "mark": "damaged"})"));
}

std::string documentText() {
    std::ifstream file(TRAVIK_DOCS "/fleet.md");
    return {std::istreambuf_iterator<char>(file), {}};
}

// The contract says of every relation what the library makes, and gives the schema of a cluster literally.
TEST(FleetDocument, IsTheSchema) {
    const std::string document = documentText();
    for (const FleetRelation& relation : fleetRelations()) {
        std::string table;
        for (const FleetColumn& column : relation.columns) {
            static constexpr std::string_view kinds[] = {"whole", "number", "text", "numbers", "texts"};
            table.append("| `").append(column.name).append("` | ").append(kinds[static_cast<std::size_t>(column.kind)]);
            table.append(column.mayBeNull ? ", null | " : " | ").append(column.about).append(" |\n");
        }
        EXPECT_NE(document.find(table), std::string::npos) << relation.name << "\n" << table;
    }
    EXPECT_NE(document.find("```sql\n" + ClickHouse::schema("fleet") + "```"), std::string::npos)
        << ClickHouse::schema("fleet");
}

} // namespace FleetTest
