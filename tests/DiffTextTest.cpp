#include "Images.h"
#include "JsonText.h"

#include <travik/service/DiffText.h>

/// What is said of a comparison, for a person and for a script.
namespace DiffTextTest {

using namespace Travik;
using namespace Images;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

TEST(DiffText, PutsTheLargestChangesFirst) {
    const Bytes board = sample("rf-board");
    Bytes other = board;
    const auto set = [&](int column, const std::string& value) {
        other = assigned(other, "15716.values[0][" + std::to_string(column) + "]=" + value);
    };
    const json before = Support::parsed(jsonDocument(std::array{jsonObject("", board, ModuleImage(board))}));
    const auto& blocks = before[0]["blocks"];
    const auto& values = std::ranges::find_if(blocks, [](const json& block) { return block["id"] == 15716; })
                             ->at("fields")
                             .at("values")
                             .at(0);
    for (int i = 0; i < 30; ++i) {
        std::ostringstream value;
        value << values[static_cast<std::size_t>(i)].get<double>() + (i == 17 ? -5 : i == 4 ? 3 : 0.5);
        set(i, value.str());
    }
    const ImageDiff diff(board, other);
    const std::string text = diffText(diff, {"a.bin", "b.bin"});
    EXPECT_THAT(text, HasSubstr("30 of 256 changed, largest 5, mean 0.7333\n    [0][17]  "));
    EXPECT_THAT(text, HasSubstr("(-5)\n    [0][4]"));
    EXPECT_THAT(text, HasSubstr("\n    ... and 20 more\n  checksum 0x"));
    EXPECT_THAT(diffText(diff, {"a.bin", "b.bin"}, {.isWhole = true}), Not(HasSubstr("more")));
    const FieldDiff& field = diff.blocks().front().fields.front();
    EXPECT_EQ(field.numbers, 30U);
    EXPECT_NEAR(field.largest, 5, 1e-12);
    EXPECT_NEAR(field.mean, (28 * 0.5 + 5 + 3) / 30, 1e-12);
}

TEST(DiffText, PutsWhatIsNoNumberAheadOfAll) {
    const auto table = [](unsigned int rows, bool isCounted) {
        std::string values;
        for (unsigned int i = 0; i < rows; ++i)
            values +=
                (i == 0 ? "[" : ", [") + (isCounted && i == 7 ? "null" : std::to_string(isCounted ? i + 1 : 0)) + ']';
        return built(R"([{"blocks": [{"key": "USER_40000", "fields": {"columns": 1, "column_types": [10], "rows": )" +
                     std::to_string(rows) + R"(, "values": [)" + values + "]}}]}]");
    };
    const Bytes before = table(30, false);
    const Bytes after = table(31, true);
    EXPECT_THAT(diffText(ImageDiff(before, after), {"a", "b"}),
                HasSubstr("30 of 30 changed, largest 30, mean 15.76, 1 only in b\n"
                          "    [7][0]   0 -> -nan\n    [29][0]  0 -> 30  (+30)\n"));
}

TEST(DiffText, IsHarmless) {
    Bytes before = sample("rf-board");
    const std::size_t name = BlockLayout(2).find("name")->offset;
    Bytes after = before;
    for (const char* place = "\x1b[2J\n\x9b"; *place; ++place)
        after[name + static_cast<std::size_t>(place - "\x1b[2J\n\x9b") % 8] = *place;
    const ImageDiff diff(before, after);
    for (const bool isBrief : {false, true}) {
        const std::string text = diffText(diff, {"a\n\x1b.bin", "b\t.bin"}, {.isBrief = isBrief});
        EXPECT_EQ(text.find_first_of("\x1b\x9b\t"), std::string::npos) << text;
    }
}

TEST(DiffDocument, HasEverything) {
    const Bytes board = sample("rf-board");
    Bytes other = assigned(assigned(board, "15716.values[0][10]=1.25"), "2.product_date=2020-02-29");
    other.back() ^= 1;
    const json document = Support::parsed(diffDocument(ImageDiff(board, other), {"a\"", "b\xFF"}));
    EXPECT_EQ(document["old"]["image"], "a\"");
    EXPECT_EQ(document["new"]["image"], "b\xEF\xBF\xBD");
    EXPECT_EQ(document["same"], false);
    EXPECT_EQ(document["counts"]["changed"], 3);
    const json& date = document["blocks"][0]["fields"][0]["elements"][0];
    EXPECT_EQ(date["old"], "2018-11-15");
    EXPECT_EQ(date["new"], "2020-02-29");
    EXPECT_TRUE(date["new_stored"].is_number_integer());
    const json& table = document["blocks"][1];
    EXPECT_EQ(table["key"], "RFBO_RFLEVEL_MAX_DATA");
    EXPECT_TRUE(table["words"].contains("checksum"));
    const json& element = table["fields"][0]["elements"][0];
    EXPECT_EQ(element["index"], Support::parsed("[0, 10]"));
    EXPECT_TRUE(element["axis"][1].is_number()) << element;
    EXPECT_EQ(element["new"], 1.25);
    EXPECT_EQ(element["new_stored"], 125);
    EXPECT_EQ(element["used"], true);
    EXPECT_EQ(document["blocks"][2]["bytes"][0]["offset"], 3);

    const Bytes before = tableOf(10, nan1);
    const Bytes after = tableOf(10, 1.5);
    const json nan = Support::parsed(diffDocument(ImageDiff(before, after), {"a", "b"}));
    const json& number = nan["blocks"][0]["fields"][0]["elements"][0];
    EXPECT_TRUE(number["old"].is_null());
    EXPECT_EQ(number["old_hex"], "010000000000f87f");
    EXPECT_EQ(number["new"], 1.5);
}

TEST(DiffText, SaysItInTheseWords) {
    const auto unknown = [](const std::string& content, unsigned int id = 4711) {
        return Support::sealed(Support::image({id, static_cast<unsigned int>(8 + content.size()), 0, 0}) + content);
    };
    const std::string end = Support::image({0xFFFF, 0});
    const std::string plain = unknown(std::string(40, '\0'));
    std::string holes(40, '\0');
    for (const unsigned int i : {1U, 4U, 7U, 10U, 13U, 16U, 19U, 22U, 25U, 28U})
        holes[i] = '\x11';
    const std::string full = unknown(std::string(20, '\x22') + std::string(20, '\0'));
    std::string wrong = full;
    wrong[4] = '\x01';
    const std::string runs =
        "unknown  4711  changed, 48 bytes at 0\n  checksum 0xed69 -> 0x9814\n  bytes at 9  00 -> 11\n"
        "  bytes at 12  00 -> 11\n  bytes at 15  00 -> 11\n  bytes at 18  00 -> 11\n"
        "  bytes at 21  00 -> 11\n  bytes at 24  00 -> 11\n  bytes at 27  00 -> 11\n"
        "  bytes at 30  00 -> 11\n";
    const std::string half = "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
    const std::string otherHalf = "22 22 22 22 22 22 22 22 22 22 22 22 22 22 22 22";
    const Bytes board = sample("rf-board");
    Bytes ident = board;
    for (const char* const text :
         {"name=x", "product_date=2020-02-29", "serial_number=1", "variant=3", "hardware_code=7"})
        ident = assigned(ident, std::string("2.") + text);
    Bytes misc = built(R"([{"blocks": [{"id": 10315}, {"key": "END"}]}])");
    const Bytes zeros = misc;
    std::fill(misc.begin() + 8, misc.end() - 4, '\x11');
    resealImage(misc);
    const DiffTextOptions brief{.isBrief = true};
    const DiffTextOptions whole{.isWhole = true};
    const struct {
        Bytes before;
        Bytes after;
        DiffTextOptions options;
        std::string text;
    } rows[] = {
        {bytesOf(plain + full + end),
         bytesOf(unknown("ab", 4712) + plain + full + end),
         {},
         "unknown  4712  only in b, 10 bytes at 0\nunknown  4711 to END  65535  3 blocks moved by +10\n"
         "blocks: 0 same, 3 moved, 1 only in b\n"},
        {bytesOf(unknown("ab", 4712) + plain + end), bytesOf(plain + end), brief,
         "unknown  4712  only in a, 10 bytes at 0\nunknown  4711  moved by -10 to 0\nEND  65535  moved by -10 to 48\n"
         "blocks: 0 same, 2 moved, 1 only in a\n"},
        {bytesOf(plain + end),
         bytesOf(unknown("ab", 4712) + full + end),
         {},
         "unknown  4712  only in b, 10 bytes at 0\n"
         "unknown  4711  changed, 48 bytes at 0, moved by +10 to 10\n  checksum 0xed69 -> 0x9815\n  bytes at 8  " +
             half + " ... -> " + otherHalf +
             " ...  (20 bytes)\nEND  65535  moved by +10 to 58\nblocks: 0 same, 1 changed, 2 moved, 1 only in b\n"},
        {bytesOf(plain + end),
         bytesOf(unknown(holes) + end),
         {},
         runs + "  ... and 2 more runs, 10 bytes in all\nblocks: 1 same, 1 changed\n"},
        {bytesOf(plain + end), bytesOf(unknown(holes) + end), whole,
         runs + "  bytes at 33  00 -> 11\n  bytes at 36  00 -> 11\nblocks: 1 same, 1 changed\n"},
        {bytesOf(plain + end),
         bytesOf(full + end),
         {},
         "unknown  4711  changed, 48 bytes at 0\n  checksum 0xed69 -> 0x9815\n  bytes at 8  " + half + " ... -> " +
             otherHalf + " ...  (20 bytes)\nblocks: 1 same, 1 changed\n"},
        {bytesOf(plain + end), bytesOf(full + end), whole,
         "unknown  4711  changed, 48 bytes at 0\n  checksum 0xed69 -> 0x9815\n  bytes at 8  " + half +
             " 00 00 00 00 -> " + otherHalf + " 22 22 22 22\nblocks: 1 same, 1 changed\n"},
        {bytesOf(full + end), bytesOf(wrong + end), brief,
         "unknown  4711  changed: checksum, sums hold -> are wrong\nblocks: 1 same, 1 changed\n"},
        {bytesOf(full + end),
         bytesOf(wrong + end),
         {.isColoured = true},
         "\x1b[1munknown  4711\x1b[m  changed, 48 bytes at 0\n  checksum 0x9815 -> 0x9801; sums hold -> are wrong\n"
         "blocks: 1 same, 1 changed\n"},
        {bytesOf(end + "a"),
         bytesOf(end + "b"),
         {},
         "behind the last block  1 byte differs\n  bytes at 0  61 -> 62\nblocks: 1 same\n"},
        {bytesOf(end + "a"),
         bytesOf(end + "bc"),
         {},
         "behind the last block  2 bytes differ\n  bytes at 0  61 -> 62 63\nblocks: 1 same\n"},
        {bytesOf(end + "a"), bytesOf(end + "bc"), brief, "behind the last block  changed: 2 bytes\nblocks: 1 same\n"},
        {Bytes(), Bytes(4, '\xFF'), brief, "no block  changed: 4 bytes\nblocks: 0 same\n"},
        {Bytes(3, '\0'),
         Bytes(2, '\0'),
         {},
         "unknown  0  changed, 3 bytes at 0\n  bytes  3 -> 2\n  bytes at 2  00 -> none\nblocks: 0 same, 1 changed\n"},
        {board, ident, brief,
         "IDENT_2  2  changed: variant, hardware_code, serial_number, product_date, 1 more field, checksum\n"
         "blocks: 22 same, 1 changed\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(diffText(ImageDiff(row.before, row.after), {"a", "b"}, row.options), row.text);
    const ImageDiff many(zeros, misc);
    EXPECT_THAT(diffText(many, {"a", "b"}),
                HasSubstr("\n  ... and " + std::to_string(BlockLayout(10315).fields().size() - 20) + " more fields\n"));
    EXPECT_THAT(diffText(many, {"a", "b"}, whole), Not(HasSubstr("more field")));
    Bytes one = tableOf(10, 1.0);
    Bytes other = tableOf(10, 1.5);
    one.push_back('a');
    other.push_back('b');
    EXPECT_EQ(
        diffText(ImageDiff(one, other, {.tolerance = 1, .relative = 0, .blocks = {}}), {"a", "b"}, {.isBrief = true}),
        "behind the last block  changed: 1 byte\nblocks: 2 same (1 of them within the tolerance)\n");
}

// Numbers that look alike, sums that are wrong either way, and what only one of the images goes as far as.
TEST(DiffText, TellsWhatLooksTheSame) {
    const Bytes board = sample("rf-board");
    const Bytes tables = sample("second-edition");
    const auto changed = [](Bytes bytes, std::initializer_list<std::size_t> places) {
        for (const std::size_t place : places)
            bytes[place] = static_cast<char>(bytes[place] ^ 1);
        return bytes;
    };
    const auto cut = [](Bytes bytes, std::size_t size) {
        bytes.resize(size);
        return bytes;
    };
    constexpr std::size_t frequencies = 1772; // 15715: 128 of 4 bytes behind 16
    const Bytes sound = tableOf(10, 1.5);
    Bytes wrongCrc = sound;
    wrongCrc[8] ^= 1;
    wrongCrc = bytesOf(Support::sealed({wrongCrc.begin(), wrongCrc.end() - 4}));
    const struct {
        Bytes before;
        Bytes after;
        std::string text;
    } rows[] = {
        {sound, wrongCrc, "; sums hold -> are wrong\n"},
        {board, cut(board, frequencies + 100), "  sums hold -> are not checked\n"},
        {tableOf(10, nan1), tableOf(10, nan2), "nan (01 00 00 00 00 00 f8 7f) -> nan (02 00 00 00 00 00 f8 7f)\n"},
        {tableOf(10, nan1), tableOf(10, 1.5), "nan -> 1.5\n"},
        {tableOf(10, infinity), tableOf(10, 1.5), "inf -> 1.5\n"},
        {tableOf(10, 1.0), tableOf(10, 12345.6), "1 -> 12345.6  (+12345)\n"},
        {tableOf(10, 1e15), tableOf(10, -1.0), "1e+15 -> -1  (-1e+15)\n"},
        {changed(tables, {48}), changed(tables, {48, 144}), "sums with a CRC-32 that holds -> without\n"},
        {changed(tables, {48, 144}), changed(tables, {48}), "sums without a CRC-32 that holds -> with\n"},
        {tables, changed(tables, {144}), "sums hold -> are wrong\n"},
        {board, assigned(board, "15715.values[1][0]=10000"), "  9.9 kHz -> 10 kHz  (+100)\n"},
        {cut(board, frequencies + 16 + 4 * 128), cut(board, frequencies + 16 + 4 * 127), "3 GHz -> none\n"},
        {cut(board, frequencies + 16 + 4 * 127), cut(board, frequencies + 16 + 4 * 128), "none -> 3 GHz\n"},
        {cut(board, frequencies + 16 + 4 * 50), cut(board, frequencies + 16 + 4 * 128), "  values  78 only in b\n"},
    };
    for (const auto& row : rows)
        EXPECT_THAT(diffText(ImageDiff(row.before, row.after), {"a", "b"}), HasSubstr(row.text));
}

} // namespace DiffTextTest
