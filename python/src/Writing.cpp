#include "Arrays.h"
#include "Errors.h"

#include <travik/datablock/Bytes.h>
#include <travik/service/ImageChange.h>

#include <pybind11/stl.h>

#include <cmath>

namespace Python {

namespace {

using Travik::Field;
using Travik::FieldValues;
using Travik::Role;
using Travik::Stored;

std::string typeName(const py::object& value) { return py::str(py::type::of(value).attr("__name__")); }

/// What an assignment goes to: positions in the array of what is in use, and the shape that its value has.
struct Target {
    std::vector<std::size_t> positions;
    py::tuple shape;
};

Target targetOf(const std::vector<py::ssize_t>& shape, const py::object& index) {
    const py::object arange = numpy("arange");
    py::ssize_t count = 1;
    for (const py::ssize_t extent : shape)
        count *= extent;
    py::object all = arange(count).attr("reshape")(shape);
    const py::object chosen = index.is_none() ? all : numpy("asarray")(all[index]);
    Target target{{}, chosen.attr("shape")};
    const auto flat = py::array_t<std::int64_t, py::array::forcecast | py::array::c_style>(chosen.attr("ravel")());
    target.positions.assign(flat.data(), flat.data() + flat.size());
    return target;
}

/// The elements at those positions.
std::vector<unsigned int> elementsAt(const FieldValues& shape, const std::vector<std::size_t>& positions) {
    std::vector<unsigned int> elements;
    elements.reserve(positions.size());
    for (std::size_t position : positions) {
        unsigned int element = 0;
        unsigned int step = 1;
        for (std::size_t d = shape.dimensions.size(); d-- > 0;) {
            const Travik::ValueDimension& dimension = shape.dimensions[d];
            element += static_cast<unsigned int>(position % dimension.used) * step;
            position /= dimension.used;
            step *= dimension.extent;
        }
        elements.push_back(element);
    }
    return elements;
}

/// The array in the shape of the target; of a whole array it must have it already.
py::object shaped(const py::object& array, const Target& target, const std::string& name, bool isWhole) {
    const py::object given = array.attr("shape");
    if (given.equal(target.shape))
        return array;
    const std::string shapes = name + " takes shape " + std::string(py::str(py::object(target.shape))) +
                               ", this is of shape " + std::string(py::str(given));
    if (isWhole)
        throw py::value_error(shapes);
    try {
        return numpy("broadcast_to")(array, target.shape);
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_ValueError))
            throw;
        throw py::value_error(shapes);
    }
}

template <class Number>
std::vector<Number> flat(const py::object& array) {
    const auto numbers = py::array_t<Number, py::array::forcecast | py::array::c_style>(array.attr("ravel")());
    return {numbers.data(), numbers.data() + numbers.size()};
}

/// An array of numbers out of whatever was given.
py::object numberArray(const py::object& value, const std::string& name) {
    if (PyLong_Check(value.ptr()) != 0) { // NumPy would make an object of a very large one
        int overflow = 0;
        const long long small = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
        if (overflow == 0)
            return numpy("asarray")(small);
        const double wide = PyLong_AsDouble(value.ptr());
        const bool isHuge = PyErr_Occurred() != nullptr;
        PyErr_Clear();
        const unsigned long long natural = PyLong_AsUnsignedLongLong(value.ptr());
        if (PyErr_Occurred() == nullptr)
            return numpy("asarray")(py::int_(natural), py::arg("dtype") = "uint64");
        PyErr_Clear();
        return numpy("asarray")(isHuge ? std::copysign(HUGE_VAL, overflow) : wide);
    }
    py::object array = numpy("asanyarray")(value);
    if (py::isinstance(array, py::module_::import("numpy.ma").attr("MaskedArray"))) {
        if (numpy("ma").attr("is_masked")(array).cast<bool>())
            throw py::value_error(name + " takes no masked values");
    }
    array = numpy("asarray")(array);
    const std::string kind = py::str(array.attr("dtype").attr("kind"));
    if (kind.find_first_of("biuf") == std::string::npos)
        throw py::type_error(name + " takes numbers, not " +
                             (array.attr("ndim").cast<int>() == 0
                                  ? typeName(value)
                                  : "an array of " + std::string(py::str(array.attr("dtype")))));
    if (kind == "f" && array.attr("itemsize").cast<int>() > 8) {
        const py::object isFinite = numpy("isfinite");
        const py::object narrow = array.attr("astype")("float64");
        if (!numpy("array_equal")(isFinite(narrow), isFinite(array)).cast<bool>())
            throw py::value_error(name + ": out of range");
        array = narrow;
    }
    return array;
}

using Values = decltype(Travik::ArrayAssignment::values);

Values numbersOf(const py::object& value, const Target& target, const std::string& name, bool isWhole) {
    const py::object array = shaped(numberArray(value, name), target, name, isWhole);
    const std::string kind = py::str(array.attr("dtype").attr("kind"));
    if (kind == "f")
        return flat<double>(array);
    if (kind == "u")
        return flat<std::uint64_t>(array);
    return flat<std::int64_t>(array);
}

