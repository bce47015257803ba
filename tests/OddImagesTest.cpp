#include "Images.h"
#include "JsonText.h"

#include <travik/service/BlockTables.h>
#include <travik/service/CsvText.h>
#include <travik/service/ImageDiff.h>
#include <travik/service/Report.h>
#include <travik/service/ShowText.h>

/// What is shown of images whose tables do not fit each other, are cut off, or are there twice.
namespace OddImagesTest {

using namespace Travik;
using Images::Bytes;
using Images::changed;
using testing::HasSubstr;

Bytes cut(Bytes bytes, std::size_t size) {
    bytes.resize(size);
    return bytes;
}

/// The blocks of both, those of the first one ahead.
Bytes joined(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

struct Shown {
    std::string text;
    std::string csv;

    Shown(const Bytes& bytes, int id, const char* field, bool isWhole) {
        const ModuleImage image(bytes);
        const ImageValues values(image);
        ShowOptions options;
        options.fields = NameSelector({field});
        options.isWhole = isWhole;
        options.width = 200;
        for (const ImageBlock& block : image.blocks()) {
            if (block.id != id)
                continue;
            const BlockValues read = values.read(block);
            appendBlockText(text, block, read, options);
            const std::string why = appendCsv(csv, block, shownFields(block, read, options), isWhole);
            EXPECT_TRUE(why.empty() || csv.empty());
            csv += why;
            return;
        }
    }
};

TEST(OddImages, AreShownAsFarAsTheyFit) {
    constexpr std::size_t levels = 2300; // where the block 15716 stands in the board, and its first value behind 16
    Bytes wrongAxis = cut(changed("rf-board", {}), 2300);
    wrongAxis.erase(wrongAxis.begin(), wrongAxis.begin() + 1772); // 15715 alone
    Bytes firstAxis = cut(changed("rf-board", {"15715.values[0][0]=8000"}), 2300);
    firstAxis.erase(firstAxis.begin(), firstAxis.begin() + 1772);
    Bytes levelsAlone = cut(changed("rf-board", {}), 2300 + 1040);
    levelsAlone.erase(levelsAlone.begin(), levelsAlone.begin() + 2300);
    wrongAxis[16] ^= 1; // whose sum does not hold
    const struct {
        const char* what;
        Bytes bytes;
        int id;
        const char* field;
        bool isWhole;
        std::string text;
        std::string csv;
    } rows[] = {
        {"as many points as each filter counts",
         changed("main-board", {"12230.counts[0]=1", "12210.counts[0]=1", "12230.counts[1]=2", "12210.counts[1]=2"}),
         12230, "c1", false,
         "  c1 (filter 0)  by PATH_A_RF_RESPONSE_LP_FREQ (12210)  and iq_peak_level\n"
         "                 0      1       2       3\n"
         "    100 MHz  0.147  0.097  -0.040  -0.100\n\n"
         "  c1 (filter 1)  by PATH_A_RF_RESPONSE_LP_FREQ (12210)  and iq_peak_level\n"
         "                 0      1       2       3\n"
         "    100 MHz  0.147  0.097  -0.040  -0.100\n"
         "    100 MHz  0.153  0.087  -0.050  -0.100\n\n"
         "  c1 (filter 2)  by PATH_A_RF_RESPONSE_LP_FREQ (12210)  and iq_peak_level\n",
         "PATH_A_RF_RESPONSE_LP_FREQ (MHz),filter,c1[0],c1[1],c1[2],c1[3]\r\n"
         "100,0,0.14666666666666667,0.09666666666666666,-0.04,-0.1\r\n"
         "100,1,0.14666666666666667,0.09666666666666666,-0.04,-0.1\r\n"
         "100,1,0.15333333333333332,0.08666666666666667,-0.05,-0.1\r\n200,2,"},
        {"fewer points than labels", changed("main-board", {"12230.counts[1]=2"}), 12230, "c1", false,
         "  c1 (filter 0)  by point, not fitting PATH_A_RF_RESPONSE_LP_FREQ (12210)  and iq_peak_level\n",
         "point,filter,c1[0],c1[1],c1[2],c1[3]\r\n0,0,0.14666666666666667,"},
        {"fewer labels than points", changed("main-board", {"12210.counts[1]=2"}), 12230, "c1", false,
         "  c1 (filter 0)  by point, not fitting PATH_A_RF_RESPONSE_LP_FREQ (12210)  and iq_peak_level\n",
         "point,filter,c1[0],c1[1],c1[2],c1[3]\r\n0,0,0.14666666666666667,"},
        {"the whole of it", changed("rf-board", {"15716.columns=1", "15715.rows=1"}), 15716, "values", true,
         "  values  by RFBO_RFLEVEL_MAX_FREQ (15715)  and row\n",
         "RFBO_RFLEVEL_MAX_FREQ (Hz),values[0],values[1]\r\n"
         "9000,19.50,18.50\r\n,19.48,18.48\r\n"},
        {"none in use", changed("rf-board", {"15716.rows=0"}), 15716, "values", false,
         "  values  by RFBO_RFLEVEL_MAX_FREQ (15715)", "RFBO_RFLEVEL_MAX_FREQ (Hz)\r\n9000\r\n"},
        {"a value cut off", cut(changed("rf-board", {}), levels + 16 + 4 + 3), 15716, "values", false,
         "  values  by RFBO_RFLEVEL_MAX_FREQ (15715)  and row\n",
         "RFBO_RFLEVEL_MAX_FREQ (Hz),values[0],values[1]\r\n"
         "9000,19.50,\r\n9900,,\r\n"},
        {"an axis cut off", cut(changed("rf-board", {}), 1772 + 100), 15715, "values", false,
         "  values\n      0     9 kHz   9.9 kHz", "row,values (Hz)\r\n0,9000\r\n"},
        {"the first of two axes", joined(firstAxis, changed("rf-board", {})), 15716, "values", false,
         "  values  by RFBO_RFLEVEL_MAX_FREQ (15715)  and row\n",
         "RFBO_RFLEVEL_MAX_FREQ (Hz),values[0],values[1]\r\n"
         "8000,19.50,18.50\r\n"},
        {"an axis cut off, further back", joined(levelsAlone, cut(firstAxis, 100)), 15716, "values", false,
         "  values  by column, not fitting RFBO_RFLEVEL_MAX_FREQ (15715)  and row\n",
         "column,values[0],values[1]\r\n0,19.50,18.50\r\n"},
        {"an integer that no double is", Images::tableOf(7, ~std::uint64_t{0}), 40000, "values", false,
         "  values\n    18446744073709551615\n", "row,values\r\n0,18446744073709551615\r\n"},
        {"the axis whose sum holds", joined(wrongAxis, changed("rf-board", {})), 15716, "values", false,
         "  values  by RFBO_RFLEVEL_MAX_FREQ (15715)  and row\n",
         "RFBO_RFLEVEL_MAX_FREQ (Hz),values[0],values[1]\r\n"
         "9000,19.50,18.50\r\n9900,"},
    };
    for (const auto& row : rows) {
        const Shown shown(row.bytes, row.id, row.field, row.isWhole);
        EXPECT_THAT(shown.text, HasSubstr("\n" + row.text)) << row.what;
        EXPECT_THAT(shown.csv, testing::StartsWith(row.csv)) << row.what;
    }
}

// A page of one such image, and of it among others.
TEST(OddImages, HavePages) {
    const auto parsed = [](const std::vector<Bytes>& images, ReportForm form) {
        std::vector<ReportImage> named;
        for (const Bytes& image : images)
            named.push_back({"image", image});
        const ReportDocuments documents = reportOf(named, form, "test");
        const nlohmann::json head = Support::parsed(documents.head);
        std::map<int, nlohmann::json> blocks;
        for (std::size_t i = 0; i < documents.blocks.size(); ++i) {
            blocks[head["blocks"][i]["id"]] = Support::parsed(documents.blocks[i]);
            blocks[head["blocks"][i]["id"]]["title"] = head["title"];
        }
        return blocks;
    };
    const Bytes ragged = changed("main-board", {"12230.counts[0]=1", "12210.counts[0]=1"});
    const auto tables = parsed({ragged}, ReportForm::Module)[12230]["tables"];
    const auto filter = std::ranges::find(tables, "c1 (filter 0)", [](const auto& table) { return table["name"]; });
    EXPECT_EQ((*filter)["rows"], 1);
    EXPECT_EQ((*filter)["axis"]["values"], Support::parsed("[100]"));

    const Bytes board = changed("rf-board", {});
    const Bytes short_ = cut(board, 2300 + 16 + 4 + 3);
    const auto pair = parsed({short_, board}, ReportForm::Comparison);
    const nlohmann::json& levels = pair.at(15716)["tables"][0];
    EXPECT_EQ(levels["curves"][0]["values"][0][0], 19.5);
    EXPECT_TRUE(levels["curves"][0]["values"][0][1].is_null());
    EXPECT_EQ(levels["curves"][0]["values"][1][1], 19.48);
    EXPECT_EQ(pair.at(15716)["places"][0]["checksum"], "cut off");
    // Without a name, a kind of its own; without a serial number no more than the name.
    Bytes unnamed = board;
    unnamed.erase(unnamed.begin(), unnamed.begin() + 44);
    EXPECT_EQ(parsed({unnamed}, ReportForm::Module)[15716]["title"], "image");
    EXPECT_EQ(parsed({unnamed, board}, ReportForm::Family)[15716]["title"], "2 modules of 2 kinds");
    const Bytes unset = changed("rf-board", {"2.serial_number=0"});
    EXPECT_EQ(parsed({unset}, ReportForm::Module)[15716]["title"], "RFBO");
    Bytes wrong = changed("second-edition", {});
    wrong[144] ^= 1;
    EXPECT_EQ(parsed({wrong}, ReportForm::Module)[40100]["places"][0]["crc"], "wrong");
}

// Where a number would be shown otherwise on a page than elsewhere, its text is there.
TEST(OddImages, HaveNumbersAsTheyAreShown) {
    const auto tableOf = [](const std::string& fields) {
        const Bytes image =
            Images::built(R"([{"blocks": [{"key": "USER_40000", "fields": {"columns": 1, )" + fields + "}}]}]");
        return Support::parsed(
            reportOf(std::array{ReportImage{"a", image}}, ReportForm::Module, "t").blocks[0])["tables"];
    };
    const auto numbers = tableOf(R"("rows": 7, "column_types": [10],
        "values": [[1e16], [-1e11], [1e-6], [null], [0.5], [0], [1e-5]])")
                             .back();
    EXPECT_EQ(numbers["curves"][0]["values"][0],
              Support::parsed(R"(["1e+16", "-1e+11", "1e-06", "-nan", 0.5, 0, 1e-5])"));
    EXPECT_EQ(numbers["plotted"], true);
    const auto texts = tableOf(R"("rows": 2, "column_types": [20], "values": [["A"], ["B"]])").back();
    EXPECT_EQ(texts["curves"][0]["values"][0], Support::parsed(R"(["A", "B"])"));
    EXPECT_EQ(texts["plotted"], false);
}

TEST(OddImages, AreCompared) {
    const auto elements = [](const Bytes& before, const Bytes& after) {
        const ImageDiff diff(before, after);
        std::string all;
        for (const BlockDiff& block : diff.blocks()) {
            for (const FieldDiff& field : block.fields) {
                for (const ElementDiff& element : field.elements)
                    all += std::string(field.name()) + (element.isUsed ? " " : " unused ");
            }
        }
        return all;
    };
    const Bytes board = changed("main-board", {"12230.counts[1]=2"});
    Bytes used = board;
    Bytes unused = board;
    const ModuleImage image(board);
    const auto block = std::ranges::find(image.blocks(), 12230, &ImageBlock::id);
    const BlockLayout layout(*block);
    const Field& field = *layout.find("c1");
    used[block->offset + field.elementOffset(4 * 150 + 1)] ^= 1;   // of the second filter, the second point
    unused[block->offset + field.elementOffset(4 * 150 + 2)] ^= 1; // the third, of which there are two
    EXPECT_EQ(elements(board, used), "c1 ");
    EXPECT_EQ(elements(board, unused), "c1 unused ");
}

} // namespace OddImagesTest
