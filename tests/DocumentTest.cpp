#include "JsonText.h"
#include "Support.h"

#include <travik/datablock/Checksum.h>
#include <travik/service/Document.h>
#include <travik/service/ImageFile.h>
#include <travik/service/StoreValue.h>
#include <travik/tables/SecondEditionBuilder.h>

#include <cmath>
#include <filesystem>

namespace DocumentTest {

using namespace Travik;
using Json = nlohmann::ordered_json;

const std::map<std::string, std::vector<char>>& samples() {
    static const std::map<std::string, std::vector<char>> all = [] {
        std::map<std::string, std::vector<char>> read;
        for (const auto& file : std::filesystem::directory_iterator(TRAVIK_SAMPLES)) {
            if (file.path().extension() != ".bin")
                continue;
            EXPECT_EQ(readImageFile(file.path().string(), read[file.path().stem().string()]), "");
        }
        return read;
    }();
    return all;
}

std::string documentOf(std::span<const char> bytes, const DocumentFilter& filter = {}) {
    const std::string object = jsonObject("a.bin", bytes, ModuleImage(bytes), filter);
    return jsonDocument({&object, 1});
}

std::string documentOf(const std::string& bytes) { return documentOf(std::span<const char>(bytes)); }

std::string built(const std::string& document, const BuildOptions& options = {}) {
    const BuiltImage image = buildImage(document, options);
    EXPECT_EQ(image.error, "");
    return {image.bytes.begin(), image.bytes.end()};
}

void expectRoundTrip(const std::string& bytes, const std::string& what) {
    const std::string document = documentOf(bytes);
    const BuiltImage image = buildImage(document);
    ASSERT_EQ(image.error, "") << what;
    const auto first = std::ranges::mismatch(image.bytes, bytes).in1 - image.bytes.begin();
    ASSERT_TRUE(std::ranges::equal(image.bytes, bytes)) << what << ": other at " << first << '\n'
                                                        << document.substr(0, 2000);
}

std::string textOf(const std::vector<char>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(Document, BringsEverySampleBack) {
    for (const auto& [name, bytes] : samples()) {
        expectRoundTrip(textOf(bytes), name);
        const Json document = Support::parsedInOrder(documentOf(bytes));
        for (const Json& block : document[0]["blocks"])
            // But for the two bytes that a packed table's CRC-32 is made with.
            EXPECT_EQ(block.contains("raw"), block["class"] == "HwDatablock2Edition" && block["alignment"] == 1)
                << name << ' ' << block["id"] << ": a sound block is all values";
    }
}

TEST(Document, BringsAnyBytesBack) {
    std::mt19937 random(1);
    expectRoundTrip("", "empty");
    for (const char fill : {'\0', '\x01', '\x7F', '\xFF'}) {
        for (const std::size_t size : {1U, 2U, 3U, 4U, 7U, 8U, 100U, 100000U})
            expectRoundTrip(std::string(size, fill), "filled");
    }
    for (int i = 0; i < 300; ++i)
        expectRoundTrip(Support::randomBytes(random, random() % 300), "random");
    expectRoundTrip(std::string(300, '\xFF') + Support::randomBytes(random, 70000), "random behind an end block");
    for (const auto& [name, bytes] : samples()) {
        const std::string sample = textOf(bytes);
        const int rounds = sample.size() > 20000 ? 2 : 25;
        for (int i = 0; i < rounds; ++i) {
            std::string mutated = sample;
            for (unsigned int count = 1 + random() % 4; count > 0; --count)
                mutated[random() % mutated.size()] = static_cast<char>(random());
            expectRoundTrip(mutated, name + " mutated");
            expectRoundTrip(mutated.substr(0, random() % mutated.size()), name + " cut");
            // A stretch of noise: NaNs, texts with bytes behind their end, counts that lie.
            const std::size_t from = random() % mutated.size();
            mutated.replace(from, 200, Support::randomBytes(random, 200));
            expectRoundTrip(mutated, name + " with noise");
        }
    }
}

// Every class with nothing but noise in its record: every field takes every pattern.
TEST(Document, BringsNoiseOfEveryClassBack) {
    std::mt19937 random(2);
    for (const CatalogueEntry& entry : catalogue()) {
        for (const bool erased : {false, true}) {
            const auto block = makeBlock(entry.first);
            std::string bytes = Support::bytesOf(*block);
            for (std::size_t i = 8; i < bytes.size(); ++i)
                bytes[i] = erased ? '\xFF' : static_cast<char>(random());
            expectRoundTrip(bytes, std::string(entry.className));
            expectRoundTrip(bytes.substr(0, bytes.size() - 1 - random() % 8), std::string(entry.className) + " cut");
        }
    }
}

// A table of one column of a type, its values as given, its sums right.
std::string tableOf(ETypeId type, unsigned int rows, std::span<const char> values, bool packed) {
    const bool isText = type >= ETypeChar;
    SecondEditionTable table{.id = 40000, .packed = packed, .updateIndex = 1.25, .columns = {{.type = type}}};
    for (unsigned int i = 0; i < rows; ++i)
        table.rows.push_back({{type == ETypeNone ? ElementValue() : isText ? ElementValue("x") : ElementValue(0)}});
    SecondEditionImage image = buildSecondEdition(table);
    EXPECT_TRUE(image) << image.text;
    const SecondEditionLayout layout(image.bytes);
    for (std::size_t i = layout.valuesAt; i < layout.end; ++i)
        image.bytes[i] = values[i - layout.valuesAt];
    bytes::store(std::span(image.bytes), 8, blockCrc32(image.bytes.data(), image.bytes.size()));
    return Support::sealed({image.bytes.begin(), image.bytes.end()});
}

TEST(Document, BringsTablesOfEveryElementTypeBack) {
    std::mt19937 random(3);
    for (int type = ETypeNone; type <= ETypeChar20; ++type) {
        for (const bool packed : {false, true}) {
            expectRoundTrip(tableOf(static_cast<ETypeId>(type), 9, Support::randomBytes(random, 180), packed),
                            "type " + std::to_string(type));
        }
        expectRoundTrip(tableOf(static_cast<ETypeId>(type), 9, std::string(180, '\xFF'), false), "erased");
    }
}

TEST(Document, HasTheFormThatIsDocumented) {
    const Json document = Support::parsedInOrder(documentOf(samples().at("rf-board")));
    const Json& image = document.at(0);
    EXPECT_EQ(image["image"], "a.bin");
    EXPECT_EQ(image["size"], samples().at("rf-board").size());
    EXPECT_EQ(image["problems"], Json::array());
    const Json& ident = image["blocks"][0];
    std::vector<std::string> keys;
    for (const auto& member : ident.items())
        keys.push_back(member.key());
    EXPECT_THAT(keys, testing::ElementsAre("offset", "id", "key", "class", "size", "alignment", "checksum",
                                           "checksum_ok", "crc_ok", "fields", "units", "axes", "digest"));
    EXPECT_EQ(ident["fields"]["product_date"], "2018-11-15");
    EXPECT_EQ(ident["fields"]["name"], "RFBO");
    EXPECT_EQ(ident["units"], Json({{"eeprom_size", "byte"}}));
    EXPECT_EQ(ident["crc_ok"], nullptr);
    for (const Json& block : image["blocks"]) {
        if (block["id"] != 15716)
            continue;
        EXPECT_EQ(block["axes"], Json({{"values", {nullptr, 15715}}}));
        EXPECT_EQ(block["fields"]["values"].size(), 2U);
    }
    const Json& end = image["blocks"].back();
    EXPECT_EQ(end["id"], 65535);
    EXPECT_EQ(end["checksum"], nullptr);
    EXPECT_EQ(end["checksum_ok"], nullptr);

    // 32768 bytes and more are not summed.
    const Json main = Support::parsedInOrder(documentOf(samples().at("microwave-module")));
    for (const Json& block : main[0]["blocks"])
        EXPECT_EQ(block["checksum_ok"].is_null(), block["size"] >= 0x8000 || block["id"] == 65535) << block["id"];

    const std::string wrong = Support::image({4711, 8, 1, 0, 0x5A5A});
    const Json damaged = Support::parsedInOrder(documentOf(wrong));
    EXPECT_EQ(damaged[0]["blocks"][0]["checksum_ok"], false);
    EXPECT_EQ(damaged[0]["blocks"][0]["key"], nullptr);
    EXPECT_EQ(damaged[0]["blocks"][0]["class"], nullptr);
    EXPECT_EQ(damaged[0]["problems"][0], Json({{"offset", 0}, {"block", 4711}, {"text", "wrong checksum"}}));
}

TEST(Document, WritesNumbersThatReadBackAndNothingElse) {
    const double values[] = {-0.0, 0.1, 1e-5, 3e9, 1e300, 9007199254740992.0, std::nan(""), -INFINITY};
    const std::string bytes = tableOf(ETypeDouble, 8, {reinterpret_cast<const char*>(values), sizeof values}, false);
    const std::size_t at = SecondEditionLayout(bytes).valuesAt;
    const std::string document = documentOf(bytes);
    EXPECT_NE(document.find("[-0.0],\n       [0.1],\n       [1e-05],\n       [3000000000.0],\n       [1e+300],\n"
                            "       [9007199254740992.0],\n       [null],\n       [null]]"),
              std::string::npos)
        << document;
    EXPECT_EQ(built(document), bytes);

    // An edit wins over the bytes that stand for null, and is sealed: CRC-32 and checksum.
    Json edited = Support::parsedInOrder(document);
    edited[0]["blocks"][0]["fields"]["values"][7][0] = 0;
    const std::string changed = built(edited.dump());
    EXPECT_EQ(bytes::load<double>(changed, at + 56), 0.0);
    EXPECT_EQ(changed.substr(at, 56), bytes.substr(at, 56));
    const ModuleImage now(changed);
    EXPECT_TRUE(now.blocks()[0].crcHolds);
    EXPECT_TRUE(now.problems().empty());
}

TEST(Document, CarriesHostileTexts) {
    std::string bytes = textOf(samples().at("rf-board"));
    const std::size_t at = bytes.find("RFBO");
    const std::string hostile("\"\\\x1B\x9B\xE4\x7F", 6);
    bytes.replace(at, hostile.size(), hostile);
    const std::string text = documentOf(bytes);
    EXPECT_NE(text.find("\"name\": \"\\\"\\\\\\u001b\\u009b\xC3\xA4\\u007f\""), std::string::npos);
    EXPECT_EQ(built(text), bytes);

    const std::string object = jsonObject("\xFF\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xED\xA0\x80", {}, ModuleImage({}));
    EXPECT_NE(object.find("\"\xEF\xBF\xBD\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""),
              std::string::npos);
}

// The extremes of every stored type, in every class.
TEST(Document, OfEveryClassComesBack) {
    for (const CatalogueEntry& entry : catalogue()) {
        for (const std::string_view pattern : {std::string_view("\0\x80", 2), std::string_view("\xFF\x7F", 2),
                                               std::string_view("\xFF\xFF", 2), std::string_view("\x80\0\0\0", 4)}) {
            std::string bytes = Support::bytesOf(*makeBlock(entry.first));
            for (std::size_t i = sizeof(HwSDatablockHeader); i < bytes.size(); ++i)
                bytes[i] = pattern[i % pattern.size()];
            ASSERT_EQ(built(documentOf(bytes)), bytes) << entry.first;
        }
    }
}

TEST(Document, SealsWhatWasChangedAndNothingElse) {
    std::string bytes = textOf(samples().at("rf-board"));
    const ModuleImage image(samples().at("rf-board"));
    const ImageBlock& broken = image.blocks()[2];
    bytes[broken.offset + 4] = static_cast<char>(bytes[broken.offset + 4] + 1); // its checksum
    Json document = Support::parsedInOrder(documentOf(bytes));
    document[0]["blocks"][0]["fields"]["serial_number"] = 7;

    const std::string changed = built(document.dump());
    const ModuleImage now(changed);
    EXPECT_TRUE(now.blocks()[0].checksumHolds) << "of the block that was changed";
    EXPECT_FALSE(now.blocks()[2].checksumHolds) << "of one that was not";
    EXPECT_EQ(changed.substr(44), bytes.substr(44));

    BuildOptions keeping;
    keeping.keepChecksums = true;
    const std::string kept = built(document.dump(), keeping);
    const ModuleImage keptImage(kept);
    EXPECT_FALSE(keptImage.blocks()[0].checksumHolds);
    EXPECT_EQ(kept.substr(4, 2), bytes.substr(4, 2));

    document[0]["blocks"][2].erase("digest"); // as if made by hand
    const std::string sealed = built(document.dump());
    const ModuleImage sealedImage(sealed);
    EXPECT_TRUE(sealedImage.blocks()[2].checksumHolds);
}

TEST(Document, KeepsTheUpdateIndexOfAPackedTable) {
    Json document = Support::parsedInOrder(documentOf(samples().at("second-edition")));
    for (Json& block : document[0]["blocks"]) {
        if (block["class"] == "HwDatablock2Edition" && block["alignment"] == 1) {
            ASSERT_TRUE(block["fields"].contains("column_0"));
            block["fields"]["column_0"][0] = 3;
        }
    }
    const std::string changed = built(document.dump());
    EXPECT_TRUE(checkImage(changed).empty());
    const Json again = Support::parsedInOrder(documentOf(changed));
    for (std::size_t i = 0; i < again[0]["blocks"].size(); ++i)
        EXPECT_EQ(again[0]["blocks"][i]["fields"].value("update_index", 0.0),
                  document[0]["blocks"][i]["fields"].value("update_index", 0.0));
}

TEST(Document, FromScratchNeedsLittle) {
    const std::string image = built(R"([{"image": "new", "blocks": [
        {"id": 2, "fields": {"name": "NEW", "product_date": "2024-02-29", "serial_number": 12}},
        {"key": "RFBO_RFLEVEL_MAX_DATA", "fields": {"values": [[1.25], [0, -3]]}},
        {"key": "USER_40000", "fields": {"update_index": 1.5, "rows": 1, "columns": 2, "column_types": [3, 9],
                                         "column_0": [7], "column_1": [0.5]}},
        {"id": 4711, "size": 12, "raw": [{"offset": 8, "hex": "a5", "length": 4}]},
        {"key": "END"}], "rest": [{"hex": "ff", "length": 10}]}])");
    const ModuleImage module(image);
    ASSERT_EQ(module.blocks().size(), 5U);
    EXPECT_TRUE(module.problems().empty());
    EXPECT_TRUE(module.blocks()[2].isSecondEdition);
    EXPECT_EQ(image.substr(image.size() - 10), std::string(10, '\xFF'));
    EXPECT_EQ(image.substr(module.blocks()[3].offset + 8, 4), "\xA5\xA5\xA5\xA5");
    const Json document = Support::parsedInOrder(documentOf(image));
    EXPECT_EQ(document[0]["blocks"][0]["size"], 44);
    EXPECT_EQ(document[0]["blocks"][0]["fields"]["product_date"], "2024-02-29");
    EXPECT_EQ(document[0]["blocks"][1]["fields"]["values"][0][0], 1.25);
    EXPECT_EQ(document[0]["blocks"][1]["fields"]["values"][1][1], -3.0);
    EXPECT_EQ(document[0]["blocks"][2]["fields"]["column_1"], Json({0.5}));
}

