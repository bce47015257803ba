#pragma once

#include <QString>

#include <cstddef>
#include <string>
#include <string_view>

namespace Travik {

namespace detail {

/// A UTF-8 literal converted to Latin-1 at compile time; a character outside Latin-1 does not compile.
template <std::size_t N>
struct Latin1Literal {
    char characters[N]{};
    std::size_t length = 0;

    consteval Latin1Literal(const char (&utf8)[N]) { // NOLINT(google-explicit-constructor): the literal's own form
        for (std::size_t i = 0; i + 1 < N; ++i) {
            const auto lead = static_cast<unsigned char>(utf8[i]);
            if (lead < 0x80) {
                characters[length++] = utf8[i];
            } else if (lead == 0xC2 || lead == 0xC3) {
                const auto trail = static_cast<unsigned char>(utf8[++i]);
                characters[length++] = static_cast<char>(((lead & 3) << 6) | (trail & 0x3F));
            } else {
                throw "not a Latin-1 character";
            }
        }
    }

    constexpr std::string_view view() const { return {characters, length}; }
};

template <Latin1Literal Text>
inline constexpr auto latin1Storage = Text;

} // namespace detail

/// The text of an image for users of Qt, and back. A character that Latin-1 does not have becomes "?".
inline QString fromLatin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string toLatin1(const QString& text) { return text.toLatin1().toStdString(); }

inline namespace literals {

/// `"Stützstellen"_latin1`: the text as it stands in images and dumps, one byte a character, in static storage.
template <detail::Latin1Literal Text>
consteval std::string_view operator""_latin1() {
    return detail::latin1Storage<Text>.view();
}

} // namespace literals

} // namespace Travik
