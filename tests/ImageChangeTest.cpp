#include "RandomValues.h"
#include "Support.h"

#include <travik/datablock/Bytes.h>
#include <travik/service/Document.h>
#include <travik/service/ImageChange.h>
#include <travik/service/ImageFile.h>
#include <travik/service/Values.h>

#include <filesystem>
#include <limits>
#include <numeric>

namespace ImageChangeTest {

using namespace Travik;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<char> sample(const std::string& name) {
    std::vector<char> bytes;
    EXPECT_EQ(readImageFile(std::string(TRAVIK_SAMPLES) + "/" + name + ".bin", bytes), "");
    return bytes;
}

std::vector<std::string> sampleNames() {
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(TRAVIK_SAMPLES)) {
        if (file.path().extension() == ".bin")
            names.push_back(file.path().stem().string());
    }
    return names;
}

/// The samples, whose records are full, and an image with an empty block for each class and identifier.
std::vector<std::pair<std::string, std::vector<char>>> imagesOfAllClasses() {
    std::vector<std::pair<std::string, std::vector<char>>> images;
    for (const std::string& name : sampleNames())
        images.emplace_back(name, sample(name));
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id) {
            const auto made = makeBlock(id);
            const std::string bytes = Support::bytesOf(*made);
            if (bytes.size() < sizeof(HwSDatablockHeader))
                continue; // the end block
            const std::string block = Support::sealed(bytes) + std::string("\xFF\xFF\0\0", 4);
            images.emplace_back("class " + std::to_string(id), std::vector<char>(block.begin(), block.end()));
        }
    }
    return images;
}

AssignReport assign(std::vector<char>& image, const std::vector<std::string>& texts,
                    const AssignOptions& options = {}) {
    std::vector<Assignment> assignments;
    for (const std::string& text : texts) {
        assignments.push_back(parseAssignment(text));
        EXPECT_EQ(assignments.back().error, "") << text;
    }
    return assignValues(image, assignments, options);
}

std::string refusalsOf(const AssignReport& report) {
    std::string all;
    for (const AssignRefusal& refusal : report.refusals)
        all += refusal.text + ": " + refusal.why + '\n';
    return all;
}

TEST(ImageChange, TakesAssignmentsApart) {
    const Assignment whole = parseAssignment("RFBO_X@0x1f.values[3][10]= a=b ");
    EXPECT_EQ(whole.error, "");
    EXPECT_EQ(whole.name, "RFBO_X@0x1f.values[3][10]");
    EXPECT_EQ(whole.block, "RFBO_X");
    EXPECT_EQ(whole.offset, 0x1FU);
    EXPECT_EQ(whole.field, "values");
    EXPECT_EQ(whole.indices, (std::vector<unsigned int>{3, 10}));
    EXPECT_EQ(whole.value, " a=b ");
    for (const char* const wrong : {"",
                                    "=",
                                    "2.date",
                                    "2=1",
                                    ".date=1",
                                    "2.=1",
                                    "2.[0]=1",
                                    "2.date[=1",
                                    "2.date[]=1",
                                    "2.date[-1]=1",
                                    "2.date[1=1",
                                    "2.date[1]]=1",
                                    "2.date[1]x=1",
                                    "2.date[ 1]=1",
                                    "2.date[99999999999]=1",
                                    "2@.date=1",
                                    "2@x.date=1",
                                    "2@-1.date=1",
                                    "@1.date=1",
                                    "2@0x.date=1"})
        EXPECT_NE(parseAssignment(wrong).error, "") << wrong;
}

/// A board of which every block but the end is there twice.
std::vector<char> doubled(const std::vector<char>& board) {
    std::vector<char> image(board.begin(), board.end() - 4);
    image.insert(image.end(), board.begin(), board.end());
    return image;
}

