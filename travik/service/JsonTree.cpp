#include <travik/service/JsonText.h>
#include <travik/service/JsonTree.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace Travik {

/// Goes through the text once. An image makes documents of a quarter of a million numbers; why no general parser reads
/// them is measured in docs/performance.md.
class JsonScanner {
public:
    JsonScanner(std::string_view text, JsonTree& tree) : text_(text), tree_(tree) {}

    std::string run() {
        if (text_.starts_with("\xEF\xBB\xBF")) // some editors' mark of UTF-8
            at_ = 3;
        while (error_.empty() && expected_ != Expected::Nothing)
            step();
        skipBlanks();
        if (error_.empty() && at_ < text_.size())
            fail("nothing");
        return error_;
    }

private:
    using Kind = JsonValue::Kind;
    enum class Expected : unsigned char { Value, ValueOrEnd, Name, NameOrEnd, CommaOrEnd, Nothing };

    std::string_view text_;
    JsonTree& tree_;
    std::size_t at_ = 0;
    Expected expected_ = Expected::Value;
    std::string error_;
    std::vector<std::uint32_t> open_; // the arrays and objects that are not closed yet
    std::vector<std::string_view> names_;

    char now() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    bool isDigit() const { return now() >= '0' && now() <= '9'; }

    void skipBlanks() {
        while (at_ < text_.size() &&
               (text_[at_] == ' ' || text_[at_] == '\n' || text_[at_] == '\t' || text_[at_] == '\r'))
            ++at_;
    }

    bool fail(std::string_view expected) {
        const std::string_view before = text_.substr(0, std::min(at_, text_.size()));
        const std::size_t lineStart = before.rfind('\n') + 1; // 0 where there is none
        error_ = "no JSON: line " + std::to_string(std::ranges::count(before, '\n') + 1) + ", column " +
                 std::to_string(before.size() - lineStart + 1) + ": " + std::string(expected) + " expected";
        return false;
    }

    JsonTree::Node& add(Kind kind) { return tree_.nodes_.emplace_back(JsonTree::Node{kind, 0, {}}); }

    void step() {
        skipBlanks();
        const bool mayEnd = expected_ != Expected::Value && expected_ != Expected::Name;
        if (mayEnd && (now() == ']' || now() == '}') && closes(now()))
            return close();
        switch (expected_) {
        case Expected::Value:
        case Expected::ValueOrEnd:
            value();
            break;
        case Expected::Name:
        case Expected::NameOrEnd:
            name();
            break;
        default:
            if (now() != ',') {
                fail(isInObject() ? "comma or }" : "comma or ]");
                break;
            }
            ++at_;
            expected_ = isInObject() ? Expected::Name : Expected::Value;
            break;
        }
    }

    bool isInObject() const { return tree_.nodes_[open_.back()].kind == Kind::Object; }
    bool closes(char bracket) const { return !open_.empty() && isInObject() == (bracket == '}'); }

    void open(Kind kind) {
        ++at_;
        open_.push_back(static_cast<std::uint32_t>(tree_.nodes_.size()));
        add(kind);
        expected_ = kind == Kind::Object ? Expected::NameOrEnd : Expected::ValueOrEnd;
    }

    void close() {
        const std::uint32_t index = open_.back();
        tree_.nodes_[index].end = static_cast<std::uint32_t>(tree_.nodes_.size());
        if (isInObject() && !hasDistinctNames(index))
            return;
        ++at_;
        open_.pop_back();
        valueEnds();
    }

    bool hasDistinctNames(std::uint32_t object) {
        names_.clear();
        JsonValue(tree_, object).forEachMember([this](std::string_view name, JsonValue) { names_.push_back(name); });
        std::ranges::sort(names_);
        const auto twice = std::ranges::adjacent_find(names_);
        if (twice != names_.end())
            error_ = "two members of one object are named \"" + std::string(*twice) + '"';
        return error_.empty();
    }

    void valueEnds() { expected_ = open_.empty() ? Expected::Nothing : Expected::CommaOrEnd; }

    void value() {
        switch (now()) {
        case '[':
            return open(Kind::Array);
        case '{':
            return open(Kind::Object);
        case '"':
            string();
            break;
        case 't':
            word("true", Kind::True);
            break;
        case 'f':
            word("false", Kind::False);
            break;
        case 'n':
            word("null", Kind::Null);
            break;
        default:
            number();
            break;
        }
        valueEnds();
    }

    void name() {
        if (now() != '"') {
            fail("name in quotes");
            return;
        }
        if (!string())
            return;
        skipBlanks();
        if (now() != ':') {
            fail("colon");
            return;
        }
        ++at_;
        expected_ = Expected::Value;
    }

    void word(std::string_view word, Kind kind) {
        if (text_.substr(at_, word.size()) != word) {
            fail("value");
            return;
        }
        at_ += word.size();
        add(kind);
    }

    bool digits() {
        const std::size_t start = at_;
        while (isDigit())
            ++at_;
        return at_ > start || fail("digit");
    }

    void number() {
        const std::size_t start = at_;
        const bool isNegative = now() == '-';
        at_ += isNegative ? 1 : 0;
        if (!isDigit()) {
            fail(isNegative ? "digit" : "value");
            return;
        }
        if (now() == '0')
            ++at_;
        else
            digits();
        const std::size_t point = at_;
        if (now() == '.') {
            ++at_;
            if (!digits())
                return;
        }
        const std::size_t exponent = at_;
        if (now() == 'e' || now() == 'E') {
            ++at_;
            at_ += now() == '+' || now() == '-' ? 1 : 0;
            if (!digits())
                return;
        }
        const std::size_t first = start + (isNegative ? 1 : 0);
        if (at_ == point && whole(first, isNegative))
            return;
        if (at_ != exponent || !decimal(first, point, isNegative))
            real(start);
    }

