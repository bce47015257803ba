#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <travik/datablock/Export.h>

/// \file
/// Not installed: lets the tests and the benchmarks reach every way crc32() may take, not only the one of this machine.

namespace Travik::detail {

/// One way to compute what Travik::crc32() computes; `run` takes its arguments.
struct Crc32Kernel {
    const char* name;
    std::uint32_t (*run)(const void* bytes, std::size_t byteCount, std::uint32_t crc) noexcept;
};

/// The kernels this processor can run, never empty, the fastest (the one crc32() takes) first.
TRAVIK_DATABLOCK_EXPORT std::span<const Crc32Kernel> crc32Kernels() noexcept;

} // namespace Travik::detail