TEST(ImageChange, RefusesWhatCannotBe) {
    struct Refused {
        const char* assignment;
        const char* why;
        bool areStored = false;
    };
    struct Image {
        std::vector<char> bytes;
        std::vector<Refused> refused;
    };
    std::vector<char> wrong = sample("rf-board");
    wrong[800] ^= 1; // in block 15706
    std::vector<char> cut = sample("rf-board");
    cut.resize(1000); // in the same
    std::vector<char> shrunk = sample("rf-board");
    shrunk[684 + 2] ^= 2; // its size word
    const std::vector<Image> images{
        {sample("rf-board"),
         {{"15716.values[0][0]=1e9", "out of range, takes -21474836.48 to 21474836.47"},
          {"15716.values[0][0]=1e999", "out of range, takes -21474836.48 to 21474836.47"},
          {"15716.values[0][0]=2147483648", "out of range, takes -2147483648 to 2147483647", true},
          {"15716.values[0][0]=1.5", "not a whole number", true},
          {"15716.values[0][0]=nan", "not a finite number, takes"},
          {"15716.values[0][0]=-inf", "not a finite number, takes"},
          {"15716.values[0][0]=", "takes a number"},
          {"15716.values[0][0]=1 ", "takes a number"},
          {"15716.values[0][0]=1,5", "takes a number"},
          {"15716.values[0]=1", "takes an index for each of [row of 2][column of 128]"},
          {"15716.values[2][0]=1", "row 2 is none, takes 0 to 1"},
          {"15716.values[0][128]=1", "column 128 is none, takes 0 to 127"},
          {"15716.value[0][0]=1", "no field value; near: values"},
          {"15716.rows=3", "out of range, takes 0 to 2"},
          {"15716.columns=129", "out of range, takes 0 to 128", true},
          {"15716.columns=-1", "out of range, takes 0 to 128"},
          {"2.name=123456789012345", "too long, takes 14"},
          {"2.name=\xE2\x82\xAC", "Latin-1"},
          {"2.name[0]=x", "takes no index"},
          {"2.product_date=2023-02-29", "no date"},
          {"2.product_date=1", "no date"},
          {"2.product_date=2018-11-15", "takes a number", true},
          {"RFBO_ATREG_DATA.rows=1", "no block RFBO_ATREG_DATA; near: RFBO_ATTREG_DATA"},
          {"RFBO_*.rows=1", "no block"},
          {"2@44.name=x", "not there, but block 2 at offset 0"},
          {"65535.x=1", "no fields"}}},
        {doubled(sample("rf-board")), {{"IDENT_2.name=x", "more than one block: block 2 at offset 0, block 2 at"}}},
        {wrong, {{"15706.rows=1", "do not hold"}}},
        {cut, {{"15706.rows=1", "doubtful"}}},
        {shrunk, {{"15706.rows=1", "doubtful"}}},
        {sample("second-edition"),
         {{"40100.rows=39", "shape"}, {"40101.column_types[0]=3", "shape"}, {"40100.checksum32=1", "sums"}}},
    };
    for (const Image& image : images) {
        for (const Refused& refused : image.refused) {
            std::vector<char> bytes = image.bytes;
            // All or none: the other assignment is a good one.
            const std::string good = image.bytes.size() > 77376 ? "15700@44.rows=0" : "2.serial_number=7";
            const AssignReport report = assign(bytes, {good, refused.assignment}, {.areStored = refused.areStored});
            ASSERT_EQ(report.refusals.size(), 1U) << refused.assignment << '\n' << refusalsOf(report);
            EXPECT_EQ(report.refusals.front().text, refused.assignment);
            EXPECT_THAT(report.refusals.front().why, HasSubstr(refused.why)) << refused.assignment;
            EXPECT_EQ(bytes, image.bytes) << refused.assignment;
        }
    }
    std::vector<char> bytes = sample("rf-board");
    EXPECT_THAT(refusalsOf(assign(bytes, {"2.name=x", "IDENT_2@0x0.name=y"})), HasSubstr("y: is set twice"));
}

