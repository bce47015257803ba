#pragma once

#include <travik/service/NumberFormat.h>
#include <travik/service/Values.h>

#include <string>

namespace Travik {

/// The text of one element, counted with the last dimension fastest: of a number by its format, of a date ISO 8601
/// where it is one, of a text its characters as they are. Wide integers are exact. Empty where the block ends before
/// the element.
class TRAVIK_SERVICE_EXPORT ElementText {
public:
    /// Both must outlive it.
    ElementText(const ImageBlock& block, const FieldValues& values);
    std::string operator()(std::size_t element) const;
    /// The same for a machine: every digit that makes a difference, no unit.
    std::string exact(std::size_t element) const;

private:
    const ImageBlock& block_;
    const FieldValues& values_;
    NumberFormat format_;

    std::string text(std::size_t element, bool isExact) const;
};

} // namespace Travik
