#include <travik/datablock/Bytes.h>
#include <travik/service/StoreValue.h>
#include <travik/service/Values.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>

namespace Travik {

namespace {

template <class T>
ValueRange limits() {
    return {static_cast<double>(std::numeric_limits<T>::lowest()), static_cast<double>(std::numeric_limits<T>::max())};
}

// Of the stored numbers.
ValueRange storedRange(const Field& field) {
    if (field.bits > 0) {
        const double values = std::ldexp(1.0, field.bits);
        return field.isSigned ? ValueRange{-values / 2, values / 2 - 1} : ValueRange{0, values - 1};
    }
    switch (field.stored) {
    case Stored::U8:
        return limits<unsigned char>();
    case Stored::I8:
        return limits<signed char>();
    case Stored::U16:
        return limits<unsigned short>();
    case Stored::I16:
        return limits<short>();
    case Stored::U32:
        return limits<unsigned int>();
    case Stored::I32:
        return limits<int>();
    case Stored::U64: // the largest numbers that both a double and the word hold
        return {0, std::nextafter(0x1p64, 0)};
    case Stored::I64:
        return {-0x1p63, std::nextafter(0x1p63, 0)};
    case Stored::F32:
        return limits<float>();
    case Stored::F64:
    case Stored::F80:
    case Stored::Text:
        break;
    }
    return limits<double>();
}

template <class T>
bool storeAs(std::span<char> block, std::size_t offset, double number) {
    return bytes::store(block, offset, static_cast<T>(number));
}

bool storeBits(std::span<char> block, const Field& field, std::size_t offset, double number) {
    std::uint32_t word = 0;
    const std::size_t width = std::min<std::size_t>(field.width, sizeof word);
    if (!bytes::inside(block.size(), offset, width))
        return false;
    std::memcpy(&word, block.data() + offset, width);
    const auto mask = static_cast<std::uint32_t>(((std::uint64_t{1} << field.bits) - 1) << field.shift);
    const auto value = static_cast<std::uint32_t>(static_cast<std::int64_t>(number));
    word = (word & ~mask) | ((value << field.shift) & mask);
    std::memcpy(block.data() + offset, &word, width);
    return true;
}

// Every double is an extended number; only what it is made of differs.
bool storeExtended(std::span<char> block, std::size_t offset, double number) {
    constexpr int bias = 16383;
    std::uint64_t significand = 0;
    unsigned int exponent = 0;
    if (std::isnan(number) || std::isinf(number)) {
        significand = std::isnan(number) ? std::uint64_t{3} << 62U : std::uint64_t{1} << 63U;
        exponent = 0x7FFF;
    } else if (number != 0) {
        int power = 0;
        significand = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::abs(number), &power), 64));
        exponent = static_cast<unsigned int>(power - 1 + bias);
    }
    const auto word = static_cast<std::uint16_t>(exponent | (std::signbit(number) ? 0x8000U : 0U));
    if (!bytes::inside(block.size(), offset, sizeof significand + sizeof word))
        return false;
    bytes::store(block, offset, significand);
    bytes::store(block, offset + sizeof significand, word);
    return true;
}

// The number is in range, and whole where integers are stored.
bool store(std::span<char> block, const Field& field, std::size_t offset, double number) {
    if (field.bits > 0)
        return storeBits(block, field, offset, number);
    switch (field.stored) {
    case Stored::U8:
        return storeAs<unsigned char>(block, offset, number);
    case Stored::I8:
        return storeAs<signed char>(block, offset, number);
    case Stored::U16:
        return storeAs<unsigned short>(block, offset, number);
    case Stored::I16:
        return storeAs<short>(block, offset, number);
    case Stored::U32:
        return storeAs<unsigned int>(block, offset, number);
    case Stored::I32:
        return storeAs<int>(block, offset, number);
    case Stored::U64:
        return storeAs<std::uint64_t>(block, offset, number);
    case Stored::I64:
        return storeAs<std::int64_t>(block, offset, number);
    case Stored::F32:
        return storeAs<float>(block, offset, number);
    case Stored::F64:
        return storeAs<double>(block, offset, number);
    case Stored::F80:
        return storeExtended(block, offset, number);
    case Stored::Text:
        break;
    }
    return false;
}

