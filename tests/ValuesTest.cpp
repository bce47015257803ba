#include "Support.h"

#include <travik/service/ImageFile.h>
#include <travik/service/StoreValue.h>
#include <travik/service/Values.h>

#include <cmath>
#include <filesystem>
#include <limits>

namespace ValuesTest {

using namespace Travik;

struct Sample {
    std::string name;
    std::vector<char> bytes;
};

const std::vector<Sample>& samples() {
    static const std::vector<Sample> all = [] {
        std::vector<Sample> read;
        for (const auto& file : std::filesystem::directory_iterator(TRAVIK_SAMPLES)) {
            if (file.path().extension() != ".bin")
                continue;
            Sample& sample = read.emplace_back(Sample{file.path().filename().string(), {}});
            EXPECT_EQ(readImageFile(file.path().string(), sample.bytes), "");
        }
        return read;
    }();
    return all;
}

const Sample& sample(std::string_view name) {
    for (const Sample& candidate : samples()) {
        if (candidate.name == name)
            return candidate;
    }
    ADD_FAILURE() << "no sample " << name;
    return samples().front();
}

const ImageBlock& blockOf(const ModuleImage& image, int id) {
    for (const ImageBlock& block : image.blocks()) {
        if (block.id == id)
            return block;
    }
    throw std::out_of_range("no block " + std::to_string(id));
}

bool same(double left, double right) { return left == right || (std::isnan(left) && std::isnan(right)); }

TEST(Values, AreThoseThatTheVisitorHandsOut) {
    for (const Sample& sample : samples()) {
        const ModuleImage image(sample.bytes);
        const ImageValues values(image);
        for (const ImageBlock& block : image.blocks()) {
            const BlockValues read = values.read(block);
            std::size_t field = 0;
            std::size_t element = 0;
            visitFields(block.bytes, read.layout.fields(), Extent::Whole, [&](const FieldValue& visited) {
                while (field < read.fields.size() && element == read.fields[field].size()) {
                    ++field;
                    element = 0;
                }
                ASSERT_LT(field, read.fields.size());
                const FieldValues& now = read.fields[field];
                ASSERT_STREQ(now.field->name, visited.field.name);
                if (now.isText()) {
                    ASSERT_EQ(now.texts[element], toUtf8(visited.text));
                } else {
                    ASSERT_TRUE(same(now.values[element], visited.value))
                        << sample.name << ' ' << read.key << '.' << visited.field.name << '[' << element << ']';
                }
                ++element;
            });
        }
    }
}

TEST(Values, GoAlongTheAxisOfTheirImage) {
    std::vector<char> bytes = sample("rf-board.bin").bytes;
    const ModuleImage whole(bytes);
    bytes[blockOf(whole, 15716).offset + 8] = 1; // of two rows
    const ModuleImage image(bytes);
    const ImageValues values(image);
    const BlockValues read = values.read(blockOf(image, 15716));
    const FieldValues* const field = read.find("values");
    ASSERT_TRUE(field);
    ASSERT_EQ(field->dimensions.size(), 2U);
    EXPECT_EQ(field->dimensions[1].axisBlock, 15715);
    ASSERT_TRUE(field->dimensions[1].axis);
    EXPECT_EQ(field->dimensions[1].axis->size(), field->dimensions[1].used);
    EXPECT_EQ(field->dimensions[0].used, 1U);
    EXPECT_TRUE(field->isUsed(127));
    EXPECT_FALSE(field->isUsed(128)) << "the first of the second row";
}

// A data table with as many points as its frequency block counts; each filter has frequencies of its own.
TEST(Values, MayHaveAnAxisForEachRow) {
    std::vector<char> bytes = sample("main-board.bin").bytes;
    const ModuleImage image(bytes);
    const ImageValues values(image);
    const BlockValues frequencies = values.read(blockOf(image, 12210));
    const BlockValues read = values.read(blockOf(image, 12230));
    const FieldValues* const field = read.find("c1");
    ASSERT_TRUE(field && field->dimensions.size() == 3 && field->dimensions[2].axis);
    const Axis& axis = *field->dimensions[2].axis;
    ASSERT_EQ(axis.byRow.size(), field->dimensions[0].extent);
    const std::vector<double>& all = frequencies.find("frequency")->values;
    for (std::size_t filter = 0; filter < axis.byRow.size(); ++filter) {
        for (std::size_t point = 0; point < axis.at(filter).size(); ++point)
            ASSERT_EQ(axis.at(filter)[point], all[filter * 150 + point]);
    }
}

TEST(Values, HaveNoAxisThatDoesNotFit) {
    std::vector<char> bytes = sample("rf-board.bin").bytes;
    const ModuleImage whole(bytes);
    bytes[blockOf(whole, 15715).offset + 8] = 100; // frequencies fewer than the table has columns
    const ModuleImage image(bytes);
    const BlockValues read = ImageValues(image).read(blockOf(image, 15716));
    EXPECT_EQ(read.find("values")->dimensions[1].axisBlock, 15715);
    EXPECT_FALSE(read.find("values")->dimensions[1].axis);
}

// Of a field that says nothing of its entries, or what the block does not have.
TEST(Values, TakeWhatIsInUseFromWhereverItIsSaid) {
    const ModuleImage image(sample("main-board.bin").bytes);
    const ImageValues values(image);
    const ImageBlock& block = blockOf(image, 12230);
    const BlockLayout layout(block);
    const auto last = [&](const char* count, int axisBlock, unsigned int extent) {
        Field field = *layout.find("c1");
        field.dimensions[1].count = "counts";
        field.dimensions[2].count = count;
        field.dimensions[2].axisBlock = axisBlock;
        field.dimensions[2].extent = extent;
        return values.shape(block, layout, field).dimensions[2];
    };
    const double most = std::ranges::max(values.read(blockOf(image, 12210)).find("counts")->values);
    EXPECT_EQ(last(nullptr, 12210, 150).used, most);
    EXPECT_EQ(last(nullptr, 12210, 2).used, 2U) << "more labels than there are places";
    EXPECT_FALSE(last(nullptr, 12210, 2).axis);
    EXPECT_EQ(last("no_such", 12210, 150).used, 150U);
    for (const int noAxis : {2, 12230, 4711})
        EXPECT_FALSE(last(nullptr, noAxis, 150).axis) << noAxis;
}

TEST(Values, OfASecondEditionTableFollowItsOwnTypes) {
    const ModuleImage image(sample("second-edition.bin").bytes);
    const ImageValues values(image);
    for (const ImageBlock& block : image.blocks()) {
        if (!block.isSecondEdition)
            continue;
        const BlockValues read = values.read(block);
        EXPECT_EQ(read.key, "USER_" + std::to_string(block.id));
        ASSERT_TRUE(read.find("update_index"));
        ASSERT_TRUE(read.find("rows"));
        for (const BlockLayout::Range& gap : read.layout.uncovered(block.bytes.size()))
            EXPECT_LT(gap.length, 4U) << "only padding is left over";
        for (const FieldValues& field : read.fields)
            EXPECT_TRUE(field.isWhole) << field.field->name;
    }
}

// Every number of every sample goes back to the bytes that it came from.
TEST(StoreValue, IsTheInverseOfReading) {
    for (const Sample& sample : samples()) {
        const ModuleImage image(sample.bytes);
        for (const ImageBlock& block : image.blocks()) {
            const BlockLayout layout(block);
            std::vector<char> bytes(block.bytes.begin(), block.bytes.end());
            for (const Field& field : layout.fields()) {
                std::vector<double> numbers(field.stored == Stored::Text ? 0 : field.elements());
                if (!numbers.empty())
                    fieldValues(block.bytes, field, numbers);
                for (unsigned int i = 0; i < numbers.size(); ++i) {
                    if (bytes::inside(bytes.size(), field.elementOffset(i), field.width) && std::isfinite(numbers[i])) {
                        ASSERT_EQ(storeValue(bytes, field, i, numbers[i]), StoreOutcome::Exact)
                            << sample.name << ' ' << block.id << '.' << field.name << '[' << i << "] " << numbers[i];
                    }
                }
            }
            EXPECT_TRUE(std::ranges::equal(bytes, block.bytes)) << sample.name << ' ' << block.id;
        }
    }
}

TEST(StoreValue, RefusesWhatAFieldCannotHold) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Field hundredths{.name = "level", .stored = Stored::I16, .width = 2, .unit = "dB", .scale = 0.01};
    Field phase{.name = "phase", .stored = Stored::I16, .width = 2, .unit = "deg", .scale = -0.01};
    Field single{.name = "gain", .stored = Stored::F32, .width = 4};
    Field bits{.name = "circular", .stored = Stored::U16, .width = 2, .bits = 14};
    Field negated{.name = "offset", .stored = Stored::U16, .width = 2, .scale = -1, .bits = 4, .isSigned = true};
    Field text{.name = "name", .role = Role::Text, .stored = Stored::Text, .width = 4};
    Field date{.name = "date", .role = Role::Date, .stored = Stored::U16, .width = 2};
    struct Case {
        const Field& field;
        double number;
        StoreOutcome outcome;
        std::vector<unsigned char> bytes;
    };
    const std::vector<Case> cases{
        {hundredths, 1.25, StoreOutcome::Exact, {125, 0, 9, 9}},
        {hundredths, 0.07, StoreOutcome::Exact, {7, 0, 9, 9}},
        {hundredths, 1.254, StoreOutcome::Rounded, {125, 0, 9, 9}},
        {hundredths, -327.68, StoreOutcome::Exact, {0, 0x80, 9, 9}},
        {hundredths, 327.68, StoreOutcome::OutOfRange, {9, 9, 9, 9}},
        {hundredths, nan, StoreOutcome::NotFinite, {9, 9, 9, 9}},
        {phase, 327.67, StoreOutcome::Exact, {1, 0x80, 9, 9}},
        {phase, -327.68, StoreOutcome::Exact, {0, 0x80, 9, 9}},
        {phase, 327.68, StoreOutcome::OutOfRange, {9, 9, 9, 9}},
        {single, 3.4028235e38, StoreOutcome::Rounded, {0xFF, 0xFF, 0x7F, 0x7F}},
        {single, 3.4028236e38, StoreOutcome::OutOfRange, {9, 9, 9, 9}},
        {single, -infinity, StoreOutcome::Exact, {0, 0, 0x80, 0xFF}},
        {bits, 1, StoreOutcome::Exact, {1, 0, 9, 9}},
        {negated, -7, StoreOutcome::Exact, {7, 9, 9, 9}}, // and not the bits beside
        {negated, -8, StoreOutcome::Exact, {8, 9, 9, 9}}, // the lowest stands for itself
        {negated, 8, StoreOutcome::OutOfRange, {9, 9, 9, 9}},
        {bits, 16384, StoreOutcome::OutOfRange, {9, 9, 9, 9}},
        {text, 1, StoreOutcome::WrongKind, {9, 9, 9, 9}},
    };
    for (const Case& one : cases) {
        std::vector<char> bytes(4, 9);
        EXPECT_EQ(storeValue(bytes, one.field, 0, one.number), one.outcome) << one.field.name << ' ' << one.number;
        EXPECT_TRUE(std::ranges::equal(bytes, one.bytes, {}, [](char c) { return static_cast<unsigned char>(c); }))
            << one.field.name << ' ' << one.number;
        EXPECT_EQ(describeOutcome(one.outcome, one.field).empty(), isStored(one.outcome));
    }
    EXPECT_EQ(describeOutcome(StoreOutcome::OutOfRange, hundredths), "out of range, takes -327.68 to 327.67 dB");
    EXPECT_EQ(describeOutcome(StoreOutcome::OutOfRange, phase), "out of range, takes -327.68 to 327.67 deg");

