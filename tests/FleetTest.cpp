#include "Fleets.h"
#include "Images.h"
#include "JsonText.h"
#include "Writers.h"

#include <travik/fleet/ClickHouse.h>
#include <travik/fleet/JsonLines.h>
#include <travik/fleet/Questions.h>
#include <travik/service/ImageChange.h>

#include <sqlite3.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdlib>

namespace FleetTest {

using namespace Travik;
using namespace Fleets;
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
    EXPECT_EQ(collected(database, all), (Counts{1, 0, 0, 1, 0, 0, 0, 3, 0}));
    // Another file of the same size and time.
    write(folder / "other", attenuator(3));
    fs::last_write_time(folder / "other", fs::last_write_time(images + "/deep/er/b.bin"));
    fs::rename(folder / "other", images + "/deep/er/b.bin");
    EXPECT_EQ(collected(database, all), (Counts{1, 0, 1, 0, 0, 0, 0, 3, 0}));
    Writers::inChild([&] {
        Writers::inject({{SYS_read, EIO}});
        EXPECT_EQ(collected(folder / "new.sqlite", {images + "/deep"}, &told, 1), (Counts{0, 0, 0, 0, 0, 0, 0, 0, 1}));
        EXPECT_EQ(told.back(), images + "/deep/er/b.bin: Input/output error");
    });
    EXPECT_EQ(asked(database, soundly), "ok");
}

