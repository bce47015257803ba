#pragma once

#include <travik/datablock/Bytes.h>
#include <travik/service/ImageDiff.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace Travik::diff {

/// What nobody has told yet of two runs of bytes, as a mask of bits.
class UntoldBytes {
public:
    UntoldBytes(std::span<const char> before, std::span<const char> after)
        : before_(before), after_(after), bits_(std::max(before.size(), after.size()), 0xFF) {
        const std::size_t common = std::min(before.size(), after.size());
        for (std::size_t i = 0; i < common; ++i)
            bits_[i] = static_cast<unsigned char>(before[i] ^ after[i]);
    }

    bool isTold(std::size_t offset, std::size_t length) const {
        const std::span<const unsigned char> bits = part(offset, length);
        if (bits.size() == 1)
            return bits.front() == 0;
        if (bits.size() == sizeof(std::uint16_t) || bits.size() == sizeof(std::uint32_t)) { // nearly all
            std::uint32_t word = 0;
            std::memcpy(&word, bits.data(), bits.size() == sizeof word ? sizeof word : sizeof(std::uint16_t));
            return word == 0;
        }
        return std::ranges::all_of(bits, [](unsigned char byte) { return byte == 0; });
    }
    bool has(std::size_t offset, std::size_t length, std::uint32_t bits) const {
        const auto bytes = part(offset, length);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if ((bytes[i] & (bits >> (8 * i))) != 0)
                return true;
        }
        return false;
    }
    void tell(std::size_t offset, std::size_t length) { std::ranges::fill(part(offset, length), 0); }
    void tell(std::size_t offset, std::size_t length, std::uint32_t bits) {
        const auto bytes = part(offset, length);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] &= static_cast<unsigned char>(~(bits >> (8 * i)));
    }

    /// Not told after all: as it was.
    void untell(std::size_t offset, std::size_t length) {
        std::ranges::transform(bytes::part(before_, offset, length), bytes::part(after_, offset, length),
                               part(offset, length).begin(),
                               [](char one, char other) { return static_cast<unsigned char>(one ^ other); });
    }

    /// Bytes that are left, each run as one.
    void appendTo(std::vector<BytesDiff>& list) const {
        for (std::size_t i = 0; i < bits_.size();) {
            const auto begin = std::find_if(at(i), bits_.end(), [](unsigned char bits) { return bits != 0; });
            const auto end = std::find(begin, bits_.end(), 0);
            const auto offset = static_cast<std::size_t>(begin - bits_.begin());
            const auto length = static_cast<std::size_t>(end - begin);
            i = offset + length;
            if (length > 0)
                list.push_back({offset, bytes::part(before_, offset, length), bytes::part(after_, offset, length)});
        }
    }

private:
    std::span<const char> before_;
    std::span<const char> after_;
    std::vector<unsigned char> bits_;

    std::vector<unsigned char>::const_iterator at(std::size_t i) const {
        return bits_.begin() + static_cast<std::ptrdiff_t>(i);
    }
    std::span<const unsigned char> part(std::size_t offset, std::size_t length) const {
        const std::size_t begin = std::min(offset, bits_.size());
        return std::span(bits_).subspan(begin, std::min(length, bits_.size() - begin));
    }
    std::span<unsigned char> part(std::size_t offset, std::size_t length) {
        const std::size_t begin = std::min(offset, bits_.size());
        return std::span(bits_).subspan(begin, std::min(length, bits_.size() - begin));
    }
};

} // namespace Travik::diff