StoreOutcome storeNumber(std::span<char> block, const Field& field, unsigned int element, double number,
                         bool roundsToWhole) {
    if (field.stored == Stored::Text)
        return StoreOutcome::WrongKind;
    if (element >= field.elements())
        return StoreOutcome::Outside;
    double stored = number;
    if (!field.isFloating()) {
        if (!std::isfinite(number))
            return StoreOutcome::NotFinite;
        stored = std::nearbyint(number);
        if (!roundsToWhole && stored != number)
            return StoreOutcome::OutOfRange;
    } else if (field.stored == Stored::F32 && std::isfinite(number)) {
        // Nearest, also beyond the largest float, up to half a step.
        stored =
            static_cast<double>(static_cast<float>(std::clamp(number, -0x1.fffffefffffffp127, 0x1.fffffefffffffp127)));
        if (std::abs(number) > 0x1.fffffefffffffp127)
            return StoreOutcome::OutOfRange;
    }
    const ValueRange range = storedRange(field);
    if (std::isfinite(stored) && (stored < range.lowest || stored > range.highest))
        return StoreOutcome::OutOfRange;
    if (!store(block, field, field.elementOffset(element), stored))
        return StoreOutcome::Outside;
    // What the arithmetic of a scale leaves is no rounding.
    const double difference = std::abs(number - stored);
    return std::isnan(number) || number == stored || difference <= std::abs(number) * 1e-12 ? StoreOutcome::Exact
                                                                                            : StoreOutcome::Rounded;
}

std::string shortest(double number) {
    std::array<char, 40> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

template <class T>
std::string decimal(std::span<const char> block, std::size_t offset) {
    return std::to_string(bytes::load<T>(block, offset));
}

} // namespace

ValueRange rangeOf(const Field& field) {
    const ValueRange stored = storedRange(field);
    const double scale = field.keepsLowest() ? -field.scale : field.scale;
    const double first = stored.lowest * scale + field.zero;
    const double second = stored.highest * scale + field.zero;
    return {std::min(first, second), std::max(first, second)};
}

std::string describeOutcome(StoreOutcome outcome, const Field& field) {
    const auto range = [&] {
        const ValueRange values = rangeOf(field);
        const std::string unit = *field.unit ? std::string(" ") + field.unit : std::string();
        return "takes " + shortest(values.lowest) + " to " + shortest(values.highest) + unit;
    };
    switch (outcome) {
    case StoreOutcome::Exact:
    case StoreOutcome::Rounded:
        return {};
    case StoreOutcome::NotFinite:
        return "not a finite number, " + range();
    case StoreOutcome::OutOfRange:
        return "out of range, " + range();
    case StoreOutcome::TooLong:
        return "too long, takes " + std::to_string(field.width) + " characters and no NUL";
    case StoreOutcome::NotLatin1:
        return "a text may hold characters of Latin-1 only";
    case StoreOutcome::WrongKind:
        return field.stored == Stored::Text ? "takes a text" : "takes a number, " + range();
    case StoreOutcome::NoDate:
        return "no date, takes 1980-01-01 to 2107-12-31";
    case StoreOutcome::Outside:
        return "outside the block";
    }
    return {};
}

StoreOutcome storeValue(std::span<char> block, const Field& field, unsigned int element, double physical) {
    double stored = (physical - field.zero) / field.scale;
    if (std::isfinite(physical) && !std::isfinite(stored))
        return StoreOutcome::OutOfRange;
    // The lowest number stands for its own value; the one that it would be the negative of has none.
    if (field.keepsLowest() && std::abs(std::nearbyint(stored)) == -field.lowestStored())
        stored = stored > 0 ? field.lowestStored() : 2 * field.lowestStored();
    return storeNumber(block, field, element, stored, true);
}

StoreOutcome storeStored(std::span<char> block, const Field& field, unsigned int element, double stored) {
    return storeNumber(block, field, element, stored, false);
}

StoreOutcome storeText(std::span<char> block, const Field& field, unsigned int element, std::string_view utf8) {
    if (field.role == Role::Date && field.stored != Stored::Text) {
        const auto packed = packedDate(utf8);
        return packed ? storeStored(block, field, element, *packed) : StoreOutcome::NoDate;
    }
    if (field.stored != Stored::Text)
        return StoreOutcome::WrongKind;
    if (element >= field.elements())
        return StoreOutcome::Outside;
    const auto latin1 = toLatin1(utf8);
    if (!latin1)
        return StoreOutcome::NotLatin1;
    if (latin1->size() > field.width || latin1->find('\0') != std::string::npos)
        return StoreOutcome::TooLong;
    return bytes::storeText(block, field.elementOffset(element), field.width, *latin1) ? StoreOutcome::Exact
                                                                                       : StoreOutcome::Outside;
}

std::string storedText(std::span<const char> block, const Field& field, unsigned int element) {
    if (element >= field.elements())
        return {};
    const std::size_t offset = field.elementOffset(element);
    if (field.bits == 0 && field.stored == Stored::U64)
        return decimal<std::uint64_t>(block, offset);
    if (field.bits == 0 && field.stored == Stored::I64)
        return decimal<std::int64_t>(block, offset);
    Field plain = field;
    plain.scale = 1.0;
    plain.zero = 0.0;
    plain.rank = 0;
    plain.offset = static_cast<unsigned int>(offset);
    const double number = fieldValue(block, plain);
    if (field.stored == Stored::F32 && std::isfinite(number)) {
        std::array<char, 40> text; // the shortest that reads back as the float
        return {text.data(), std::to_chars(text.data(), text.data() + text.size(), static_cast<float>(number)).ptr};
    }
    return shortest(number);
}

} // namespace Travik
