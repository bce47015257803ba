#include "Images.h"
#include "JsonText.h"
#include "RandomValues.h"

#include <travik/service/DiffText.h>

namespace DiffTest {

using namespace Travik;
using namespace Images;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// In a line what differs of each block: "15716 changed values[0][10] checksum".
std::vector<std::string> told(const ImageDiff& diff) {
    std::vector<std::string> lines;
    for (const BlockDiff& block : diff.blocks()) {
        std::string& line = lines.emplace_back(std::to_string(block.block().id));
        line += block.isOnlyBefore() ? " only-before" : "";
        line += block.isOnlyAfter() ? " only-after" : "";
        line += block.isMoved() ? " moved" : "";
        line += block.isChanged() ? " changed" : "";
        for (const FieldDiff& field : block.fields) {
            for (const ElementDiff& element : field.elements) {
                line.append(" ").append(field.name());
                for (unsigned int d = 0; d < field.field().rank; ++d)
                    line += '[' + std::to_string(element.index.at(d)) + ']';
                line += element.isUsed ? "" : " unused";
            }
        }
        for (const WordDiff& word : block.words)
            line.append(" ").append(nameOf(word.word));
        for (const BytesDiff& run : block.bytes)
            line += " bytes@" + std::to_string(run.offset) + '+' +
                    std::to_string(std::max(run.before.size(), run.after.size()));
    }
    for (const BytesDiff& run : diff.rest())
        lines.push_back("rest@" + std::to_string(run.offset) + '+' +
                        std::to_string(std::max(run.before.size(), run.after.size())));
    return lines;
}

std::vector<std::string> told(const Bytes& before, const Bytes& after, const DiffOptions& options = {}) {
    return told(ImageDiff(before, after, options));
}

bool areSame(const Bytes& before, const Bytes& after, const DiffOptions& options = {}) {
    const ImageDiff diff(before, after, options);
    EXPECT_EQ(diffText(diff, {"a", "b"}).empty(), diff.isSame());
    EXPECT_EQ(diffText(diff, {"a", "b"}, {.isBrief = true}).empty(), diff.isSame());
    EXPECT_EQ(Support::parsed(diffDocument(diff, {"a", "b"}))["same"], diff.isSame());
    return diff.isSame();
}

TEST(ImageDiff, ForgivesNumbersWithinATolerance) {
    struct Row {
        double before;
        double after;
        double tolerance;
        double relative;
        bool isSame;
    };
    const std::vector<Row> rows{
        {1, 1, 0, 0, true},
        {1, 2, 0, 0, false},
        {1, 2, 1, 0, true},
        {1, 2, 0.999, 0, false},
        {2, 1, 1, 0, true},
        {-1, 1, 2, 0, true},
        {-1, 1, 1.9, 0, false},
        {1.25, 1.26, 0.01, 0, true}, // in binary numbers a little more
        {1.25, 1.26, 0.00999, 0, false},
        {1, std::nextafter(1, 2), 1e-20, 0, false},
        {1, std::nextafter(1, 2), 0, 1e-20, false},
        // Against the larger of the two, whichever comes first.
        {100, 99, 0, 0.01, true},
        {99, 100, 0, 0.01, true},
        {100, 98.9, 0, 0.01, false},
        {-100, -99, 0, 0.01, true},
        {-1, 1, 0, 1.9, false},
        {-1, 1, 0, 2, true},
        {0, 1, 0, 0.999, false},
        {0, 1, 0, 1, true},
        // However small or large.
        {1e-310, 1.05e-310, 0, 0.1, true},
        {1e-310, 1.05e-310, 0, 0.01, false},
        {smallest, 2 * smallest, 0, 0.4, false},
        {smallest, 2 * smallest, 0, 0.5, true},
        {0, smallest, 0, 0.5, false},
        {largest, -largest, 0, 1.5, false},
        {largest, -largest, 0, 2, true},
        {largest, -largest, largest, 0, false},
        {largest, -largest, infinity, 0, true},
        // One tolerance suffices.
        {1, 2, 1, 1e-9, true},
        {1, 2, 1e-9, 1, true},
        {0.0, -0.0, 0, 0, false},
        {0.0, -0.0, 1e-300, 0, true},
        {0.0, -0.0, 0, 1e-300, true},
        // What is no finite number is like itself only.
        {nan1, nan1, 0, 0, true},
        {nan1, nan2, 0, 0, false},
        {nan1, nan2, infinity, infinity, false},
        {nan1, 1, infinity, infinity, false},
        {1, nan1, infinity, infinity, false},
        {infinity, infinity, 0, 0, true},
        {infinity, 1, infinity, infinity, false},
        {1, -infinity, 0, 1, false},
        {infinity, -infinity, infinity, infinity, false},
        // No tolerances: they forgive nothing.
        {1, 1.5, -1, 0, false},
        {1, 1.5, nan1, 1, false},
    };
    for (const Row& row : rows) {
        const DiffOptions options{.tolerance = row.tolerance, .relative = row.relative, .blocks = {}};
        EXPECT_EQ(areSame(tableOf(10, row.before), tableOf(10, row.after), options), row.isSame)
            << row.before << ' ' << row.after << ' ' << row.tolerance << ' ' << row.relative;
    }
    EXPECT_TRUE(areSame(tableOf(9, 0.1F), tableOf(9, 0.11F), {.tolerance = 0.01, .relative = 0, .blocks = {}}));
    EXPECT_FALSE(areSame(tableOf(9, 1.0F), tableOf(9, std::nextafter(1.0F, 2.0F)),
                         {.tolerance = 1e-9, .relative = 1e-9, .blocks = {}}));
    // What comes behind a number that is forgiven is told.
    EXPECT_THAT(told(changed("rf-board", {"15716.values[0][1]=1", "15716.values[0][2]=1"}),
                     changed("rf-board", {"15716.values[0][1]=1.1", "15716.values[0][2]=2"}),
                     {.tolerance = 0.5, .relative = 0, .blocks = {}}),
                ElementsAre("15716 changed values[0][2] checksum"));
}

TEST(ImageDiff, ComparesIntegersExactly) {
    const std::uint64_t wide = std::uint64_t{1} << 60U;
    const Bytes one = tableOf(7, wide);
    const Bytes other = tableOf(7, wide + 1); // the same double
    EXPECT_FALSE(areSame(one, other));
    EXPECT_FALSE(areSame(one, other, {.tolerance = 0.5, .relative = 0, .blocks = {}}));
    EXPECT_TRUE(areSame(one, other, {.tolerance = 1, .relative = 0, .blocks = {}}));
    EXPECT_THAT(diffText(ImageDiff(one, other), {"a", "b"}), HasSubstr("1152921504606846976 -> 1152921504606846977"));
    EXPECT_TRUE(areSame(tableOf(8, std::int64_t{-1}), tableOf(8, std::int64_t{1}),
                        {.tolerance = 2, .relative = 0, .blocks = {}}));
    for (short step = -300; step < 300; ++step) { // in hundredths, of which 7 are 0.07
        const auto next = static_cast<short>(step + 7);
        ASSERT_TRUE(areSame(tableOf(13, step), tableOf(13, next), {.tolerance = 0.07, .relative = 0, .blocks = {}}));
        ASSERT_FALSE(areSame(tableOf(13, step), tableOf(13, next), {.tolerance = 0.0699, .relative = 0, .blocks = {}}));
    }
}

TEST(ImageDiff, ForgivesNothingButMeasuredNumbers) {
    const Bytes board = sample("rf-board");
    const DiffOptions all{.tolerance = 1e30, .relative = 2, .blocks = {}};
    EXPECT_TRUE(areSame(board, assigned(board, "15716.values[0][10]=1.25"), all));
    for (const char* const kept : {"15716.columns=1", "2.name=RFBX", "2.product_date=2018-11-16"})
        EXPECT_FALSE(areSame(board, assigned(board, kept), all)) << kept;

    // Sums that follow from nothing but what is forgiven are forgiven; what a sum says is not.
    Bytes stale = board;
    const ModuleImage image(board);
    const ImageBlock& block = *std::ranges::find(image.blocks(), 15716, &ImageBlock::id);
    const std::size_t value = block.offset + BlockLayout(block).find("values")->offset;
    stale[value] ^= 1;
    EXPECT_THAT(told(board, stale, all), ElementsAre("15716 changed"));
    EXPECT_THAT(diffText(ImageDiff(board, stale, all), {"a", "b"}), HasSubstr("\n  sums hold -> are wrong\n"));
    Bytes wrong = board;
    wrong[block.offset + 4] ^= 1;
    EXPECT_FALSE(areSame(board, wrong, all));
    Bytes alignment = board;
    alignment[block.offset + 6] ^= 1;
    resealImage(alignment);
    EXPECT_FALSE(areSame(board, alignment, all));
    // Two that are wrong by the same differ in the values only; by another, in the sum as well.
    Bytes alsoWrong = wrong;
    const auto add = [&](Bytes& bytes, std::size_t at, int by) {
        bytes::store(std::span(bytes), at,
                     static_cast<std::uint16_t>(bytes::load<std::uint16_t>(std::span<const char>(bytes), at) + by));
    };
    add(alsoWrong, value, 1);
    EXPECT_THAT(told(wrong, alsoWrong, all), IsEmpty());
    add(alsoWrong, block.offset + 4, -1);
    EXPECT_THAT(told(wrong, alsoWrong, all), IsEmpty());
    add(alsoWrong, block.offset + 4, -1);
    EXPECT_THAT(told(wrong, alsoWrong, all), ElementsAre("15716 changed checksum"));

    // A CRC-32 likewise, and the bytes that a packed table keeps its index with.
    const Bytes tables = sample("second-edition");
    for (const char* const assignment : {"40100.column_0[1]=3", "40101.column_0[0]=7", "40101.update_index=150"}) {
        const Bytes other = assigned(tables, assignment, true);
        EXPECT_TRUE(areSame(tables, other, all)) << assignment;
        EXPECT_FALSE(areSame(tables, other)) << assignment;
    }
}

TEST(ImageDiff, ShowsWhereverAByteDiffers) {
    // A table of capacity for more than it counts; an end block with data; bytes behind it.
    const Bytes board = [] {
        Bytes bytes = built(R"([{"blocks": [
            {"id": 2, "fields": {"name": "RFBO", "product_date": 0}},
            {"id": 15716, "fields": {"rows": 1, "columns": 3, "values": [[1, 2, 3]]}},
            {"id": 4711, "size": 12, "raw": [{"offset": 8, "hex": "01020304"}]},
            {"key": "END"}]}])");
        bytes.insert(bytes.end(), 40, '\xFF');
        return bytes;
    }();
    const ModuleImage image(board);
    const std::size_t table = image.blocks()[1].offset;
    const std::size_t unknown = image.blocks()[2].offset;
    const std::size_t end = image.blocks()[3].offset;
    const std::size_t name = BlockLayout(2).find("name")->offset;
    const std::size_t date = BlockLayout(2).find("product_date")->offset;
    const std::size_t values = table + BlockLayout(15716).find("values")->offset;
    struct Row {
        const char* what;
        std::size_t at;
        char byte;
        std::vector<std::string> told;
    };
    for (const Row& row : std::vector<Row>{
             {"a text", name, 'S', {"2 changed name"}},
             {"behind the NUL", name + 7, 'x', {"2 changed bytes@37+1"}},
             {"the NUL", name + 4, 'x', {"2 changed name"}},
             {"a date that is none", date, 31, {"2 changed product_date"}},
             {"a checksum", 4, 1, {"2 changed checksum"}},
             {"an alignment word", 6, 1, {"2 changed alignment"}},
             {"a value", values + 4, 1, {"15716 changed values[0][1]"}},
             {"beyond the count", values + 128 * 4, 1, {"15716 changed values[1][0] unused"}},
             {"a count", table + 8, 2, {"15716 changed rows"}},
             {"no class", unknown + 9, 9, {"4711 changed bytes@9+1"}},
             {"the end block's data", end + 2, 1, {"65535 changed bytes@2+1"}},
             {"behind the end", end + 4 + 17, 0, {"rest@17+1"}},
         }) {
        Bytes other = board;
        ASSERT_NE(other[row.at], row.byte) << row.what;
        other[row.at] = row.byte;
        EXPECT_EQ(told(board, other), row.told) << row.what;
        EXPECT_EQ(told(other, board), row.told) << row.what;
    }
    const auto cut = [&](std::size_t size) { return Bytes(board.begin(), board.begin() + static_cast<long>(size)); };
    EXPECT_THAT(told(board, cut(board.size() - 1)), ElementsAre("rest@39+1"));
    EXPECT_THAT(told(cut(end), cut(end + 3)), ElementsAre("65535 only-after"));
    EXPECT_THAT(told(cut(end + 3), cut(end + 4)), ElementsAre("65535 changed bytes@3+1"));
    EXPECT_THAT(told(cut(10), cut(11)), ElementsAre("2 changed bytes@10+1"));
    EXPECT_THAT(told(cut(11), cut(12)), ElementsAre("2 changed eeprom_size"));
    EXPECT_THAT(told(cut(1), cut(2)).size(), 2U);
    EXPECT_THAT(told(Bytes(), Bytes(1, '\0')), ElementsAre("0 only-after"));
    EXPECT_THAT(told(Bytes(), Bytes(4, '\xFF')), ElementsAre("rest@0+4"));
    EXPECT_THAT(told(Bytes(8, '\xFF'), Bytes(4, '\xFF')), ElementsAre("rest@4+4"));
    EXPECT_TRUE(areSame(Bytes(), Bytes()));
}

