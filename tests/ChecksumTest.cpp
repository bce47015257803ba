#include <travik/datablock/Checksum.h>
#include <travik/datablock/ChecksumKernels.h>

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <random>
#include <string>
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

// Memory between two pages that nobody may read: what a test lays at an end of it faults when a byte too many is read,
// also by vector code that a sanitizer does not see through.
class GuardedBytes {
public:
    static constexpr std::size_t size = 65536;

    GuardedBytes() {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        mappedSize_ = size + 2 * page;
        mapped_ = ::mmap(nullptr, mappedSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        bytes_ = static_cast<unsigned char*>(mapped_) + page;
        if (mapped_ == MAP_FAILED || ::mprotect(bytes_, size, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
    }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;
    ~GuardedBytes() { ::munmap(mapped_, mappedSize_); }

    unsigned char* begin() const { return bytes_; }
    unsigned char* end() const { return bytes_ + size; }

private:
    std::size_t mappedSize_ = 0;
    void* mapped_ = nullptr;
    unsigned char* bytes_ = nullptr;
};

// Every length to 600, those of several steps of the widest loop, and large images.
std::vector<std::size_t> lengths() {
    std::vector<std::size_t> all{2048, 32768 + 5, 60015, 60016};
    for (std::size_t length = 0; length <= 1300; length += length < 600 ? 1 : 13)
        all.push_back(length);
    return all;
}

// Calls `check(bytes, count, expected)` for every length at every place relative to a 64-byte boundary, at both ends of
// what may be read; `expected` is `define(bytes, count)`, which is taken to be slow.
template <typename Define, typename Check>
void forLengthsAndAlignments(Define define, Check check) {
    const Bytes source = randomBytes(60016);
    const GuardedBytes memory;
    for (const std::size_t length : lengths()) {
        const auto expected = define(source.data(), length);
        for (std::size_t offset = 0; offset < 64; ++offset)
            for (unsigned char* const bytes : {memory.begin() + offset, memory.end() - offset - length}) {
                std::copy_n(source.begin(), length, bytes);
                check(bytes, length, expected);
                if (::testing::Test::HasFailure())
                    return;
            }
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

    forLengthsAndAlignments(sum16ByByte, [](const unsigned char* bytes, std::size_t count, unsigned expected) {
        ASSERT_EQ(Travik::sum16(bytes, count), expected) << count << " bytes";
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
    for (const auto& [bytes, crc] : vectors)
        EXPECT_EQ(Travik::crc32(bytes.data(), bytes.size()), crc) << bytes;
    EXPECT_EQ(Travik::crc32(nullptr, 0, 0x9BE3E0A3), 0x9BE3E0A3);
}

class Crc32Kernel : public ::testing::TestWithParam<Travik::detail::Crc32Kernel> {
protected:
    void SetUp() override {
        if (!GetParam().isSupported())
            GTEST_SKIP() << "this processor cannot run the kernel " << GetParam().name;
    }
};

INSTANTIATE_TEST_SUITE_P(All, Crc32Kernel, ::testing::ValuesIn(Travik::detail::crc32Kernels()), [](const auto& kernel) {
    std::string name = kernel.param.name;
    std::ranges::replace(name, ' ', '_');
    return name;
});

TEST_P(Crc32Kernel, AgreesWithTheDefinition) {
    for (const std::uint32_t before : {0u, 0x89ABCDEFu})
        forLengthsAndAlignments(
            [=](const unsigned char* bytes, std::size_t count) { return crc32ByBit(bytes, count, before); },
            [=](const unsigned char* bytes, std::size_t count, std::uint32_t expected) {
                ASSERT_EQ(GetParam().run(bytes, count, before), expected) << count << " bytes";
            });
}

TEST_P(Crc32Kernel, ChainsAtEverySplit) {
    const Bytes bytes = randomBytes(600);
    const std::uint32_t whole = crc32ByBit(bytes.data(), bytes.size());
    for (std::size_t split = 0; split <= bytes.size(); ++split) {
        const std::uint32_t before = GetParam().run(bytes.data(), split, 0);
        EXPECT_EQ(GetParam().run(bytes.data() + split, bytes.size() - split, before), whole) << split;
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

    const auto define = [](const unsigned char* bytes, std::size_t count) {
        Bytes covered(bytes, bytes + std::min<std::size_t>(count, 4));
        if (count > 12)
            covered.insert(covered.end(), bytes + 12, bytes + count);
        return crc32ByBit(covered.data(), covered.size());
    };
    forLengthsAndAlignments(define, [](const unsigned char* bytes, std::size_t count, std::uint32_t expected) {
        ASSERT_EQ(Travik::blockCrc32(bytes, count), expected) << count << " bytes";
    });
}

} // namespace ChecksumTest
