#include <travik/datablock/Bytes.h>
#include <travik/tables/ElementKernels.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <ostream>

namespace Travik {

// Not inline: GCC takes the text of a moved variant for uninitialised.
ElementValue::ElementValue(const ElementValue& other) = default;
ElementValue::ElementValue(ElementValue&& other) noexcept = default;
ElementValue& ElementValue::operator=(const ElementValue& other) = default;
ElementValue& ElementValue::operator=(ElementValue&& other) noexcept = default;
ElementValue::~ElementValue() = default;

namespace detail {

namespace {

// A number of any kind; nothing for a text.
std::optional<long double> numberOf(const ElementValue& value) {
    const ElementValue::Variant& variant = value.variant();
    if (const auto* number = std::get_if<long long>(&variant))
        return static_cast<long double>(*number);
    if (const auto* number = std::get_if<unsigned long long>(&variant))
        return static_cast<long double>(*number);
    if (const auto* number = std::get_if<long double>(&variant))
        return *number;
    return std::nullopt;
}

const std::string* textOf(const ElementValue& value) { return std::get_if<std::string>(&value.variant()); }

// The integer that a number is; nothing where it is none, or out of the range of T.
template <class T>
std::optional<T> wholeNumber(long double number) {
    const long double limit = std::ldexp(1.0L, std::numeric_limits<T>::digits);
    const long double lowest = std::is_signed_v<T> ? -limit : 0.0L;
    if (!(number >= lowest && number < limit) || std::trunc(number) != number)
        return std::nullopt;
    return static_cast<T>(number);
}

struct None {
    static constexpr unsigned int size = 0;
    static constexpr std::nullptr_t print = nullptr;

    static bool store(std::span<char> /*stored*/, const ElementValue& value) {
        return std::holds_alternative<std::monostate>(value.variant());
    }
};

template <class T>
struct Integer {
    static constexpr unsigned int size = sizeof(T);

    static void print(TextWriter& out, std::span<const char> stored) { out << bytes::load<T>(stored, 0); }

    static bool store(std::span<char> stored, const ElementValue& value) {
        const std::optional<T> whole = integerOf(value);
        return whole && bytes::store(stored, 0, *whole);
    }

    // Integers do not go through the floating types: a long double need not hold 64 bits.
    static std::optional<T> integerOf(const ElementValue& value) {
        const auto narrowed = [](auto number) {
            return std::in_range<T>(number) ? std::optional(static_cast<T>(number)) : std::nullopt;
        };
        if (const auto* number = std::get_if<long long>(&value.variant()))
            return narrowed(*number);
        if (const auto* number = std::get_if<unsigned long long>(&value.variant()))
            return narrowed(*number);
        const auto number = numberOf(value);
        return number ? wholeNumber<T>(*number) : std::nullopt;
    }
};

template <class T>
struct Floating {
    static constexpr unsigned int size = sizeof(T);
    static_assert(std::numeric_limits<T>::is_iec559, "what is beyond the largest number rounds to infinity");

    static void print(TextWriter& out, std::span<const char> stored) {
        out.current(static_cast<double>(bytes::load<T>(stored, 0)));
    }

    static bool store(std::span<char> stored, const ElementValue& value) {
        const auto number = numberOf(value);
        if (!number)
            return false;
        const T nearest = static_cast<T>(*number);
        return (std::isfinite(nearest) || !std::isfinite(*number)) && bytes::store(stored, 0, nearest);
    }
};

struct Extended {
    static constexpr unsigned int size = 10;
    static constexpr std::size_t wordOffset = 8;
    static constexpr unsigned int signBit = 0x8000;

    static void print(TextWriter& out, std::span<const char> stored) {
        const auto word = bytes::load<std::uint16_t>(stored, wordOffset);
        detail::print(out, {bytes::load<std::uint64_t>(stored, 0), word & ~signBit, (word & signBit) != 0});
    }

    static bool store(std::span<char> stored, const ElementValue& value) {
        const auto number = numberOf(value);
        if (!number)
            return false;
        const ExtendedFloat parts = ExtendedFloat::of(*number);
        const unsigned int word = parts.exponent | (parts.negative ? signBit : 0U);
        return bytes::store(stored, 0, parts.significand) &&
               bytes::store(stored, wordOffset, static_cast<std::uint16_t>(word));
    }
};

template <class T, unsigned int Decimals>
struct FixedPoint {
    static constexpr unsigned int size = sizeof(T);

