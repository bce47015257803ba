#pragma once

#include <travik/service/Export.h>

#include <cstddef>
#include <string>
#include <string_view>

/// Text that came from outside, an image or a file name, made safe to be shown on a terminal: what would command the
/// terminal, or show the reader something other than what is there, is shown by its number instead.
///
/// Shown by number are: control characters (U+0000-1F, U+007F, U+0080-9F), the characters that turn the direction of
/// writing (U+061C, U+200E, U+200F, U+202A-2E, U+2066-69), and bytes that are no UTF-8. A byte becomes "\x1b", a
/// character beyond it "\u202e". A backslash of the text's own stays as it is: the result is to be read, not to be
/// turned back.
namespace Travik {

/// What the bytes of a text stand for.
enum class TextCharset : unsigned char { Utf8, Latin1 };

/// Whether the text has lines of its own, or stands inside a line that must stay one.
enum class TextLines : unsigned char {
    Keep, ///< line feeds and tabs stay
    One   ///< they are shown by their numbers, too
};

/// A byte becomes at most so many characters.
inline constexpr std::size_t terminalTextGrowth = 4;

/// Writes the safe form of the text to `out`, which has room for `terminalTextGrowth` times its length. Returns the end
/// of what was written. Nothing is allocated.
TRAVIK_SERVICE_EXPORT char* writeTerminalText(char* out, std::string_view text, TextCharset charset = TextCharset::Utf8,
                                              TextLines lines = TextLines::Keep);

/// The safe form of a text.
TRAVIK_SERVICE_EXPORT std::string terminalText(std::string_view text, TextCharset charset = TextCharset::Utf8,
                                               TextLines lines = TextLines::Keep);

/// How much of a text that comes in pieces is whole characters: its length, or less where it ends within the bytes of a
/// UTF-8 character, which go with the next piece.
TRAVIK_SERVICE_EXPORT std::size_t wholeUtf8(std::string_view text);

} // namespace Travik
