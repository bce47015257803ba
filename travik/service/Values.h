#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/Export.h>
#include <travik/service/NumberFormat.h>

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The values of an image by name: what every command, script and binding works on. Nothing here knows a class; all of
/// it follows from the catalogue and the field lists.
namespace Travik {

/// What labels the entries of a dimension: the values of a frequency (or other) block of the same image.
struct TRAVIK_SERVICE_EXPORT Axis {
    int block = 0;                  ///< identifier of the block that holds it
    std::string name;               ///< of its field
    std::string unit;               ///< "" where there is none
    NumberFormat format;            ///< how its numbers are written
    std::vector<double> values;     ///< physical, those in use; empty for texts
    std::vector<std::string> texts; ///< UTF-8, those in use; empty for numbers
    /// Where the labels depend on the index of the array's first dimension (each filter has frequencies of its own):
    /// those of each. Then `values` and `texts` are empty.
    std::vector<std::vector<double>> byRow;

    /// The numbers that label the entries at an index of the array's first dimension.
    std::span<const double> at(std::size_t row) const {
        return byRow.empty()        ? std::span(values)
               : row < byRow.size() ? std::span(byRow[row])
                                    : std::span<const double>();
    }
    /// How many entries are labelled; the most of any row.
    std::size_t size() const;
};

/// One dimension of an array of values.
struct ValueDimension {
    std::string_view name;   ///< "point"; valid as long as the BlockValues
    unsigned int extent = 1; ///< entries stored
    /// Entries in use, at most `extent`: by the count field, else by the axis, else all.
    unsigned int used = 1;
    /// Identifier of the block that labels the entries, whether the image has it or not; 0: none.
    int axisBlock = 0;
    /// The labels of the entries in use. Null where there is no such block, or where it has not as many entries.
    std::shared_ptr<const Axis> axis;
};

/// One field of a block with its values. Arrays hold the whole capacity, the last dimension counted fastest; what the
/// block is too short to hold is 0.
struct TRAVIK_SERVICE_EXPORT FieldValues {
    const Field* field = nullptr; ///< name, unit, role, how it is stored; valid as long as the BlockValues
    std::vector<ValueDimension> dimensions;
    /// Physical values, stored × scale + zero, of every field but a text. A date's is its packed number.
    std::vector<double> values;
    /// Of a text field: UTF-8, up to the first NUL. Of a date field: ISO 8601, or empty where the number is no date.
    std::vector<std::string> texts;
    /// Where a dimension has not as many entries in use at every index of the first: how many at each, and which
    /// dimension it is. Else empty.
    std::vector<unsigned int> usedByRow;
    std::size_t variesIn = 0;
    bool isWhole = true; ///< whether all elements lie in the block

    bool isText() const { return field->stored == Stored::Text; }
    std::size_t size() const { return isText() ? texts.size() : values.size(); }
    /// Whether the element (counted as in `values`) is one of those in use.
    bool isUsed(std::size_t element) const;
};

/// The fields of a block and the strings they are named with.
class TRAVIK_SERVICE_EXPORT BlockLayout {
public:
    /// Of a block of an image: its class's, or its own where it is a second-edition table. Empty for a block that has
    /// neither, and for bytes that are no block.
    explicit BlockLayout(const ImageBlock& block);
    /// Of the class that serves an identifier; empty where there is none.
    explicit BlockLayout(int id);

    std::span<const Field> fields() const { return fields_; }
    /// Null where there is none of that name.
    const Field* find(std::string_view name) const;

    /// Bytes that belong to no field.
    struct Range {
        std::size_t offset;
        std::size_t length;
        friend bool operator==(const Range&, const Range&) = default;
    };
    /// Those of a block's first `size` bytes, the header apart, in ascending order.
    std::vector<Range> uncovered(std::size_t size) const;

private:
    FieldList fields_;
    std::shared_ptr<const void> names_; // what the names of `fields_` point into, where that is no literal
};

/// The values of a block.
struct TRAVIK_SERVICE_EXPORT BlockValues {
    std::string key; ///< "RFBO_RFLEVEL_MAX_DATA"; "USER_" and the identifier for a second-edition table; may be empty
    std::string className; ///< "HwDatablockIdent"; empty where the identifier has no class
    BlockLayout layout;
    std::vector<FieldValues> fields; ///< in the order of the image

    /// Null where there is none of that name.
    const FieldValues* find(std::string_view name) const;
};

/// Reads values out of an image, and looks up the axes they go with. Refers to the image, which must outlive it; used
/// from one thread at a time (it keeps the axes that it has read).
class TRAVIK_SERVICE_EXPORT ImageValues {
public:
    explicit ImageValues(const ModuleImage& image);
    explicit ImageValues(ModuleImage&& image) = delete;

    /// All values of one of the image's blocks. Never fails: a block without a class has no fields, one that is cut
    /// off has zeros.
    BlockValues read(const ImageBlock& block) const;
    /// One field of a block without its values: the dimensions, what is in use, the axes. `layout` is the block's, and
    /// has the field.
    FieldValues shape(const ImageBlock& block, const BlockLayout& layout, const Field& field) const;

private:
    const ModuleImage* image_;
    mutable std::map<std::pair<int, std::string>, std::shared_ptr<const Axis>> axes_;

    std::shared_ptr<const Axis> axisOf(int id, std::string_view rows) const;
};

/// The key name of a block: its class's; "USER_" and the identifier for a second-edition table; else empty.
TRAVIK_SERVICE_EXPORT std::string keyOf(const ImageBlock& block);

/// "2018-11-15" of a packed date word; empty where it is no date of the calendar.
TRAVIK_SERVICE_EXPORT std::string dateText(unsigned int packed);
/// The packed date word of "2018-11-15"; nothing where that is no date between 1980-01-01 and 2107-12-31.
TRAVIK_SERVICE_EXPORT std::optional<unsigned int> packedDate(std::string_view iso);

/// Latin-1 to UTF-8. The way back: nothing where the text is no UTF-8 or has other characters.
TRAVIK_SERVICE_EXPORT std::string toUtf8(std::string_view latin1);
TRAVIK_SERVICE_EXPORT std::optional<std::string> toLatin1(std::string_view utf8);

} // namespace Travik
