#pragma once

#include <algorithm>
#include <span>
#include <string_view>

/// Where a class keeps to another rule than the rest, and why. Whatever is not named here keeps to the strict ones:
/// every public operation is called, what a setter stored is what the getter of the same name gives back, and the
/// checksum holds afterwards.
namespace Fuzz {

/// Operations that are not reached through the table.
inline constexpr std::string_view reachedOtherwise[] = {
    // Several of the same name: ClassesFuzz.cpp calls those that read or replace the buffer.
    "computeChecksum",
    "computeChecksum32",
    "setData",
    "verifyChecksum",
    "verifyChecksum32",
    // A size of 4 GB would be allocated: ClassesFuzz.cpp calls it with what an image can have.
    "resizeData",
    // With rules of their own, in Accessors.h.
    "setBlock",
    // The debug layer's, which no block adds to; several of the same name.
    "chkdbg",
    "dbgout",
    // Do nothing on a host of the firmware's byte order; several of the same name.
    "SwapIntel2Ppc",
    "SwapCharString",
    // A part of the byte-order conversion, which ClassesFuzz.cpp calls as a whole.
    "takeOverItself",
    // Texts: ExchangeFuzz.cpp.
    "conv2ascii",
    "searchascii",
};

/// Operations that some instances of a template have, and others have not.
inline constexpr std::string_view conditional[] = {
    "getIndexValue", "setIndexValue", // of indexed tables
    "getDescriptor", "setDescriptor", // of tables with descriptors
};

constexpr bool isConditional(std::string_view name) {
    return std::ranges::find(conditional, name) != std::end(conditional);
}

constexpr bool isReachedOtherwise(std::string_view name) {
    return std::ranges::find(reachedOtherwise, name) != std::end(reachedOtherwise);
}

/// How what a getter gives back relates to what the setter was given.
enum class Return : unsigned char {
    Same,
    Lossy,      ///< what is given back is given back when it is stored once more
    Scaled,     ///< within a step of the scale, or the end of the range
    NotChecked, ///< says nothing about the other
};

struct Rule {
    std::string_view className; ///< empty: any
    std::string_view setter;
    Return gives = Return::Same;
    bool seals = true;    ///< the checksum holds afterwards
    bool swapped = false; ///< the getter takes its indices in the other order
    std::string_view why = {};
};

/// The rules that differ, and that of a setter: where the class is named, its own.
std::span<const Rule> rules();
Rule ruleOf(std::string_view className, std::string_view setter);

/// Setters that no getter answers in the same terms: class and setter, in the order of the alphabet.
std::span<const char* const> settersWithoutGetter();

/// Setters of what a block knows beside its image.
inline constexpr std::string_view storesNoImage[] = {"setDataFormatTyp", "setEepromAddress", "setEepromSector"};

} // namespace Fuzz
