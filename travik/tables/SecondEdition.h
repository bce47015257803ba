#pragma once

#include <travik/datablock/HwDatablock.h>
#include <travik/datablock/TextWriter.h>
#include <travik/tables/ElementTypes.h>

#include <QString>

#include <cstdint>
#include <iosfwd>
#include <span>

namespace Travik {

/// What the print operations of a second-edition table are told. Only the block name is read; the rest is carried for
/// the caller.
struct HwSDataBlockCfg {
    QString callerText = {};
    QString callerText2 = {};
    int callerNumber = 0;
    int callerNumber2 = 0;
    QString blockName = {}; ///< as the summary page prints it, in Latin-1
    QString callerText3 = {};
};

/// The table header of a second-edition image. Words that lie outside the image count as 0.
///
/// An image begins with the four words of every block. The fourth selects the layout: 0 padded, any other packed.
///
///     padded  packed
///        8       8     u32  CRC-32
///       12      10     u16  update index in hundredths
///       14      12     u16  number of rows
///       16      14     u16  number of columns
///       18      16     u8   type of the row identifiers, 0 for none
///       19      17     u8   type of the column identifiers, 0 for none
///       20      18     u8   type of each column
///
/// In the packed layout the update index is the upper half of the CRC-32: only an image made for it has both.
struct TRAVIK_DATABLOCK_EXPORT SecondEditionHeader {
    /// Of the bytes of a block, as far as they are there.
    explicit SecondEditionHeader(std::span<const char> block);

    bool packed;
    unsigned int updateIndex; ///< hundredths
    unsigned int rows;
    unsigned int columns;
    ETypeId rowIdType;
    ETypeId columnIdType;
    unsigned int columnTypesAt; ///< offset from the start of the block

    /// Offset of the update index, with which the table header begins.
    static constexpr unsigned int startsAt(bool packed) { return packed ? 10 : 12; }
};

/// Where the areas behind the table header lie, by what it says: row identifiers, column identifiers, and the values
/// row by row. In the padded layout each area begins at a multiple of 4; in the packed layout they follow each other
/// directly. Offsets count from the start of the block, and can lie far beyond it where the header is damaged.
struct TRAVIK_DATABLOCK_EXPORT SecondEditionLayout : SecondEditionHeader {
    /// Goes through the types of all columns.
    explicit SecondEditionLayout(std::span<const char> block);

    std::uint64_t rowIdsAt;
    std::uint64_t columnIdsAt;
    std::uint64_t valuesAt;
    std::uint64_t rowSize = 0; ///< bytes of one row's values
    std::uint64_t end;         ///< behind the last value
};

/// The base of the blocks of the second edition, whose image describes itself: any such block can be printed without
/// knowing its class.
///
/// Nothing of the header is trusted: what does not lie wholly inside the block (by its size word) and inside the buffer
/// is not read. Lookups answer 0 there. The pages print what the header says and then only what is inside: the columns
/// whose type is there, the identifiers and values that are there, and no row that has none of them. `fits` tells
/// beforehand.
///
/// The pages leave their mark on the stream: fixed-point values set fixed notation and their number of decimals, in
/// which later floating values print, and the detail page sets the decimal base. Integers print in decimal on any
/// stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablock2Edition : public HwDatablock {
public:
    /// An image of 12 bytes, padded layout, identifier 0; it holds no table header yet. The stop flag is true.
    HwDatablock2Edition();
    HwDatablock2Edition(const HwDatablock2Edition&) = default;
    HwDatablock2Edition& operator=(const HwDatablock2Edition&) = default;
    ~HwDatablock2Edition() override;

    unsigned short getNumberOfRows() const;
    unsigned short getNumberOfColumns() const;
    double getUpdateIndex() const;
    ETypeId getRowIdType() const;
    ETypeId getColumnIdType() const;
    /// The type byte of a column, counted from 0; held against the block's end, not against the number of columns.
    ETypeId getColumnType(int column) const;

    /// The type's name, that of type 0 ("NONE") for an unknown code.
    const char* getTypeString(ETypeId type) const;
    /// Bytes of one value in the image, 0 for an unknown code.
    int size_in_byte(ETypeId type) const;
    int getSizeOfRowIdType() const;
    int getSizeOfColumnIdType() const;

    /// Whether the header and all that it announces lie inside the block and inside the buffer.
    bool fits() const;

    /// Prints one value, followed by four blanks, and returns the pointer behind it. At `value` lie as many bytes as
    /// the type has. For type 0, an unknown code and null nothing is printed and `value` returned.
    unsigned char* printDataTypeToStream(std::ostream& os, unsigned char* value, ETypeId type) const;

    /// The heading of a page of summaries, or of details.
    void printDebugPageHeading(std::ostream& os, bool summary);
    /// One block's entry on a summary page.
    void printDebugPageSummary(std::ostream& os, HwSDataBlockCfg cfg);
    /// The whole table, which is the block's text form.
    void printDebugPageDetail(std::ostream& os, HwSDataBlockCfg cfg);
    /// Prints the detail page; returns the stream.
    virtual std::ostream& printToStream2Edition(std::ostream& os, HwSDataBlockCfg cfg);

    /// The column types of the last detail page; empty before it.
    const DatatypeMap2Print& columnTypes() const { return columnTypes_; }

private:
    DatatypeMap2Print columnTypes_;

    std::span<const char> block() const;
    SecondEditionHeader header() const { return SecondEditionHeader(block()); }
    void printColumns(TextWriter& out, const SecondEditionLayout& layout);
    void printRows(TextWriter& out, const SecondEditionLayout& layout) const;
};

} // namespace Travik
