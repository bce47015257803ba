#include <travik/datablock/DigitKernels.h>
#include <travik/datablock/PackedDate.h>
#include <travik/datablock/TextWriter.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <locale>
#include <optional>
#include <ostream>

namespace Travik {

namespace {

using detail::appendDecimal;
using detail::appendDigits;
using detail::decimalRoom;
using detail::eightDigits;
using detail::hundredMillion;

constexpr std::size_t initialCapacity = 1024;
constexpr std::size_t longestGeneral = 16; // of six digits: "-1.23456e-308"

constexpr std::array<double, 11> powersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};
constexpr std::array<std::uint64_t, 11> integerPowersOfTen = [] {
    std::array<std::uint64_t, 11> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}();

char* appendFraction(char* out, std::uint64_t value, unsigned int digits) {
    if (digits > 8) {
        out = appendFraction(out, value / hundredMillion, digits - 8);
        digits = 8;
        value %= hundredMillion;
    }
    return appendDigits(out, eightDigits(value), digits);
}

// A number below 10^8 with its last 1 to 7 digits behind the point: both parts are shifted out of one word of digits.
char* appendScaled(char* out, std::uint64_t value, unsigned int decimals) {
    const std::uint64_t digits = eightDigits(value);
    // At least one digit stands ahead of the point.
    const auto leadingZeros =
        static_cast<unsigned int>(std::countr_zero(digits | (std::uint64_t{1} << (8U * (7U - decimals))))) / 8U;
    out = appendDigits(out, digits, 8 - leadingZeros) - decimals;
    *out++ = '.';
    return appendDigits(out, digits, decimals);
}

// The general case costs several times as much as it does where the rounded digits can be told by plain arithmetic: the
// value is whole, or its scaled fraction is further from a half than the one rounding of the product can have moved it.
// Returns null where it cannot be told.
char* appendQuickly(char* out, double magnitude, unsigned int decimals) {
    constexpr double wholeLimit = 9.0e18;  // below 2^63
    constexpr double scaledLimit = 8.0e12; // below 2^43: the product is off by 2^-11 at most
    constexpr double margin = 0x1p-10;
    // Signed, which the processor converts in one step.
    const auto truncated = [](double value) { return static_cast<std::uint64_t>(static_cast<std::int64_t>(value)); };
    if (decimals >= powersOfTen.size() || !(magnitude < wholeLimit))
        return nullptr;
    const std::uint64_t whole = truncated(magnitude);
    std::uint64_t fraction = 0;
    std::uint64_t integer = whole;
    if (static_cast<double>(whole) != magnitude) {
        const double scaled = magnitude * powersOfTen[decimals];
        if (!(scaled < scaledLimit))
            return nullptr;
        std::uint64_t digits = truncated(scaled);
        const double rest = scaled - static_cast<double>(digits);
        if (std::abs(rest - 0.5) < margin)
            return nullptr;
        digits += rest > 0.5;
        if (digits < hundredMillion && decimals > 0 && decimals < 8)
            return appendScaled(out, digits, decimals);
        // Rounding is monotonic: the product lies between those of the whole numbers around it, which are exact.
        fraction = digits - whole * integerPowersOfTen[decimals];
        if (fraction == integerPowersOfTen[decimals]) {
            ++integer;
            fraction = 0;
        }
    }
    out = appendDecimal(out, integer);
    if (decimals == 0)
        return out;
    if (fraction == 0 && decimals < 8) {
        std::memcpy(out, ".0000000", 8); // NOLINT(bugprone-not-null-terminated-result): part of a line, not a string
        return out + 1 + decimals;
    }
    *out++ = '.';
    return appendFraction(out, fraction, decimals);
}

// The format of `std::to_chars` that the stream shows floating numbers in; none where it shows them otherwise.
std::optional<std::chars_format> plainFormat(const std::ios_base& stream) {
    using Base = std::ios_base;
    constexpr std::streamsize mostDigits = 64;
    if (stream.precision() < 0 || stream.precision() > mostDigits || stream.getloc() != std::locale::classic())
        return std::nullopt;
    // Of a format that has decimals the point is shown anyway.
    const Base::fmtflags point = stream.precision() > 0 ? Base::showpoint : Base::fmtflags{};
    const Base::fmtflags format =
        stream.flags() & (Base::floatfield | Base::showpoint | Base::showpos | Base::uppercase);
    if (format == Base::fmtflags{})
        return std::chars_format::general;
    if (format == Base::fixed || format == (Base::fixed | point))
        return std::chars_format::fixed;
    if (format == Base::scientific || format == (Base::scientific | point))
        return std::chars_format::scientific;
    return std::nullopt;
}

} // namespace

char* detail::appendFixed(char* out, double value, unsigned int decimals) {
    char* const begin = out;
    if (std::signbit(value) && !std::isnan(value))
        *out++ = '-';
    char* const end = appendQuickly(out, std::abs(value), decimals);
    if (end)
        return end;
    return std::to_chars(begin, begin + fixedRoom + decimals, value, std::chars_format::fixed,
                         static_cast<int>(decimals))
        .ptr;
}

