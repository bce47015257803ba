#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

/// Decimal digits eight at a time. For the texts' inner loops; not installed.
namespace Travik::detail {

/// Room that `appendDecimal` asks for: sign, 20 digits, and what is written beyond them eight at a time.
inline constexpr std::size_t decimalRoom = 32;
/// The longest "%.<decimals>f" of a double, but for its decimals: sign, 309 digits, point, and some decimals.
inline constexpr std::size_t fixedRoom = 328;

inline constexpr std::uint64_t hundredMillion = 100000000;

/// Eight digits of a number below 10^8, the first in the lowest byte: halved three times, all parts at once in one
/// word.
inline std::uint64_t eightDigits(std::uint64_t value) {
    const std::uint64_t fours = (value / 10000) | ((value % 10000) << 32U);
    const std::uint64_t hundreds = ((fours * 10486U) >> 20U) & 0x0000007F0000007FU;
    const std::uint64_t twos = hundreds + ((fours - 100U * hundreds) << 16U);
    const std::uint64_t tens = ((twos * 103U) >> 10U) & 0x000F000F000F000FU;
    return tens + ((twos - 10U * tens) << 8U);
}

/// Writes the last `count` (1 to 8) of eight digits; touches eight bytes.
inline char* appendDigits(char* out, std::uint64_t digits, unsigned int count) {
    const std::uint64_t text = (digits | 0x3030303030303030U) >> (8U * (8U - count));
    std::memcpy(out, &text, sizeof text);
    return out + count;
}

inline char* appendLargeDecimal(char* out, std::uint64_t value);

/// Touches `decimalRoom` bytes.
inline char* appendDecimal(char* out, std::uint64_t value) {
    if (value >= hundredMillion)
        return appendLargeDecimal(out, value);
    const std::uint64_t digits = eightDigits(value);
    // A zero still has its last digit.
    const auto leadingZeros = static_cast<unsigned int>(std::countr_zero(digits | (std::uint64_t{1} << 56U))) / 8U;
    return appendDigits(out, digits, 8 - leadingZeros);
}

inline char* appendLargeDecimal(char* out, std::uint64_t value) {
    out = appendDecimal(out, value / hundredMillion);
    return appendDigits(out, eightDigits(value % hundredMillion), 8);
}

/// A whole number as printf's "%.<decimals>f" shows it, of at most 7 decimals. Touches `fixedRoom` bytes.
inline char* appendWhole(char* out, long long value, unsigned int decimals) {
    const auto bits = static_cast<std::uint64_t>(value);
    *out = '-';
    out = appendDecimal(out + (value < 0), value < 0 ? 0 - bits : bits);
    std::memcpy(out, ".0000000", 8); // NOLINT(bugprone-not-null-terminated-result): part of a line, not a string
    return out + (decimals == 0 ? 0 : decimals + 1);
}

/// Any number as printf's "%.<decimals>f". Touches `fixedRoom` + `decimals` bytes.
char* appendFixed(char* out, double value, unsigned int decimals);

} // namespace Travik::detail
