#pragma once

#include <travik/datablock/HwDatablock.h>

namespace Travik {

/// Converts the block, taken to be `id`, into the format, as the class does that the catalogue names for it. False, and
/// the block untouched, for an identifier that is not converted. A table whose checksum is wrong keeps its bytes (error
/// 1040001 is signalled), takes the format and counts as converted.
TRAVIK_DATABLOCK_EXPORT bool convertBlock(HwEDataFormatTyp format, int id, HwDatablock& block);

} // namespace Travik