TEST(Document, SaysWhereItIsWrong) {
    const auto block = [](const std::string& members) { return R"([{"blocks": [{"id": 2}, {)" + members + "}]}]"; };
    const auto ident = [&](const std::string& fields) { return block(R"("id": 2, "fields": {)" + fields + "}"); };
    const auto level = [&](const std::string& values) {
        return block(R"("id": 15716, "fields": {"values": )" + values + "}");
    };
    struct Case {
        std::string document;
        std::string error;
    };
    const std::vector<Case> cases{
        {"", "no JSON: line 1, column 1: value expected"},
        {"[{]", "no JSON: line 1, column 3: name in quotes expected"},
        {"[1,\n 1e999]", "no JSON: line 2, column 7: number that a double holds expected"},
        {R"([{"blocks": [], "blocks": []}])", R"(two members of one object are named "blocks")"},
        {"7", "takes an array of images"},
        {"[]", "the document holds no image"},
        {R"([{"image": "a", "blocks": []}, {"image": "b", "blocks": []}])",
         "the document holds several images, choose one: a, b"},
        {R"([7])", "/0: takes an object"},
        {R"([{"blokcs": []}])", "/0/blokcs: unknown, takes image, size, blocks, problems, partial, rest"},
        {R"([{"image": "a"}])", "/0/blocks: takes an array"},
        {R"([{"blocks": [], "partial": true}])", "/0/partial: the document holds a part of the image only"},
        {R"([{"blocks": [], "rest": [{"hex": "0g"}]}])", "/0/rest/0/hex: takes bytes of two hexadecimal digits each"},
        {R"([{"blocks": [], "rest": [{"hex": "000"}]}])", "/0/rest/0/hex: takes bytes of two hexadecimal digits each"},
        {R"([{"blocks": [], "rest": [{"hex": 7}]}])", "/0/rest/0/hex: takes a text"},
        {R"([{"blocks": [], "rest": [{"length": 7}]}])", "/0/rest/0: takes `hex`"},
        {R"([{"blocks": [], "rest": 7}])", "/0/rest: takes an array"},
        {R"([{"blocks": [], "rest": [{"hex": "00", "length": 9999999999}]}])",
         "/0/rest/0/length: takes a whole number from 1 to 268435456"},
        {block(""), "/0/blocks/1: takes `id` or `key`"},
        {block(R"("id": 2, "feilds": {})"), "/0/blocks/1/feilds: unknown, takes offset, id*"},
        {block(R"("id": 2, "length": 65536)"), "/0/blocks/1/length: takes a whole number from 0 to 65535"},
        {block(R"("id": 65536)"), "/0/blocks/1/id: takes a whole number from 0 to 65535"},
        {block(R"("id": -1)"), "/0/blocks/1/id: takes a whole number from 0 to 65535"},
        {block(R"("key": "NO_SUCH")"), "/0/blocks/1/key: no block has this key"},
        {block(R"("key": "IDENT_2")"), "/0/blocks/1/key: several blocks have this key, takes `id`, one of 2, 10"},
        {block(R"("id": 3, "key": "IDENT_2", "size": 8)"), "/0/blocks/1/key: not the key of block 3"},
        {block(R"("id": 2, "class": "HwDatablockEnd")"), "/0/blocks/1/class: block 2 takes HwDatablockIdent"},
        {block(R"("id": 4711, "class": "HwDatablockIdent")"),
         "/0/blocks/1/class: block 4711 takes HwDatablock2Edition or null"},
        {block(R"("a\u001b~/b": 1)"), "/0/blocks/1/a?~0~1b: unknown, takes offset, id*"},
        {block(R"("key": "USER_2")"), "/0/blocks/1/key: no block has this key"},
        {block(R"("key": "USER_40000x")"), "/0/blocks/1/key: no block has this key"},
        {block(R"("key": "USER_65536")"), "/0/blocks/1/key: no block has this key"},
        {block(R"("id": 3)"), "/0/blocks/1: block 3 has no class, takes `size`"},
        {block(R"("id": 65535, "checksum": 1)"), "/0/blocks/1/checksum: takes null, the block has no such word"},
        {block(R"("id": 2, "digest": "x")"), "/0/blocks/1/digest: takes a whole number from 0 to 4294967295"},
        {block(R"("id": 2, "units": {"eeprom_size": "kB"})"), "/0/blocks/1/units/eeprom_size: the field is in byte"},
        {block(R"("id": 2, "raw": [{"hex": "00"}])"), "/0/blocks/1/raw/0: takes `offset`"},
        {block(R"("id": 2, "raw": 7)"), "/0/blocks/1/raw: takes an array"},
        {block(R"("id": 2, "fields": 7)"), "/0/blocks/1/fields: takes an object"},
        {block(R"("id": 2, "units": 7)"), "/0/blocks/1/units: takes an object"},
        {block(R"("id": 2, "units": {"variant": "V"})"), "/0/blocks/1/units/variant: the field has no unit"},
        {block(R"("id": 2, "raw": [{"offset": 43, "hex": "0000"}])"),
         "/0/blocks/1/raw/0/hex: more bytes than there is room for, which is 1"},
        {block(R"("id": 3, "size": 8, "fields": {"a": 1})"), "/0/blocks/1/fields/a: the block has no fields"},
        {ident(R"("nmae": "X")"), "/0/blocks/1/fields/nmae: no field of the block, takes eeprom_size, part_number*"},
        {ident(R"("a/b~c": "X")"), "/0/blocks/1/fields/a~1b~0c: no field of the block*"},
        {ident(R"("name": 7)"), "/0/blocks/1/fields/name: takes a text"},
        {ident(R"("name": "€")"), "/0/blocks/1/fields/name: a text may hold characters of Latin-1 only"},
        {ident(R"("name": "longer than any name")"),
         "/0/blocks/1/fields/name: too long, takes * characters and no NUL"},
        {ident(R"("product_date": "2023-02-29")"), "/0/blocks/1/fields/product_date: no date, takes *"},
        {ident(R"("variant": 256)"), "/0/blocks/1/fields/variant: out of range, takes 0 to 255"},
        {ident(R"("variant": null)"), "/0/blocks/1/fields/variant: takes a number, takes 0 to 255"},
        {ident(R"("variant": [1])"), "/0/blocks/1/fields/variant: takes a number, takes 0 to 255"},
        {level("1"), "/0/blocks/1/fields/values: takes an array of up to 2 arrays"},
        {level("[[], 1]"), "/0/blocks/1/fields/values/1: takes an array of up to * entries"},
        {level("[[0, 0, 1e9]]"), "/0/blocks/1/fields/values/0/2: out of range, takes -21474836.48 to 21474836.47"},
        {level("[[], [], []]"), "/0/blocks/1/fields/values/2: one too many, takes an array of up to 2 arrays"},
        {block(R"("id": 2, "size": 9, "fields": {"eeprom_size": 1})"),
         "/0/blocks/1/fields/eeprom_size: outside the block, which has 9 bytes"},
        {block(R"("id": 40000, "class": "HwDatablock2Edition", "size": 20, "fields": {"rows": 9, "columns": 9})"),
         "/0/blocks/1/size: the table takes * bytes"},
        {block(R"("id": 40000, "class": "HwDatablock2Edition", "length": 20, "fields": {"rows": 9, "columns": 9})"),
         "/0/blocks/1/length: the table takes * bytes"},
        {block(R"("key": "USER_40000", "fields": {"rows": 60000, "columns": 1, "column_types": [10]})"),
         "/0/blocks/1/fields: the table takes 480024 bytes, a block has 65535 at most"},
        {block(R"("key": "USER_40000", "fields": {"rows": 1, "columns": 1, "column_types": [1], "values": [[1, 2]]})"),
         "/0/blocks/1/fields/values/0/1: one too many, takes an array of up to 1 entry"},
        {block(R"("key": "USER_40000", "size": 40, "fields": 7)"), "/0/blocks/1/fields: takes an object"},
        {block(R"("key": "USER_40000x", "size": 8)"), "/0/blocks/1/key: no block has this key"},
        {block(R"("key": "USER_2")"), "/0/blocks/1/key: no block has this key"},
        {block(R"("id": 65535, "alignment": 1)"), "/0/blocks/1/alignment: takes null, the block has no such word"},
        {block(R"("id": 2, "units": {"eeprom_size": 7})"), "/0/blocks/1/units/eeprom_size: the field is in byte"},
        {block(R"("id": 10315, "fields": {"x": 1})"), "/0/blocks/1/fields/x: no field of the block, takes *, ..."},
        {block(R"("id": 2, "raw": [{"offset": 8, "hex": ""}])"),
         "/0/blocks/1/raw/0/hex: takes bytes of two hexadecimal digits each"},
        {R"([{"image": 7, "blocks": []}, 8])", "the document holds several images, choose one: ?, ?"},
        {R"([{"blocks": 7}])", "/0/blocks: takes an array"},
    };
    for (const Case& one : cases) {
        const BuiltImage image = buildImage(one.document);
        EXPECT_TRUE(image.bytes.empty());
        const std::size_t star = one.error.find('*');
        EXPECT_EQ(image.error.find('\n'), std::string::npos);
        EXPECT_EQ(image.error.substr(0, star), one.error.substr(0, star)) << one.document;
        const std::string last = star == std::string::npos ? "" : one.error.substr(one.error.rfind('*') + 1);
        EXPECT_TRUE(image.error.ends_with(last)) << image.error;
    }
    BuildOptions second;
    second.image = "b";
    EXPECT_EQ(built(R"([{"image": "a", "blocks": []}, {"image": "b", "blocks": [{"id": 65535}]}])", second),
              std::string("\xFF\xFF\0\0", 4));
    EXPECT_EQ(buildImage(R"([{"image": "b", "blocks": []}, {"image": "b", "blocks": []}])", second).error,
              "the document holds several images b");
    std::string many = "[";
    for (int i = 0; i < 100; ++i)
        many += R"({"image": "image )" + std::to_string(i) + R"(", "blocks": []},)";
    many.back() = ']';
    EXPECT_TRUE(buildImage(many).error.ends_with("image 29, image 30, image 31")) << buildImage(many).error;
    BuildOptions small;
    small.largestSize = 87;
    EXPECT_EQ(buildImage(R"([{"blocks": [{"id": 2}, {"id": 2}]}])", small).error,
              "/0/blocks/1: the image takes more than 87 bytes");
    small.largestSize = 88;
    EXPECT_EQ(buildImage(R"([{"blocks": [{"id": 2}, {"id": 2}]}])", small).error, "");
    // A place that the block does not have may be said to hold nothing.
    for (const char* const nothing : {R"("name": "")", R"("serial_number": 0)", R"("variant": null)"})
        EXPECT_EQ(buildImage(block(R"("id": 2, "size": 8, "fields": {)" + std::string(nothing) + '}')).error, "")
            << nothing;
    for (const char* const something : {R"("name": "x")", R"("serial_number": 1)", R"("variant": [])"})
        EXPECT_THAT(buildImage(block(R"("id": 2, "size": 8, "fields": {)" + std::string(something) + '}')).error,
                    testing::EndsWith("outside the block, which has 8 bytes"))
            << something;
    second.image = "c";
    EXPECT_EQ(buildImage(R"([{"image": "a", "blocks": []}])", second).error,
              "the document holds no image c, it holds a");
    EXPECT_EQ(buildImage(std::string(1000000, '[')).error.substr(0, 8), "no JSON:") << "depth is no harm";
}

