#pragma once

#include <travik/service/Export.h>
#include <travik/text/StrictExchange.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A table that was written as text and edited, put back into the image that it came from.
namespace Travik {

/// The table of a text that is to be imported, or why there is none.
struct TableChoice {
    const ExchangeFormat* format = nullptr;
    std::string error;        ///< set where there is no format
    bool isTextWrong = false; ///< whether the error is one of the text, not of the block that was asked for
};

/// Chooses by block, an identifier or a key name; where that is empty, the one table that the text holds.
TRAVIK_SERVICE_EXPORT TableChoice chooseTable(std::string_view text, std::string_view block);

/// What came of an import. The image was changed when nothing was refused.
struct TableImport {
    /// Why the image does not take the table; empty where it does.
    std::string refusal;
    bool concernsBlock = false; ///< whether the refusal is about the block at the offset, or about the image
    std::size_t offset = 0;     ///< of the block
    /// What was read; its findings refuse the text.
    ExchangeReading reading;
    /// Whether the block's checksum did not hold before. It holds now: the damage that it told of, wherever it is,
    /// cannot be seen any more.
    bool wasDamaged = false;

    bool succeeded() const { return refusal.empty() && reading.findingCount == 0; }
};

/// Reads a table strictly and puts it into the block of the image, which is sealed. Nothing else changes, and nothing
/// at all where anything is refused: a text that is not understood; an image without the block, or with two of them; a
/// block that has not the size of its class; one whose checksum does not hold, unless `force` is set. Where
/// std::bad_alloc is thrown, the image is what it was.
TRAVIK_SERVICE_EXPORT TableImport importTable(std::vector<char>& image, std::string_view text,
                                              const ExchangeFormat& format, bool force = false);

} // namespace Travik
