#include <travik/datablock/TextWriter.h>
#include <travik/text/ExchangeKernels.h>
#include <travik/text/StrictExchange.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <sstream>

namespace Travik {

namespace {

using detail::isBlank;
using detail::takeWord;

constexpr std::size_t longestWordShown = 60;

std::string shown(std::string_view word) {
    std::string text(word.substr(0, longestWordShown));
    return text.size() < word.size() ? text + "..." : text;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string_view firstWord(std::string_view text) { return takeWord(text); }

/// The lines of a text that are neither remarks nor blank, without their remarks and the blanks around them.
class SignificantLines {
public:
    explicit SignificantLines(std::string_view text) : rest_(text) {
        // Editors put the mark of UTF-8 in front of texts that never asked for it.
        constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
        if (rest_.starts_with(utf8Mark))
            rest_.remove_prefix(utf8Mark.size());
    }

    bool next() {
        while (!rest_.empty()) {
            const std::size_t end = std::min(rest_.find_first_of("\r\n"), rest_.size());
            const std::string_view whole = rest_.substr(0, end);
            rest_.remove_prefix(end);
            const bool ended = !rest_.empty();
            rest_.remove_prefix(rest_.starts_with("\r\n") ? 2 : ended ? 1 : 0);
            ++number_;
            const std::size_t remark = whole.find('#');
            line_ = trimmed(whole.substr(0, remark));
            isCut_ = !ended && remark == std::string_view::npos;
            if (!line_.empty())
                return true;
        }
        return false;
    }

    std::string_view line() const { return line_; }
    /// Of the line; behind the last one the number of lines.
    std::size_t number() const { return number_; }
    /// Whether the text ends in the middle of the line, where a word may have been cut.
    bool isCut() const { return isCut_; }

private:
    std::string_view rest_;
    std::string_view line_;
    std::size_t number_ = 0;
    bool isCut_ = false;
};

constexpr std::string_view idMark = "ID:";
constexpr std::string_view countMark = "COUNT:";

/// The number that the text is, all of it, in digits only.
std::optional<unsigned int> strictNumber(std::string_view text, int base = 10) {
    unsigned int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size())
        return std::nullopt;
    return number;
}

struct Word {
    double number = 0.0;
    std::string_view fault{}; ///< why it is no number of the table
};

constexpr std::string_view outOfRange = "outside the range of the table";

Word hexadecimal(std::string_view word) {
    constexpr std::string_view digits = "0123456789abcdefABCDEF";
    if (word.starts_with("0x") || word.starts_with("0X"))
        word.remove_prefix(2);
    if (word.empty() || word.find_first_not_of(digits) != std::string_view::npos)
        return {.fault = "not a hexadecimal number"};
    const std::optional<unsigned int> number = strictNumber(word, 16);
    return number ? Word{.number = static_cast<double>(*number)} : Word{.fault = "more than 32 bits"};
}

Word decimal(std::string_view word) {
    if (word.starts_with('+') && !word.starts_with("+-"))
        word.remove_prefix(1);
    // The conversion knows "inf" and "nan", too; whatever else it takes is made of these.
    constexpr std::string_view allowed = "+-.0123456789eE";
    double number = 0.0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), number);
    if (word.find_first_not_of(allowed) != std::string_view::npos || result.ec == std::errc::invalid_argument ||
        result.ptr != word.data() + word.size())
        return {.fault = "not a decimal number"};
    return result.ec == std::errc() ? Word{.number = number} : Word{.fault = outOfRange};
}

/// What the word is stored as, before its conversion to the stored type.
Word storedWord(const ExchangeFormat& format, std::string_view word) {
    Word value = format.number == ExchangeNumber::Hexadecimal ? hexadecimal(word) : decimal(word);
    if (!value.fault.empty())
        return value;
    if (format.number == ExchangeNumber::Integer && value.number != std::trunc(value.number))
        return {.fault = "not a whole number"};
    if (format.number == ExchangeNumber::Integer && value.number != detail::nearest<int>(value.number))
        return {.fault = outOfRange};
    value.number = detail::storedFromExchanged(format, value.number);
    const bool fits = detail::withStoredType(format.shape.stored, [&]<class StoreT>(StoreT) {
        if constexpr (std::is_integral_v<StoreT>)
            return std::trunc(value.number) == static_cast<double>(detail::nearest<StoreT>(value.number));
        else
            return std::abs(value.number) <= static_cast<double>(std::numeric_limits<StoreT>::max());
    });
    return fits ? value : Word{.fault = outOfRange};
}

std::string written(const ExchangeFormat& format, double value) {
    std::ostringstream text;
    {
        TextWriter out(text);
        detail::writeExchanged(out, format, value);
    }
    return std::string(trimmed(text.view()));
}