TEST(ImageDiff, PairsBlocksByIdentifierAndOccurrence) {
    const auto block = [](unsigned int id, unsigned int word) {
        return Support::sealed(Support::image({id, 10, 0, 0, word}));
    };
    const std::string a = block(4711, 1);
    const std::string b = block(4712, 2);
    const std::string c = block(4711, 3);
    const std::string end = Support::image({0xFFFF, 0});
    struct Row {
        std::string before;
        std::string after;
        std::vector<std::string> told;
    };
    for (const Row& row : std::vector<Row>{
             {a + b + c + end, a + b + c + end, {}},
             {a + b + end, b + a + end, {"4711 moved", "4712 moved"}},
             {a + c + end, c + a + end, {"4711 changed checksum bytes@8+1", "4711 changed checksum bytes@8+1"}},
             {a + b + end, a + end, {"4712 only-before", "65535 moved"}},
             {b + end, a + b + c + end, {"4711 only-after", "4712 moved", "4711 only-after", "65535 moved"}},
             {a + a + end, a + c + end, {"4711 changed checksum bytes@8+1"}},
             {b + a + end, c + end, {"4712 only-before", "4711 moved changed checksum bytes@8+1", "65535 moved"}},
             {a, a + end, {"65535 only-after"}},
         }) {
        EXPECT_EQ(told(bytesOf(row.before), bytesOf(row.after)), row.told);
    }
    // Chosen by either image; what is not chosen is not looked at.
    const Bytes before = bytesOf(a + b + end + "xyz");
    const Bytes after = bytesOf(a + c + end + "abc");
    EXPECT_THAT(told(before, after, {.tolerance = 0, .relative = 0, .blocks = BlockSelector({"471[1]"})}),
                ElementsAre("4711 only-after"));
    EXPECT_THAT(told(before, after, {.tolerance = 0, .relative = 0, .blocks = BlockSelector({"65535"})}), IsEmpty());
}

