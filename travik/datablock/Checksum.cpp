#include <travik/datablock/Checksum.h>
#include <travik/datablock/ChecksumKernels.h>

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

// Words are loaded as they lie in memory: the host is little-endian.

namespace Travik {

namespace {

template <typename T>
T load(const unsigned char* from) noexcept {
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

// A polynomial modulo P is held reflected: bit 31 is the coefficient of x^0, bit 0 that of x^31.
constexpr std::uint32_t reflectedP = 0xEDB88320;

constexpr std::uint32_t timesX(std::uint32_t v) { return (v >> 1) ^ ((v & 1) != 0 ? reflectedP : 0); }

// Row 0 is the usual table of a CRC taken byte by byte; row k advances a byte over k more zero bytes.
using SliceTables = std::array<std::array<std::uint32_t, 256>, 16>;

constexpr SliceTables makeSliceTables() {
    SliceTables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t v = byte;
        for (int bit = 0; bit < 8; ++bit)
            v = timesX(v);
        tables[0][byte] = v;
    }
    for (std::size_t row = 1; row < tables.size(); ++row)
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t v = tables[row - 1][byte];
            tables[row][byte] = (v >> 8) ^ tables[0][v & 0xFF];
        }
    return tables;
}

constexpr SliceTables slices = makeSliceTables();

// Four bytes of a step, `row` being the row of the last of them.
inline std::uint32_t sliceFour(std::uint32_t v, std::size_t row) noexcept {
    return slices[row + 3][v & 0xFF] ^ slices[row + 2][(v >> 8) & 0xFF] ^ slices[row + 1][(v >> 16) & 0xFF] ^
           slices[row][v >> 24];
}

std::uint32_t crc32Sliced(const void* bytes, std::size_t byteCount, std::uint32_t crc) noexcept {
    const auto* p = static_cast<const unsigned char*>(bytes);
    crc = ~crc;
    for (; byteCount >= 16; p += 16, byteCount -= 16) {
        // Only the first four bytes wait for the step before.
        const std::uint32_t ahead = sliceFour(load<std::uint32_t>(p + 4), 8) ^
                                    sliceFour(load<std::uint32_t>(p + 8), 4) ^
                                    sliceFour(load<std::uint32_t>(p + 12), 0);
        crc = sliceFour(load<std::uint32_t>(p) ^ crc, 12) ^ ahead;
    }
    for (; byteCount > 0; ++p, --byteCount)
        crc = (crc >> 8) ^ slices[0][(crc ^ *p) & 0xFF];
    return ~crc;
}

#if defined(__x86_64__)

constexpr std::uint32_t xPower(unsigned n) {
    std::uint32_t v = 0x80000000;
    while (n-- > 0)
        v = timesX(v);
    return v;
}

// Below, polynomials lie reflected in quadwords, bit 63 being x^0, unless said otherwise. The product of two of them
// comes out with bit 126 as x^0: read as 128 bits it has one factor x too many, hence the powers one less than
// expected.

// Folding moves the 128 bits in hand `bits` further along the message, modulo P. The low quadword comes first in the
// message, so it stands for the higher powers and has 64 more to move.
struct FoldBy {
    std::uint64_t low;
    std::uint64_t high;
};

constexpr FoldBy foldBy(unsigned bits) {
    return {std::uint64_t{xPower(bits + 64 - 1)} << 32, std::uint64_t{xPower(bits - 1)} << 32};
}

constexpr FoldBy by512 = foldBy(512), by256 = foldBy(256), by128 = foldBy(128);

// x^95 / P without the remainder, of degree 63: each step of the division yields the next lower coefficient.
constexpr std::uint64_t quotientOfX95() {
    std::uint64_t quotient = 0;
    for (unsigned i = 0; i < 64; ++i)
        quotient |= std::uint64_t{xPower(31 + i) & 1} << i;
    return quotient;
}

// 128 bits L * x^64 + H are to become M = L * x^96 + H * x^32 modulo P. `toM` takes L to 32 bits below the usual place,
// where M's upper 64 coefficients fill a quadword. From them Barrett's reduction gets M / P, and by the product with P
// M's remainder: with bit 32 as P's x^0, bits 64 to 95 are the coefficients below x^32.
constexpr struct {
    std::uint64_t toM = xPower(96 - 1);
    std::uint64_t quotient = quotientOfX95();
    std::uint64_t p = (std::uint64_t{reflectedP} << 1) | 1;
} barrett;

inline __m128i inRegister(std::uint64_t low, std::uint64_t high) noexcept {
    return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

inline __m128i inRegister(FoldBy by) noexcept { return inRegister(by.low, by.high); }

[[gnu::target("pclmul"), gnu::always_inline]] inline __m128i fold(__m128i v, __m128i by, __m128i next) noexcept {
    return _mm_xor_si128(next, _mm_xor_si128(_mm_clmulepi64_si128(v, by, 0x00), _mm_clmulepi64_si128(v, by, 0x11)));
}

[[gnu::target("pclmul"), gnu::always_inline]] inline std::uint32_t reduce(__m128i v) noexcept {
    const __m128i toM = inRegister(barrett.toM, 0), divide = inRegister(barrett.quotient, barrett.p);
    const __m128i m = _mm_xor_si128(_mm_srli_si128(v, 8), _mm_clmulepi64_si128(v, toM, 0x00));
    const __m128i quotient = _mm_clmulepi64_si128(m, divide, 0x00);
    const __m128i remainder = _mm_xor_si128(m, _mm_clmulepi64_si128(quotient, divide, 0x10));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(remainder, 8)));
}