/// As many digits as tell the value from every other one of its type.
std::string allDigits(const ExchangeFormat& format, double value) {
    std::array<char, 32> digits;
    char* const end = digits.data() + digits.size();
    const auto result = format.shape.stored == Stored::F32
                            ? std::to_chars(digits.data(), end, static_cast<float>(value))
                            : std::to_chars(digits.data(), end, value);
    return {digits.data(), result.ptr};
}

class StrictReader {
public:
    StrictReader(const ExchangeFormat& format, std::span<const char> block)
        : format_(format), zero_(written(format, 0.0)), old_(block.begin(), block.end()) {
        old_.resize(format.shape.size());
        reading_.image = old_;
        reading_.before = reading_.after = {bytes::load<unsigned int>(old_, format.shape.rowCountOffset()),
                                            bytes::load<unsigned int>(old_, format.shape.columnCountOffset())};
    }

    ExchangeReading read(std::string_view text) {
        SignificantLines lines(text);
        while (lines.next()) {
            number_ = lines.number();
            take(lines.line());
            if (lines.isCut() && place_ != Place::OtherTable)
                find("", "the text ends within this line");
        }
        number_ = lines.number();
        endTable();
        if (!found_)
            find("", "no line \"ID:\" with the key name " + std::string(format_.table.key));
        return std::move(reading_);
    }

private:
    enum class Place : unsigned char {
        Ahead,      ///< of any table
        OtherTable, ///< in one that is passed over
        Id,         ///< behind the "ID:" line
        Rows,       ///< behind the "COUNT:" line
        WrongCount  ///< behind something else, in rows of which nothing is known
    };

    const ExchangeFormat& format_;
    const std::string zero_;
    std::vector<char> old_;
    ExchangeReading reading_;
    std::size_t number_ = 0;
    Place place_ = Place::Ahead;
    bool found_ = false;
    std::uint64_t rowLines_ = 0; ///< as many as the text should have
    std::uint64_t rowLine_ = 0;  ///< the next one, from 0

    void find(std::string_view word, std::string text) {
        if (++reading_.findingCount <= exchangeFindingsLimit)
            reading_.findings.push_back({number_, shown(word), std::move(text)});
    }

    void take(std::string_view line) {
        if (line.starts_with(idMark))
            return takeId(trimmed(line.substr(idMark.size())));
        switch (place_) {
        case Place::Ahead:
            return find(firstWord(line), "not understood, the line \"ID:\" is expected here");
        case Place::Id:
            return takeCount(line);
        case Place::WrongCount:
            return line.starts_with(countMark) ? takeCount(line) : void();
        case Place::Rows:
            return takeRow(line);
        case Place::OtherTable:
            return;
        }
    }

    void takeId(std::string_view key) {
        endTable();
        const bool isWanted = key == format_.table.key;
        if (isWanted && found_)
            find(key, "a second table of this name");
        place_ = isWanted && !found_ ? Place::Id : Place::OtherTable;
        found_ = found_ || isWanted;
    }

    void takeCount(std::string_view line) {
        place_ = Place::WrongCount;
        if (!line.starts_with(countMark))
            return find(firstWord(line), "not understood, the line \"COUNT:\" is expected here");
        const std::string_view pair = trimmed(line.substr(countMark.size()));
        const std::size_t star = std::min(pair.find('*'), pair.size());
        const auto rows = strictNumber(trimmed(pair.substr(0, star)));
        const auto columns = strictNumber(trimmed(pair.substr(std::min(star + 1, pair.size()))));
        if (!rows || !columns)
            return find(pair, "COUNT is not of the form \"<rows> * <columns>\"");
        const TableShape& shape = format_.shape;
        const ExchangeCounts counts{*rows, *columns};
        // The block's own counts change nothing, whatever they are.
        if (counts != reading_.before && (*rows > shape.rows || *columns > shape.columns))
            return find(pair, "more than the " + std::to_string(shape.rows) + " * " + std::to_string(shape.columns) +
                                  " that the block holds");
        if (counts != reading_.before && (*rows == 0 || *columns == 0))
            return find(pair, "a table without values would empty the block");
        reading_.after = counts;
        bytes::store(std::span(reading_.image), shape.rowCountOffset(), *rows);
        bytes::store(std::span(reading_.image), shape.columnCountOffset(), *columns);
        rowLines_ = expectedLines();
        place_ = Place::Rows;
    }

    // As the writer writes them: it stops after so many values, which only counts beyond the capacity reach.

    bool valuePerLine() const { return format_.title.empty(); }

