#include "JsonText.h"
#include "Support.h"

#include <travik/service/Describe.h>
#include <travik/service/ImageFile.h>
#include <travik/service/KaitaiFormat.h>

namespace DescribeTest {

using namespace Travik;
using nlohmann::json;
using testing::HasSubstr;

const BlockForms& forms() {
    static const BlockForms all;
    return all;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        all.push_back(line);
    return all;
}

std::string docs(const std::string& name) {
    std::vector<char> bytes;
    EXPECT_EQ(readImageFile(std::string(TRAVIK_DOCS) + '/' + name, bytes), "");
    return {bytes.begin(), bytes.end()};
}

TEST(Describe, TheReferenceIsUpToDate) {
    EXPECT_TRUE(docs("format.md") == docs("format-head.md") + describeAsMarkdown(forms()))
        << "docs/format.md is stale. Renew it:\n"
           "  { cat docs/format-head.md; build/release/tools/datablock/datablock describe --markdown; } "
           ">docs/format.md";
}

TEST(Describe, ShowsABlockByteByByte) {
    EXPECT_EQ(describeAsText(forms(), BlockForms::of(100)),
              "100  MODIFICATION_100  HwDatablockModification  28 bytes\n"
              "\n"
              "OFFSET  TYPE  ENTRIES  NAME             UNIT  SCALE  WHAT IT IS FOR\n"
              "     0  u16            id                            identifier, 100\n"
              "     2  u16            size                          bytes of the block, 28\n"
              "     4  u16            checksum                      makes the sum of all words 0\n"
              "     6  u16            alignment                     0\n"
              "     8  u16        10  circular_number               value, by modification; bits 0-13 of the word\n"
              "     8  u16        10  action                        value, by modification; bits 14-15 of the word\n");
    EXPECT_EQ(describeAsText(forms(), BlockForms::of(65535)),
              "65535  END  HwDatablockEnd  4 bytes\n"
              "\n"
              "OFFSET  TYPE  ENTRIES  NAME  UNIT  SCALE  WHAT IT IS FOR\n"
              "     0  u16            id                 identifier, 65535\n"
              "     2  u16            data               one data word; no size, checksum and alignment words\n");
    EXPECT_THAT(describeAsText(forms(), BlockForms::of(12061)), HasSubstr("    12  i16   7 × 260  correction  "));
}

TEST(Describe, SaysWhatAFieldIsFor) {
    struct Case {
        int id;
        const char* field;
        const char* purpose;
    };
    const Case cases[] = {
        {2, "name", "text: Latin-1, up to the first NUL"},
        {2, "product_date", "date: bits 0-4 day, 5-8 month, 9-15 year minus 1980"},
        {15716, "rows", "count of the entries in use: row of values"},
        {15771, "rows", "count of the entries in use: row of values, row of index"},
        {15716, "values",
         "value, by row and column; row counted by rows; "
         "column labelled by block 15715 (RFBO_RFLEVEL_MAX_FREQ); column counted by columns"},
        {15715, "values", "axis of block 15716, by row and column; row counted by rows; column counted by columns"},
        {12061, "correction",
         "value, by step and point; step counted by count; point labelled by block 12051 (EXT_CAL_DAT_B_FREQ)"},
    };
    for (const Case& one : cases) {
        const BlockForm form = BlockForms::of(one.id);
        const Field* const field = form.layout.find(one.field);
        ASSERT_TRUE(field) << one.id << '.' << one.field;
        EXPECT_EQ(forms().purpose(form, *field), one.purpose) << one.id << '.' << one.field;
    }
    // Several blocks at once name the axes of all.
    for (const BlockForm& form : forms().all()) {
        if (form.first == 12060) {
            EXPECT_EQ(form.last, 12063);
            EXPECT_THAT(forms().purpose(form, *form.layout.find("correction")),
                        HasSubstr("point labelled by blocks 12050-12053"));
        }
    }
}

TEST(Describe, WritesRangesOfIdentifiers) {
    EXPECT_EQ(idRanges({}), "");
    EXPECT_EQ(idRanges({2, 10}), "2, 10");
    EXPECT_EQ(idRanges({200, 201, 202, 299}), "200-202, 299");
}

// Whoever reads the JSON only comes to the same bytes: each belongs to a field, and none lies outside the block.
TEST(Describe, JsonCoversEveryByteOfEveryBlock) {
    std::vector<BlockForm> all;
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id)
            all.push_back(BlockForms::of(id));
    }
    EXPECT_EQ(lines(listAsText(forms())).size(), all.size() + 1);
    const json document = Support::parsed(describeAsJson(forms(), all));
    ASSERT_EQ(document.size(), all.size());
    for (const json& block : document) {
        const auto size = block["size"].get<std::size_t>();
        std::vector<bool> covered(size);
        std::fill_n(covered.begin(), std::min<std::size_t>(size, 8), true);
        for (const json& field : block["fields"]) {
            std::vector<std::size_t> offsets{field["offset"].get<std::size_t>()};
            for (const json& dimension : field["dimensions"]) {
                std::vector<std::size_t> next;
                for (const std::size_t offset : offsets) {
                    for (std::size_t i = 0; i < dimension["extent"]; ++i)
                        next.push_back(offset + i * dimension["stride"].get<std::size_t>());
                }
                offsets = std::move(next);
            }
            for (const std::size_t offset : offsets) {
                ASSERT_LE(offset + field["width"].get<std::size_t>(), size) << block["id"] << field["name"];
                std::fill_n(covered.begin() + static_cast<std::ptrdiff_t>(offset), field["width"].get<int>(), true);
            }
        }
        EXPECT_EQ(std::ranges::count(covered, false), 0) << block["id"];
    }
    const json service =
        document[static_cast<std::size_t>(std::ranges::find(all, 200, &BlockForm::first) - all.begin())];
    EXPECT_EQ(service["fields"][3]["bits"], Support::parsed(R"({"first": 18, "count": 14, "signed": false})"));
    EXPECT_EQ(service["fields"][3]["unit"], json());
    EXPECT_EQ(service["fields"][2]["unit"], "h");
}

