#pragma once

#include <cstddef>
#include <cstdint>

#include <travik/datablock/Export.h>

/// \file
/// The sums a block image is protected by, over plain bytes. None of these functions reads outside the given bytes,
/// needs any alignment or changes what it reads; `bytes` may be null when `byteCount` is 0. All are safe to call from
/// several threads at once.

namespace Travik {

/// Sum modulo 65536 of the `byteCount` / 2 little-endian 16-bit words at `bytes`; an odd last byte is left out. An
/// image whose checksum word is right sums to 0.
TRAVIK_DATABLOCK_EXPORT unsigned short sum16(const void* bytes, std::size_t byteCount) noexcept;

/// CRC-32 of the ISO-HDLC (IEEE 802.3) kind: reflected polynomial 0xEDB88320, initial value and final XOR 0xFFFFFFFF.
/// `crc` is the CRC-32 of the bytes that come before, 0 to begin, so that crc32(b, nb, crc32(a, na)) is the CRC-32 of a
/// followed by b. The CRC-32 of no bytes is `crc`.
TRAVIK_DATABLOCK_EXPORT std::uint32_t crc32(const void* bytes, std::size_t byteCount, std::uint32_t crc = 0) noexcept;

/// CRC-32 of a block image of `byteCount` bytes as stored in its first data word. Offsets 4 to 11 (checksum, alignment
/// word and the CRC-32 itself) are left out, so an image shorter than 13 bytes has the CRC-32 of its first four, or
/// fewer, bytes. 0 for no bytes.
TRAVIK_DATABLOCK_EXPORT std::uint32_t blockCrc32(const void* image, std::size_t byteCount) noexcept;

} // namespace Travik