[[gnu::target("pclmul")]] std::uint32_t crc32Folded(const void* bytes, std::size_t byteCount,
                                                    std::uint32_t crc) noexcept {
    if (byteCount < 16)
        return crc32Sliced(bytes, byteCount, crc);

    const auto* p = static_cast<const unsigned char*>(bytes);
    const auto* const end = p + byteCount;
    const __m128i one = inRegister(by128);
    __m128i v = _mm_xor_si128(load<__m128i>(p), _mm_cvtsi32_si128(static_cast<int>(~crc)));
    p += 16;

    if (byteCount >= 64) {
        // Four independent chains keep the multiplier busy; its latency would rule otherwise.
        const __m128i four = inRegister(by512);
        __m128i v1 = load<__m128i>(p), v2 = load<__m128i>(p + 16), v3 = load<__m128i>(p + 32);
        for (p += 48; end - p >= 64; p += 64) {
            v = fold(v, four, load<__m128i>(p));
            v1 = fold(v1, four, load<__m128i>(p + 16));
            v2 = fold(v2, four, load<__m128i>(p + 32));
            v3 = fold(v3, four, load<__m128i>(p + 48));
        }
        const __m128i two = inRegister(by256);
        v = fold(fold(v, two, v2), one, fold(v1, two, v3));
    }
    for (; end - p >= 16; p += 16)
        v = fold(v, one, load<__m128i>(p));

    if (const auto rest = static_cast<std::size_t>(end - p); rest > 0) {
        // Zero bytes ahead of the message leave its remainder as it is, so the 16 + rest bytes are padded to 32 in
        // front. The last 16 bytes of the message bring the rest; v goes over those of them that are folded in already.
        alignas(16) unsigned char last[32] = {};
        std::memcpy(last + 16, end - 16, 16);
        std::memcpy(last + 16 - rest, &v, 16);
        v = fold(load<__m128i>(last), one, load<__m128i>(last + 16));
    }
    return ~reduce(v);
}

#endif

constexpr detail::Crc32Kernel kernels[] = {
#if defined(__x86_64__)
    {"folded", crc32Folded},
#endif
    {"sliced", crc32Sliced},
};

} // namespace

std::span<const detail::Crc32Kernel> detail::crc32Kernels() noexcept {
#if defined(__x86_64__)
    __builtin_cpu_init(); // may be called before the constructors that do it have run
    if (!__builtin_cpu_supports("pclmul"))
        return std::span(kernels).subspan(1);
#endif
    return kernels;
}

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
    static const auto run = detail::crc32Kernels().front().run;
    return run(bytes, byteCount, crc);
}

std::uint32_t blockCrc32(const void* bytes, std::size_t byteCount) noexcept {
    constexpr std::size_t leftOutBegin = 4, leftOutEnd = 12;

    const std::uint32_t crc = crc32(bytes, byteCount < leftOutBegin ? byteCount : leftOutBegin);
    if (byteCount <= leftOutEnd)
        return crc;
    return crc32(static_cast<const unsigned char*>(bytes) + leftOutEnd, byteCount - leftOutEnd, crc);
}

} // namespace Travik
