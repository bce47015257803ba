#include <travik/datablock/ChecksumKernels.h>

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace Travik {

namespace {

using detail::load;

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
    for (; byteCount >= 4; p += 4, byteCount -= 4)
        crc = sliceFour(load<std::uint32_t>(p) ^ crc, 0);
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

constexpr FoldBy by2048 = foldBy(2048), by1024 = foldBy(1024), by512 = foldBy(512), by256 = foldBy(256),
                 by128 = foldBy(128);

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

// What is left of the message once its bytes before `p` are in v: at least 16 bytes lie before `end`.
[[gnu::target("pclmul"), gnu::always_inline]] inline std::uint32_t finish(__m128i v, const unsigned char* p,
                                                                          const unsigned char* end) noexcept {
    const __m128i one = inRegister(by128);
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

inline __m128i begin(std::uint32_t crc) noexcept { return _mm_cvtsi32_si128(static_cast<int>(~crc)); }

[[gnu::target("pclmul")]] std::uint32_t crc32Folded128(const void* bytes, std::size_t byteCount,
                                                       std::uint32_t crc) noexcept {
    if (byteCount < 16)
        return crc32Sliced(bytes, byteCount, crc);

    const auto* p = static_cast<const unsigned char*>(bytes);
    const auto* const end = p + byteCount;
    __m128i v = _mm_xor_si128(load<__m128i>(p), begin(crc));
    p += 16;

    if (byteCount >= 64) {
        // Four independent chains keep the multiplier busy; its latency would rule otherwise.
        const __m128i four = inRegister(by512), two = inRegister(by256), one = inRegister(by128);
        __m128i v1 = load<__m128i>(p), v2 = load<__m128i>(p + 16), v3 = load<__m128i>(p + 32);
        for (p += 48; end - p >= 64; p += 64) {
            v = fold(v, four, load<__m128i>(p));
            v1 = fold(v1, four, load<__m128i>(p + 16));
            v2 = fold(v2, four, load<__m128i>(p + 32));
            v3 = fold(v3, four, load<__m128i>(p + 48));
        }
        v = fold(fold(v, two, v2), one, fold(v1, two, v3));
    }
    return finish(v, p, end);
}

// A wide register holds two or four times 128 bits of the message, each folded by itself: the multiplier takes as long
// for all of them as for one. Below `worthWidth` bytes, bringing them together again costs what they save.
constexpr std::size_t worthWidth = 256;

#define TRAVIK_TARGET_256 gnu::target("avx2,pclmul,vpclmulqdq")
#define TRAVIK_TARGET_512 gnu::target("avx2,avx512f,pclmul,vpclmulqdq")

[[TRAVIK_TARGET_256, gnu::always_inline]] inline __m256i load256(const unsigned char* from) noexcept {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(from));
}

[[TRAVIK_TARGET_256, gnu::always_inline]] inline __m256i twice(FoldBy by) noexcept {
    const auto low = static_cast<long long>(by.low), high = static_cast<long long>(by.high);
    return _mm256_set_epi64x(high, low, high, low);
}

[[TRAVIK_TARGET_256, gnu::always_inline]] inline __m256i fold(__m256i v, __m256i by, __m256i next) noexcept {
    return _mm256_xor_si256(
        next, _mm256_xor_si256(_mm256_clmulepi64_epi128(v, by, 0x00), _mm256_clmulepi64_epi128(v, by, 0x11)));
}

[[TRAVIK_TARGET_256, gnu::always_inline]] inline __m128i narrow(__m256i v) noexcept {
    return fold(_mm256_castsi256_si128(v), inRegister(by128), _mm256_extracti128_si256(v, 1));
}

[[TRAVIK_TARGET_256]] std::uint32_t crc32Folded256(const void* bytes, std::size_t byteCount,
                                                   std::uint32_t crc) noexcept {
    if (byteCount < worthWidth)
        return crc32Folded128(bytes, byteCount, crc);

    const auto* p = static_cast<const unsigned char*>(bytes);
    const auto* const end = p + byteCount;
    const __m256i four = twice(by1024);
    const __m256i two = twice(by512);
    const __m256i one = twice(by256);
    __m256i v = _mm256_xor_si256(load256(p), _mm256_zextsi128_si256(begin(crc)));
    __m256i v1 = load256(p + 32), v2 = load256(p + 64), v3 = load256(p + 96);
    for (p += 128; end - p >= 128; p += 128) {
        v = fold(v, four, load256(p));
        v1 = fold(v1, four, load256(p + 32));
        v2 = fold(v2, four, load256(p + 64));
        v3 = fold(v3, four, load256(p + 96));
    }
    v = fold(fold(v, two, v2), one, fold(v1, two, v3));
    for (; end - p >= 32; p += 32)
        v = fold(v, one, load256(p));
    return finish(narrow(v), p, end);
}

[[TRAVIK_TARGET_512, gnu::always_inline]] inline __m512i fourTimes(FoldBy by) noexcept {
    const auto low = static_cast<long long>(by.low), high = static_cast<long long>(by.high);
    return _mm512_set4_epi64(high, low, high, low);
}

[[TRAVIK_TARGET_512, gnu::always_inline]] inline __m512i fold(__m512i v, __m512i by, __m512i next) noexcept {
    constexpr int xorOfThree = 0x96; // its truth table
    return _mm512_ternarylogic_epi64(next, _mm512_clmulepi64_epi128(v, by, 0x00), _mm512_clmulepi64_epi128(v, by, 0x11),
                                     xorOfThree);
}

[[TRAVIK_TARGET_512, gnu::always_inline]] inline __m128i narrow(__m512i v) noexcept {
    const __m256i first = __builtin_shufflevector(v, v, 0, 1, 2, 3), second = __builtin_shufflevector(v, v, 4, 5, 6, 7);
    return narrow(fold(first, twice(by256), second));
}

[[TRAVIK_TARGET_512]] std::uint32_t crc32Folded512(const void* bytes, std::size_t byteCount,
                                                   std::uint32_t crc) noexcept {
    if (byteCount < worthWidth)
        return crc32Folded128(bytes, byteCount, crc);

    const auto* p = static_cast<const unsigned char*>(bytes);
    const auto* const end = p + byteCount;
    const __m512i four = fourTimes(by2048);
    const __m512i two = fourTimes(by1024);
    const __m512i one = fourTimes(by512);
    __m512i v = _mm512_xor_si512(_mm512_loadu_si512(p), _mm512_zextsi128_si512(begin(crc)));
    __m512i v1 = _mm512_loadu_si512(p + 64), v2 = _mm512_loadu_si512(p + 128), v3 = _mm512_loadu_si512(p + 192);
    for (p += 256; end - p >= 256; p += 256) {
        v = fold(v, four, _mm512_loadu_si512(p));
        v1 = fold(v1, four, _mm512_loadu_si512(p + 64));
        v2 = fold(v2, four, _mm512_loadu_si512(p + 128));
        v3 = fold(v3, four, _mm512_loadu_si512(p + 192));
    }
    v = fold(fold(v, two, v2), one, fold(v1, two, v3));
    for (; end - p >= 64; p += 64)
        v = fold(v, one, _mm512_loadu_si512(p));
    return finish(narrow(v), p, end);
}

// What the processor has and the system saves. May be asked before the constructors that prepare the answer have run.
bool has128() noexcept {
    __builtin_cpu_init();
    return __builtin_cpu_supports("pclmul") != 0;
}

bool has256() noexcept {
    return has128() && __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("vpclmulqdq") != 0;
}

bool has512() noexcept { return has256() && __builtin_cpu_supports("avx512f") != 0; }

#endif

constexpr detail::Crc32Kernel kernels[] = {
#if defined(__x86_64__)
    {"folded by 512 bits", crc32Folded512, has512},
    {"folded by 256 bits", crc32Folded256, has256},
    {"folded by 128 bits", crc32Folded128, has128},
#endif
    {"sliced", crc32Sliced, []() noexcept { return true; }},
};

} // namespace

std::span<const detail::Crc32Kernel> detail::crc32Kernels() noexcept { return kernels; }

} // namespace Travik
