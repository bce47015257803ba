#pragma once

#include <travik/text/TextExchange.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace Travik::detail {

/// What the tolerant and the strict reader of exchange texts share with the writer. Not exported.

/// The number that stands for a cell in the text; 0 outside the capacity or the image.
double exchangedValue(const ExchangeFormat& format, std::span<const char> image, unsigned int row, unsigned int column);
void writeExchanged(TextWriter& out, const ExchangeFormat& format, double value);
/// What a number of the text is stored as, before its conversion to the stored type.
double storedFromExchanged(const ExchangeFormat& format, double number);

/// The nearest value of the type; an integral type drops the fraction and has no NaN.
template <class T>
T nearest(double value) {
    if constexpr (std::is_integral_v<T>) {
        constexpr auto lowest = static_cast<double>(std::numeric_limits<T>::lowest());
        constexpr auto highest = static_cast<double>(std::numeric_limits<T>::max());
        return std::isnan(value) ? T{0} : static_cast<T>(std::clamp(value, lowest, highest));
    } else {
        return static_cast<T>(value);
    }
}

constexpr bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r'); // whatever the locale
}

/// Cuts the next word off the text; empty at the end.
inline std::string_view takeWord(std::string_view& text) {
    const auto begin = std::ranges::find_if_not(text, isBlank);
    const auto end = std::find_if(begin, text.end(), isBlank);
    const std::string_view word(begin, end);
    text = std::string_view(end, text.end());
    return word;
}

} // namespace Travik::detail
