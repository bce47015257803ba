#include <travik/datablock/TextWriter.h>
#include <travik/text/ExchangeKernels.h>
#include <travik/text/TextExchange.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <limits>
#include <optional>
#include <string>

namespace Travik {

// Writing

double detail::exchangedValue(const ExchangeFormat& format, std::span<const char> image, unsigned int row,
                              unsigned int column) {
    const TableShape& shape = format.shape;
    if (row >= shape.rows || column >= shape.columns)
        return 0.0;
    return detail::withStoredType(shape.stored, [&]<class StoreT>(StoreT) {
        return static_cast<double>(bytes::load<StoreT>(image, shape.valueOffset(row, column))) * format.table.scale;
    });
}

void detail::writeExchanged(TextWriter& out, const ExchangeFormat& format, double value) {
    if (format.number != ExchangeNumber::Hexadecimal) {
        out.fixed(value, format.decimals, format.width);
        return;
    }
    std::array<char, 16> word;
    // Whether it is 0 tells "%#x" whether to write the prefix.
    const int length =
        std::snprintf(word.data(), word.size(), format.title.empty() ? "%#x" : "0x%08X", nearest<unsigned int>(value));
    out << std::string_view(word.data(), static_cast<std::size_t>(length));
}

double detail::storedFromExchanged(const ExchangeFormat& format, double number) {
    switch (format.number) {
    case ExchangeNumber::Hexadecimal:
        return number;
    case ExchangeNumber::Hundredths:
        return std::floor(number * 100 + 0.5) * 0.01;
    case ExchangeNumber::Integer:
        return nearest<int>(number) / format.table.scale;
    case ExchangeNumber::Real:
        break;
    }
    return number / format.table.scale;
}

namespace {

unsigned int decimalDigits(unsigned int number) {
    unsigned int digits = 1;
    for (; number >= 10; number /= 10)
        ++digits;
    return digits;
}

void writeHead(TextWriter& out, const ExchangeFormat& format, unsigned int rows, unsigned int columns) {
    const bool commented = !format.title.empty();
    const auto emptyComments = [&](unsigned int count) {
        for (unsigned int i = 0; commented && i < count; ++i)
            out.line("#   ");
    };
    if (commented)
        (out << "#   Ombrel, DUN - RF-Board - " << format.title << " - Data").endLine();
    emptyComments(4);
    (out << (commented ? "ID:     " : "ID:  ") << format.table.key).endLine();
    emptyComments(1);
    if (commented)
        out.line("#       Parameter COUNT: <rows> * <columns>");
    (out << "COUNT:  " << rows << " * " << columns).endLine();
    emptyComments(5);
}

// Reading

using detail::isBlank;
using detail::takeWord;

/// The lines of a text that are neither comments nor blank, their remarks cut off.
class LineReader {
public:
    explicit LineReader(std::istream& is) : source_(is.rdbuf()) {
        if (!source_)
            return; // whose state cannot be cleared
        is.clear();
        ask([](std::streambuf& source) { return source.pubseekpos(0, std::ios_base::in); });
    }

    /// The next line, valid until the one after is asked for; nothing at the end of the text.
    std::optional<std::string_view> next() {
        while (readLine()) {
            if (!std::ranges::all_of(line_, isBlank))
                return line_;
        }
        return std::nullopt;
    }

    /// Whether the text ended because its source threw.
    bool isBroken() const { return broken_; }

private:
    std::streambuf* source_;
    bool broken_ = false;
    std::string line_;
    std::array<char, 16384> chunk_;
    std::string_view unread_; // of the chunk

    /// What the source answers; of a source that has thrown, nothing ever after.
    template <class Question>
    std::streamoff ask(Question question) {
        try {
            if (source_)
                return question(*source_);
        } catch (...) { // a file that turns out to be a folder, for one
            source_ = nullptr;
            broken_ = true;
        }
        return 0;
    }

    bool readChunk() {
        // No more than is there already: what a source hands out before it throws would be lost.
        const std::streamoff count = ask([this](std::streambuf& source) {
            if (source.sgetc() == std::char_traits<char>::eof())
                return std::streamsize{0};
            return source.sgetn(chunk_.data(), std::clamp<std::streamsize>(source.in_avail(), 1, std::ssize(chunk_)));
        });
        unread_ = {chunk_.data(), static_cast<std::size_t>(std::max<std::streamoff>(count, 0))};
        return !unread_.empty();
    }