TEST(ImageDiff, ComparesTablesOfAnotherShapeByName) {
    const auto table = [](const std::string& rows, const std::string& values, const std::string& types = "[13, 13]") {
        return built(R"([{"blocks": [{"key": "USER_40000", "fields": {"row_id_type": 1, "columns": 2, "rows": )" +
                     rows + R"(, "column_types": )" + types + R"(, "row_ids": [5, 6], "values": )" + values +
                     "}}, {\"key\": \"END\"}]}]");
    };
    const Bytes before = table("2", "[[1, 2], [3, 4]]");
    const Bytes longer = table("3", "[[1, 2], [3, 4.5], [5, 6]]");
    const ImageDiff grown(before, longer);
    ASSERT_THAT(grown.blocks(), SizeIs(2)); // the end block moved
    EXPECT_THAT(told(grown).front(),
                HasSubstr("rows row_ids[2] values[1][1] values[2][0] values[2][1] size checksum CRC-32"));
    EXPECT_THAT(diffText(grown, {"a", "b"}), HasSubstr("1 of 4 changed, 2 only in b"));
    // Nothing forgives another shape.
    EXPECT_FALSE(areSame(before, longer, {.tolerance = 1e9, .relative = 2, .blocks = {}}));
    // The same numbers stored otherwise.
    const Bytes finer = table("2", "[[1, 2], [3, 4]]", "[14, 14]");
    EXPECT_THAT(told(before, finer).front(), HasSubstr("column_types[0] column_types[1] "));
    EXPECT_THAT(told(before, finer).front(), Not(HasSubstr("values")));
    EXPECT_FALSE(areSame(before, finer, {.tolerance = 1e9, .relative = 2, .blocks = {}}));
}