TEST(ImageChange, MakesDamagedSumsHoldWhereAllowed) {
    std::vector<char> image = sample("rf-board");
    image[800] ^= 1;
    const AssignReport refused = assign(image, {"15706.rows=1"});
    EXPECT_TRUE(refused.isDamaged);
    const AssignReport report = assign(image, {"15706.rows=1", "2.name=x"}, {.reseals = true});
    EXPECT_EQ(refusalsOf(report), "");
    EXPECT_EQ(report.resealed, std::vector<std::size_t>{684});
    EXPECT_THAT(checkImage(image), IsEmpty());
}

TEST(ImageChange, TellsOldAndNew) {
    std::vector<char> image = sample("rf-board");
    const AssignReport report = assign(image, {"RFBO_RFLEVEL_MAX_DATA.values[0][0]=1.249", "2.name=Gr\xC3\xBCn=1",
                                               "2.product_date=2024-02-29", "15716.values[0][1]=+2.50"});
    ASSERT_EQ(refusalsOf(report), "");
    const auto& changes = report.changes;
    EXPECT_EQ(changes[0].before + "|" + changes[0].after, "19.50|1.25");
    EXPECT_TRUE(changes[0].isRounded);
    EXPECT_EQ(changes[1].before + "|" + changes[1].after, "\"RFBO\"|\"Gr\xC3\xBCn=1\"");
    EXPECT_EQ(changes[2].before + "|" + changes[2].after, "2018-11-15|2024-02-29");
    EXPECT_FALSE(changes[3].isRounded);
    EXPECT_EQ(report.changeCount(), 4U);
    const AssignReport tiny = assign(image, {"15716.values[0][0]=1e-400"});
    EXPECT_EQ(refusalsOf(tiny), "");
    EXPECT_EQ(tiny.changes[0].after, "0.00");
    const std::vector<char> once = image;
    EXPECT_EQ(assign(image, {"2.name=Gr\xC3\xBCn=1"}).changeCount(), 0U);
    EXPECT_EQ(image, once);
}

TEST(ImageChange, StoresWideIntegersExactly) {
    struct Wide {
        const char* type;
        const char* number;
        bool isTaken;
    };
    for (const Wide& wide : std::initializer_list<Wide>{{"7", "18446744073709551615", true},
                                                        {"7", "18446744073709551616", false},
                                                        {"7", "-1", false},
                                                        {"8", "9007199254740993", true},
                                                        {"8", "-9223372036854775808", true},
                                                        {"8", "9223372036854775808", false},
                                                        {"8", "0.5", false}}) {
        const BuiltImage built =
            buildImage(R"({"blocks": [{"key": "USER_40000", "fields": {"rows": 1, "columns": 1, "column_types": [)" +
                       std::string(wide.type) + R"(], "values": [[7]]}}]})");
        ASSERT_EQ(built.error, "");
        std::vector<char> image = built.bytes;
        const AssignReport report =
            assign(image, {std::string("40000.values[0][0]=") + wide.number}, {.areStored = true});
        EXPECT_EQ(report.succeeded(), wide.isTaken) << wide.number;
        const std::string told = wide.isTaken ? report.changes.at(0).before + "|" + report.changes.at(0).after : "";
        EXPECT_EQ(told, wide.isTaken ? std::string("7|") + wide.number : "");
        EXPECT_EQ(image == built.bytes, !wide.isTaken);
        EXPECT_THAT(checkImage(image), IsEmpty());
    }
}

void takeOver(std::vector<char>& image, const std::vector<char>& from, std::size_t at, std::size_t count) {
    std::copy_n(from.data() + at, count, image.data() + at);
}

void takeOverSums(std::vector<char>& image, const std::vector<char>& from, const ImageBlock& block) {
    takeOver(image, from, block.offset + 4, 2);
    if (block.isSecondEdition) {
        takeOver(image, from, block.offset + 8, 4);
        takeOver(image, from, block.offset + block.bytes.size() - 2, 2);
    }
}