// What is JSON and what is not, as a parser that everyone uses has it.
TEST(Document, IsReadAsStrictlyAsJsonIs) {
    const auto isJson = [](const std::string& text) { return !buildImage(text).error.starts_with("no JSON: "); };
    for (const std::string text : {"1",
                                   "-0",
                                   "-1.5e+3",
                                   "1e-999",
                                   "0e999",
                                   "2e308",
                                   "18446744073709551616",
                                   "-9223372036854775809",
                                   "\"\\ud83d\\ude00\\/\"",
                                   "[ ]",
                                   "\xEF\xBB\xBF[]",
                                   "{\"\":{}}",
                                   " null ",
                                   "01",
                                   "1.",
                                   ".5",
                                   "+1",
                                   "-",
                                   "1e",
                                   "[1,]",
                                   "[,1]",
                                   "{\"a\"}",
                                   "{1:2}",
                                   "{\"a\":1,}",
                                   "[1}",
                                   "{]",
                                   "]",
                                   "[]]",
                                   "tru",
                                   "nulll",
                                   "NaN",
                                   "'a'",
                                   "\"\\x\"",
                                   "\"\\u12\"",
                                   "\"\\ud800\"",
                                   "\"\\udc00\"",
                                   "\"\\ud800\\u0041\"",
                                   "\"\xC0\x80\"",
                                   "\"\xED\xA0\x80\"",
                                   "\"\xF0",
                                   "\"\t\"",
                                   "\"",
                                   "// a\n1",
                                   "\"\\"})
        EXPECT_EQ(isJson(text), Json::accept(text)) << text;
    std::mt19937 random(4);
    const std::string start = R"([{"a": [1.5, -2e3, true, null, "\u00e4\n"], "b": {}}, [], "x"])";
    for (int i = 0; i < 20000; ++i) {
        std::string text = start;
        for (auto count = 1 + random() % 3; count > 0; --count) {
            const std::size_t at = random() % text.size();
            const char other =
                random() % 2 == 0 ? start[random() % start.size()] : static_cast<char>(1 + random() % 255);
            text.replace(at, random() % 3, random() % 3, other);
        }
        ASSERT_EQ(isJson(text), Json::accept(text)) << text;
    }
}

