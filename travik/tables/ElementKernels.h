#pragma once

#include <travik/datablock/TextWriter.h>
#include <travik/tables/ElementTypes.h>

#include <cstdint>
#include <span>

/// How values of the element types are stored and printed. Not installed.
namespace Travik::detail {

/// What there is to know of a type.
struct ElementCoding {
    ETypeId code;
    const char* name;
    unsigned int size; ///< bytes in the image
    /// Prints a value of `size` bytes; null where the type prints nothing. Fixed-point types leave fixed notation and
    /// their number of decimals on the stream.
    void (*print)(TextWriter& out, std::span<const char> stored);
    /// Stores a value into `size` bytes; false, and nothing stored, where it does not fit the type.
    bool (*store)(std::span<char> stored, const ElementValue& value);
};

/// The type of a code; type 0 for an unknown code.
const ElementCoding& elementCoding(ETypeId code);

/// Prints a value and the four blanks behind it; nothing for types of size 0 and for bytes that are not the type's
/// size.
void printElement(TextWriter& out, std::span<const char> stored, const ElementCoding& type);

/// A number of the x87's 80-bit format, taken apart: the host's long double may be another one.
struct ExtendedFloat {
    std::uint64_t significand; ///< with its integer bit at the top
    unsigned int exponent;     ///< biased; 0 for zero and denormals, 0x7FFF for infinities and NaN
    bool negative;

    /// The nearest one, where the host's long double has more digits.
    static ExtendedFloat of(long double value);
    /// What no processor takes for a number (no integer bit, although it is no denormal) is a NaN.
    long double value() const;
};

/// Prints the number in the stream's current floating format, as `TextWriter::current` does, without the milliseconds
/// that the C library takes for each number of thousands of digits.
void print(TextWriter& out, const ExtendedFloat& number);

} // namespace Travik::detail