TEST(ImageDiff, ComparesWhatOnlyOneLayoutHasOrHasElsewhere) {
    // Without the end block, which would only move.
    const auto table = [](const std::string& fields, int alignment = 0) {
        return built(R"([{"blocks": [{"key": "USER_40000", "alignment": )" + std::to_string(alignment) +
                     R"(, "fields": {)" + fields + "}}]}]");
    };
    const std::string two = R"("rows": 2, "columns": 1, "column_types": [13], )";
    const std::string mixed = R"("rows": 1, "columns": 2, )";
    struct Row {
        const char* what;
        Bytes before;
        Bytes after;
        std::string told;
        std::string text; // a line
    };
    for (const Row& row : std::vector<Row>{
             {"labels", table(two + R"("values": [[1], [2]])"),
              table(R"("row_id_type": 1, )" + two + R"("row_ids": [5, 6], "values": [[1], [2]])"),
              "row_id_type row_ids[0] row_ids[1] size checksum CRC-32", "  row_ids  2 only in b\n"},
             {"texts at another place",
              table(R"("rows": 2, "columns": 1, "column_types": [21], "values": [["AB"], ["C"]])"),
              table(R"("row_id_type": 1, "rows": 2, "columns": 1, "column_types": [21], "row_ids": [0, 0],
                  "values": [["AB"], ["D"]])"),
              "row_id_type values[1][0] row_ids[0] row_ids[1] size checksum CRC-32", "\"C\" -> \"D\"\n"},
             {"a number that becomes a text",
              table(mixed + R"("column_types": [1, 2], "column_0": [65], "column_1": [3])"),
              table(mixed + R"("column_types": [20, 2], "column_0": ["A"], "column_1": [3])"),
              "column_types[0] column_0[0] checksum CRC-32", "  [0]  65 -> \"A\"\n"},
             {"a text that becomes a number",
              table(mixed + R"("column_types": [20, 2], "column_0": ["A"], "column_1": [3])"),
              table(mixed + R"("column_types": [1, 2], "column_0": [65], "column_1": [3])"),
              "column_types[0] column_0[0] checksum CRC-32", "  [0]  \"A\" -> 65\n"},
             {"other numbers of another type",
              table(mixed + R"("column_types": [13, 2], "column_0": [1.25], "column_1": [3])"),
              table(mixed + R"("column_types": [14, 2], "column_0": [1.255], "column_1": [3])"),
              "column_types[0] column_0[0] checksum CRC-32", "  [0]  1.25 -> 1.255  (+0.005)\n"},
             {"columns that were one table", table(mixed + R"("column_types": [1, 1], "values": [[7, 8]])"),
              table(mixed + R"("column_types": [1, 2], "column_0": [7], "column_1": [8])"),
              "column_types[1] values[0][0] values[0][1] column_0[0] column_1[0] checksum CRC-32",
              "  values  2 only in a\n"},
             {"packed, whose filler follows", table(two + R"("update_index": 1.5, "values": [[1], [2]])", 1),
              table(R"("rows": 4, "columns": 1, "column_types": [1], "update_index": 1.5, "values": [[1], [2]])", 1),
              "rows column_types[0] values[2][0] values[3][0] checksum CRC-32 filler", "  rows  2 -> 4  (+2)\n"},
         }) {
        EXPECT_THAT(told(row.before, row.after), ElementsAre("40000 changed " + row.told)) << row.what;
        EXPECT_THAT(diffText(ImageDiff(row.before, row.after), {"a", "b"}), HasSubstr(row.text)) << row.what;
        EXPECT_TRUE(areSame(row.before, row.before)) << row.what;
    }
}