    /// Of a remark nothing is kept, however long it is.
    bool readLine() {
        line_.clear();
        bool begun = false;
        for (bool inRemark = false; !unread_.empty() || readChunk();) {
            begun = true;
            const std::size_t end = unread_.find('\n');
            const std::string_view piece = unread_.substr(0, end);
            const std::size_t remark = piece.find('#');
            if (!inRemark)
                line_ += piece.substr(0, remark);
            inRemark = inRemark || remark != std::string_view::npos;
            if (end != std::string_view::npos) {
                unread_.remove_prefix(end + 1);
                return true;
            }
            unread_ = {};
        }
        return begun;
    }
};

/// The whole number that a text begins with, after blanks and a sign; 0 if it begins with none.
unsigned int wholeNumber(std::string_view text, int base) {
    text = std::string_view(std::ranges::find_if_not(text, isBlank), text.end());
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+'))
        text.remove_prefix(1);
    if (base == 16 && (text.starts_with("0x") || text.starts_with("0X")))
        text.remove_prefix(2);
    unsigned int number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (result.ec == std::errc::result_out_of_range)
        number = std::numeric_limits<unsigned int>::max();
    return negative ? 0 : number;
}

/// Whether a number whose magnitude is outside the range of a double is too large, not too small, by the power of ten
/// of its first digit other than 0.
bool isTooLarge(std::string_view number) {
    const std::size_t exponentMark = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, exponentMark);
    const auto point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<long long>(std::min(mantissa.find_first_of("123456789"), mantissa.size()));

    std::string_view exponent = number.substr(std::min(exponentMark + 1, number.size()));
    if (exponent.starts_with('+'))
        exponent.remove_prefix(1);
    long long power = 0;
    const auto result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), power);
    if (result.ec == std::errc::result_out_of_range)
        return !exponent.starts_with('-');
    // No text is so long that its digits weigh up an exponent beyond this; the sum cannot overflow.
    constexpr long long farOut = std::numeric_limits<long long>::max() / 4;
    return std::clamp(power, -farOut, farOut) + point - first > 0;
}

/// The decimal number that a word begins with; 0 if it begins with none.
double realNumber(std::string_view word) {
    if (word.starts_with('+') && !word.starts_with("+-"))
        word.remove_prefix(1);
    double number = 0.0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), number);
    if (result.ec == std::errc::result_out_of_range) {
        const bool large = isTooLarge({word.data(), static_cast<std::size_t>(result.ptr - word.data())});
        number = std::copysign(large ? std::numeric_limits<double>::infinity() : 0.0, word.front() == '-' ? -1.0 : 1.0);
    }
    return number;
}

class Reader {
public:
    Reader(const ExchangeFormat& format, const ExchangeMessages& report)
        : format_(format), report_(report), image_(format.shape.size()) {
        store(offsetof(HwSDatablockHeader, blockSize), static_cast<unsigned short>(image_.size()));
    }

    void take(std::string_view line) {
        switch (search_) {
        case Search::Id:
            return searchId(line);
        case Search::Count:
            return searchCount(line);
        case Search::Rows:
            return readRow(line);
        case Search::Done:
            return;
        }
    }

    std::vector<char> finish() {
        if (search_ == Search::Id)
            report("ERROR: FOUND NO ID !");
        if (search_ == Search::Count)
            report("ERROR: FOUND NO COUNT VALUES !");
        else if (rowsRead_ != rows_)
            report(format_.rowMessage);
        return std::move(image_);
    }

private:
    enum class Search : unsigned char { Id, Count, Rows, Done };

    const ExchangeFormat& format_;
    const ExchangeMessages& report_;
    std::vector<char> image_;
    Search search_ = Search::Id;
    std::size_t linesSinceId_ = 0;
    std::size_t rowsRead_ = 0;
    unsigned int rows_ = 0; // as the text counts them
    unsigned int columns_ = 0;

    void report(std::string_view message) const {
        if (report_)
            report_(message);
    }

    template <class T>
    void store(std::size_t offset, T value) {
        bytes::store(image_, offset, value);
    }

    void searchId(std::string_view line) {
        if (line.find("ID:") == std::string_view::npos || line.find(format_.table.key) == std::string_view::npos)
            return;
        store(offsetof(HwSDatablockHeader, id), static_cast<unsigned short>(format_.table.id));
        search_ = Search::Count;
    }

