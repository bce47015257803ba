#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include <travik/datablock/Export.h>

/// \file
/// Not installed: lets the tests and the benchmarks reach every way crc32() may take, not only the one of this machine.

namespace Travik::detail {

/// One way to compute what Travik::crc32() computes; `run` takes its arguments.
struct Crc32Kernel {
    const char* name;
    std::uint32_t (*run)(const void* bytes, std::size_t byteCount, std::uint32_t crc) noexcept;
    bool (*isSupported)() noexcept; ///< Whether this processor and its system have what it needs.
};

/// Every kernel, the fastest first, the last without needs. crc32() takes the first that is supported.
TRAVIK_DATABLOCK_EXPORT std::span<const Crc32Kernel> crc32Kernels() noexcept;

/// A word as it lies in memory: the host is little-endian.
template <typename T>
T load(const unsigned char* from) noexcept {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

} // namespace Travik::detail
