#include <travik/datablock/Bytes.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/StoreValue.h>
#include <travik/service/ValueText.h>

namespace Travik {

ElementText::ElementText(const ImageBlock& block, const FieldValues& values)
    : block_(block), values_(values), format_(*values.field) {}

std::string ElementText::operator()(std::size_t element) const { return text(element, false); }

std::string ElementText::exact(std::size_t element) const { return text(element, true); }

std::string ElementText::text(std::size_t element, bool isExact) const {
    const Field& field = *values_.field;
    const auto index = static_cast<unsigned int>(element);
    if (!values_.isWhole && !bytes::inside(block_.bytes.size(), field.elementOffset(index), field.width))
        return {};
    if (element < values_.texts.size() && (values_.isText() || !values_.texts[element].empty()))
        return values_.texts[element];
    if (isWideInteger(field))
        return storedText(block_.bytes, field, index);
    const double number = values_.values[element];
    return isExact ? format_.exact(number) : format_.text(number);
}

} // namespace Travik
