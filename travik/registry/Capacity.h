#pragma once

#include <travik/datablock/Fields.h>

#include <optional>
#include <span>

namespace Travik {

/// What a count field of a block may say at most: the fewest entries of the dimensions that it counts, as far as they
/// lie in the block. None for a field that counts nothing.
TRAVIK_DATABLOCK_EXPORT std::optional<unsigned int> capacityOf(std::span<const char> block,
                                                               std::span<const Field> fields, const Field& count);

} // namespace Travik
