#pragma once

#include <travik/tables/SecondEdition.h>

#include <string>
#include <vector>

namespace Travik {

/// A column of a table to be built.
struct SecondEditionColumn {
    ETypeId type = ETypeNone;
    ElementValue id = {}; ///< of the table's columnIdType; nothing where that is NONE
};

/// A row of a table to be built.
struct SecondEditionRow {
    std::vector<ElementValue> values; ///< one a column
    ElementValue id = {};             ///< of the table's rowIdType; nothing where that is NONE
};

/// A second-edition table in its maker's terms.
///
/// Values are physical: 12.3 in a column of type FIX16D1 is stored as 123, rounded to the nearest step. Integer types
/// take whole numbers in their range; FLOAT and DOUBLE round to the nearest value of theirs; LONG DOUBLE takes any
/// number. CHAR takes one character, the longer text types a Latin-1 text of at most their length without a NUL in it.
/// NONE takes nothing.
struct SecondEditionTable {
    /// Any but 65535, which is the end block's. Tools know a table by its content only where no class has its
    /// identifier.
    unsigned short id = 0;
    bool packed = false;    ///< the layout
    double updateIndex = 0; ///< 0 to 655.35, rounded to hundredths
    ETypeId rowIdType = ETypeNone;
    ETypeId columnIdType = ETypeNone;
    std::vector<SecondEditionColumn> columns = {}; ///< at most 65535
    std::vector<SecondEditionRow> rows = {};       ///< at most 65535
};

/// Why a table was not built.
enum class SecondEditionFault : unsigned char {
    None,        ///< it was built
    Identifier,  ///< 65535
    UpdateIndex, ///< out of its range
    Type,        ///< an unknown type code
    Size,        ///< more rows, columns or bytes than a block can hold
    RowLength,   ///< a row with more or fewer values than there are columns
    Value        ///< a value or an identifier that does not fit its type
};

/// What became of a table.
struct SecondEditionImage {
    std::vector<char> bytes; ///< the block's image; empty where it was not built
    SecondEditionFault fault = SecondEditionFault::None;
    std::string text; ///< the fault in one line, with row and column counted from 1; empty without one

    explicit operator bool() const { return fault == SecondEditionFault::None; }
};

/// Builds the image of a table: header, areas, CRC-32 and 16-bit checksum. It reads back through `HwDatablock2Edition`
/// as it was given, and its CRC-32 and checksum hold.
///
/// A block has at most 65535 bytes; as the image is rounded up to whole words, 65534. A packed image ends with two
/// bytes behind the values that make the upper half of its CRC-32, which is the same word, the update index.
TRAVIK_DATABLOCK_EXPORT SecondEditionImage buildSecondEdition(const SecondEditionTable& table);

} // namespace Travik
