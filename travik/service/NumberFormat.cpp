#include <travik/service/NumberFormat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Travik {

namespace {

constexpr std::array<std::string_view, 4> frequencyUnits{"Hz", "kHz", "MHz", "GHz"}; // a thousand each

bool isFloating(const Field& field) {
    return field.stored == Stored::F32 || field.stored == Stored::F64 || field.stored == Stored::F80;
}

bool isWhole(double number) { return std::abs(number - std::nearbyint(number)) <= std::abs(number) * 1e-12; }

// In one of those two forms each number of a record is short; a table of mixed forms is hard to compare.
template <class T>
std::string shortest(T number) {
    const T size = std::abs(number);
    const bool isPlain = number == 0 || (size >= T(1e-5) && size < T(1e10));
    std::array<char, 64> text;
    char* const end = text.data() + text.size();
    return {text.data(), (isPlain ? std::to_chars(text.data(), end, number, std::chars_format::fixed)
                                  : std::to_chars(text.data(), end, number))
                             .ptr};
}

} // namespace

NumberFormat::NumberFormat(const Field& field) {
    isSingle_ = field.stored == Stored::F32;
    if (isFloating(field))
        return;
    // So many tell one step from the next; a few more, where that shows every number exactly.
    constexpr int mostDecimals = 9;
    constexpr int few = 2;
    const int needed =
        std::clamp(static_cast<int>(std::ceil(-std::log10(std::abs(field.scale)) - 1e-9)), 0, mostDecimals);
    double power = 1;
    for (decimals_ = 0; decimals_ <= needed + few; ++decimals_, power *= 10) {
        if (isWhole(field.scale * power) && isWhole(field.zero * power))
            return;
    }
    isExact_ = false;
    decimals_ = needed;
}

std::string NumberFormat::text(double physical) const {
    if (decimals_ < 0)
        return isSingle_ ? shortest(static_cast<float>(physical)) : shortest(physical);
    std::array<char, 400> text;
    std::string result(
        text.data(),
        std::to_chars(text.data(), text.data() + text.size(), physical, std::chars_format::fixed, decimals_).ptr);
    if (result.front() == '-' && result.find_first_not_of("-0.") == std::string::npos)
        result.erase(0, 1);
    return result;
}

std::string NumberFormat::exact(double physical) const { return isExact_ ? text(physical) : shortest(physical); }

bool isFrequencyUnit(std::string_view unit) { return std::ranges::find(frequencyUnits, unit) != frequencyUnits.end(); }

std::string withReadableUnit(std::string_view number, std::string_view unit) {
    const auto found = std::ranges::find(frequencyUnits, unit);
    std::string_view digits = number;
    const bool isNegative = digits.starts_with('-');
    digits.remove_prefix(isNegative ? 1 : 0);
    if (found == frequencyUnits.end() || digits.find_first_not_of("0123456789.") != std::string_view::npos)
        return std::string(number).append(unit.empty() ? "" : " ").append(unit);

    // The digits, and how many of them stand before the point when the unit is Hz.
    std::string all;
    std::size_t before = digits.find('.');
    before = before == std::string_view::npos ? digits.size() : before;
    std::ranges::copy_if(digits, std::back_inserter(all), [](char character) { return character != '.'; });
    const std::size_t leading = std::min(all.find_first_not_of('0'), all.size());
    if (leading == all.size())
        return "0 " + std::string(unit);
    const std::ptrdiff_t exponent = 3 * (found - frequencyUnits.begin());
    const std::ptrdiff_t whole = static_cast<std::ptrdiff_t>(before) - static_cast<std::ptrdiff_t>(leading) + exponent;
    all.erase(0, leading);
    all.erase(all.find_last_not_of('0') + 1);
    const std::ptrdiff_t step = std::clamp<std::ptrdiff_t>((whole - 1) / 3, 0, 3);
    const std::ptrdiff_t point = whole - 3 * step;
    if (point <= 0)
        all.insert(0, static_cast<std::size_t>(1 - point), '0');
    const auto at = static_cast<std::size_t>(std::max<std::ptrdiff_t>(point, 1));
    if (all.size() < at)
        all.append(at - all.size(), '0');
    else if (all.size() > at)
        all.insert(at, 1, '.');
    return (isNegative ? "-" : "") + all + ' ' + std::string(frequencyUnits.at(static_cast<std::size_t>(step)));
}

std::size_t columnsOf(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

} // namespace Travik
