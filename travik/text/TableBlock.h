#pragma once

#include <travik/datablock/Fields.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/datablock/RecordFields.h>

#include <QString>

#include <limits>
#include <string>

namespace Travik {

class TextWriter;

/// What a table that is stored as header, counts and matrix is named and how its numbers are meant.
struct TableSpec {
    int id = 0;           ///< identifier of the block (of the first of several)
    const char* key = ""; ///< key name, printed on the "ID:" line
    double scale = 1.0;   ///< user value = stored value × scale
    const char* unit = "";
    Role role = Role::Value;
    int rowAxis = 0; ///< the blocks that label rows and columns: their identifiers; 0: none
    int columnAxis = 0;
};

/// The type in which a table hands values to users and prints them.
enum class UserNumber : unsigned char { Integral, Float, Double };

/// The image of a table: header, D descriptors of 16 bytes, row count, column count, N × M values row after row, and,
/// where the table is indexed, one signed 32-bit index value per row.
struct TableShape {
    static constexpr unsigned int descriptorLength = 16;

    Stored stored;
    unsigned int width; ///< bytes of a value
    UserNumber user;
    double lowest; ///< of the user type
    double highest;
    unsigned int rows;
    unsigned int columns;
    unsigned int descriptors = 0;
    bool indexed = false;
    unsigned int decimals = 3;
    bool printsUserType = true; ///< whether the print converts to the user type or shows the product itself
    bool checked = true;        ///< whether a take-over asks for a right checksum

    constexpr unsigned int descriptorsOffset() const { return sizeof(HwSDatablockHeader); }
    constexpr unsigned int rowCountOffset() const { return descriptorsOffset() + descriptorLength * descriptors; }
    constexpr unsigned int columnCountOffset() const { return rowCountOffset() + 4; }
    constexpr unsigned int valuesOffset() const { return columnCountOffset() + 4; }
    constexpr unsigned int valuesSize() const { return rows * columns * width; }
    /// Of a row and a column inside the capacity.
    constexpr std::size_t valueOffset(unsigned int row, unsigned int column) const {
        return valuesOffset() + (std::size_t{row} * columns + column) * width;
    }
    constexpr unsigned int indexOffset() const { return valuesOffset() + valuesSize(); }
    constexpr unsigned int size() const { return indexOffset() + (indexed ? 4 * rows : 0); }

    template <class StoreT, class UserT>
    static constexpr TableShape of(unsigned int rows, unsigned int columns) {
        return {.stored = detail::storedAs<StoreT>(),
                .width = sizeof(StoreT),
                .user = std::is_integral_v<UserT>        ? UserNumber::Integral
                        : sizeof(UserT) == sizeof(float) ? UserNumber::Float
                                                         : UserNumber::Double,
                .lowest = static_cast<double>(std::numeric_limits<UserT>::lowest()),
                .highest = static_cast<double>(std::numeric_limits<UserT>::max()),
                .rows = rows,
                .columns = columns};
    }
};

namespace detail {

/// Calls the function with a value of the type that is stored.
template <class Function>
auto withStoredType(Stored stored, Function function) {
    switch (stored) {
    case Stored::U8:
        return function(static_cast<unsigned char>(0));
    case Stored::I8:
        return function(static_cast<signed char>(0));
    case Stored::U16:
        return function(static_cast<unsigned short>(0));
    case Stored::I16:
        return function(static_cast<short>(0));
    case Stored::U32:
        return function(0U);
    case Stored::I32:
        return function(0);
    case Stored::F32:
        return function(0.0F);
    case Stored::F64:
    case Stored::Text:
    case Stored::U64:
    case Stored::I64:
    case Stored::F80:
        break; // no table block is made of the last four
    }
    return function(0.0);
}

} // namespace detail

/// What all table templates do the same way, whatever their types: layout, take-over, access in user units, text. Adds
/// no virtual operation.
///
/// A value, index or descriptor outside the capacity, or outside the buffer, reads as zero or empty; its setter does
/// nothing. Setters refresh the checksum. A null key name counts as empty.
class TRAVIK_DATABLOCK_EXPORT TableBlock : public HwDatablock {
public:
    const std::string& getKeyName() const { return keyName_; }
    double getScaleFactor() const { return scaleFactor_; }
    /// The capacity.
    unsigned int getMaxRows() const { return maxRows_; }
    unsigned int getMaxColumns() const { return maxColumns_; }

    /// The stored counts, which may exceed the capacity in an image that was not written by this library.
    unsigned int getNumberOfRows() const;
    unsigned int getNumberOfColumns() const;
    /// A count above the capacity is not stored.
    void setNumberOfRows(unsigned int rows);
    void setNumberOfColumns(unsigned int columns);

    std::ostream& printToStream(std::ostream& os) override;

    /// Takes the block's own image over in place, as a table of the shape: sends its fields through the byte-order
    /// conversion and gives it the shape's size word. An image with a wrong checksum is refused as by `setBlock`; of
    /// one that ends early, what is missing counts as zero.
    static void takeOverItself(const TableShape& shape, HwDatablock& block);

protected:
    TableBlock(const TableShape& shape, const char* keyName, unsigned int idBase, unsigned int idOffset,
               double scaleFactor, unsigned int maxRows, unsigned int maxColumns, bool stopConversionOnError);

    /// The user value, before its conversion to the user type.
    double product(unsigned int row, unsigned int column) const;
    void storeProduct(double value, unsigned int row, unsigned int column);
    double userValue(unsigned int row, unsigned int column) const;

    int indexValue(unsigned int row) const;
    void storeIndexValue(int value, unsigned int row);
    QString descriptor(unsigned int index) const;
    void storeDescriptor(const QString& text, unsigned int index);

    /// Takes a typed image over: 0, or 1 when its checksum is wrong or it is null; then error 1040001 is signalled with
    /// the image's identifier as text ("0" for null) and the block is unchanged.
    int takeOver(const void* record);

private:
    /// Shares the block's image.
    TableBlock(const TableShape& shape, const HwDatablock& block);

    std::string keyName_;
    double scaleFactor_;
    unsigned int maxRows_;
    unsigned int maxColumns_;
    unsigned int descriptorCount_;
    const TableShape* shape_;

    void printCounts(TextWriter& out) const;
    template <class StoreT, class Append>
    void printValues(TextWriter& out, Append append) const;
};

/// The fields of a table block.
TRAVIK_DATABLOCK_EXPORT FieldList tableFields(const TableShape& shape, const TableSpec& spec);

} // namespace Travik