    std::vector<char> bytes(4, 9);
    EXPECT_EQ(storeText(bytes, text, 0, "A\xC3\xA4"), StoreOutcome::Exact);
    EXPECT_EQ(std::string(bytes.data(), 4), std::string("A\xE4\0\0", 4));
    EXPECT_EQ(storeText(bytes, text, 0, "ABCDE"), StoreOutcome::TooLong);
    EXPECT_EQ(storeText(bytes, text, 0, "\xE2\x82\xAC"), StoreOutcome::NotLatin1);
    EXPECT_EQ(storeText(bytes, date, 0, "2018-11-15"), StoreOutcome::Exact);
    EXPECT_EQ(dateText(static_cast<unsigned int>(fieldValue(bytes, date))), "2018-11-15");
    EXPECT_EQ(storeText(bytes, date, 0, "2018-02-30"), StoreOutcome::NoDate);
    EXPECT_EQ(dateText(0x10000 + *packedDate("2018-11-15")), "") << "more than the field holds";
    EXPECT_EQ(storeValue(std::span(bytes).first(1), date, 0, 1), StoreOutcome::Outside);
    EXPECT_EQ(storeText(std::span(bytes).first(3), text, 0, "A"), StoreOutcome::Outside);
    for (const std::string_view wrong : {"A\xC3",
                                         "\xC3"
                                         "A",
                                         "\xC4\x80", "\x80", "\xC3\xC3"})
        EXPECT_FALSE(toLatin1(wrong)) << testing::PrintToString(wrong);
}