/// An image of one block of every class, each with random values.
void forEachClassImage(std::mt19937& random, const std::function<void(int id, const Bytes& image)>& function) {
    for (const CatalogueEntry& entry : catalogue()) {
        for (const int id : std::set{entry.first, entry.last}) {
            std::string bytes = Support::bytesOf(*makeBlock(id));
            if (id == 0xFFFF || bytes.size() < 8)
                continue;
            const std::string content = Support::randomBytes(random, bytes.size() - 8);
            bytes.replace(8, content.size(), content);
            if (bytes.size() < 0x8000)
                bytes = Support::sealed(bytes);
            function(id, bytesOf(bytes + Support::image({0xFFFF, 0})));
        }
    }
}

/// Whether the words are sums, and nothing else was told besides the fields.
void expectSumsOnly(const BlockDiff& block, const std::string& what) {
    EXPECT_TRUE(std::ranges::all_of(block.words, [](const WordDiff& word) {
        return word.word == HeaderWord::Checksum || word.word == HeaderWord::Crc32 || word.word == HeaderWord::Filler;
    })) << what;
    EXPECT_THAT(block.bytes, IsEmpty()) << what;
    EXPECT_TRUE(block.sumsAgree) << what;
}

std::size_t tellsTheElementThatWasSet(std::mt19937& random, const Bytes& image, const ImageBlock& block,
                                      const Field& field) {
    const auto element = static_cast<unsigned int>(random() % field.elements());
    const std::string index = Support::indexText(field, element);
    const std::string name = std::to_string(block.id) + '@' + std::to_string(block.offset) + '.' + field.name + index;
    std::array<Bytes, 2> images{image, image}; // both set: what stood behind the NUL of a text is gone from both
    for (Bytes& one : images) {
        const Assignment assignment =
            parseAssignment(name + '=' + Support::randomValue(random, block.bytes, BlockLayout(block).fields(), field));
        if (!assignValues(one, {&assignment, 1}, {.areStored = true}).succeeded()) {
            EXPECT_TRUE(block.isSecondEdition) << name; // its shape, or a sum
            return 0;
        }
    }
    const ImageDiff diff(images[0], images[1]);
    EXPECT_EQ(diff.isSame(), images[0] == images[1]) << name;
    if (diff.isSame())
        return 0;
    EXPECT_THAT(diff.blocks(), SizeIs(1)) << name;
    EXPECT_THAT(diff.rest(), IsEmpty()) << name;
    const BlockDiff& changed = diff.blocks().front();
    EXPECT_EQ(changed.block().offset, block.offset) << name;
    EXPECT_FALSE(changed.isMoved()) << name;
    expectSumsOnly(changed, name);
    EXPECT_THAT(changed.fields, SizeIs(1)) << name;
    if (changed.fields.size() != 1)
        return 0;
    EXPECT_EQ(changed.fields.front().name(), std::string_view(field.name)) << name;
    EXPECT_THAT(changed.fields.front().elements, SizeIs(1)) << name;
    const ElementDiff& told = changed.fields.front().elements.front();
    std::string place;
    for (unsigned int d = 0; d < field.rank; ++d)
        place += '[' + std::to_string(told.index.at(d)) + ']';
    EXPECT_EQ(place, index) << name;
    return 1;
}

