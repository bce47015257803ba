#include <travik/datablock/Bytes.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/ElementWriter.h>
#include <travik/service/Values.h>

#include <cmath>
#include <cstdlib>
#include <type_traits>
#include <utility>

namespace Travik {

namespace {

constexpr const char* notWhole = "not a whole number, as the field stores them";

bool isTextual(const Field& field, bool areStored) {
    return field.stored == Stored::Text || (field.role == Role::Date && !areStored);
}

} // namespace

Field asStored(const Field& field) {
    Field result = field;
    result.scale = 1.0;
    result.zero = 0.0;
    result.unit = "";
    return result;
}

ElementWriter::ElementWriter(const Field& field, bool areStored)
    : field_(areStored ? asStored(field) : field), areStored_(areStored), isText_(isTextual(field, areStored)) {}

std::string ElementWriter::describe(StoreOutcome outcome, bool& isRounded) const {
    isRounded = outcome == StoreOutcome::Rounded;
    return describeOutcome(outcome, field_);
}

std::string ElementWriter::writeText(std::span<char> block, unsigned int element, std::string_view text,
                                     bool& isRounded) const {
    if (isText_)
        return describe(storeText(block, field_, element, text), isRounded);
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    if (isWideInteger(field_)) {
        if (field_.stored == Stored::U64) {
            if (const auto natural = wholeText<std::uint64_t>(text))
                return write(block, element, *natural, isRounded);
        } else if (const auto integer = wholeText<std::int64_t>(text)) {
            return write(block, element, *integer, isRounded);
        }
    }
    double number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec == std::errc::invalid_argument || end.ptr != text.data() + text.size())
        return describe(StoreOutcome::WrongKind, isRounded);
    // Out of range is said of what is too small, too, which is 0 or the smallest number.
    if (end.ec == std::errc::result_out_of_range) {
        number = std::strtod(std::string(text).c_str(), nullptr);
        if (std::isinf(number))
            return describe(StoreOutcome::OutOfRange, isRounded);
    }
    return write(block, element, number, isRounded);
}

template <class Number>
std::string ElementWriter::writeNumber(std::span<char> block, unsigned int element, Number number,
                                       bool& isRounded) const {
    if (isText_)
        return describe(field_.stored == Stored::Text ? StoreOutcome::WrongKind : StoreOutcome::NoDate, isRounded);
    if constexpr (std::is_integral_v<Number>) {
        if (isWideInteger(field_)) {
            const bool fits = field_.stored == Stored::U64 ? std::in_range<std::uint64_t>(number)
                                                           : std::in_range<std::int64_t>(number);
            if (!fits)
                return describe(StoreOutcome::OutOfRange, isRounded);
            const bool isInside =
                bytes::store(block, field_.elementOffset(element), static_cast<std::uint64_t>(number));
            return describe(isInside ? StoreOutcome::Exact : StoreOutcome::Outside, isRounded);
        }
    }
    const auto wide = static_cast<double>(number);
    const StoreOutcome outcome =
        areStored_ ? storeStored(block, field_, element, wide) : storeValue(block, field_, element, wide);
    if (outcome == StoreOutcome::OutOfRange && areStored_ && !field_.isFloating() && std::nearbyint(wide) != wide)
        return notWhole;
    return describe(outcome, isRounded);
}

std::string ElementWriter::write(std::span<char> block, unsigned int element, double number, bool& isRounded) const {
    return writeNumber(block, element, number, isRounded);
}

std::string ElementWriter::write(std::span<char> block, unsigned int element, std::int64_t number,
                                 bool& isRounded) const {
    return writeNumber(block, element, number, isRounded);
}

std::string ElementWriter::write(std::span<char> block, unsigned int element, std::uint64_t number,
                                 bool& isRounded) const {
    return writeNumber(block, element, number, isRounded);
}

std::string ElementWriter::write(std::span<char> block, unsigned int element, const std::string& text,
                                 bool& isRounded) const {
    return describe(isText_ ? storeText(block, field_, element, text) : StoreOutcome::WrongKind, isRounded);
}

ElementValues::ElementValues(std::span<const char> block, const Field& field, bool areStored)
    : field_(areStored ? asStored(field) : field), isText_(isTextual(field, areStored)), block_(block) {
    if (isText_)
        return;
    numbers_.resize(field.elements());
    fieldValues(block, field_, numbers_);
}

bool ElementValues::has(unsigned int element, double number) const {
    if (isText_)
        return false;
    const double before = numbers_[element];
    return std::isnan(number) ? std::isnan(before) : number == before && std::signbit(number) == std::signbit(before);
}

bool ElementValues::has(unsigned int element, const std::string& text) const {
    if (!isText_)
        return false;
    const std::size_t at = field_.elementOffset(element);
    return text == (field_.stored == Stored::Text ? toUtf8(bytes::text(block_, at, field_.width))
                                                  : dateText(bytes::load<std::uint16_t>(block_, at)));
}

} // namespace Travik
