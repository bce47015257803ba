#include "Images.h"
#include "JsonText.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

/// What dump prints is what documents hold.
namespace PrintedNumbersTest {

using namespace Travik;
using Json = nlohmann::ordered_json;

/// A number as texts print it: how it is written, and with how many decimals.
struct Printed {
    std::string text;
    double value;
    int decimals;
    bool isScientific;
};

std::vector<Printed> numbersOf(const std::string& text) {
    std::vector<Printed> numbers;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.front() == '#' || line.starts_with("ID:"))
            continue;
        // The label of a row is no number of the table.
        const std::size_t colon = line.find(':');
        line.erase(0, colon == std::string::npos ? 0 : colon + 1);
        for (std::size_t at = line.find_first_of("-0123456789"); at != std::string::npos;
             at = line.find_first_of("-0123456789", at)) {
            const std::size_t begin = at;
            if (at > 0 && (std::isalnum(static_cast<unsigned char>(line[at - 1])) != 0 || line[at - 1] == '_')) {
                ++at; // of a name
                continue;
            }
            double value = 0;
            const bool isHex = line.compare(at, 2, "0x") == 0;
            const char* const from = line.data() + at + (isHex ? 2 : 0);
            const auto end = std::from_chars(from, line.data() + line.size(), value,
                                             isHex ? std::chars_format::hex : std::chars_format::general);
            at = static_cast<std::size_t>(
                std::max<std::ptrdiff_t>(end.ptr - line.data(), static_cast<std::ptrdiff_t>(at + 1)));
            if (end.ec != std::errc())
                continue;
            const std::string token = line.substr(begin, at - begin);
            const bool isScientific = !isHex && token.find('e') != std::string::npos;
            const std::size_t point = isHex || isScientific ? std::string::npos : token.find('.');
            numbers.push_back({token, value,
                               point == std::string::npos ? 0 : static_cast<int>(token.size() - point - 1),
                               isScientific});
        }
    }
    return numbers;
}

std::string fixed(double value, int decimals) {
    char text[400];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return std::string_view(text) == "-0" ? "0" : text;
}

void collect(const Json& value, std::vector<double>& numbers) {
    if (value.is_number())
        numbers.push_back(value.get<double>());
    if (value.is_array()) {
        for (const Json& entry : value)
            collect(entry, numbers);
    }
}

// Tables of the counted kind print their stored numbers: what the values are where the scale is taken off again.
TEST(PrintedNumbers, AreInTheDocument) {
    std::size_t checked = 0;
    for (const auto& file : std::filesystem::directory_iterator(TRAVIK_SAMPLES)) {
        if (file.path().extension() != ".bin")
            continue;
        const std::string name = file.path().stem().string();
        const Images::Bytes bytes = Images::sample(name);
        const ModuleImage image(bytes);
        const std::string object = jsonObject("a.bin", bytes, image);
        const Json document = Support::parsedInOrder(jsonDocument({&object, 1}));
        for (std::size_t i = 0; i < image.blocks().size(); ++i) {
            const ImageBlock& block = image.blocks()[i];
            const Json& shown = document[0]["blocks"][i];
            const FieldList fields = block.entry ? block.entry->fields(*block.entry, block.id) : FieldList();
            // Records print dates, texts and versions, which are no table's numbers.
            if (!std::ranges::count(fields, Role::Count, &Field::role))
                continue;
            std::vector<double> values;
            for (const Field& field : fields) {
                std::vector<double> physical;
                collect(shown["fields"][field.name], physical);
                for (const double value : physical) {
                    values.push_back(value);
                    values.push_back((value - field.zero) / field.scale);
                }
            }
            std::ranges::sort(values);
            std::map<int, std::set<std::string>> asPrinted; // with so many decimals
            const std::string text = Support::textOf(*makeBlock(block));
            for (const Printed& number : numbersOf(text)) {
                if (number.isScientific) {
                    const double tolerance = std::abs(number.value) * 1e-5;
                    const auto near = std::ranges::lower_bound(values, number.value - tolerance);
                    EXPECT_TRUE(near != values.end() && *near <= number.value + tolerance)
                        << name << ' ' << block.id << ": " << number.text;
                    continue;
                }
                std::set<std::string>& known = asPrinted[number.decimals];
                if (known.empty()) {
                    for (const double value : values)
                        known.insert(fixed(value, number.decimals));
                }
                ASSERT_TRUE(known.contains(fixed(number.value, number.decimals)))
                    << name << ' ' << block.id << ": " << number.text;
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, 100000U);
}

} // namespace PrintedNumbersTest
