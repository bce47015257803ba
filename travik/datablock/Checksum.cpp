#include <travik/datablock/Checksum.h>
#include <travik/datablock/ChecksumKernels.h>

#include <algorithm>
#include <atomic>

namespace Travik {

namespace {

using detail::load;

// The kernel that crc32() takes, found by its first call: several threads may do so at once, and find the same.
std::uint32_t crc32First(const void* bytes, std::size_t byteCount, std::uint32_t crc) noexcept;

constinit std::atomic crc32Run{&crc32First};

std::uint32_t crc32First(const void* bytes, std::size_t byteCount, std::uint32_t crc) noexcept {
    const auto fastest =
        std::ranges::find_if(detail::crc32Kernels(), [](const auto& kernel) { return kernel.isSupported(); });
    crc32Run.store(fastest->run, std::memory_order_relaxed);
    return fastest->run(bytes, byteCount, crc);
}

} // namespace

unsigned short sum16(const void* bytes, std::size_t byteCount) noexcept {
    using Words [[gnu::vector_size(16)]] = std::uint16_t; // one register of any processor worth vectorising for

    const auto* p = static_cast<const unsigned char*>(bytes);
    Words sum{}, sum1{}, sum2{}, sum3{};
    for (; byteCount >= 64; p += 64, byteCount -= 64) {
        sum += load<Words>(p);
        sum1 += load<Words>(p + 16);
        sum2 += load<Words>(p + 32);
        sum3 += load<Words>(p + 48);
    }
    sum += sum1 + sum2 + sum3;
    for (; byteCount >= 16; p += 16, byteCount -= 16)
        sum += load<Words>(p);

    std::uint32_t total = 0;
    for (std::size_t i = 0; i < sizeof sum / sizeof sum[0]; ++i)
        total += sum[i];
    for (; byteCount >= 2; p += 2, byteCount -= 2)
        total += load<std::uint16_t>(p);
    return static_cast<unsigned short>(total);
}

std::uint32_t crc32(const void* bytes, std::size_t byteCount, std::uint32_t crc) noexcept {
    return crc32Run.load(std::memory_order_relaxed)(bytes, byteCount, crc);
}

std::uint32_t blockCrc32(const void* image, std::size_t byteCount) noexcept {
    constexpr std::size_t leftOutBegin = 4, leftOutEnd = 12;

    const std::uint32_t crc = crc32(image, byteCount < leftOutBegin ? byteCount : leftOutBegin);
    if (byteCount <= leftOutEnd)
        return crc;
    return crc32(static_cast<const unsigned char*>(image) + leftOutEnd, byteCount - leftOutEnd, crc);
}

} // namespace Travik