    std::uint64_t expectedLines() const {
        constexpr std::uint64_t limit = printedEntriesLimit;
        const auto [rows, columns] = reading_.after;
        if (valuePerLine())
            return std::min(std::uint64_t{rows} * columns, limit);
        return std::min<std::uint64_t>(rows, columns == 0 ? limit : (limit + columns - 1) / columns);
    }

    std::uint64_t expectedWords(std::uint64_t line) const {
        if (valuePerLine())
            return 1;
        const std::uint64_t columns = reading_.after.columns;
        return std::min<std::uint64_t>(columns, printedEntriesLimit -
                                                    std::min<std::uint64_t>(printedEntriesLimit, line * columns));
    }

    std::uint64_t labelOf(std::uint64_t line) const {
        return valuePerLine() ? line / reading_.after.columns + 1 : line + 1;
    }

    void takeRow(std::string_view line) {
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos)
            return find(firstWord(line), "not understood, a row begins with its number and a colon");
        const std::string_view label = trimmed(line.substr(0, colon));
        if (rowLine_ >= rowLines_)
            return find(label, "a row more than COUNT says");
        const std::optional<unsigned int> row = strictNumber(label);
        if (!row || *row != labelOf(rowLine_)) {
            find(label, "the label of row " + std::to_string(labelOf(rowLine_)) + " is expected here");
            // One row that is missing is one finding.
            if (row && *row >= 1 && *row <= rowLines_)
                rowLine_ = *row - 1;
        }
        takeWords(line.substr(colon + 1), label);
        ++rowLine_;
    }

    void takeWords(std::string_view rest, std::string_view label) {
        const std::uint64_t expected = expectedWords(rowLine_);
        std::uint64_t count = 0;
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
            const std::uint64_t columns = reading_.after.columns;
            if (count < expected && valuePerLine())
                takeValue(word, rowLine_ / columns, rowLine_ % columns);
            else if (count < expected)
                takeValue(word, rowLine_, count);
            else if (count == expected)
                find(word, "a value more than COUNT says");
            ++count;
        }
        if (count < expected)
            find(label, "row of " + std::to_string(count) + " values, not " + std::to_string(expected));
    }

    void takeValue(std::string_view word, std::uint64_t row64, std::uint64_t column64) {
        const TableShape& shape = format_.shape;
        if (row64 >= shape.rows || column64 >= shape.columns) {
            if (word != zero_)
                find(word, "beyond the capacity of the block");
            return;
        }
        const auto row = static_cast<unsigned int>(row64);
        const auto column = static_cast<unsigned int>(column64);
        const double before = detail::exchangedValue(format_, old_, row, column);
        std::string writtenBefore = written(format_, before);
        if (word == writtenBefore)
            return;
        const Word value = storedWord(format_, word);
        if (!value.fault.empty())
            return find(word, std::string(value.fault));
        detail::withStoredType(shape.stored, [&]<class StoreT>(StoreT) {
            bytes::store(std::span(reading_.image), shape.valueOffset(row, column),
                         detail::nearest<StoreT>(value.number));
        });
        const auto cell = [&](const std::vector<char>& image) {
            return bytes::part(image, shape.valueOffset(row, column), shape.width);
        };
        if (std::ranges::equal(cell(old_), cell(reading_.image)))
            return;
        const double after = detail::exchangedValue(format_, reading_.image, row, column);
        std::string writtenAfter = written(format_, after);
        if (writtenAfter == writtenBefore) {
            writtenBefore = allDigits(format_, before);
            writtenAfter = allDigits(format_, after);
        }
        reading_.changes.push_back({row + 1, column + 1, std::move(writtenBefore), std::move(writtenAfter)});
    }

    void endTable() {
        if (place_ == Place::Id)
            find("", R"(no line "COUNT:" behind "ID:")");
        if (place_ == Place::Rows && rowLine_ < rowLines_)
            find("", "the table ends ahead of row " + std::to_string(labelOf(rowLine_)) + " of " +
                         std::to_string(reading_.after.rows));
    }
};

} // namespace

std::vector<ExchangeTableName> exchangeTablesIn(std::string_view text, std::span<const ExchangeFormat* const> formats) {
    std::vector<ExchangeTableName> tables;
    SignificantLines lines(text);
    while (lines.next()) {
        if (!lines.line().starts_with(idMark))
            continue;
        const std::string_view key = trimmed(lines.line().substr(idMark.size()));
        const auto format = std::ranges::find_if(formats, [&](const auto* each) { return key == each->table.key; });
        tables.push_back({lines.number(), shown(key), format == formats.end() ? nullptr : *format});
    }
    return tables;
}

ExchangeReading readExchangeStrictly(std::string_view text, const ExchangeFormat& format, std::span<const char> block) {
    return StrictReader(format, block).read(text);
}

} // namespace Travik
