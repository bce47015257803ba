#pragma once

#include <travik/text/TextExchange.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Exchange texts read strictly: what the tolerant reader of `TextExchange.h` would make the best of is a finding here,
/// with line and word. For tools that put a text into an image whose every value counts.
///
/// A text holds one or more tables, each
///
///     ID: <key name>
///     COUNT: <rows> * <columns>
///     1: <value> ... <value>
///     2: <value> ... <value>
///
/// with blank lines and remarks ("#" to the end of the line) anywhere. Lines end with LF, CR LF or CR, the last one,
/// too. The blanks around ":" and "*" are free. Row labels ascend from 1; there are as many rows as the count says and
/// as many values in each. A value is one whole word:
///
/// - in a hexadecimal table up to 32 bits in hexadecimal digits, with or without "0x";
/// - in an integer table a decimal number without a fraction other than 0, in range;
/// - in the others a decimal number that is finite once stored: no "nan", no "inf", no decimal comma.
namespace Travik {

/// Something in a text that is not understood.
struct ExchangeFinding {
    std::size_t line; ///< from 1; 0 in an empty text
    std::string word; ///< as it stands in the text, cut after 60 bytes; empty where it is not about one word
    std::string text; ///< what is wrong with it, in one line
};

/// How many findings of a text are kept; of the others only the number.
inline constexpr std::size_t exchangeFindingsLimit = 20;

/// A table that a text holds.
struct ExchangeTableName {
    std::size_t line;             ///< of its "ID:"
    std::string key;              ///< what stands behind it, cut after 60 bytes
    const ExchangeFormat* format; ///< the format of that key name; null where none of the formats has it
};

/// The tables of a text, in order. A key name is that of a format when all of it is.
TRAVIK_DATABLOCK_EXPORT std::vector<ExchangeTableName> exchangeTablesIn(std::string_view text,
                                                                        std::span<const ExchangeFormat* const> formats);

/// A cell that a text gives another value.
struct ExchangeChange {
    unsigned int row; ///< from 1
    unsigned int column;
    std::string before; ///< as the writer writes it; with all its digits where it would not differ otherwise
    std::string after;
};

/// Rows and columns as a table counts them.
struct ExchangeCounts {
    unsigned int rows = 0;
    unsigned int columns = 0;
    bool operator==(const ExchangeCounts&) const = default;
};

/// What a strict reading comes to.
struct ExchangeReading {
    std::vector<ExchangeFinding> findings; ///< the first of them
    std::size_t findingCount = 0;          ///< all of them; the text was read right when this is 0
    ExchangeCounts before;
    ExchangeCounts after;
    std::vector<ExchangeChange> changes; ///< row after row
    /// The block with the text's counts and values, its header words unchanged: the caller seals it. Only of use where
    /// nothing was found.
    std::vector<char> image;
};

/// Reads the table of one format out of a text, as changes to the block that is to take it. The others are passed over.
///
/// - A word that is what the writer would write of the block's own cell leaves that cell alone, whatever rounding the
///   format has: a text that was written and not edited changes no byte. So do the block's own counts, even beyond the
///   capacity, and the zeros that the writer writes there.
/// - Other counts lie within the capacity, and neither is 0: a table without rows would empty the block.
/// - What the text does not say stays: cells behind the count, index values, alignment.
/// - `block` is an image of the format's class; of one that is too short, the missing bytes are taken as 0.
/// - Takes time and memory linear in the text. Nothing is thrown but for want of memory.
TRAVIK_DATABLOCK_EXPORT ExchangeReading readExchangeStrictly(std::string_view text, const ExchangeFormat& format,
                                                             std::span<const char> block);

} // namespace Travik