TEST(ImageDiff, TellsExactlyTheElementThatWasSet) {
    std::mt19937 random(12);
    std::size_t changed = 0;
    const auto setSome = [&](const Bytes& bytes) {
        const ModuleImage image(bytes);
        for (const ImageBlock& block : image.blocks()) {
            const BlockLayout layout(block);
            for (int i = 0; i < 4 && !layout.fields().empty(); ++i)
                changed +=
                    tellsTheElementThatWasSet(random, bytes, block, layout.fields()[random() % layout.fields().size()]);
        }
    };
    forEachClassImage(random, [&](int, const Bytes& image) { setSome(image); });
    for (int i = 0; i < 50; ++i)
        setSome(sample("second-edition"));
    EXPECT_GT(changed, 700U);
}

TEST(ImageDiff, IsNeverTheSameOfOtherBytes) {
    std::mt19937 random(3);
    const auto flip = [&](const Bytes& image, std::size_t at) {
        Bytes other = image;
        other[at] ^= static_cast<char>(1U << random() % 8);
        ASSERT_FALSE(areSame(image, other)) << at;
        // Whatever the tolerance, a sum that does not hold any more shows, and where there is none to be held the byte.
        const ImageDiff diff(image, other, {.tolerance = infinity, .relative = infinity, .blocks = {}});
        const ModuleImage module(other);
        const bool isSummed = std::ranges::all_of(module.blocks(), &ImageBlock::checksumChecked);
        ASSERT_TRUE(!diff.isSame() || !isSummed || image.size() > 0x8000) << at;
    };
    forEachClassImage(random, [&](int, const Bytes& image) {
        for (int i = 0; i < 8; ++i)
            flip(image, random() % image.size());
    });
    const Bytes tables = sample("second-edition");
    for (std::size_t at = 0; at < tables.size(); ++at)
        flip(tables, at);
    for (int i = 0; i < 300; ++i) {
        const Bytes noise = bytesOf(Support::randomBytes(random, 1 + random() % 200));
        const std::size_t at = random() % noise.size();
        Bytes other = noise;
        other[at] ^= static_cast<char>(1U << random() % 8);
        ASSERT_FALSE(areSame(noise, other));
        ASSERT_FALSE(areSame(noise, Bytes(noise.begin(), noise.end() - 1)));
        ASSERT_TRUE(areSame(noise, Bytes(noise)));
    }
}

