#pragma once

#include <travik/datablock/Bytes.h>
#include <travik/datablock/HwDatablock.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

/// The field list of a record: each of its fields once, in the order of the image, with what a person needs to know of
/// it. Values with units, differences, JSON and plots follow from the list; nothing of it needs to know a class.
namespace Travik {

/// How an element of a field is stored. F80 is the ten bytes of the x87's extended format. Records have no 64-bit
/// integers and no extended numbers; tables that describe themselves do.
enum class Stored : unsigned char { U8, I8, U16, I16, U32, I32, F32, F64, Text, U64, I64, F80 };

/// "u16", "f32", "text" and so on.
TRAVIK_DATABLOCK_EXPORT std::string_view storedName(Stored stored);

/// What a field is for.
enum class Role : unsigned char {
    Value,
    Count, ///< how many entries of a table are in use
    Axis,  ///< labels the rows or columns of a table
    Text,  ///< Latin-1 characters up to the first NUL or the end of the field
    Date,  ///< packed: bits 0-4 day, 5-8 month, 9-15 year minus 1980
    Reserved
};

/// One dimension of an array field.
struct Dimension {
    const char* name = "";
    unsigned int extent = 1; ///< entries stored
    unsigned int stride = 0; ///< bytes from one to the next
    /// The field that says how many entries are in use; null: all are. Where that field is an array itself, its entry
    /// is chosen by the index of the first dimension.
    const char* count = nullptr;
    /// The identifier of the block that labels the entries; 0: none. The list that the catalogue hands out for an
    /// identifier names the very block of a module that belongs to it: of a table of path B the frequencies of path B.
    /// In the list of a record (`recordFields`), which serves all paths, it is the block of the first.
    int axisBlock = 0;
};

/// One field of a record. A value in its unit is (stored × scale + zero). A negative scale negates in the width that is
/// stored, as the block's class does: of the lowest number, which has no counterpart there, the sign stays.
struct Field {
    static constexpr std::size_t maxRank = 4;

    const char* name = ""; ///< lower case with underscores, unique in its list, stable
    Role role = Role::Value;
    Stored stored = Stored::U8;
    unsigned int width = 0;  ///< bytes of an element; the length of a text
    unsigned int offset = 0; ///< bytes from the start of the image
    const char* unit = "";
    double scale = 1.0;
    double zero = 0.0;
    /// Where the value has only some bits of its word: how many, from which on, and whether they have a sign.
    unsigned char bits = 0;
    unsigned char shift = 0;
    bool isSigned = false;
    unsigned char rank = 0; ///< number of dimensions; 0: a single value
    std::array<Dimension, maxRank> dimensions{};

    constexpr bool isFloating() const {
        return stored == Stored::F32 || stored == Stored::F64 || stored == Stored::F80;
    }
    /// Whether the field stores signed integers negated: then the lowest of them, which has no negative in its bits,
    /// stands for itself, as the classes have it.
    constexpr bool keepsLowest() const {
        const bool isInteger = stored == Stored::I8 || stored == Stored::I16 || stored == Stored::I32;
        return scale < 0 && (bits > 0 ? isSigned : isInteger);
    }
    /// The lowest stored number of a field of signed integers.
    double lowestStored() const {
        return -static_cast<double>(std::uint64_t{1} << ((bits > 0 ? bits : 8 * width) - 1));
    }

    unsigned int elements() const {
        unsigned int product = 1;
        for (unsigned int i = 0; i < rank; ++i)
            product *= dimensions[i].extent;
        return product;
    }

    /// Where element `i` lies in the image, the last dimension counted fastest.
    std::size_t elementOffset(unsigned int i) const {
        std::size_t start = offset;
        for (unsigned int d = rank; d-- > 0; i /= dimensions[d].extent)
            start += std::size_t{i % dimensions[d].extent} * dimensions[d].stride;
        return start;
    }
};

/// A block's fields after its header, in image order.
using FieldList = std::vector<Field>;

/// One value of a block, as the visitor hands it out.
struct FieldValue {
    const Field& field;
    std::span<const unsigned int> index; ///< one a dimension, outermost first
    double value;                        ///< physical; 0 for a text
    std::string_view text;               ///< Latin-1; empty for a number
};

/// Which entries of a table a visit goes through.
enum class Extent : unsigned char {
    Used, ///< those that the count fields say are in use, at most the capacity
    Whole ///< the whole capacity
};

/// The value of one element in its unit; 0 where the image ends before it or the index is out of range.
TRAVIK_DATABLOCK_EXPORT double fieldValue(std::span<const char> image, const Field& field,
                                          std::span<const unsigned int> index = {});

/// How many entries of a dimension its count field says are in use, at most the capacity; the whole capacity where it
/// has none. `first` is the index of the first dimension, which chooses among the counts where there are several.
TRAVIK_DATABLOCK_EXPORT unsigned int usedEntries(std::span<const char> image, std::span<const Field> fields,
                                                 const Dimension& dimension, unsigned int first = 0);

/// The physical values of all elements of a field, the last dimension counted fastest, in one go: as `fieldValue` gives
/// them one by one. `values` has room for `field.elements()`. The field is not a text.
TRAVIK_DATABLOCK_EXPORT void fieldValues(std::span<const char> image, const Field& field, std::span<double> values);

/// Whether two images are equal in all elements of the fields, floating numbers by value.
TRAVIK_DATABLOCK_EXPORT bool equalFields(std::span<const char> left, std::span<const char> right,
                                         std::span<const Field> fields);

/// Hands out every value of an image in list order, rows before columns. The image may end anywhere; an empty visitor
/// gets nothing.
TRAVIK_DATABLOCK_EXPORT void visitFields(std::span<const char> image, std::span<const Field> fields, Extent extent,
                                         const std::function<void(const FieldValue&)>& visitor);

} // namespace Travik