    static void print(TextWriter& out, std::span<const char> stored) {
        constexpr std::array factors{1.0, 0.1, 0.01, 0.001, 0.0001};
        const auto value = static_cast<float>(bytes::load<T>(stored, 0) * factors[Decimals]);
        std::ostream& os = out.fixed(static_cast<double>(value), Decimals).stream();
        os.setf(std::ios_base::fixed, std::ios_base::floatfield);
        os.precision(Decimals);
    }

    static bool store(std::span<char> stored, const ElementValue& value) {
        constexpr std::array scales{1.0L, 10.0L, 100.0L, 1000.0L, 10000.0L};
        const auto number = numberOf(value);
        const auto whole = number ? wholeNumber<T>(std::round(*number * scales[Decimals])) : std::nullopt;
        return whole && bytes::store(stored, 0, *whole);
    }
};

struct Character {
    static constexpr unsigned int size = 1;

    static void print(TextWriter& out, std::span<const char> stored) { out << bytes::load<char>(stored, 0); }

    static bool store(std::span<char> stored, const ElementValue& value) {
        const std::string* const text = textOf(value);
        return text && text->size() == 1 && bytes::store(stored, 0, text->front());
    }
};

template <unsigned int Length>
struct Text {
    static constexpr unsigned int size = Length;

    static void print(TextWriter& out, std::span<const char> stored) { out << bytes::text(stored, 0, Length); }

    // A text with a NUL inside would not come back whole.
    static bool store(std::span<char> stored, const ElementValue& value) {
        const std::string* const text = textOf(value);
        return text && text->size() <= Length && text->find('\0') == std::string::npos &&
               bytes::storeText(stored, 0, Length, *text);
    }
};

template <class Kind>
constexpr ElementCoding type(ETypeId code, const char* name) {
    return {code, name, Kind::size, Kind::print, Kind::store};
}

constexpr std::array types = {
    type<None>(ETypeNone, "NONE"),
    type<Integer<std::uint8_t>>(ETypeUint8, "UINT8"),
    type<Integer<std::int8_t>>(ETypeInt8, "INT8"),
    type<Integer<std::uint16_t>>(ETypeUint16, "UINT16"),
    type<Integer<std::int16_t>>(ETypeInt16, "INT16"),
    type<Integer<std::uint32_t>>(ETypeUint32, "UINT32"),
    type<Integer<std::int32_t>>(ETypeInt32, "INT32"),
    type<Integer<std::uint64_t>>(ETypeUint64, "UINT64"),
    type<Integer<std::int64_t>>(ETypeInt64, "INT64"),
    type<Floating<float>>(ETypeFloat, "FLOAT"),
    type<Floating<double>>(ETypeDouble, "DOUBLE"),
    type<Extended>(ETypeLongDouble, "LONG DOUBLE"),
    type<FixedPoint<std::int16_t, 1>>(ETypeFix16D1, "FIX16D1"),
    type<FixedPoint<std::int16_t, 2>>(ETypeFix16D2, "FIX16D2"),
    type<FixedPoint<std::int16_t, 3>>(ETypeFix16D3, "FIX16D3"),
    type<FixedPoint<std::int16_t, 4>>(ETypeFix16D4, "FIX16D4"),
    type<FixedPoint<std::int32_t, 1>>(ETypeFix32D1, "FIX32D1"),
    type<FixedPoint<std::int32_t, 2>>(ETypeFix32D2, "FIX32D2"),
    type<FixedPoint<std::int32_t, 3>>(ETypeFix32D3, "FIX32D3"),
    type<FixedPoint<std::int32_t, 4>>(ETypeFix32D4, "FIX32D4"),
    type<Character>(ETypeChar, "CHAR"),
    type<Text<5>>(ETypeChar5, "CHAR5"),
    type<Text<10>>(ETypeChar10, "CHAR10"),
    type<Text<15>>(ETypeChar15, "CHAR15"),
    type<Text<20>>(ETypeChar20, "CHAR20"),
};

constexpr bool liesAtItsCode(const ElementCoding& element) { return &element - types.data() == element.code; }
static_assert(std::ranges::all_of(types, liesAtItsCode));

} // namespace

const ElementCoding& elementCoding(ETypeId code) {
    const auto index = static_cast<unsigned int>(code);
    return index < types.size() ? types[index] : types.front();
}

void printElement(TextWriter& out, std::span<const char> stored, const ElementCoding& type) {
    if (!type.print || stored.size() != type.size)
        return;
    type.print(out, stored);
    out << "    ";
}

} // namespace detail

} // namespace Travik
