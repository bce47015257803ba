#include "Arrays.h"

#include <travik/datablock/Bytes.h>
#include <travik/service/StoreValue.h>

#include <pybind11/stl.h>

#include <limits>

namespace Python {

namespace {

using Travik::Field;
using Travik::FieldValues;
using Travik::Role;
using Travik::Stored;

constexpr double missing = std::numeric_limits<double>::quiet_NaN();

/// The field without scale and zero.
Field plain(const Field& field) {
    Field result = field;
    result.scale = 1.0;
    result.zero = 0.0;
    return result;
}

bool isPlain(const Field& field) { return field.scale == 1.0 && field.zero == 0.0; }

bool isInside(const Field& field, std::size_t offset, std::span<const char> bytes) {
    return Travik::bytes::inside(bytes.size(), offset, field.width);
}

/// The array for reading only. Of one that owns its numbers a view, which nobody makes writable again by mistake.
py::object freeze(const py::object& array) {
    const auto close = [](const py::object& open) { open.attr("setflags")(py::arg("write") = false); };
    close(array);
    const py::object owner = array.attr("base");
    if (py::isinstance<py::array>(owner))
        close(owner);
    return owner.is_none() ? py::object(array.attr("view")()) : array;
}

/// Calls `visit` with the element of each entry in use, and whether the field has it: a ragged table has not all.
template <class Visit>
void visitUsed(const FieldValues& shape, std::span<const char> bytes, const Visit& visit) {
    const Field& field = *shape.field;
    std::array<unsigned int, Field::maxRank> index{};
    const auto walk = [&](const auto& self, unsigned int d, unsigned int element) -> void {
        if (d == field.rank) {
            const bool isThere = (shape.usedByRow.empty() || index[shape.variesIn] < shape.usedByRow[index[0]]) &&
                                 (shape.isWhole || isInside(field, field.elementOffset(element), bytes));
            visit(element, isThere);
            return;
        }
        for (index[d] = 0; index[d] < shape.dimensions[d].used; ++index[d])
            self(self, d + 1, element * field.dimensions[d].extent + index[d]);
    };
    walk(walk, 0, 0);
}

bool isComplete(const FieldValues& shape) { return shape.isWhole && shape.usedByRow.empty(); }

/// The bytes themselves, kept by the state that they belong to.
py::object view(const StatePtr& state, const Travik::ImageBlock& block, const FieldValues& shape) {
    const Field& field = *shape.field;
    std::vector<py::ssize_t> strides;
    for (unsigned int d = 0; d < field.rank; ++d)
        strides.push_back(static_cast<py::ssize_t>(field.dimensions[d].stride));
    const py::capsule keeper(new StatePtr(state), [](void* kept) { delete static_cast<StatePtr*>(kept); });
    return freeze(py::array(storedType(field), usedShape(shape), strides, block.bytes.data() + field.offset, keeper));
}

/// Converted numbers; what is not there is NaN.
py::object copy(const Travik::ImageBlock& block, const FieldValues& shape, const Field& field) {
    py::array_t<double> array(usedShape(shape));
    double* to = array.mutable_data();
    const std::size_t count = field.elements();
    if (isComplete(shape) && static_cast<std::size_t>(array.size()) == count) {
        Travik::fieldValues(block.bytes, field, {to, count});
    } else {
        std::vector<double> all(count);
        Travik::fieldValues(block.bytes, field, all);
        visitUsed(shape, block.bytes,
                  [&](unsigned int element, bool isThere) { *to++ = isThere ? all[element] : missing; });
    }
    const bool isWhole = isComplete(shape) && !field.isFloating() && isPlain(field); // some bits of a word
    return freeze(isWhole ? array.attr("astype")("int64") : py::object(array));
}

py::object number(const Travik::ImageBlock& block, const Field& field) {
    if (!isInside(field, field.offset, block.bytes))
        return py::none();
    if (field.bits == 0 && isPlain(field) && field.stored == Stored::U64)
        return py::int_(Travik::bytes::load<std::uint64_t>(block.bytes, field.offset));
    if (field.bits == 0 && isPlain(field) && field.stored == Stored::I64)
        return py::int_(Travik::bytes::load<std::int64_t>(block.bytes, field.offset));
    const double value = Travik::fieldValue(block.bytes, field);
    if (isPlain(field) && !field.isFloating())
        return py::int_(static_cast<long long>(value));
    return py::float_(value);
}

/// A text or a date, or what stands for one that is not there.
py::object word(const Travik::ImageBlock& block, const Field& field, unsigned int element, Kind kind) {
    const std::size_t offset = field.elementOffset(element);
    const std::span<const char> bytes = block.bytes;
    if (field.stored != Stored::Text) {
        Field one = plain(field);
        one.rank = 0;
        one.offset = static_cast<unsigned int>(offset);
        const std::string iso = Travik::dateText(static_cast<unsigned int>(Travik::fieldValue(bytes, one)));
        return iso.empty() ? py::none() : py::module_::import("datetime").attr("date").attr("fromisoformat")(iso);
    }
    if (kind == Kind::Stored)
        return py::bytes(bytes.data() + offset, field.width);
    const std::string text = Travik::toUtf8(Travik::bytes::text(bytes, offset, field.width));
    return py::str(text);
}

py::object words(const Travik::ImageBlock& block, const FieldValues& shape, Kind kind) {
    const Field& field = *shape.field;
    const bool isText = field.stored == Stored::Text;
    const py::object nothing = !isText                ? py::object(py::none())
                               : kind == Kind::Stored ? py::object(py::bytes())
                                                      : py::object(py::str());
    if (field.rank == 0)
        return isInside(field, field.offset, block.bytes) ? word(block, field, 0, kind) : py::none();
    py::list all;
    visitUsed(shape, block.bytes, [&](unsigned int element, bool isThere) {
        all.append(isThere ? word(block, field, element, kind) : nothing);
    });
    const py::object type = !isText                ? py::object(py::str("object"))
                            : kind == Kind::Stored ? py::object(py::str("S" + std::to_string(field.width)))
                                                   : py::object(py::str("str"));
    return freeze(numpy("array")(all, py::arg("dtype") = type).attr("reshape")(usedShape(shape)));
}

py::object numbers(std::span<const double> values) {
    py::array_t<double> array(static_cast<py::ssize_t>(values.size()));
    std::ranges::copy(values, array.mutable_data());
    return freeze(array);
}

} // namespace

std::vector<py::ssize_t> usedShape(const FieldValues& shape) {
    std::vector<py::ssize_t> extents;
    for (const Travik::ValueDimension& dimension : shape.dimensions)
        extents.push_back(static_cast<py::ssize_t>(dimension.used));
    return extents;
}

py::dtype storedType(const Field& field) {
    switch (field.stored) {
    case Stored::U8:
        return py::dtype::of<std::uint8_t>();
    case Stored::I8:
        return py::dtype::of<std::int8_t>();
    case Stored::U16:
        return py::dtype::of<std::uint16_t>();
    case Stored::I16:
        return py::dtype::of<std::int16_t>();
    case Stored::U32:
        return py::dtype::of<std::uint32_t>();
    case Stored::I32:
        return py::dtype::of<std::int32_t>();
    case Stored::U64:
        return py::dtype::of<std::uint64_t>();
    case Stored::I64:
        return py::dtype::of<std::int64_t>();
    case Stored::F32:
        return py::dtype::of<float>();
    case Stored::Text:
        return py::dtype("S" + std::to_string(field.width));
    case Stored::F64:
    case Stored::F80:
        break;
    }
    return py::dtype::of<double>();
}

py::object fieldValue(const Block& block, const Field& field, Kind kind) {
    const auto [state, bytes] = block.now();
    const FieldValues shape = state->shape(*bytes, block.layout(), field);
    if (field.stored == Stored::Text || (field.role == Role::Date && kind == Kind::Physical))
        return words(*bytes, shape, kind);
    const Field shown = kind == Kind::Stored ? plain(field) : field;
    if (field.rank == 0)
        return number(*bytes, shown);
    if (isComplete(shape) && field.bits == 0 && field.stored != Stored::F80 && isPlain(shown))
        return view(state, *bytes, shape);
    return copy(*bytes, shape, shown);
}

py::object axisLabels(const Block& block, const Field& field, std::size_t dimension) {
    const auto [state, bytes] = block.now();
    const FieldValues shape = state->shape(*bytes, block.layout(), field);
    const Travik::Axis* const axis = shape.dimensions.at(dimension).axis.get();
    if (!axis)
        return py::none();
    if (!axis->texts.empty())
        return freeze(numpy("array")(py::cast(axis->texts), py::arg("dtype") = "str"));
    if (axis->byRow.empty())
        return numbers(axis->values);
    const std::size_t rows = shape.dimensions.front().used;
    const std::size_t columns = axis->size();
    std::vector<double> all(rows * columns, missing);
    for (std::size_t row = 0; row < rows; ++row)
        std::ranges::copy(axis->at(row), all.begin() + static_cast<std::ptrdiff_t>(row * columns));
    return freeze(numbers(all).attr("reshape")(rows, columns));
}

} // namespace Python