    std::uint64_t digitsAsNumber(std::size_t from, std::size_t to, std::uint64_t number) const {
        for (std::size_t i = from; i < to; ++i)
            number = number * 10 + static_cast<std::uint64_t>(text_[i] - '0');
        return number;
    }

    // -0 is no whole number, and neither are those that 64 bits do not hold.
    bool whole(std::size_t first, bool isNegative) {
        std::uint64_t magnitude = 0;
        if (at_ - first < 19)
            magnitude = digitsAsNumber(first, at_, 0);
        else if (std::from_chars(text_.data() + first, text_.data() + at_, magnitude).ec != std::errc())
            return false;
        if (isNegative && (magnitude == 0 || magnitude > std::uint64_t{1} << 63U))
            return false;
        if (isNegative)
            add(Kind::Integer).integer = static_cast<std::int64_t>(0 - magnitude);
        else
            add(Kind::Natural).natural = magnitude;
        return true;
    }

    // Few digits: an exact quotient of exact numbers, rounded once, as the number itself is.
    bool decimal(std::size_t first, std::size_t point, bool isNegative) {
        static constexpr std::array<double, 16> powers{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                       1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
        if (at_ - first > powers.size())
            return false;
        const std::uint64_t mantissa = digitsAsNumber(std::min(point + 1, at_), at_, digitsAsNumber(first, point, 0));
        const double magnitude = static_cast<double>(mantissa) / powers[at_ - std::min(point + 1, at_)];
        add(Kind::Real).real = isNegative ? -magnitude : magnitude;
        return true;
    }

    void real(std::size_t start) {
        double value = 0;
        const auto end = std::from_chars(text_.data() + start, text_.data() + at_, value);
        // Out of range is said of what is too small, too, which is 0 or the smallest number.
        if (end.ec == std::errc::result_out_of_range)
            value = std::strtod(std::string(text_.substr(start, at_ - start)).c_str(), nullptr);
        if (std::isfinite(value))
            add(Kind::Real).real = value;
        else
            fail("number that a double holds");
    }

    bool string() {
        std::string& texts = tree_.texts_;
        const std::size_t begin = texts.size();
        ++at_;
        for (;;) {
            const std::size_t plain = at_;
            while (at_ < text_.size() && isPlain(text_[at_]))
                ++at_;
            texts.append(text_, plain, at_ - plain);
            if (now() == '"')
                break;
            if (now() == '\\' ? !escape() : !character())
                return false;
        }
        ++at_;
        JsonTree::Node& node = add(Kind::Text);
        node.natural = begin;
        node.end = static_cast<std::uint32_t>(texts.size());
        return true;
    }

    static bool isPlain(char character) {
        const auto code = static_cast<unsigned char>(character);
        return code >= 0x20 && code < 0x80 && character != '"' && character != '\\';
    }

    bool character() {
        std::string_view rest = text_.substr(at_);
        if (rest.empty() || static_cast<unsigned char>(rest[0]) < 0x20)
            return fail("closing quote");
        takeCodePoint(rest);
        const std::size_t length = text_.size() - at_ - rest.size();
        if (length == 1)
            return fail("UTF-8");
        tree_.texts_.append(text_, at_, length);
        at_ += length;
        return true;
    }

    bool escape() {
        static constexpr std::string_view letters = "\"\\/bfnrt";
        static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        ++at_;
        if (const std::size_t letter = letters.find(now()); at_ < text_.size() && letter != std::string_view::npos) {
            tree_.texts_ += meanings[letter];
            ++at_;
            return true;
        }
        unsigned int code = 0;
        if (!codeUnit(code))
            return false;
        if (code >= 0xD800 && code < 0xDC00) {
            unsigned int second = 0;
            if (now() != '\\')
                return fail("second half of a surrogate pair");
            ++at_;
            if (!codeUnit(second))
                return false;
            if (second < 0xDC00 || second > 0xDFFF)
                return fail("second half of a surrogate pair");
            code = 0x10000 + ((code - 0xD800) << 10U) + (second - 0xDC00);
        } else if (code >= 0xDC00 && code <= 0xDFFF) {
            return fail("first half of a surrogate pair");
        }
        appendUtf8(tree_.texts_, code);
        return true;
    }

    // "u" and four hexadecimal digits.
    bool codeUnit(unsigned int& code) {
        if (now() != 'u')
            return fail("escape");
        ++at_;
        const std::string_view hex = text_.substr(at_, 4);
        if (hex.size() != 4 || std::from_chars(hex.data(), hex.data() + 4, code, 16).ptr != hex.data() + 4)
            return fail("four hexadecimal digits");
        at_ += 4;
        return true;
    }
};

std::string JsonTree::parse(std::string_view text) {
    nodes_.clear();
    texts_.clear();
    // Of every node there is a character at least, so that all indices are inside, too.
    if (text.size() >= std::numeric_limits<std::uint32_t>::max())
        return "larger than 4 GiB";
    nodes_.reserve(text.size() / 8);
    return JsonScanner(text, *this).run();
}

} // namespace Travik
