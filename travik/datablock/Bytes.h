#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

/// The one way to the bytes of an image: every load and store of the library goes through the bounds test of this
/// header. Images are little-endian and may be unaligned; so is the host, which is why no value is converted here.
namespace Travik::bytes {

static_assert(std::endian::native == std::endian::little, "images are laid out for a little-endian host");

/// Whether `length` bytes from `offset` lie inside `size` bytes; cannot overflow.
constexpr bool inside(std::size_t size, std::size_t offset, std::size_t length) noexcept {
    return length <= size && offset <= size - length;
}

/// The value at `offset`, or a zero value where it does not lie wholly inside the image.
template <class T>
T load(std::span<const char> image, std::size_t offset) noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    T value{};
    if (inside(image.size(), offset, sizeof(T)))
        std::memcpy(&value, image.data() + offset, sizeof(T));
    return value;
}

/// Stores the value at `offset`; does nothing and returns false where it would not lie wholly inside the image.
template <class T>
bool store(std::span<char> image, std::size_t offset, const T& value) noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    if (!inside(image.size(), offset, sizeof(T)))
        return false;
    std::memcpy(image.data() + offset, &value, sizeof(T));
    return true;
}

/// The part of `offset` .. `offset + length` that lies inside the image.
inline std::span<const char> part(std::span<const char> image, std::size_t offset, std::size_t length) noexcept {
    if (offset >= image.size())
        return {};
    return image.subspan(offset, std::min(length, image.size() - offset));
}

/// A text field: its characters up to the first NUL, the end of the field or the end of the image.
inline std::string_view text(std::span<const char> image, std::size_t offset, std::size_t length) noexcept {
    const std::span<const char> field = part(image, offset, length);
    return {field.data(), static_cast<std::size_t>(std::ranges::find(field, '\0') - field.begin())};
}

/// Fills a text field: the text up to its first NUL, at most `length` characters, the rest NUL; a text that fills the
/// field has no terminator. The text may lie in the field itself. Does nothing and returns false where the field does
/// not lie wholly inside the image.
inline bool storeText(std::span<char> image, std::size_t offset, std::size_t length, std::string_view text) noexcept {
    if (!inside(image.size(), offset, length))
        return false;
    const std::size_t used = std::min(length, text.substr(0, text.find('\0')).size());
    // An empty text may be null, which memmove may not be given.
    std::string_view::traits_type::move(image.data() + offset, text.data(), used);
    std::memset(image.data() + offset + used, 0, length - used);
    return true;
}

/// Copies whole elements of `width` bytes to `offset`, as many as lie inside the image. The source holds `length` bytes
/// and may overlap the image; elements that lie in their place already, as of a block that is taken over itself, are
/// not touched.
inline void storeElements(std::span<char> image, std::size_t offset, const void* source, std::size_t length,
                          std::size_t width) noexcept {
    if (offset >= image.size() || width == 0 || length < width) // without a whole element there may be no source
        return;
    if (source == image.data() + offset)
        return;
    const std::size_t room = std::min(length, image.size() - offset);
    std::memmove(image.data() + offset, source, room - room % width);
}

} // namespace Travik::bytes
