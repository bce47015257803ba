#include <travik/datablock/Checksum.h>
#include <travik/datablock/ChecksumKernels.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

namespace ChecksumTest {

using Bytes = std::vector<unsigned char>;

Bytes randomBytes(std::size_t count) {
    std::mt19937 random(20);
    Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
    return bytes;
}

// The definitions, bit by bit and byte by byte.
std::uint32_t crc32ByBit(const unsigned char* bytes, std::size_t count, std::uint32_t crc = 0) {
    crc = ~crc;
    for (std::size_t i = 0; i < count; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xEDB88320u : crc >> 1;
    }
    return ~crc;
}

unsigned sum16ByByte(const unsigned char* bytes, std::size_t count) {
    unsigned sum = 0;
    for (std::size_t i = 0; i + 1 < count; i += 2)
        sum = (sum + bytes[i] + 256u * bytes[i + 1]) % 65536;
    return sum;
}

// Calls `check(bytes, count)` for every length to 600 at every place relative to a 16-byte boundary, and for large
// images, each the very end of a heap block of its own, where the sanitizer sees a byte read too many.
template <typename Check>
void forLengthsAndAlignments(Check check) {
    std::vector<std::size_t> lengths{2048, 32768 + 5, 60015, 60016};
    for (std::size_t length = 0; length <= 600; ++length)
        lengths.push_back(length);
    const Bytes source = randomBytes(60016);
    for (const std::size_t length : lengths)
        for (std::size_t offset = 0; offset < 16; ++offset) {
            const auto block = std::make_unique<unsigned char[]>(offset + length);
            std::copy_n(source.begin(), length, block.get() + offset);
            check(block.get() + offset, length);
            if (::testing::Test::HasFailure())
                return;
        }
}

TEST(Sum16, AddsLittleEndianWords) {
    const unsigned char image[] = {0x34, 0x12, 0x08, 0x00, 0xC4, 0xED, 0x00, 0x00, 0xFF};
    EXPECT_EQ(Travik::sum16(image, 2), 0x1234);
    EXPECT_EQ(Travik::sum16(image, 4), 0x123C);
    EXPECT_EQ(Travik::sum16(image, 8), 0); // the checksum word in place
    EXPECT_EQ(Travik::sum16(image, 9), 0);
    EXPECT_EQ(Travik::sum16(image, 1), 0);
    EXPECT_EQ(Travik::sum16(nullptr, 0), 0);

    forLengthsAndAlignments([](const unsigned char* bytes, std::size_t count) {
        ASSERT_EQ(Travik::sum16(bytes, count), sum16ByByte(bytes, count)) << count << " bytes";
    });
    const Bytes ones(60016, 0xFF); // every lane wraps
    EXPECT_EQ(Travik::sum16(ones.data(), ones.size()), (65536u - 60016u / 2) % 65536);
}

TEST(Crc32, KnownVectors) {
    const struct {
        std::string_view bytes;
        std::uint32_t crc;
    } vectors[] = {
        {"", 0},
        {"a", 0xE8B7BE43},
        {"1234", 0x9BE3E0A3},
        {"123456789", 0xCBF43926},
        {"The quick brown fox jumps over the lazy dog", 0x414FA339},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890", 0x7CA94A72},
    };
    for (const auto& [bytes, crc] : vectors) {
        EXPECT_EQ(Travik::crc32(bytes.data(), bytes.size()), crc) << bytes;
        for (const auto& kernel : Travik::detail::crc32Kernels())
            EXPECT_EQ(kernel.run(bytes.data(), bytes.size(), 0), crc) << kernel.name << ' ' << bytes;
    }
    EXPECT_EQ(Travik::crc32(nullptr, 0, 0x9BE3E0A3), 0x9BE3E0A3);
}

TEST(Crc32, EveryKernelAgreesWithTheDefinition) {
    forLengthsAndAlignments([](const unsigned char* bytes, std::size_t count) {
        const std::uint32_t expected = crc32ByBit(bytes, count), chained = crc32ByBit(bytes, count, 0x89ABCDEF);
        for (const auto& kernel : Travik::detail::crc32Kernels()) {
            ASSERT_EQ(kernel.run(bytes, count, 0), expected) << kernel.name << ", " << count << " bytes";
            ASSERT_EQ(kernel.run(bytes, count, 0x89ABCDEF), chained) << kernel.name << ", " << count << " bytes";
        }
    });
}

TEST(Crc32, ChainsAtEverySplit) {
    const Bytes bytes = randomBytes(300);
    const std::uint32_t whole = crc32ByBit(bytes.data(), bytes.size());
    for (const auto& kernel : Travik::detail::crc32Kernels())
        for (std::size_t split = 0; split <= bytes.size(); ++split) {
            const std::uint32_t before = kernel.run(bytes.data(), split, 0);
            EXPECT_EQ(kernel.run(bytes.data() + split, bytes.size() - split, before), whole) << kernel.name << split;
        }
}

TEST(BlockCrc32, LeavesOutChecksumAlignmentAndItself) {
    EXPECT_EQ(Travik::blockCrc32(nullptr, 0), 0u);
    EXPECT_EQ(Travik::blockCrc32("1", 1), 0x83DCEFB7u);
    EXPECT_EQ(Travik::blockCrc32("1234", 4), 0x9BE3E0A3u);
    EXPECT_EQ(Travik::blockCrc32("123456789", 9), 0x9BE3E0A3u);
    EXPECT_EQ(Travik::blockCrc32("1234--------", 12), 0x9BE3E0A3u);
    EXPECT_EQ(Travik::blockCrc32("1234--------5", 13), 0xCBF53A1Cu);
    EXPECT_EQ(Travik::blockCrc32("1234--------56789", 17), 0xCBF43926u);

    forLengthsAndAlignments([](const unsigned char* bytes, std::size_t count) {
        Bytes covered(bytes, bytes + std::min<std::size_t>(count, 4));
        if (count > 12)
            covered.insert(covered.end(), bytes + 12, bytes + count);
        ASSERT_EQ(Travik::blockCrc32(bytes, count), crc32ByBit(covered.data(), covered.size())) << count << " bytes";
    });
}

} // namespace ChecksumTest