TEST(StoreValue, KnowsEveryWidthToItsEnds) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const Field u64{.name = "u64", .stored = Stored::U64, .width = 8};
    const Field i64{.name = "i64", .stored = Stored::I64, .width = 8};
    const Field f80{.name = "f80", .stored = Stored::F80, .width = 12};
    const Field fine{.name = "fine", .stored = Stored::F64, .width = 8, .scale = 1e-10};
    const struct {
        const Field& field;
        double number;
        StoreOutcome outcome;
        std::string text; ///< as it is stored then
    } rows[] = {
        {u64, 0x1p53 + 2, StoreOutcome::Exact, "9007199254740994"},
        {u64, 0x1.fffffffffffffp63, StoreOutcome::Exact, "18446744073709549568"},
        {u64, 0x1p64, StoreOutcome::OutOfRange, "0"},
        {u64, -1, StoreOutcome::OutOfRange, "0"},
        {i64, -0x1p63, StoreOutcome::Exact, "-9223372036854775808"},
        {i64, 0x1.fffffffffffffp62, StoreOutcome::Exact, "9223372036854774784"},
        {i64, 0x1p63, StoreOutcome::OutOfRange, "0"},
        {f80, -1.5, StoreOutcome::Exact, "-1.5"},
        {f80, 4.9406564584124654e-324, StoreOutcome::Exact, "5e-324"},
        {f80, infinity, StoreOutcome::Exact, "inf"},
        {f80, -infinity, StoreOutcome::Exact, "-inf"},
        {f80, nan, StoreOutcome::Exact, "nan"},
        {fine, 1e300, StoreOutcome::OutOfRange, "0"}, // the stored number would be infinite
    };
    for (const auto& row : rows) {
        std::vector<char> bytes(12, 0);
        EXPECT_EQ(storeValue(bytes, row.field, 0, row.number), row.outcome) << row.field.name << ' ' << row.number;
        EXPECT_EQ(storedText(bytes, row.field, 0), row.text) << row.field.name << ' ' << row.number;
    }
    std::vector<char> bytes(9, 9);
    const std::vector<char> before = bytes;
    const Field text{.name = "name", .stored = Stored::Text, .width = 4};
    const Field bits{.name = "bits", .stored = Stored::U16, .width = 2, .offset = 8, .bits = 4};
    for (const Field* const field : {&u64, &f80, &bits})
        EXPECT_EQ(storeValue(bytes, *field, field == &u64 ? 1 : 0, 1), StoreOutcome::Outside) << field->name;
    EXPECT_EQ(storeText(bytes, text, 1, "A"), StoreOutcome::Outside);
    EXPECT_EQ(storeText(bytes, text, 0, std::string_view("A\0B", 3)), StoreOutcome::TooLong);
    EXPECT_EQ(storedText(bytes, text, 1), "");
    EXPECT_EQ(bytes, before);
    for (const char* const date : {"1979-12-31", "2108-01-01", "2018-00-15", "2018-11-00", "2018-11-1x", "2018-11/15",
                                   "2018/11-15", "2018-11-150"})
        EXPECT_FALSE(packedDate(date)) << date;
    EXPECT_TRUE(packedDate("1980-01-01") && packedDate("2107-12-31"));
}

} // namespace ValuesTest