/// A text, or the ISO 8601 of a date; nothing for None in a date field.
std::optional<std::string> wordOf(const py::handle& item, const Field& field, const std::string& name) {
    const bool isDate = field.stored != Stored::Text;
    if (py::isinstance<py::str>(item)) {
        // A lone surrogate has no UTF-8; that is a UnicodeEncodeError, which is a ValueError.
        return py::reinterpret_borrow<py::str>(item).attr("encode")("utf-8").cast<std::string>();
    }
    if (isDate && item.is_none())
        return std::nullopt;
    const py::object date = py::module_::import("datetime").attr("date");
    if (isDate && py::isinstance(item, date)) {
        const std::string iso = py::str(item.attr("isoformat")());
        constexpr std::string_view midnight = "T00:00:00"; // any other time of day would be lost
        return iso.ends_with(midnight) ? iso.substr(0, iso.size() - midnight.size()) : iso;
    }
    throw py::type_error(name + (isDate ? " takes a datetime.date or an ISO 8601 text, not " : " takes a str, not ") +
                         typeName(py::reinterpret_borrow<py::object>(item)));
}

std::vector<std::optional<std::string>> wordsOf(const py::object& value, const Target& target, const Field& field,
                                                const std::string& name, bool isWhole) {
    const bool isDate = field.stored != Stored::Text;
    py::object array = numpy("asarray")(value, py::arg("dtype") = "object");
    if (isDate && py::str(numpy("asarray")(value).attr("dtype").attr("kind")).equal(py::str("M")))
        array = numpy("asarray")(value).attr("astype")("datetime64[D]").attr("astype")("object");
    array = shaped(array, target, name, isWhole);
    std::vector<std::optional<std::string>> words;
    for (const py::handle item : array.attr("ravel")().attr("tolist")())
        words.push_back(wordOf(item, field, name));
    return words;
}

/// Whether the image has nothing at an element that a value could go to.
bool isAbsent(const FieldValues& shape, const Travik::ImageBlock& block, unsigned int element) {
    return (!shape.usedByRow.empty() && !shape.isUsed(element)) ||
           !Travik::bytes::inside(block.bytes.size(), shape.field->elementOffset(element), shape.field->width);
}

/// Leaves out what stands for nothing where there is nothing, and refuses whatever else is to go there.
template <class Value, class IsNothing>
void dropAbsent(const FieldValues& shape, const Travik::ImageBlock& block, const std::string& name,
                std::vector<unsigned int>& elements, std::vector<Value>& values, const IsNothing& isNothing) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (isAbsent(shape, block, elements[i])) {
            if (isNothing(values[i]))
                continue;
            throw py::value_error(name + ": a value for an element that is not in use, which only NaN stands for");
        }
        elements[kept] = elements[i];
        if (kept != i)
            values[kept] = std::move(values[i]);
        ++kept;
    }
    elements.resize(kept);
    values.resize(kept);
}

bool isDate(const Travik::ImageBlock& block, const Field& field, unsigned int element) {
    const auto word = Travik::bytes::load<std::uint16_t>(block.bytes, field.elementOffset(element));
    return !Travik::dateText(word).empty();
}

} // namespace

void setFieldValue(const Block& block, const Field& field, Kind kind, const py::object& index,
                   const py::object& value) {
    const Block::Now now = block.now();
    const FieldValues shape = now.state->shape(*now.block, block.layout(), field);
    const std::string name = block.name() + '.' + field.name;
    const bool isWhole = index.is_none();
    const bool isWord = field.stored == Stored::Text || (field.role == Role::Date && kind == Kind::Physical);
    if (field.stored == Stored::Text && kind == Kind::Stored)
        throw py::type_error(name + " is a text: set it as such, not as it is stored");
    const Target target = targetOf(usedShape(shape), index);
    Travik::ArrayAssignment assignment{block.offset(), field.name, elementsAt(shape, target.positions), {}};
    if (!isWord) {
        assignment.values = numbersOf(value, target, name, isWhole);
        std::visit(
            [&]<class Value>(std::vector<Value>& values) {
                dropAbsent(shape, *now.block, name, assignment.elements, values, [](const Value& given) {
                    if constexpr (std::is_same_v<Value, double>)
                        return std::isnan(given);
                    else
                        return false;
                });
            },
            assignment.values);
    } else {
        std::vector<std::optional<std::string>> words = wordsOf(value, target, field, name, isWhole);
        dropAbsent(shape, *now.block, name, assignment.elements, words,
                   [](const std::optional<std::string>& given) { return !given || given->empty(); });
        std::vector<std::string> given;
        std::vector<unsigned int> elements;
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (words[i]) {
                given.push_back(std::move(*words[i]));
                elements.push_back(assignment.elements[i]);
            } else if (isDate(*now.block, field, assignment.elements[i])) {
                throw py::type_error(name + " takes a datetime.date or an ISO 8601 text, not None");
            }
        }
        assignment.values = std::move(given);
        assignment.elements = std::move(elements);
    }
    Travik::ArrayReport report;
    {
        const py::gil_scoped_release others;
        block.image()->edit([&](std::vector<char>& image) {
            report = Travik::assignArray(image, assignment, {.areStored = kind == Kind::Stored});
            return report.succeeded() && report.changes > 0;
        });
    }
    if (report.succeeded())
        return;
    const std::string text = report.refusal->text == field.name ? name : report.refusal->text;
    const std::string why = text + ": " + report.refusal->why;
    if (report.isDamaged)
        throw DamagedError{why};
    throw py::value_error(why);
}

} // namespace Python
