#pragma once

#include <travik/service/Export.h>

#include <array>
#include <charconv>
#include <concepts>
#include <string>
#include <string_view>

namespace Travik {

/// Takes the first character off a UTF-8 text. Of what is no UTF-8 it takes one byte, and returns U+FFFD for it.
unsigned int takeCodePoint(std::string_view& text);
/// The way back: appends a character.
void appendUtf8(std::string& text, unsigned int codePoint);

/// JSON written straight into one buffer. Punctuation is the caller's.
///
/// Numbers come in the shortest form that reads back as the same double: in decimals from 1e-4 on to below 1e16, with
/// an exponent elsewhere. Whole ones end with ".0" where they were not written as integers, so that a script sees the
/// same type whatever the value.
class TRAVIK_SERVICE_EXPORT JsonText {
public:
    void raw(std::string_view text) {
        reserve(text.size());
        used_ += text.copy(text_.data() + used_, text.size());
    }
    void raw(char character) {
        reserve(1);
        text_[used_++] = character;
    }

    template <std::integral T>
    void whole(T value) {
        reserve(32);
        char* const at = text_.data() + used_;
        used_ = static_cast<std::size_t>(std::to_chars(at, at + 32, value).ptr - text_.data());
    }
    /// null for what is not finite.
    void number(double value);
    /// The number of stored / 10^decimals, for 1 to 4 decimals: as `number` writes it, and faster.
    void decimal(long long stored, unsigned int decimals);

    /// In quotes. What is no UTF-8 is replaced; controls, which a terminal might obey, are escaped.
    void string(std::string_view utf8);
    /// The same of a block's text.
    void latin1(std::string_view text);

    std::string take() {
        text_.resize(used_);
        used_ = 0;
        return std::move(text_);
    }

private:
    std::string text_; // longer than what is used of it
    std::size_t used_ = 0;
    std::string utf8_; // of one character

    void reserve(std::size_t length) {
        if (text_.size() - used_ < length)
            text_.resize((text_.size() + length) * 2);
    }
    void character(unsigned int codePoint);
};

} // namespace Travik
