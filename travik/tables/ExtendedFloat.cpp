#include <travik/datablock/DigitKernels.h>
#include <travik/tables/ElementKernels.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <locale>
#include <ostream>
#include <span>
#include <string>

namespace Travik::detail {

namespace {

constexpr int bias = 16383;
constexpr int fractionBits = 63;
constexpr unsigned int largestExponent = 0x7FFF;
constexpr std::uint64_t integerBit = std::uint64_t{1} << 63U;

/// A whole number as decimal limbs, the lowest first.
class Decimal {
public:
    static constexpr std::uint64_t limb = 1'000'000'000;
    /// What the largest number takes: 4932 digits, and room for a last carry.
    static constexpr std::size_t capacity = 550;

    constexpr explicit Decimal(std::uint64_t value) {
        for (; value > 0; value /= limb)
            limbs_[size_++] = static_cast<std::uint32_t>(value % limb);
    }

    constexpr std::span<const std::uint32_t> limbs() const { return {limbs_, size_}; }

    /// By at most 32 bits. Written for the compilers, which count what they evaluate at compile time.
    constexpr void shiftLeft(unsigned int bits) {
        std::uint64_t rest = 0;
        for (std::uint32_t *at = limbs_, *const end = limbs_ + size_; at != end; ++at) {
            rest = (std::uint64_t{*at} << bits) + rest / limb;
            *at = static_cast<std::uint32_t>(rest % limb);
        }
        for (rest /= limb; rest > 0; rest /= limb)
            limbs_[size_++] = static_cast<std::uint32_t>(rest % limb);
    }

    /// Times a number, column by column. This one has at most 18 limbs, so that 64 bits hold a column of products.
    void multiply(std::span<const std::uint32_t> factor) {
        constexpr std::size_t most = 18;
        std::uint32_t own[most];
        const std::size_t count = size_;
        std::copy_n(limbs_, count, own);
        size_ += factor.size();
        std::uint64_t column = 0;
        for (std::size_t i = 0; i < size_; ++i) {
            column /= limb;
            const std::size_t end = std::min(i + 1, count);
            for (std::size_t k = i - std::min(i, factor.size() - 1); k < end; ++k)
                column += std::uint64_t{own[k]} * factor.data()[i - k];
            limbs_[i] = static_cast<std::uint32_t>(column % limb);
        }
        while (limbs_[size_ - 1] == 0)
            --size_;
    }

private:
    std::uint32_t limbs_[capacity]{};
    std::size_t size_ = 0;
};

// 2^448, 2^896 and so on, each behind the one before. What is multiplied by one is below 2^512: 18 limbs.
constexpr unsigned int stride = 448;
constexpr std::size_t powerCount = 36;

struct Powers {
    std::array<std::uint32_t, 9990> limbs{};
    std::array<std::size_t, powerCount + 1> begins{};

    constexpr std::span<const std::uint32_t> operator[](std::size_t i) const {
        return {limbs.data() + begins[i], begins[i + 1] - begins[i]};
    }
};

constexpr Powers powers = [] {
    Powers all;
    Decimal power(1);
    for (std::size_t i = 0; i < powerCount; ++i) {
        for (unsigned int bits = 0; bits < stride; bits += 32)
            power.shiftLeft(32);
        all.begins[i + 1] = all.begins[i] + power.limbs().size();
        std::ranges::copy(power.limbs(), all.limbs.begin() + static_cast<std::ptrdiff_t>(all.begins[i]));
    }
    return all;
}();

Decimal scaled(std::uint64_t significand, unsigned int bits) {
    Decimal number(significand);
    for (unsigned int rest = bits % stride; rest > 0; rest -= std::min(rest, 32U))
        number.shiftLeft(std::min(rest, 32U));
    if (bits >= stride)
        number.multiply(powers[bits / stride - 1]);
    return number;
}

/// A stream that prints plain digits, a point and decimals.
bool isPlainFixed(const std::ostream& os) {
    constexpr auto others = std::ios_base::showpos | std::ios_base::showpoint;
    return (os.flags() & (std::ios_base::floatfield | others)) == std::ios_base::fixed && os.precision() >= 0 &&
           os.getloc() == std::locale::classic();
}

} // namespace

ExtendedFloat ExtendedFloat::of(long double value) {
    const bool negative = std::signbit(value);
    if (std::isnan(value))
        return {integerBit | (integerBit >> 1U), largestExponent, negative};
    if (std::isinf(value))
        return {integerBit, largestExponent, negative};
    int power = 0;
    const long double fraction = std::frexp(std::abs(value), &power); // 0.5 <= fraction < 1, or 0
    const int wanted = power - 1 + bias;
    const int exponent = std::max(wanted, 1); // denormals share the lowest one
    // Rounded where the host's significand is longer, which can carry into the exponent.
    const long double significand = std::nearbyint(std::ldexp(fraction, fractionBits + 1 + wanted - exponent));
    if (significand < 0x1p63L)
        return {static_cast<std::uint64_t>(significand), 0, negative};
    const bool carries = significand >= 0x1p64L;
    return {carries ? integerBit : static_cast<std::uint64_t>(significand),
            static_cast<unsigned int>(exponent) + (carries ? 1U : 0U), negative};
}

long double ExtendedFloat::value() const {
    const bool denormal = exponent == 0; // pseudo-denormals, whose integer bit is set, included
    long double magnitude = 0;
    if (!denormal && ((significand & integerBit) == 0 || (exponent == largestExponent && significand != integerBit)))
        magnitude = std::numeric_limits<long double>::quiet_NaN();
    else if (exponent == largestExponent)
        magnitude = std::numeric_limits<long double>::infinity();
    else
        magnitude = std::ldexp(static_cast<long double>(significand),
                               (denormal ? 1 : static_cast<int>(exponent)) - bias - fractionBits);
    return std::copysign(magnitude, negative ? -1.0L : 1.0L);
}

void print(TextWriter& out, const ExtendedFloat& number) {
    const std::ostream& os = out.stream();
    const bool finite = (number.significand & integerBit) != 0 && number.exponent != largestExponent;
    if (!finite || number.exponent <= bias + fractionBits || !isPlainFixed(os)) {
        out.current(number.value());
        return;
    }
    const Decimal decimal = scaled(number.significand, number.exponent - bias - fractionBits);
    if (number.negative)
        out << '-';
    const std::span<const std::uint32_t> limbs = decimal.limbs();
    out << limbs.back();
    char* digits = out.reserve(limbs.size() * 9);
    for (std::size_t i = limbs.size() - 1; i-- > 0;) {
        *digits++ = static_cast<char>('0' + limbs[i] / hundredMillion);
        digits = appendDigits(digits, eightDigits(limbs[i] % hundredMillion), 8);
    }
    out.commit(digits);
    if (os.precision() > 0)
        out << '.' << std::string(static_cast<std::size_t>(os.precision()), '0');
}

} // namespace Travik::detail