TextWriter::TextWriter(std::ostream& os)
    : failures_(os), os_(os), buffer_(std::make_unique_for_overwrite<char[]>(initialCapacity)),
      capacity_(initialCapacity) {
    os.width(0);
    try {
        if (os.tie())
            os.tie()->flush();
    } catch (...) { // kept in the state of that stream
    }
}

TextWriter::~TextWriter() noexcept(false) { write((os_.flags() & std::ios_base::unitbuf) != 0); }

void TextWriter::grow(std::size_t length) {
    const std::size_t grown = std::max(2 * capacity_, used_ + length);
    auto larger = std::make_unique_for_overwrite<char[]>(grown);
    std::memcpy(larger.get(), buffer_.get(), used_);
    buffer_ = std::move(larger);
    capacity_ = grown;
}

TextWriter& TextWriter::operator<<(std::string_view text) {
    if (!text.empty())
        std::memcpy(room(text.size()), text.data(), text.size());
    used_ += text.size();
    return *this;
}

TextWriter& TextWriter::decimal(bool negative, unsigned long long magnitude) {
    char* const begin = room(decimalRoom);
    char* out = begin;
    if (negative)
        *out++ = '-';
    used_ += static_cast<std::size_t>(appendDecimal(out, magnitude) - begin);
    return *this;
}

void TextWriter::padded(unsigned int value, unsigned int width, char fill) {
    std::array<char, decimalRoom> digits;
    const auto length = static_cast<std::size_t>(appendDecimal(digits.data(), value) - digits.data());
    for (std::size_t i = length; i < width; ++i)
        *this << fill;
    *this << std::string_view(digits.data(), length);
}

TextWriter& TextWriter::zeroFilled(unsigned int value, unsigned int digits) {
    padded(value, digits, '0');
    return *this;
}

TextWriter& TextWriter::rightAligned(unsigned int value, unsigned int width) {
    padded(value, width, ' ');
    return *this;
}

TextWriter& TextWriter::date(unsigned short packed) {
    const std::chrono::year_month_day day = unpackDate(packed);
    *this << int{day.year()} << '-';
    zeroFilled(unsigned{day.month()}, 2) << '-';
    return zeroFilled(unsigned{day.day()}, 2);
}

TextWriter& TextWriter::fixed(double value, unsigned int decimals, unsigned int width) {
    char* const begin = room(std::max<std::size_t>(detail::fixedRoom + decimals, width));
    char* end = detail::appendFixed(begin, value, decimals);
    if (const auto length = static_cast<std::size_t>(end - begin); length < width) {
        std::memmove(begin + width - length, begin, length);
        std::memset(begin, ' ', width - length);
        end = begin + width;
    }
    commit(end);
    return *this;
}

TextWriter& TextWriter::general(double value) {
    char* const begin = room(longestGeneral);
    const char* const end = std::to_chars(begin, begin + longestGeneral, value, std::chars_format::general, 6).ptr;
    used_ += static_cast<std::size_t>(end - begin);
    return *this;
}

// As the stream's own `<<` prints it, but for the stream's guard: with unitbuf set, that flushes where it may not
// throw. The general case: it costs several times what `std::to_chars` does.
template <class Number>
TextWriter& TextWriter::inCurrentFormat(Number value) {
    write(false);
    os_.width(0);
    send([&] {
        using Put = std::num_put<char>;
        return !std::use_facet<Put>(os_.getloc()).put(Put::iter_type(os_), os_, os_.fill(), value).failed();
    });
    return *this;
}

TextWriter& TextWriter::current(double value) {
    const std::optional<std::chars_format> format = plainFormat(os_);
    if (!format)
        return inCurrentFormat(value);
    const auto precision = static_cast<unsigned int>(os_.precision());
    if (format == std::chars_format::fixed)
        return fixed(value, precision);
    const std::size_t longest = detail::fixedRoom + precision;
    char* const begin = room(longest);
    commit(std::to_chars(begin, begin + longest, value, *format, static_cast<int>(precision)).ptr);
    return *this;
}

TextWriter& TextWriter::current(long double value) { return inCurrentFormat(value); }

TextWriter& TextWriter::endLine() {
    *this << '\n';
    write(true);
    return *this;
}

std::ostream& TextWriter::stream() {
    write(false);
    return os_;
}

// Straight to the buffer of the stream, of which anything can come.
template <class Output>
void TextWriter::send(Output output) noexcept {
    if (!os_.good())
        return;
    try {
        if (output())
            return;
    } catch (...) {
    }
    os_.setstate(std::ios_base::badbit);
}

void TextWriter::write(bool flush) noexcept {
    const auto length = static_cast<std::streamsize>(used_);
    used_ = 0;
    send([&] {
        std::streambuf& sink = *os_.rdbuf();
        return (length == 0 || sink.sputn(buffer_.get(), length) == length) && (!flush || sink.pubsync() != -1);
    });
}

} // namespace Travik
