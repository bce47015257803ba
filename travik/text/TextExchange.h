#pragma once

#include <travik/datablock/HeldFailures.h>
#include <travik/text/TableBlock.h>

#include <functional>
#include <istream>
#include <span>
#include <string_view>
#include <vector>

/// Tables as text that is edited or produced outside the instrument, and read back.
///
/// The text is the key name on a line with "ID:", then the counts on a line "COUNT: <rows> * <columns>", then a line
/// for each row: a label, a colon, the values. A "#" begins a remark.
namespace Travik {

/// What a word of the text stands for.
enum class ExchangeNumber : unsigned char {
    Hexadecimal, ///< the stored value, written with the prefix "0x"
    Real,        ///< the user value
    Hundredths,  ///< the user value, rounded to two decimals when it is read
    Integer      ///< the user value, its fraction dropped when it is read
};

/// What the exchange text of one class differs in from that of the others.
struct ExchangeFormat {
    const TableSpec& table; ///< identifier, key name and scale factor
    const TableShape& shape;
    /// Of the block in the comment lines in front. Without a title the text has no comments, and a line a value.
    std::string_view title{};
    ExchangeNumber number;
    unsigned int width = 0; ///< of a value that is not hexadecimal, as in "%<width>.<decimals>f"
    unsigned int decimals = 0;
    /// The line between "ID:" and "COUNT:", comments and blank lines aside, from which on the reader complains.
    unsigned int distanceLimit;
    std::string_view distanceMessage; ///< behind "ERROR: "
    std::string_view columnMessage;   ///< behind "ERROR: In Row =" and the row number
    std::string_view rowMessage;
};

/// Takes one message of the reader, a line without its end. An empty one takes none.
using ExchangeMessages = std::function<void(std::string_view message)>;

/// Writes an image of the format's class as text, at most `printedEntriesLimit` values. Cells outside the capacity or
/// the image are written as zero.
TRAVIK_DATABLOCK_EXPORT std::ostream& writeExchangeText(std::ostream& os, const ExchangeFormat& format,
                                                        std::span<const char> image);

/// Reads a text and makes the image that it describes, whatever the text: the class's size, alignment 0, checksum word
/// 0 (the caller seals it). What the text does not say is 0, the identifier included when the key name was not found.
///
/// - The stream's error state is cleared and the text read from its beginning, or from where a stream stands that
///   cannot seek, to its end. The text ends where the stream's buffer throws; then badbit is set. The state is not
///   touched otherwise.
/// - A word that is no number is 0; a number outside the range of its type becomes the nearest value of it (an
/// infinity,
///   where the type has one); "nan" is 0 where the type has none. Of a word with something behind its number, the
///   number counts.
/// - Counts are taken as they are, above the capacity too; values beyond the capacity are dropped.
/// - A count line without "*" gives the counts 0.
/// - Reading takes time linear in the text, and memory for its longest line without remarks.
TRAVIK_DATABLOCK_EXPORT std::vector<char> readExchangeText(std::istream& is, const ExchangeFormat& format,
                                                           const ExchangeMessages& report);

/// The format that a text is in: that whose key name is on the first line with "ID:" and any of the key names, the
/// longest where one contains the other. Null if none is. Reads the stream as `readExchangeText` does.
TRAVIK_DATABLOCK_EXPORT const ExchangeFormat* findExchangeFormat(std::istream& is,
                                                                 std::span<const ExchangeFormat* const> formats);

/// Reports on standard output. What cannot be written there is lost.
TRAVIK_DATABLOCK_EXPORT void reportToStandardOutput(std::string_view message);

/// The text exchange of a class of tables, as a base of it. Works on the block that is handed over, not on the object
/// it is called on.
template <class Block>
class TextExchange {
public:
    /// Writes the block's text.
    std::ostream& conv2ascii(std::ostream& os, const Block& block) const {
        const auto image = Block(block).getByteArrayData(); // shared, and read only
        return writeExchangeText(os, Block::exchange, {image.data(), image.size()});
    }

    /// Fills the block from a text, as `readExchangeText` says. Problems are lines beginning with "ERROR:" on standard
    /// output; the block is filled all the same. Leaves the stream at its end: with eofbit and failbit set, which a
    /// stream with such an exception mask throws then.
    std::istream& searchascii(std::istream& is, Block& block) const {
        const HeldFailures failures(is);
        std::vector<char> image = readExchangeText(is, Block::exchange, reportToStandardOutput);
        auto* const record = reinterpret_cast<typename Block::Record*>(image.data());
        record->checksum = block.computeChecksum(reinterpret_cast<unsigned short*>(image.data()), sizeof *record);
        block.setBlock(record);
        is.setstate(std::ios_base::eofbit | std::ios_base::failbit);
        return is;
    }
};

} // namespace Travik
