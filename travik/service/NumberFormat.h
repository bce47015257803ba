#pragma once

#include <travik/datablock/Fields.h>
#include <travik/service/Export.h>

#include <string>
#include <string_view>

/// Numbers as a person reads them.
namespace Travik {

/// How the numbers of a field are written: integers with the decimals that a step of one in the stored number makes
/// ("1.50" of 150 in 0.01 dB; "0.063" of 29 in 1/460), floating numbers as the shortest decimal that reads back as the
/// stored one.
class TRAVIK_SERVICE_EXPORT NumberFormat {
public:
    /// The shortest decimal that reads back as the number.
    NumberFormat() = default;
    explicit NumberFormat(const Field& field);

    /// The physical value. Without an exponent where that is not too long; "nan", "inf" and "-inf" for what is no
    /// number.
    std::string text(double physical) const;
    /// The same for a machine: every digit that makes a difference.
    std::string exact(double physical) const;
    /// How many decimals `text` writes; -1: as many as the number needs.
    int decimals() const { return decimals_; }

private:
    int decimals_ = -1;
    bool isSingle_ = false;
    bool isExact_ = true;
};

/// A decimal number and its unit; frequencies (Hz, kHz, MHz, GHz) in the largest of these units in which they are at
/// least 1: "3 GHz" of "3000.00" MHz, "12.5 MHz". No digit is lost.
TRAVIK_SERVICE_EXPORT std::string withReadableUnit(std::string_view number, std::string_view unit);

/// Hz, kHz, MHz or GHz.
TRAVIK_SERVICE_EXPORT bool isFrequencyUnit(std::string_view unit);

/// Columns that a UTF-8 text of Latin-1 characters takes on a terminal.
TRAVIK_SERVICE_EXPORT std::size_t columnsOf(std::string_view utf8);

inline constexpr std::string_view hexDigits = "0123456789abcdef";

/// Appends so many hexadecimal digits, the last ones of the number, without "0x".
inline void appendHex(std::string& text, std::size_t number, std::size_t digits) {
    while (digits-- > 0)
        text += hexDigits[number >> (4 * digits) & 0xFU];
}

} // namespace Travik