// What grows with the square of these, or with the size of their class for each, would not end.
TEST(ImageDiff, IsLinearInHostileImages) {
    constexpr int count = 10000;
    const auto repeated = [](unsigned int id, unsigned int size, unsigned int fill) {
        std::string block = Support::image({id, size, 0, 0});
        block.append(size - block.size(), static_cast<char>(fill));
        std::string all;
        for (int i = 0; i < count; ++i)
            all += block;
        return bytesOf(all);
    };
    for (const unsigned int id : {12100U, 15716U, 4711U}) {
        for (const unsigned int size : {10U, 40U}) {
            const Bytes before = repeated(id, size, 1);
            const Bytes after = repeated(id, size, 2);
            const ImageDiff diff(before, after);
            EXPECT_GT(diff.counts().changed, count - 500U) << id;
            EXPECT_LT(diffText(diff, {"a", "b"}).size(), 200000U) << id;
            EXPECT_TRUE(diffDocument(diff, {"a", "b"}).ends_with("]}\n"));
            const Bytes shorter = repeated(id, 8, 0);
            EXPECT_FALSE(ImageDiff(before, shorter).isSame());
        }
    }
}

TEST(ImageDiff, MeansAreFiniteHoweverLargeTheNumbers) {
    const auto table = [](const std::string& number) {
        return built(R"([{"blocks": [{"key": "USER_40000", "fields": {"rows": 1, "columns": 2, "column_types": [10, 10],
            "values": [[)" +
                     number + ", " + number + R"(]]}}, {"key": "END"}]}])");
    };
    const Bytes before = table("1e308");
    const Bytes after = table("-7e307");
    const ImageDiff diff(before, after);
    const FieldDiff& field = diff.blocks().front().fields.front();
    EXPECT_EQ(field.numbers, 2U);
    EXPECT_DOUBLE_EQ(field.largest, 1.7e308);
    EXPECT_DOUBLE_EQ(field.mean, 1.7e308);
}

} // namespace DiffTest
