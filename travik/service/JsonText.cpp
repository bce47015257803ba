#include <travik/service/JsonText.h>

#include <cmath>

namespace Travik {

unsigned int takeCodePoint(std::string_view& text) {
    constexpr unsigned int replacement = 0xFFFD;
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned int>(static_cast<unsigned char>(text[i])) : 0U;
    };
    const unsigned int lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    unsigned int code = length == 1 ? lead : lead & (0x7FU >> length);
    bool valid = length > 0;
    for (std::size_t i = 1; i < length; ++i) {
        valid = valid && (byte(i) & 0xC0U) == 0x80U;
        code = (code << 6U) | (byte(i) & 0x3FU);
    }
    const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    valid = valid && !isOverlong && !isSurrogate && code <= 0x10FFFF;
    text.remove_prefix(valid ? length : 1);
    return valid ? code : replacement;
}

void appendUtf8(std::string& text, unsigned int code) {
    if (code < 0x80) {
        text += static_cast<char>(code);
        return;
    }
    const unsigned int trails = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    text += static_cast<char>((0xFF00U >> (trails + 1)) | (code >> (6 * trails)));
    for (unsigned int i = trails; i-- > 0;)
        text += static_cast<char>(0x80U | ((code >> (6 * i)) & 0x3FU));
}

void JsonText::number(double value) {
    constexpr double wholeBelow = 1e15;
    if (!std::isfinite(value))
        return raw("null");
    const double magnitude = std::abs(value);
    reserve(40);
    if (magnitude < wholeBelow && magnitude == std::trunc(magnitude)) {
        if (std::signbit(value))
            raw('-');
        whole(static_cast<long long>(magnitude));
        return raw(".0");
    }
    const bool isDecimal = magnitude >= 1e-4 && magnitude < 1e16;
    char* const at = text_.data() + used_;
    const char* const end =
        std::to_chars(at, at + 40, value, isDecimal ? std::chars_format::fixed : std::chars_format::scientific).ptr;
    used_ = static_cast<std::size_t>(end - text_.data());
    if (isDecimal && std::string_view(at, end).find('.') == std::string_view::npos)
        raw(".0");
}

void JsonText::decimal(long long stored, unsigned int decimals) {
    static constexpr std::array<unsigned int, 5> powers{1, 10, 100, 1000, 10000};
    reserve(32);
    if (stored < 0)
        raw('-');
    const auto magnitude = static_cast<unsigned long long>(stored < 0 ? -stored : stored);
    whole(magnitude / powers.at(decimals));
    auto fraction = static_cast<unsigned int>(magnitude % powers.at(decimals));
    while (decimals > 1 && fraction % 10 == 0) {
        fraction /= 10;
        --decimals;
    }
    char* const at = text_.data() + used_;
    at[0] = '.';
    for (unsigned int i = decimals; i > 0; --i, fraction /= 10)
        at[i] = static_cast<char>('0' + fraction % 10);
    used_ += 1 + decimals;
}

void JsonText::character(unsigned int code) {
    static constexpr std::string_view digits = "0123456789abcdef";
    if (code == '"' || code == '\\') {
        raw('\\');
        raw(static_cast<char>(code));
    } else if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
        raw("\\u00");
        raw(digits[code >> 4U]);
        raw(digits[code & 15U]);
    } else if (code < 0x80) {
        raw(static_cast<char>(code));
    } else {
        utf8_.clear();
        appendUtf8(utf8_, code);
        raw(utf8_);
    }
}

void JsonText::string(std::string_view utf8) {
    raw('"');
    while (!utf8.empty())
        character(takeCodePoint(utf8));
    raw('"');
}

void JsonText::latin1(std::string_view text) {
    raw('"');
    for (const char one : text)
        character(static_cast<unsigned char>(one));
    raw('"');
}

} // namespace Travik