// Every number by way of a table of doubles, and one of 64-bit integers.
TEST(Document, ReadsNumbersExactly) {
    const std::vector<std::string> numbers{"-5",
                                           "-0",
                                           "0",
                                           "0.1",
                                           "123456789012.345",
                                           "1234567890.12345",
                                           "0.000000000000001",
                                           "9007199254740993",
                                           "1e22",
                                           "1E-7",
                                           "2.2250738585072011e-308",
                                           "5e-324",
                                           "1e-400",
                                           "2.4e-324",
                                           "143.4100000500005167500003000372800900071413e-348",
                                           "-1.7976931348623157e308",
                                           "18446744073709551615",
                                           "18446744073709551616",
                                           "-9223372036854775808",
                                           "3.141592653589793238462643383279"};
    const std::string rows = std::to_string(numbers.size());
    std::string list;
    for (const std::string& number : numbers)
        list += (list.empty() ? "[" : "], [") + number;
    const std::string image = built(R"({"blocks": [{"key": "USER_40000", "fields": {"rows": )" + rows +
                                    R"(, "columns": 1, "column_types": [10], "values": [)" + list + "]]}}]}");
    const std::size_t at = SecondEditionLayout(image).valuesAt;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto value = bytes::load<double>(image, at + 8 * i);
        const double expected = std::strtod(numbers[i].c_str(), nullptr);
        EXPECT_EQ(value, expected) << numbers[i];
        EXPECT_EQ(std::signbit(value), std::signbit(expected)) << numbers[i];
    }
    const auto integer = [](const std::string& type, const std::string& number) {
        return buildImage(R"({"blocks": [{"key": "USER_40000", "fields": {"rows": 1, "columns": 1, "column_types": [)" +
                          type + R"(], "values": [[)" + number + "]]}}]}");
    };
    EXPECT_EQ(bytes::load<std::uint64_t>(integer("7", "18446744073709551615").bytes, 24), 18446744073709551615U);
    EXPECT_EQ(bytes::load<std::int64_t>(integer("8", "-9223372036854775807").bytes, 24), -9223372036854775807);
    EXPECT_THAT(integer("7", "-1").error, testing::HasSubstr("out of range"));
    EXPECT_THAT(integer("7", "18446744073709551616").error, testing::HasSubstr("out of range"));
    EXPECT_THAT(integer("8", "9223372036854775808").error, testing::HasSubstr("out of range"));
}

TEST(Document, OfAPartSaysSo) {
    DocumentFilter filter;
    filter.block = [](const ImageBlock& block) { return block.id == 2; };
    filter.field = [](std::string_view field) { return field == "serial_number"; };
    const Json part = Support::parsedInOrder(documentOf(samples().at("rf-board"), filter));
    EXPECT_EQ(part[0]["partial"], true);
    ASSERT_EQ(part[0]["blocks"].size(), 1U);
    EXPECT_EQ(part[0]["blocks"][0]["fields"].size(), 1U);
    EXPECT_FALSE(buildImage(part.dump()).error.empty());
    // The fields of all blocks that have them; of none, still a document.
    filter.block = nullptr;
    EXPECT_EQ(Support::parsed(documentOf(samples().at("rf-board"), filter))[0]["blocks"].size(), 1U);
    filter.field = [](std::string_view field) { return field == "no_such"; };
    const Json none = Support::parsedInOrder(documentOf(samples().at("rf-board"), filter));
    EXPECT_TRUE(none[0]["blocks"].empty());
    EXPECT_EQ(none[0]["partial"], true);
    EXPECT_EQ(jsonDocument({}), "[]\n");
}

} // namespace DocumentTest
