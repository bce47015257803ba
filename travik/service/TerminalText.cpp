#include <travik/service/NumberFormat.h>
#include <travik/service/TerminalText.h>

#include <algorithm>
#include <array>

namespace Travik {

namespace {

struct Character {
    char32_t code = 0;
    std::size_t length = 0; ///< bytes; 0: the text does not begin with a character
};

/// What a lead byte says of its character. No lead byte has length 0.
Character leadOf(unsigned char byte) {
    if (byte < 0x80)
        return {byte, 1};
    if (byte >= 0xC2 && byte < 0xE0)
        return {byte & 0x1FU, 2};
    if (byte >= 0xE0 && byte < 0xF0)
        return {byte & 0x0FU, 3};
    if (byte >= 0xF0 && byte < 0xF5)
        return {byte & 0x07U, 4};
    return {};
}

bool isTrail(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80; }

Character firstCharacter(std::string_view utf8) {
    Character character = leadOf(static_cast<unsigned char>(utf8.front()));
    if (character.length > utf8.size())
        return {};
    for (std::size_t i = 1; i < character.length; ++i) {
        if (!isTrail(utf8[i]))
            return {};
        character.code = character.code << 6U | (static_cast<unsigned char>(utf8[i]) & 0x3FU);
    }
    // Longer than need be, a half of a pair, or beyond the last: other programs may read these otherwise.
    constexpr std::array<char32_t, 5> lowest{0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character.code >= 0xD800 && character.code < 0xE000;
    if (character.code < lowest[character.length] || isSurrogate || character.code > 0x10FFFF)
        return {};
    return character;
}

bool isShownByNumber(char32_t code, TextLines lines) {
    if (code == '\n' || code == '\t')
        return lines == TextLines::One;
    const auto within = [code](char32_t first, char32_t last) { return code >= first && code <= last; };
    return code < 0x20 || within(0x7F, 0x9F) || code == 0x61C || within(0x200E, 0x200F) || within(0x202A, 0x202E) ||
           within(0x2066, 0x2069);
}

char* writeNumber(char* out, char kind, char32_t number, unsigned int digits) {
    *out++ = '\\';
    *out++ = kind;
    for (unsigned int shift = 4 * digits; shift > 0;) {
        shift -= 4;
        *out++ = hexDigits[number >> shift & 0xFU];
    }
    return out;
}

} // namespace

char* writeTerminalText(char* out, std::string_view text, TextCharset charset, TextLines lines) {
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text.front());
        const Character character = charset == TextCharset::Latin1 ? Character{byte, 1} : firstCharacter(text);
        const std::size_t length = std::max<std::size_t>(character.length, 1);
        if (character.length == 0 || (length == 1 && isShownByNumber(character.code, lines)))
            out = writeNumber(out, 'x', byte, 2);
        else if (isShownByNumber(character.code, lines))
            out = writeNumber(out, 'u', character.code, 4);
        else
            out = std::copy_n(text.data(), length, out);
        text.remove_prefix(length);
    }
    return out;
}

std::string terminalText(std::string_view text, TextCharset charset, TextLines lines) {
    std::string safe(terminalTextGrowth * text.size(), '\0');
    safe.resize(static_cast<std::size_t>(writeTerminalText(safe.data(), text, charset, lines) - safe.data()));
    return safe;
}

std::size_t wholeUtf8(std::string_view text) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(text.size(), 3); ++back) {
        const char byte = text[text.size() - back];
        if (!isTrail(byte))
            return leadOf(static_cast<unsigned char>(byte)).length > back ? text.size() - back : text.size();
    }
    return text.size();
}

} // namespace Travik
