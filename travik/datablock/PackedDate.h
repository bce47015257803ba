#pragma once

#include <chrono>

namespace Travik {

/// The date that a record packs into a word: bits 0-4 day, 5-8 month, 9-15 year minus 1980. Words of no date (0, or one
/// that was erased) give a date that is not `ok()`.
constexpr std::chrono::year_month_day unpackDate(unsigned short word) {
    return {std::chrono::year(1980 + (word >> 9)), std::chrono::month((word >> 5) & 15U), std::chrono::day(word & 31U)};
}

/// The word of a date from 1980 to 2107.
constexpr unsigned short packDate(std::chrono::year_month_day date) {
    return static_cast<unsigned short>((static_cast<unsigned int>(int{date.year()} - 1980) << 9U) |
                                       (unsigned{date.month()} << 5U) | unsigned{date.day()});
}

} // namespace Travik