TEST(ImageChange, ChangesOneElementAndItsSumsAndBack) {
    std::mt19937 random(12);
    std::size_t changed = 0;
    for (const auto& [name, original] : imagesOfAllClasses()) {
        ASSERT_THAT(checkImage(original), IsEmpty()) << name;
        const ModuleImage module(original);
        for (const ImageBlock& block : module.blocks()) {
            const BlockLayout layout(block);
            for (const Field& field : layout.fields()) {
                const auto element = static_cast<unsigned int>(random() % field.elements());
                const std::size_t at = field.elementOffset(element);
                if (at + field.width > block.bytes.size())
                    continue;
                std::string place = std::to_string(block.id) + '@' + std::to_string(block.offset) + '.' + field.name;
                place += Support::indexText(field, element) + '=';
                std::vector<char> image = original;
                const AssignReport report =
                    assign(image, {place + Support::randomValue(random, block.bytes, layout.fields(), field)},
                           {.areStored = true});
                const std::string what = name + ' ' + place + '\n' + refusalsOf(report);
                if (!report.succeeded()) {
                    ASSERT_TRUE(block.isSecondEdition) << what; // shape and sums
                    ASSERT_EQ(image, original) << what;
                    continue;
                }
                ++changed;
                ASSERT_THAT(checkImage(image), IsEmpty()) << what;
                std::vector<char> expected = original;
                takeOver(expected, image, block.offset + at, field.width);
                takeOverSums(expected, image, block);
                ASSERT_EQ(image, expected) << what;
                std::string before = report.changes.front().before;
                if (field.stored == Stored::Text)
                    before = before.substr(1, before.size() - 2);
                const AssignReport back = assign(image, {place + before}, {.areStored = true});
                ASSERT_EQ(refusalsOf(back), "") << what;
                ASSERT_EQ(image, original) << what;
            }
        }
    }
    EXPECT_GT(changed, 1500U);
}

ArrayAssignment arrayOf(std::size_t offset, const std::string& field, decltype(ArrayAssignment::values) values,
                        std::vector<unsigned int> elements = {}) {
    if (elements.empty()) {
        elements.resize(std::visit([](const auto& given) { return given.size(); }, values));
        std::iota(elements.begin(), elements.end(), 0U);
    }
    return {offset, field, std::move(elements), std::move(values)};
}

TEST(AssignArray, StoresWhatSingleValuesStore) {
    std::mt19937 random(5);
    for (const std::string& name : sampleNames()) {
        const std::vector<char> original = sample(name);
        const ModuleImage module(original);
        const ImageValues values(module);
        for (const ImageBlock& block : module.blocks()) {
            for (const FieldValues& field : values.read(block).fields) {
                if (field.field->role != Role::Value || field.isText() || field.values.empty())
                    continue;
                // What is there already keeps every byte.
                std::vector<char> image = original;
                const ArrayReport same = assignArray(image, arrayOf(block.offset, field.field->name, field.values));
                ASSERT_TRUE(same.succeeded()) << same.refusal->text << ": " << same.refusal->why;
                ASSERT_EQ(same.changes, 0U);
                ASSERT_EQ(image, original);

                const auto element = static_cast<unsigned int>(random() % field.values.size());
                std::string indices;
                for (std::size_t d = field.dimensions.size(), rest = element; d-- > 0;) {
                    indices = '[' + std::to_string(rest % field.dimensions[d].extent) + ']' + indices;
                    rest /= field.dimensions[d].extent;
                }
                std::vector<char> single = original;
                const AssignReport one = assign(single, {std::to_string(block.id) + '@' + std::to_string(block.offset) +
                                                         '.' + field.field->name + indices + "=1"});
                const ArrayReport array = assignArray(
                    image, arrayOf(block.offset, field.field->name, std::vector<std::int64_t>{1}, {element}));
                ASSERT_EQ(array.succeeded(), one.succeeded()) << name << ' ' << field.field->name;
                ASSERT_EQ(image, single);
            }
        }
    }
}

