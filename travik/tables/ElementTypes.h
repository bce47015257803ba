#pragma once

#include <travik/datablock/Export.h>

#include <QMap>

#include <concepts>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace Travik {

/// The type of a value of a second-edition table; one byte in the image. Other codes are unknown: named as type 0, of
/// size 0, not printed.
enum ETypeId : int {
    ETypeNone = 0,
    ETypeUint8 = 1,
    ETypeInt8 = 2,
    ETypeUint16 = 3,
    ETypeInt16 = 4,
    ETypeUint32 = 5,
    ETypeInt32 = 6,
    ETypeUint64 = 7,
    ETypeInt64 = 8,
    ETypeFloat = 9,
    ETypeDouble = 10,
    ETypeLongDouble = 11, ///< ten bytes: 64 bits of significand with its integer bit, 15 of exponent, the sign
    ETypeFix16D1 = 12,    ///< signed 16-bit, in tenths; the following in hundredths and so on
    ETypeFix16D2 = 13,
    ETypeFix16D3 = 14,
    ETypeFix16D4 = 15,
    ETypeFix32D1 = 16, ///< signed 32-bit, in tenths; the following in hundredths and so on
    ETypeFix32D2 = 17,
    ETypeFix32D3 = 18,
    ETypeFix32D4 = 19,
    ETypeChar = 20,
    ETypeChar5 = 21, ///< up to five characters, the rest NUL; the following up to 10, 15 and 20
    ETypeChar10 = 22,
    ETypeChar15 = 23,
    ETypeChar20 = 24
};

/// The types of a table's columns by column index, counted from 0.
using DatatypeMap2Print = QMap<int, ETypeId>;

/// One value of a table in the caller's terms: nothing, a number in physical units, or a Latin-1 text. Written as a
/// plain literal wherever one is asked for.
class TRAVIK_DATABLOCK_EXPORT ElementValue {
public:
    using Variant = std::variant<std::monostate, long long, unsigned long long, long double, std::string>;

    // NOLINTBEGIN(google-explicit-constructor): see above
    /// Nothing: the value of a column of type NONE.
    ElementValue() = default;
    template <std::signed_integral T>
    requires(!std::same_as<T, char>) ElementValue(T number) : value_(static_cast<long long>(number)) {}
    template <std::unsigned_integral T>
    requires(!std::same_as<T, char> && !std::same_as<T, bool>) ElementValue(T number)
        : value_(static_cast<unsigned long long>(number)) {}
    template <std::floating_point T>
    ElementValue(T number) : value_(static_cast<long double>(number)) {}
    template <std::same_as<char> T>
    ElementValue(T character) : value_(std::string(1, character)) {}
    ElementValue(std::string text) : value_(std::move(text)) {}
    /// Null is nothing.
    ElementValue(const char* text) {
        if (text)
            value_ = std::string(text);
    }
    /// Whether a number or a character is meant, only the caller can say.
    template <class T>
    requires(std::same_as<T, bool> || std::is_enum_v<T>) ElementValue(T value)
    = delete;
    // NOLINTEND(google-explicit-constructor)

    ElementValue(const ElementValue& other);
    ElementValue(ElementValue&& other) noexcept;
    ElementValue& operator=(const ElementValue& other);
    ElementValue& operator=(ElementValue&& other) noexcept;
    ~ElementValue();

    const Variant& variant() const { return value_; }

private:
    Variant value_;
};

} // namespace Travik
