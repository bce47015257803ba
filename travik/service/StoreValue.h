#pragma once

#include <travik/datablock/Fields.h>
#include <travik/service/Export.h>

#include <span>
#include <string>
#include <string_view>

/// The way back: values stored into a block's bytes. Nothing here refreshes a checksum; that is the writer's, once.
namespace Travik {

/// How a value was stored, or why it was not.
enum class StoreOutcome : unsigned char {
    Exact,      ///< the field reads back the same value, but for the rounding of the scale's arithmetic
    Rounded,    ///< the value lies between two stored steps; the nearest was stored
    NotFinite,  ///< refused: a field that stores integers takes no NaN and no infinity
    OutOfRange, ///< refused: beyond what the field holds
    TooLong,    ///< refused: the text has more characters than the field, or a NUL
    NotLatin1,  ///< refused: the text has characters outside Latin-1, or is no UTF-8
    WrongKind,  ///< refused: a number for a text field or the other way round
    NoDate,     ///< refused: no date of the calendar between 1980 and 2107
    Outside     ///< refused: the block ends before the element, or the element is none of the field's
};

/// Whether the value was stored.
constexpr bool isStored(StoreOutcome outcome) { return outcome <= StoreOutcome::Rounded; }

/// Physical bounds of what a number field can hold.
struct ValueRange {
    double lowest;
    double highest;
};
TRAVIK_SERVICE_EXPORT ValueRange rangeOf(const Field& field);

/// What was wrong, for a person: "out of range, takes -327.68 to 327.67 dB" and the like; empty for a stored value.
TRAVIK_SERVICE_EXPORT std::string describeOutcome(StoreOutcome outcome, const Field& field);

/// Stores a physical value into an element (counted with the last dimension fastest): the nearest stored number, and
/// nothing else of the word where the value has only some of its bits. A refusal changes nothing.
TRAVIK_SERVICE_EXPORT StoreOutcome storeValue(std::span<char> block, const Field& field, unsigned int element,
                                              double physical);

/// Stores a number as it is stored, without scale and zero. It must be whole where the field stores integers.
TRAVIK_SERVICE_EXPORT StoreOutcome storeStored(std::span<char> block, const Field& field, unsigned int element,
                                               double stored);

/// Stores a UTF-8 text, the rest of the field NUL; into a date field a date, as ISO 8601.
TRAVIK_SERVICE_EXPORT StoreOutcome storeText(std::span<char> block, const Field& field, unsigned int element,
                                             std::string_view utf8);

/// The stored number of an element, without scale and zero: in decimal, as JSON and people write it; exact for every
/// type but F80, which is given to the nearest double. "nan", "inf" and "-inf" for what is no finite number.
TRAVIK_SERVICE_EXPORT std::string storedText(std::span<const char> block, const Field& field, unsigned int element);

} // namespace Travik