TEST(AssignArray, StoresWideIntegersExactly) {
    const struct {
        const char* type;
        decltype(ArrayAssignment::values) values;
        std::uint64_t stored; ///< 7 where it is refused
    } rows[] = {
        {"7", std::vector<std::int64_t>{-1}, 7},
        {"7", std::vector<std::int64_t>{std::numeric_limits<std::int64_t>::max()}, 0x7FFFFFFFFFFFFFFF},
        {"7", std::vector<std::uint64_t>{0xFFFFFFFFFFFFFFFF}, 0xFFFFFFFFFFFFFFFF},
        {"8", std::vector<std::uint64_t>{0x8000000000000000}, 7},
        {"8", std::vector<std::int64_t>{-2}, 0xFFFFFFFFFFFFFFFE},
    };
    for (const auto& row : rows) {
        std::vector<char> image =
            buildImage(R"({"blocks": [{"key": "USER_40000", "fields": {"rows": 1, "columns": 1, "column_types": [)" +
                       std::string(row.type) + R"(], "values": [[7]]}}]})")
                .bytes;
        EXPECT_EQ(assignArray(image, arrayOf(0, "values", row.values)).succeeded(), row.stored != 7);
        EXPECT_EQ(bytes::load<std::uint64_t>(image, 24), row.stored);
    }
}

TEST(AssignArray, IsDoneAsAWholeOrNotAtAll) {
    struct Refused {
        ArrayAssignment array;
        const char* text;
        const char* why;
        bool areStored = false;
        bool isDamaged = false;
    };
    const auto numbers = [](std::vector<double> values) { return values; };
    const std::vector<Refused> refusals{
        {arrayOf(2300, "values", numbers({1, 1e9})), "RFBO_RFLEVEL_MAX_DATA.values[0][1]=1e+09", "out of range, takes"},
        {arrayOf(2300, "values", numbers({1, std::nan("")})), "RFBO_RFLEVEL_MAX_DATA.values[0][1]=nan", "not a finite"},
        {arrayOf(2300, "values", numbers({1, 1.5})), "values[0][1]=1.5", "not a whole number", true},
        {arrayOf(2300, "values", numbers({1, 2}), {3, 3}), "values[0][3]=2", "is set twice"},
        {arrayOf(2300, "values", numbers({1}), {256}), "values[2][0]=1", "outside"},
        {arrayOf(2300, "values", numbers({1}), {1, 2}), "values", "a value for each"},
        {arrayOf(2300, "values", std::vector<std::string>{"1"}), "values[0][0]=1", "takes a number"},
        {arrayOf(2300, "valeus", numbers({1})), "valeus", "near: values"},
        {arrayOf(2300, "rows", std::vector<std::uint64_t>{3}), "RFBO_RFLEVEL_MAX_DATA.rows=3", "takes 0 to 2"},
        {arrayOf(2301, "rows", numbers({1})), "rows", "no block at offset 2301"},
        {arrayOf(0, "name", std::vector<std::string>{"123456789012345"}), "IDENT_2.name=", "too long"},
        {arrayOf(0, "name", numbers({1})), "IDENT_2.name=1", "takes a text"},
        {arrayOf(0, "product_date", numbers({1})), "IDENT_2.product_date=1", "no date"},
        {arrayOf(684, "rows", numbers({1})), "rows", "do not hold", false, true},
    };
    std::vector<char> original = sample("rf-board");
    original[800] ^= 1; // in the block at 684
    for (const Refused& refused : refusals) {
        std::vector<char> image = original;
        const ArrayReport report = assignArray(image, refused.array, {.areStored = refused.areStored});
        ASSERT_FALSE(report.succeeded()) << refused.text;
        EXPECT_THAT(report.refusal->text, HasSubstr(refused.text));
        EXPECT_THAT(report.refusal->why, HasSubstr(refused.why)) << refused.text;
        EXPECT_EQ(report.isDamaged, refused.isDamaged) << refused.text;
        EXPECT_EQ(image, original) << refused.text;
    }
    std::vector<char> image = original;
    const ArrayReport taken = assignArray(image, arrayOf(684, "rows", numbers({1})), {.reseals = true});
    EXPECT_TRUE(taken.succeeded());
    EXPECT_THAT(checkImage(image), IsEmpty());
}

