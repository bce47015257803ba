#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/Export.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How a person names one block of an image, and what is to be known of a block before it is touched.
namespace Travik {

/// KEY or KEY@OFFSET: the key name or the identifier of a block, and of several blocks called so the one at this offset
/// (decimal, or hexadecimal with 0x). KEY may be a glob where that is said.
struct BlockAddress {
    std::string text; ///< the whole
    std::string key;
    std::optional<std::size_t> offset;
    std::string error; ///< why it names no block; empty where it does
};
TRAVIK_SERVICE_EXPORT BlockAddress parseBlockAddress(std::string_view text);

/// What a block is called in messages: its key in UTF-8; its identifier where it has none.
TRAVIK_SERVICE_EXPORT std::string nameOf(const ImageBlock& block);

/// "block 15716 at offset 12, block 15717 at offset 300", not all of very many.
TRAVIK_SERVICE_EXPORT std::string placesOf(std::span<const ImageBlock* const> blocks);

/// Whether the block's end is beyond doubt: its size is one of its class, or the sums are those of these bytes.
TRAVIK_SERVICE_EXPORT bool isPlaced(const ImageBlock& block);

/// Whether its sums hold.
TRAVIK_SERVICE_EXPORT bool isSealed(const ImageBlock& block);

} // namespace Travik
