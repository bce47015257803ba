#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>

namespace Fuzz {

/// Bytes that become values, front to back; zeros when there are none left.
class Input {
public:
    explicit Input(std::span<const char> bytes) : bytes_(bytes) {}

    bool isEmpty() const { return bytes_.empty(); }

    unsigned int byte() {
        if (bytes_.empty())
            return 0;
        const auto value = static_cast<unsigned char>(bytes_.front());
        bytes_ = bytes_.subspan(1);
        return value;
    }

    unsigned int word() {
        const unsigned int low = byte();
        return low + byte() * 256;
    }

    /// As many bytes as there are, of those asked for.
    std::span<const char> take(std::size_t length) {
        const auto taken = bytes_.first(std::min(length, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return taken;
    }

    /// Any value of the type. One byte is enough for the small ones, which are indices more often than not, and for the
    /// ends of the range.
    template <class T>
    requires(std::is_arithmetic_v<T>) T number() {
        const unsigned int first = byte();
        if constexpr (std::is_same_v<T, bool>) {
            return first % 2 != 0;
        } else {
            constexpr unsigned int raw = 0xF0;
            if (first < raw)
                return static_cast<T>(first % 128);
            switch (first) {
            case raw:
                return std::numeric_limits<T>::lowest();
            case raw + 1:
                return std::numeric_limits<T>::max();
            case raw + 2:
                return static_cast<T>(-1);
            case raw + 3:
                return static_cast<T>(word());
            default:
                return bits<T>();
            }
        }
    }

    /// The next bytes as they stand.
    template <class T>
    T bits() {
        static_assert(std::is_trivially_copyable_v<T>);
        std::array<char, sizeof(T)> image{};
        std::ranges::copy(take(sizeof(T)), image.begin());
        T value;
        std::memcpy(&value, image.data(), sizeof value);
        return value;
    }

private:
    std::span<const char> bytes_;
};

} // namespace Fuzz