TEST(AssignArray, KeepsTheBytesBehindATextThatIsTheSame) {
    std::vector<char> image = sample("rf-board");
    const ModuleImage before(image);
    const BlockLayout layout(before.blocks().front());
    const Field* const field = layout.find("name");
    ASSERT_NE(field, nullptr);
    const std::size_t last = field->offset + field->width - 1;
    image[last] = 'x'; // behind the NUL
    ASSERT_EQ(resealImage(image).changes.size(), 1U);
    const std::vector<char> original = image;
    ASSERT_TRUE(assignArray(image, arrayOf(0, "name", std::vector<std::string>{"RFBO"})).succeeded());
    EXPECT_EQ(image, original);
    ASSERT_TRUE(assignArray(image, arrayOf(0, "name", std::vector<std::string>{"RFB"})).succeeded());
    EXPECT_EQ(image[last], '\0');
    EXPECT_THAT(checkImage(image), IsEmpty());
}

TEST(Reseal, ChangesSumsOnly) {
    std::mt19937 random(4);
    for (const auto& [name, original] : imagesOfAllClasses()) {
        ASSERT_THAT(checkImage(original), IsEmpty()) << name;
        std::vector<char> same = original;
        EXPECT_THAT(resealImage(same).changes, IsEmpty()) << name;
        EXPECT_EQ(same, original) << name;
        const ModuleImage module(original);
        for (const ImageBlock& block : module.blocks()) {
            if (block.isEnd())
                continue;
            std::vector<char> damaged = original;
            // In what follows the header, or in the checksum itself.
            const std::size_t body = block.bytes.size() - 8;
            const std::size_t at = body == 0 || random() % 4 == 0 ? 4 : 8 + random() % body;
            damaged[block.offset + at] ^= static_cast<char>(1U << random() % 8);
            std::vector<char> image = damaged;
            const ResealReport report = resealImage(image, BlockSelector({std::to_string(block.id)}));
            // Of the largest blocks a word that is 0 tells nothing of the others.
            const bool isUnsummed = body >= 0x8000 - 8 && bytes::load<std::uint16_t>(block.bytes, 4) == 0;
            EXPECT_EQ(report.changes.empty(), isUnsummed && at != 4) << name << ' ' << block.offset;
            EXPECT_THAT(checkImage(image), IsEmpty()) << name << ' ' << block.offset << ' ' << at;
            // All but the sums stays as it was damaged.
            takeOverSums(damaged, image, block);
            ASSERT_EQ(image, damaged) << name << ' ' << block.offset;
        }
    }
}

TEST(Reseal, LeavesWhatIsDoubtful) {
    std::vector<char> cut = sample("rf-board");
    cut.resize(1000);
    cut[50] ^= 1;
    const ResealReport report = resealImage(cut);
    ASSERT_EQ(report.changes.size(), 1U);
    EXPECT_EQ(report.changes[0].block, "RFBO_EXTIN_GAIN");
    EXPECT_EQ(report.changes[0].offset, 44U);
    ASSERT_EQ(report.left.size(), 1U);
    EXPECT_EQ(report.left[0].offset, 684U);

    // Blocks that no class sums: a word that is 0 or right stays.
    for (const unsigned int word : {0U, 0x1234U, 0x10000U - 0x1267U - 0x8000U}) {
        const std::string block = Support::image({0x1267, 0x8000, word & 0xFFFFU, 0}) + std::string(0x8000 - 8, '\0');
        std::vector<char> image(block.begin(), block.end());
        const bool isStray = word == 0x1234;
        EXPECT_EQ(resealImage(image).changes.size(), isStray ? 1U : 0U) << word;
        EXPECT_EQ(bytes::load<std::uint16_t>(image, 4), isStray ? 0U : word & 0xFFFFU);
    }
}

} // namespace ImageChangeTest