TEST(Collect, WhatWasBehindALinkVanishes) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    const std::string image = folder / "elsewhere/a.bin";
    write(image, attenuator(1));
    fs::create_directory(folder / "images");
    fs::create_directory_symlink("../elsewhere", folder / "images/linked");
    EXPECT_EQ(collected(database, {folder / "images"}), (Counts{1, 1, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(asked(database, "SELECT path FROM images"), image);
    fs::remove(image);
    EXPECT_EQ(collected(database, {folder / "images"}), (Counts{0, 0, 0, 0, 1, 0, 0, 0, 0}));
}

// A file is gone where there is no such path any more, not where the way to it cannot be walked.
TEST(Collect, TellsWhatIsGoneFromWhatCannotBeReached) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    const std::string images = folder / "images";
    write(images + "/a/1.bin", attenuator(1));
    write(images + "/b/2.bin", attenuator(2));
    EXPECT_EQ(collected(database, {images}), (Counts{2, 2, 0, 0, 0, 0, 0, 0, 0}));
    fs::remove_all(images + "/a");
    write(images + "/a", "a text");
    fs::remove_all(images + "/b");
    fs::create_symlink("b", images + "/b");
    EXPECT_EQ(collected(database, {images}), (Counts{0, 0, 0, 0, 1, 0, 0, 1, 1}));
    fs::remove(images + "/b");
    FleetDatabase opened(database, FleetDatabase::Access::Write);
    EXPECT_EQ(opened.markVanished(std::vector<std::string>{"/"}), 1U);
    EXPECT_TRUE(opened.isOwn(database));
    EXPECT_TRUE(opened.isOwn(database + "-journal"));
    EXPECT_FALSE(opened.isOwn(database + "~"));
}

TEST(FolderWalk, TellsWhatTheSystemRefuses) {
    const Folder folder;
    write(folder / "images/1.bin", "x");
    const std::string images = folder / "images";
    const struct {
        Writers::Fault fault;
        std::string told; // "" where nothing is
    } cases[] = {
        {{SYS_openat, EACCES, 2, O_DIRECTORY}, images + ": Permission denied"},
        {{SYS_getdents64, EIO}, images + ": Input/output error"},
        {{SYS_newfstatat, EIO}, images + ": Input/output error"},
        {{SYS_newfstatat, EIO, 3, AT_SYMLINK_NOFOLLOW}, images + "/1.bin: Input/output error"},
        {{SYS_newfstatat, ENOENT, 3, AT_SYMLINK_NOFOLLOW}, ""}, // it went between
    };
    for (const auto& test : cases) {
        Writers::inChild([&] {
            std::string all;
            FolderWalk walk({images}, [&](FolderWalk::Miss miss, const std::string& path, const std::string& why) {
                EXPECT_EQ(miss, FolderWalk::Miss::Unreadable);
                all += path + ": " + why;
            });
            Writers::inject({test.fault});
            EXPECT_FALSE(walk.next());
            EXPECT_EQ(all, test.told);
        });
    }
    FolderWalk root({"/"}, [](FolderWalk::Miss, const std::string&, const std::string&) {});
    const std::optional<FoundFile> found = root.next();
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->path.starts_with("//")) << found->path;
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
    const std::string unknown("\x67\x12\x08\0\x91\xed\0\0", 8); // its checksum holds
    const std::string ident = attenuator(1).substr(0, 44);
    std::string damaged = ident;
    damaged.back() ^= 1;
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
        {unknown, "no block of it is known"},
        {unknown + Support::image({0xFFFF, 0}), ""},
        {unknown + ident, ""},
        {unknown + damaged, "no block of it is known"},
        {unknown + ident.substr(0, 20), "no block of it is known"},
        {unknown + sampleBytes("second-edition.bin").substr(44, 624), ""},
        {unknown + unknown, "no block of it is known"},
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
    for (const char* const name : {"empty", "marked", "versioned"})
        write(folder / name, "");
    asked(folder / "marked", "PRAGMA application_id = 5");
    asked(folder / "versioned", "PRAGMA user_version = 1");
    const struct {
        std::string file;
        std::string whyRead;
        std::string whyWrite;
    } rows[] = {
        {"text", "file is not a database", "file is not a database"},
        {"other", "a database of something else", "a database of something else"},
        {"marked", "a database of something else", "a database of something else"},
        {"versioned", "a database of something else", "a database of something else"},
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

TEST(FleetRows, HoldWhatIsCutOffAsFarAsItGoes) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    const std::string board = sampleBytes("rf-board.bin");
    write(folder / "images/cut", board.substr(44, 2300 - 44 + 16 + 4 + 3));
    write(folder / "images/main", sampleBytes("main-board.bin"));
    std::string damaged = sampleBytes("second-edition.bin");
    damaged[144] ^= 1;
    write(folder / "images/damaged", damaged);
    collected(database, {folder / "images"});
    const struct {
        std::string sql;
        std::string answer;
    } rows[] = {
        {"SELECT checksum, crc, blocks.problems > 0 FROM blocks JOIN images USING (image) WHERE path LIKE '%/cut' AND "
         "key = "
         "'RFBO_RFLEVEL_MAX_DATA'",
         "cut off|-|1"},
        {"SELECT row, points, point_values FROM curves JOIN images USING (image) WHERE path LIKE '%/cut' AND key = "
         "'RFBO_RFLEVEL_MAX_DATA'",
         "0|1|[19.5]\n1|0|[]"},
        {"SELECT checksum, crc FROM blocks WHERE key = 'USER_40100'", "wrong|wrong"},
        {"SELECT row_label FROM curves WHERE key = 'PATH_A_RF_RESPONSE_LP_AMP' AND field = 'c1' AND row IN (0, 5)",
         "0, filter 0\n1, filter 1"},
        {soundly, "ok"},
    };
    for (const auto& [sql, answer] : rows)
        EXPECT_EQ(asked(database, sql), answer) << sql;
    std::vector<std::string> problems;
    for (const DamagedImage& image : damagedImages(FleetDatabase(database, FleetDatabase::Access::Read), {}))
        problems.push_back(fs::path(image.module.path).filename().string() + std::to_string(image.problems.size()));
    EXPECT_THAT(problems, testing::ElementsAre("cut1", "damaged2"));
}

// What is no number has no place among them: as a value it is left out, as a label its points are numbered.
TEST(FleetRows, HoldNumbersOnly) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (int i = 1; i <= 6; ++i) {
        Images::Bytes image = Images::changed(
            "main-board", {"2.serial_number=" + std::to_string(i), "CWOP_DETLINCORR_A_DATA.correction[0][0]=nan"});
        if (i == 6)
            image = Images::assigned(image, "CWOP_DETLINCORR_A_FREQ.frequency[1]=nan");
        write(folder / "images/" + std::to_string(i), {image.begin(), image.end()});
    }
    const std::pair<std::string, Images::Bytes> others[] = {
        {"scalar", Images::changed("iq-modulator", {"10301.det_full_scale=nan"})},
        {"part", Images::changed("rf-board", {"2.part_number=4294967295"})},
        {"wide", Images::tableOf(7, (std::uint64_t{1} << 53) - 1)}};
    for (const auto& [name, image] : others)
        write(folder / "images/" + name, {image.begin(), image.end()});
    collected(database, {folder / "images"});
    EXPECT_EQ(asked(database, "SELECT number, text FROM scalars WHERE field = 'det_full_scale'"), "NULL|NULL");
    EXPECT_EQ(asked(database, "SELECT part_number, length(module) FROM images WHERE path LIKE '%/part'"), "NULL|32");
    EXPECT_EQ(asked(database, "SELECT field, point_values FROM curves WHERE key = 'USER_40000'"),
              "column_types|[7]\nvalues|[9007199254740991.0]");
    EXPECT_EQ(asked(database,
                    "SELECT point_values ->> 0, axis_values ->> 1, count(*) FROM curves WHERE key = "
                    "'CWOP_DETLINCORR_A_DATA' AND field = 'correction' AND row = 0 GROUP BY axis_values ->> 1"),
              "NULL|NULL|1\nNULL|34583333|5");
    TrendQuestion question;
    question.blocks = BlockSelector({"CWOP_DETLINCORR_A_DATA"});
    question.fields = NameSelector({"correction"});
    question.row = 0;
    const std::vector<Trend> found = trends(FleetDatabase(database, FleetDatabase::Access::Read), question);
    ASSERT_EQ(found.size(), 24U);
    EXPECT_EQ(found[0].point.axisValue, 34583333);
    EXPECT_EQ(found[0].modules, 5U);
}