// What the compiler makes of it, './dev interop' tests.
TEST(Kaitai, NamesAreLegalAndUniqueInTheirType) {
    const auto isLegal = [](std::string_view name) {
        constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz";
        return !name.empty() && letters.find(name.front()) != std::string_view::npos &&
               name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string_view::npos;
    };
    constexpr std::string_view idMark = "- id: ";
    const std::vector<std::string> names = kaitaiTypeNames(forms());
    EXPECT_EQ(std::set(names.begin(), names.end()).size(), names.size());
    std::map<std::size_t, std::set<std::string>> used; // by indentation of the type that is being read
    for (const std::string& line : lines(describeAsKaitai(forms()))) {
        const std::size_t indent = line.find_first_not_of(' ');
        const std::string_view rest = std::string_view(line).substr(std::min(indent, line.size()));
        const bool isId = rest.starts_with(idMark);
        if (!isId && (!rest.ends_with(':') || rest.starts_with('-') || rest.find(' ') != std::string_view::npos))
            continue;
        const std::string name(isId ? rest.substr(idMark.size()) : rest.substr(0, rest.size() - 1));
        EXPECT_TRUE(isLegal(name) || name.starts_with("element_type::")) << line;
        if (name == "seq") { // of the next type
            used.erase(used.lower_bound(indent), used.end());
        } else if (isId) {
            EXPECT_TRUE(used[indent].insert(name).second) << line;
        }
    }
}

TEST(Kaitai, WordsStandInQuotesAsTheyAre) {
    const std::string text = describeAsKaitai(forms());
    for (const char* const line : {"doc: \"date: bits 0-4 day, 5-8 month, 9-15 year minus 1980\"",
                                   "doc: \"2 IDENT_2, 44 bytes in all\"", "-unit: \"byte\""})
        EXPECT_THAT(text, HasSubstr(std::string("    ") + line + '\n'));
}

TEST(Kaitai, EveryIdentifierLeadsToItsType) {
    const std::string text = describeAsKaitai(forms());
    const std::vector<std::string> names = kaitaiTypeNames(forms());
    for (std::size_t i = 0; i < names.size(); ++i) {
        const BlockForm& form = forms().all()[i];
        for (int id = form.first; id <= form.last; ++id)
            EXPECT_THAT(text, HasSubstr("\n            " + std::to_string(id) + ": " + names[i] + '\n'));
        EXPECT_THAT(text, HasSubstr("\n  " + names[i] + ":\n"));
    }
}

} // namespace DescribeTest
