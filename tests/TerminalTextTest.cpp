#include "Support.h"

#include <travik/service/TerminalText.h>

namespace TerminalTextTest {

using namespace Travik;

struct Case {
    std::string_view text;
    std::string_view shown;
    TextCharset charset = TextCharset::Utf8;
    TextLines lines = TextLines::Keep;
};

using namespace std::string_view_literals;

constexpr Case cases[] = {
    {"", ""},
    {"plain \\ text\n\twith lines", "plain \\ text\n\twith lines"},
    {"a\nb\tc", "a\\x0ab\\x09c", TextCharset::Utf8, TextLines::One},
    {"\x1b[31m\r\a\b\x7f\0"sv, "\\x1b[31m\\x0d\\x07\\x08\\x7f\\x00"},
    // What is no control character passes, whatever its length.
    {"\u00a0\u00fc\u20ac\U0001f527\U00040000\U000e0041\U0010ffff",
     "\u00a0\u00fc\u20ac\U0001f527\U00040000\U000e0041\U0010ffff"},
    {"\u0080\u009b31m\u009f", "\\u0080\\u009b31m\\u009f"},
    {"\u061c\u200e\u200f\u202a\u202e\u2066\u2069", "\\u061c\\u200e\\u200f\\u202a\\u202e\\u2066\\u2069"},
    {"\u061b\u200d\u2010\u2029\u202f\u2065\u206a", "\u061b\u200d\u2010\u2029\u202f\u2065\u206a"},
    // No UTF-8: Latin-1, a lonely trail byte, cut off at the end or by the next character, an escape character spelt
    // longer than need be, half a pair, beyond the last.
    {"Pr\xfc"
     "fung",
     "Pr\\xfcfung"},
    {"\x80", "\\x80"},
    {"\xe2\x80", "\\xe2\\x80"},
    {"\xe2\x80\x1b", "\\xe2\\x80\\x1b"},
    {"\xc0\x9b\xe0\x82\x9b", "\\xc0\\x9b\\xe0\\x82\\x9b"},
    {"\xed\xa0\x80", "\\xed\\xa0\\x80"},
    {"\xf4\x90\x80\x80\xff", "\\xf4\\x90\\x80\\x80\\xff"},
    // Latin-1: the upper controls are bytes.
    {"St\xfctz\x9b\x31m\x1b\n\xa0\xff", "St\xfctz\\x9b1m\\x1b\n\xa0\xff", TextCharset::Latin1},
};

TEST(TerminalText, ShowsWhatCommandsATerminalByItsNumber) {
    for (const auto& [text, shown, charset, lines] : cases)
        EXPECT_EQ(terminalText(text, charset, lines), shown);
}

TEST(TerminalText, PiecesEndBetweenCharacters) {
    const std::string text = "a\u00fc\u20ac\U0001f527\xe2";
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        const std::size_t whole = wholeUtf8(std::string_view(text).substr(0, cut));
        EXPECT_LE(cut - whole, 3U) << cut;
        EXPECT_EQ(terminalText(text.substr(0, whole)) + terminalText(text.substr(whole)), terminalText(text)) << cut;
    }
    EXPECT_EQ(wholeUtf8("\x80\x80\x80\x80"), 4U); // not held back for ever
    EXPECT_EQ(wholeUtf8("\xff"), 1U);
}

} // namespace TerminalTextTest
