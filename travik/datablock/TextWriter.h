#pragma once

#include <travik/datablock/Export.h>
#include <travik/datablock/HeldFailures.h>
#include <travik/datablock/Latin1.h>

#include <concepts>
#include <iosfwd>
#include <memory>
#include <string_view>

namespace Travik {

/// Composes the text of a block line by line: a line is put together in memory, written once and flushed. What the
/// stream was left with by an earlier block (fill, width, base, precision, locale) changes nothing, other than for
/// `current`; a width is used up, as by any other output.
///
/// Where the stream fails, or its buffer throws, the failure is kept in the stream's state and the rest of the text is
/// dropped. What the stream's exception mask asks for is thrown once, by the destructor.
class TRAVIK_DATABLOCK_EXPORT TextWriter {
public:
    explicit TextWriter(std::ostream& os);
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;
    /// A line that was begun but not ended is written as it stands. Throws as the stream's exception mask says, but
    /// never while another exception is under way.
    ~TextWriter() noexcept(false);

    TextWriter& operator<<(std::string_view text);
    TextWriter& operator<<(char character) {
        *room(1) = character;
        ++used_;
        return *this;
    }
    /// Any integer but a character, in decimal.
    template <std::integral T>
    requires(!std::same_as<T, char> && !std::same_as<T, bool>) TextWriter& operator<<(T value) {
        if constexpr (std::is_signed_v<T>)
            return decimal(value < 0, value < 0 ? 0 - static_cast<unsigned long long>(value)
                                                : static_cast<unsigned long long>(value));
        else
            return decimal(false, value);
    }

    /// At least `digits` digits, leading ones "0"; more where the value has more.
    TextWriter& zeroFilled(unsigned int value, unsigned int digits);
    /// At least `width` characters, right-aligned with blanks.
    TextWriter& rightAligned(unsigned int value, unsigned int width);
    /// A packed date as year-month-day, whether there is such a day or not.
    TextWriter& date(unsigned short packed);
    /// As printf's "%<width>.<decimals>f".
    TextWriter& fixed(double value, unsigned int decimals, unsigned int width = 0);
    /// In the floating format that a new stream has: printf's "%g", six significant digits.
    TextWriter& general(double value);
    /// In the stream's current floating format, whatever its width.
    TextWriter& current(double value);
    TextWriter& current(long double value);

    /// Ends the line: newline and flush.
    TextWriter& endLine();
    /// A whole line.
    TextWriter& line(std::string_view text = {}) { return (*this << text).endLine(); }

    /// For numbers in bulk: at least `length` bytes to write to, and up to where that was done.
    char* reserve(std::size_t length) { return room(length); }
    void commit(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    /// The stream, for the state that a block leaves on it. What was composed so far is written first.
    std::ostream& stream();

private:
    HeldFailures failures_;
    std::ostream& os_;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_;
    std::size_t used_ = 0;

    char* room(std::size_t length) {
        if (capacity_ - used_ < length)
            grow(length);
        return buffer_.get() + used_;
    }
    void grow(std::size_t length);
    TextWriter& decimal(bool negative, unsigned long long magnitude);
    void padded(unsigned int value, unsigned int width, char fill);
    template <class Number>
    TextWriter& inCurrentFormat(Number value);
    template <class Output>
    void send(Output output) noexcept;
    void write(bool flush) noexcept;
};

/// How many entries of a table a print goes through at most. No image holds more bytes than that; a count that says so
/// is damaged or hostile and would run through four thousand million.
inline constexpr unsigned int printedEntriesLimit = 65535;

} // namespace Travik
