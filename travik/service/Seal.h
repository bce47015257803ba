#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/Export.h>

#include <span>

namespace Travik {

/// Which sums a block carries beside its 16-bit checksum.
enum class Crc32 : unsigned char {
    None,
    Carried,      ///< in its first data word
    SecondEdition ///< the same; where the packed layout has the update index in it, that is kept if it can be
};

/// Makes the sums of a block's bytes right: the CRC-32 it carries, then the 16-bit checksum, which covers it. The
/// checksum is that of the block's class: of 32768 bytes and more none is taken, and the word is 0. Bytes that are too
/// few for a header, and end blocks, stay as they are.
///
/// The update index of a packed table is the upper half of its CRC-32. Where two bytes at least follow the values, the
/// last two are chosen so that it stays; elsewhere the CRC-32 decides.
TRAVIK_SERVICE_EXPORT void sealBlock(std::span<char> block, Crc32 crc32);

/// Makes the sums of a block's changed bytes right, those that the block had before. A word that nobody checks stays.
TRAVIK_SERVICE_EXPORT void sealAgain(std::span<char> bytes, const ImageBlock& before);

} // namespace Travik
