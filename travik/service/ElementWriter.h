#pragma once

#include <travik/service/StoreValue.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Elements of one field, set by what a person writes or a program has: `StoreValue` in the terms of `ImageChange`.
namespace Travik {

/// The field without scale, zero and unit.
Field asStored(const Field& field);

/// A number of the type, where the text is one and nothing else.
template <class T>
std::optional<T> wholeText(std::string_view text) {
    T number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    return end.ec == std::errc() && end.ptr == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

/// Writes elements of a field. Each function says what is wrong with the value, or nothing.
class ElementWriter {
public:
    /// `areStored`: numbers are as they are stored, without scale and zero; a date's is its packed number.
    ElementWriter(const Field& field, bool areStored);

    /// A number, a text or a date as a person writes it.
    std::string writeText(std::span<char> block, unsigned int element, std::string_view text, bool& isRounded) const;

    /// A value of the field's kind; whole numbers keep all their digits in fields that store 64 bits.
    std::string write(std::span<char> block, unsigned int element, double number, bool& isRounded) const;
    std::string write(std::span<char> block, unsigned int element, std::int64_t number, bool& isRounded) const;
    std::string write(std::span<char> block, unsigned int element, std::uint64_t number, bool& isRounded) const;
    std::string write(std::span<char> block, unsigned int element, const std::string& text, bool& isRounded) const;

private:
    Field field_;
    bool areStored_;
    bool isText_;

    template <class Number>
    std::string writeNumber(std::span<char> block, unsigned int element, Number number, bool& isRounded) const;
    std::string describe(StoreOutcome outcome, bool& isRounded) const;
};

/// The elements of a field before anything is written, each of which lies in the block.
class ElementValues {
public:
    ElementValues(std::span<const char> block, const Field& field, bool areStored);

    /// Whether the element has this value already; not asked of whole numbers, which are written for sure.
    bool has(unsigned int element, double number) const;
    bool has(unsigned int element, const std::string& text) const;
    static bool has(unsigned int /*element*/, std::int64_t /*number*/) { return false; }
    static bool has(unsigned int /*element*/, std::uint64_t /*number*/) { return false; }

private:
    Field field_;
    bool isText_;
    std::span<const char> block_;
    std::vector<double> numbers_;
};

} // namespace Travik