    void searchCount(std::string_view line) {
        constexpr std::string_view mark = "COUNT:";
        const std::size_t at = line.find(mark);
        if (at == std::string_view::npos) {
            if (++linesSinceId_ >= format_.distanceLimit)
                report(std::string("ERROR: ").append(format_.distanceMessage));
            return;
        }
        const std::string counts = std::string(line.substr(0, at)).append(line.substr(at + mark.size()));
        const std::string_view text = counts;
        if (const std::size_t star = text.find('*'); star != std::string_view::npos) {
            // The character in front of the star is the writer's blank.
            rows_ = wholeNumber(text.substr(0, std::max<std::size_t>(star, 1) - 1), 10);
            columns_ = wholeNumber(text.substr(star + 1), 10);
        }
        store(format_.shape.rowCountOffset(), rows_);
        store(format_.shape.columnCountOffset(), columns_);
        search_ = Search::Rows;
    }

    void readRow(std::string_view line) {
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            search_ = Search::Done;
            return;
        }
        std::string_view rest = line.substr(colon + 1);
        std::size_t words = 0;
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest))
            storeWord(word, words++);
        ++rowsRead_;
        if (words != columns_)
            report("ERROR: In Row =" + std::to_string(rowsRead_) + std::string(format_.columnMessage));
    }

    void storeWord(std::string_view word, std::size_t column) {
        const TableShape& shape = format_.shape;
        if (rowsRead_ >= shape.rows || column >= shape.columns)
            return;
        const auto offset = shape.valueOffset(static_cast<unsigned int>(rowsRead_), static_cast<unsigned int>(column));
        const double number = format_.number == ExchangeNumber::Hexadecimal ? wholeNumber(word, 16) : realNumber(word);
        detail::withStoredType(shape.stored, [&]<class StoreT>(StoreT) {
            store(offset, detail::nearest<StoreT>(detail::storedFromExchanged(format_, number)));
        });
    }
};

} // namespace

std::ostream& writeExchangeText(std::ostream& os, const ExchangeFormat& format, std::span<const char> image) {
    const auto rows = bytes::load<unsigned int>(image, format.shape.rowCountOffset());
    const auto columns = bytes::load<unsigned int>(image, format.shape.columnCountOffset());
    const bool valuePerLine = format.title.empty();
    const unsigned int labelWidth = valuePerLine ? 0 : decimalDigits(rows);

    TextWriter out(os);
    writeHead(out, format, rows, columns);
    // Of a row that has no values only the label is an entry.
    unsigned int left = valuePerLine && columns == 0 ? 0 : printedEntriesLimit;
    for (unsigned int row = 0; row < rows && left > 0; ++row) {
        if (!valuePerLine)
            out.rightAligned(row + 1, labelWidth) << ":  ";
        for (unsigned int column = 0; column < columns && left > 0; ++column, --left) {
            if (valuePerLine)
                out << row + 1 << ":  ";
            else
                out << "    ";
            detail::writeExchanged(out, format, detail::exchangedValue(format, image, row, column));
            if (valuePerLine)
                out.endLine();
        }
        left -= columns == 0;
        if (!valuePerLine)
            out.endLine();
    }
    return os;
}

std::vector<char> readExchangeText(std::istream& is, const ExchangeFormat& format, const ExchangeMessages& report) {
    LineReader lines(is);
    Reader reader(format, report);
    while (const auto line = lines.next())
        reader.take(*line);
    std::vector<char> image = reader.finish();
    if (lines.isBroken())
        is.setstate(std::ios_base::badbit);
    return image;
}

const ExchangeFormat* findExchangeFormat(std::istream& is, std::span<const ExchangeFormat* const> formats) {
    LineReader lines(is);
    const ExchangeFormat* found = nullptr;
    while (!found) {
        const auto line = lines.next();
        if (!line)
            break;
        if (line->find("ID:") == std::string_view::npos)
            continue;
        for (const ExchangeFormat* const format : formats) {
            const std::string_view key = format->table.key;
            if (line->find(key) != std::string_view::npos &&
                (!found || key.size() > std::string_view(found->table.key).size()))
                found = format;
        }
    }
    if (lines.isBroken())
        is.setstate(std::ios_base::badbit);
    return found;
}

void reportToStandardOutput(std::string_view message) {
    try {
        TextWriter(std::cout) << message << '\n';
    } catch (const std::ios_base::failure&) { // kept in the stream's state
    }
}

} // namespace Travik