// Equal dates have no slope, impossible ones no place.
TEST(Questions, ATrendIsOverPlacesThatDiffer) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (int i = 1; i <= 6; ++i) {
        const std::string number = std::to_string(i);
        const Images::Bytes image =
            Images::changed("detector-board", {"2.serial_number=" + number, "2.product_date=201" + number + "-01-01",
                                               "15023.values[0][0]=-0." + number});
        write(folder / "images/" + number, {image.begin(), image.end()});
    }
    collected(database, {folder / "images"});
    TrendQuestion question;
    question.blocks = BlockSelector({"15023"});
    question.fields = NameSelector({"values"});
    question.at = "0";
    const auto answer = [&] { return trends(FleetDatabase(database, FleetDatabase::Access::Read), question); };
    ASSERT_EQ(answer().size(), 1U);
    EXPECT_DOUBLE_EQ(answer()[0].slope, -0.1);
    EXPECT_TRUE(answer()[0].isSure());
    question.over = TrendQuestion::Over::ProductionDate;
    EXPECT_EQ(answer().at(0).modules, 6U);
    asked(database, "UPDATE images SET production_date = '2011-02-31' WHERE serial_number = 1");
    EXPECT_EQ(answer().at(0).modules, 5U);
    asked(database, "UPDATE images SET production_date = '2011-02-01'");
    EXPECT_TRUE(answer().empty());
    question.over = TrendQuestion::Over::SerialNumber;
    question.at = "0 GHz"; // of temperatures
    EXPECT_TRUE(answer().empty());
}

/// Values of points over serial numbers and dates.
TEST(Questions, ATrendIsOfWhatIsAskedFor) {
    const Folder folder;
    const std::string database = folder / "fleet.sqlite";
    for (int i = 1; i <= 6; ++i) {
        const std::string number = std::to_string(i);
        std::vector<Assignment> assignments;
        for (const std::string& text : {"2.serial_number=" + number, "2.product_date=201" + number + "-01-01",
                                        "15716.values[1][0]=" + number, "15750.values[0][0]=" + number})
            assignments.push_back(parseAssignment(text));
        const std::string bytes = sampleBytes("rf-board.bin");
        std::vector<char> image(bytes.begin(), bytes.end());
        EXPECT_TRUE(assignValues(image, assignments).succeeded());
        // The last one does not say who it is, nor when it was made.
        write(folder / "images/" + number, std::string(image.begin() + (i == 6 ? 44 : 0), image.end()));
    }
    collected(database, {folder / "images"});
    const FleetDatabase opened(database, FleetDatabase::Access::Read);
    const struct {
        const char* block;
        std::optional<std::int64_t> row;
        std::optional<std::string> at;
        std::size_t found;
    } rows[] = {
        {"15716", {}, {}, 256},      {"15716", 1, {}, 128},       {"15716", 1, "9 kHz", 1},   {"15716", {}, "9000", 2},
        {"15716", 1, "0.009MHz", 1}, {"15716", 1, "9e-6 GHz", 1}, {"15716", 1, "9000 Hz", 1}, {"15716", 1, "9001", 0},
        {"15716", 9, "9 kHz", 0},    {"15750", {}, "0", 1},       {"15750", {}, "49", 1},     {"15750", {}, "50", 0},
        {"15750", {}, "0.5", 0},     {"15750", {}, "0 Hz", 0},    {"15750", {}, "1 GHz", 0},  {"IDENT_2", {}, {}, 0},
    };
    for (const auto& row : rows) {
        TrendQuestion question;
        question.fields = NameSelector({"values"});
        question.blocks = BlockSelector({row.block});
        question.row = row.row;
        question.at = row.at;
        for (const auto over : {TrendQuestion::Over::SerialNumber, TrendQuestion::Over::ProductionDate}) {
            question.over = over;
            const std::vector<Trend> found = trends(opened, question);
            EXPECT_EQ(found.size(), row.found) << row.block << ' ' << row.at.value_or("");
            for (const Trend& trend : found)
                EXPECT_EQ(trend.modules, 5U);
        }
    }
    TrendQuestion question;
    for (const char* const label : {"", "x", "3 parsecs", "GHz", "9 kHz 1", "nan", "inf GHz"}) {
        question.at = label;
        EXPECT_THROW(trends(opened, question), FleetError) << label;
    }
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
