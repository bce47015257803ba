#include "Arrays.h"
#include "Module.h"

#include <travik/service/BlockSelector.h>
#include <travik/service/BlockTables.h>

#include <pybind11/stl.h>

namespace Python {

namespace {

using Travik::Field;

/// The same block by its stored numbers.
struct StoredValues {
    Block block;
};

const Block& blockOf(const Block& block) { return block; }
const Block& blockOf(const StoredValues& stored) { return stored.block; }
constexpr Kind kindOf(const Block&) { return Kind::Physical; }
constexpr Kind kindOf(const StoredValues&) { return Kind::Stored; }

std::vector<std::string> fieldNames(const Block& block) {
    std::vector<std::string> names;
    for (const Field& field : block.layout().fields())
        names.emplace_back(field.name);
    return names;
}

const Field& fieldOf(const Block& block, const std::string& name) {
    const Field* const field = block.layout().find(name);
    if (field)
        return *field;
    const std::vector<std::string> names = fieldNames(block);
    throwNoSuchName(block.name() +
                    (names.empty() ? " has no fields" : ": " + Travik::noSuchName("field", name, names)));
}

/// "values", or ("values", 0, 10) with an index for the array.
struct Key {
    std::string name;
    py::object index = py::none();

    explicit Key(const py::object& key) {
        py::object text = key;
        if (py::isinstance<py::tuple>(key) && py::len(key) > 0) {
            text = key[py::int_(0)];
            index = key[py::slice(1, static_cast<py::ssize_t>(py::len(key)), 1)];
        }
        if (!py::isinstance<py::str>(text))
            throw py::type_error("a field is named by a str, as in block[\"values\"] or block[\"values\", 0, 10]");
        name = py::str(text.attr("encode")("utf-8", "replace").attr("decode")("utf-8"));
        if (!index.is_none() && py::len(index) == 0)
            index = py::none();
    }
};

void refuseIndex(const Block& block, const Field& field, const Key& key) {
    if (field.rank == 0 && !key.index.is_none())
        throw py::index_error(block.name() + '.' + field.name + " has no dimensions, takes no index");
}

template <class View>
py::object getItem(const View& view, const py::object& named) {
    const Block& block = blockOf(view);
    const Key key(named);
    const Field& field = fieldOf(block, key.name);
    refuseIndex(block, field, key);
    const py::object value = fieldValue(block, field, kindOf(view));
    return key.index.is_none() ? value : py::object(value[key.index]);
}

template <class View>
void setItem(const View& view, const py::object& named, const py::object& value) {
    const Block& block = blockOf(view);
    const Key key(named);
    const Field& field = fieldOf(block, key.name);
    refuseIndex(block, field, key);
    setFieldValue(block, field, kindOf(view), key.index, value);
}

/// What block["..."] takes, for the block and for its stored numbers.
template <class Type>
void defineItems(Type& type, const char* get, const char* set) {
    using View = typename Type::type;
    type.def("__getitem__", &getItem<View>, py::arg("field"), get)
        .def("__setitem__", &setItem<View>, py::arg("field"), py::arg("value"), set)
        .def("__contains__",
             [](const View& view, const py::object& name) {
                 return py::isinstance<py::str>(name) && blockOf(view).layout().find(Key(name).name) != nullptr;
             })
        .def("__iter__", [](const View& view) { return py::iter(py::cast(fieldNames(blockOf(view)))); })
        .def("__len__", [](const View& view) { return blockOf(view).layout().fields().size(); })
        .def(
            "keys", [](const View& view) { return fieldNames(blockOf(view)); }, "The names of the fields.");
}

std::size_t dimensionOf(const Block& block, const Field& field, py::ssize_t dimension) {
    const auto rank = static_cast<py::ssize_t>(field.rank);
    if (dimension < -rank || dimension >= rank)
        throw py::index_error(block.name() + '.' + field.name + " has " + std::to_string(rank) + " dimensions");
    return static_cast<std::size_t>(dimension < 0 ? dimension + rank : dimension);
}

/// A dimension as Python sees it.
struct DimensionFacts {
    std::string name;
    unsigned int extent;
    unsigned int used;
    std::optional<int> axisBlock;
    std::optional<std::string> axisName;
    std::string axisUnit;
};

std::vector<DimensionFacts> dimensionsOf(const Block& block, const std::string& name) {
    const Field& field = fieldOf(block, name);
    const Block::Now now = block.now();
    const Travik::FieldValues shape = now.state->shape(*now.block, block.layout(), field);
    std::vector<DimensionFacts> all;
    for (const Travik::ValueDimension& dimension : shape.dimensions) {
        DimensionFacts facts{std::string(dimension.name), dimension.extent, dimension.used, {}, {}, {}};
        if (dimension.axisBlock != 0)
            facts.axisBlock = dimension.axisBlock;
        if (dimension.axis) {
            facts.axisName = Travik::axisName(dimension, block.id());
            facts.axisUnit = dimension.axis->unit;
        }
        all.push_back(std::move(facts));
    }
    return all;
}

std::string roleOf(const Block& block, const std::string& name) {
    switch (fieldOf(block, name).role) {
    case Travik::Role::Value:
        return "value";
    case Travik::Role::Count:
        return "count";
    case Travik::Role::Axis:
        return "axis";
    case Travik::Role::Text:
        return "text";
    case Travik::Role::Date:
        return "date";
    case Travik::Role::Reserved:
        break;
    }
    return "reserved";
}

template <class Call>
auto ofBlock(const Call& call) {
    return [call](const Block& block) {
        const Block::Now now = block.now();
        return call(*now.block, *now.state);
    };
}

} // namespace

void defineBlock(py::module_& module) {
    MadeHere<DimensionFacts>(module, "Dimension", "A dimension of an array.")
        .def_readonly("name", &DimensionFacts::name, "\"row\", \"point\" and the like; may be empty.")
        .def_readonly("extent", &DimensionFacts::extent, "How many entries are stored.")
        .def_readonly("used", &DimensionFacts::used, "How many of them are in use: the length of the array.")
        .def_readonly("axis_block", &DimensionFacts::axisBlock,
                      "Identifier of the block that labels the entries, whether the image has it or not; or None.")
        .def_readonly("axis_name", &DimensionFacts::axisName, "What the labels are called; None where there are none.")
        .def_readonly("axis_unit", &DimensionFacts::axisUnit, "The unit of the labels.")
        .def("__repr__", [](const DimensionFacts& facts) {
            return "<Dimension " + facts.name + ": " + std::to_string(facts.used) + " of " +
                   std::to_string(facts.extent) + (facts.axisName ? " by " + *facts.axisName : "") + '>';
        });

    MadeHere<StoredValues> stored(module, "StoredValues",
                                  "The fields of a block by the numbers that are stored, without scale and unit.");
    defineItems(stored,
                R"(What is stored, without scale and zero: int or float, bytes of a text, the packed word of a date.

An array of numbers has the type they are stored in, and is a read-only view of the image without a copy: of the shape
that is in use. Numbers of ten bytes, and those that are some bits of a word, are copied.)",
                R"(Stores a number as it is, range-checked, or an array of them; as with the block itself.)");
    stored.def("__repr__", [](const StoredValues& view) { return "<stored values of " + view.block.name() + '>'; });

    MadeHere<Block> type(module, "Block", R"(A block of an image: fields by name.

block["values"] is what a field holds, block["values", 0, 10] an element or a part of an array, as NumPy indexes it.
Assigning to them changes the image in memory, range-checked, and seals the block: its checksum, and the CRC-32 that it
carries, hold afterwards as they did before. An assignment is done as a whole, or not at all.)");
    defineItems(type, R"(What a field holds, in its unit (block.units).

A number is an int or a float, a text a str, a date a datetime.date, or None where it is no date; None is what the block
ends before. Of a field with dimensions it is an array, which has the shape that is in use (the count fields say it, or the axis):
numbers as they are stored where the unit is theirs, such as float32 or uint16, else float64. Where the rows have
not the same length, or the block ends early, it is float64 and has NaN for what is not there.

Arrays are read-only, and show the image as it was when they were taken; copy() gives one to work on. Where the stored numbers are
what is shown they are views of the image, without a copy.

Raises KeyError where there is no such field, IndexError as NumPy does.)",
                R"(Stores a value, an array, or what an index of the array names; the nearest stored step is taken.

A whole array has the shape of block[field]; into a part, NumPy's broadcasting applies. NaN where nothing is in use
stays nothing. Elements that have the value already keep their bytes.

Raises ValueError for what the field cannot hold, a wrong shape, and a value that would change the shape of a table; TypeError for
one of another kind; Error for a damaged block. Then nothing is changed.)");
    type.def_property_readonly(
            "key",
            [](const Block& block) {
                return block.key().empty() ? py::object(py::none()) : py::object(py::str(block.key()));
            },
            "The key name, or None.")
        .def_property_readonly(
            "id", [](const Block& block) { return block.id(); }, "The identifier.")
        .def_property_readonly(
            "offset", [](const Block& block) { return block.offset(); }, "Where it lies in the image.")
        .def_property_readonly("image", [](const Block& block) { return block.image(); })
        .def_property_readonly(
            "size", ofBlock([](const Travik::ImageBlock& block, const ImageState&) { return block.bytes.size(); }),
            "In bytes, as far as the image goes.")
        .def_property_readonly("class_name", ofBlock([](const Travik::ImageBlock& block, const ImageState&) {
                                   return block.isSecondEdition ? std::optional(std::string("HwDatablock2Edition"))
                                          : block.entry         ? std::optional(std::string(block.entry->className))
                                                                : std::nullopt;
                               }),
                               "The class of the library that serves it, or None.")
        .def_property_readonly("checksum_ok", ofBlock([](const Travik::ImageBlock& block, const ImageState&) {
                                   const bool isUnread =
                                       block.isEnd() || (block.checksumHolds && !block.checksumChecked);
                                   return isUnread ? std::nullopt : std::optional(block.checksumHolds);
                               }),
                               "Whether the 16-bit checksum holds; None where it is not looked at.")
        .def_property_readonly("crc_ok", ofBlock([](const Travik::ImageBlock& block, const ImageState&) {
                                   return block.crcHolds || block.isSecondEdition ? std::optional(block.crcHolds)
                                                                                  : std::nullopt;
                               }),
                               "Whether the CRC-32 that it carries matches; None where it carries none.")
        .def_property_readonly("problems", ofBlock([](const Travik::ImageBlock& block, const ImageState& state) {
                                   return state.module().problems(block);
                               }),
                               "What is wrong with the block, a list of Finding.")
        .def_property_readonly("fields", &fieldNames, "The names of the fields, in the order of the image.")
        .def_property_readonly(
            "units",
            [](const Block& block) {
                py::dict units;
                for (const Field& field : block.layout().fields())
                    units[py::str(field.name)] = py::str(field.unit);
                return units;
            },
            "The unit of each field by its name; \"\" where there is none.")
        .def_property_readonly(
            "stored", [](const Block& block) { return StoredValues{block}; },
            "The same fields by the numbers that are stored: block.stored[\"values\"].")
        .def(
            "axis",
            [](const Block& block, const std::string& name, py::ssize_t dimension) {
                const Field& field = fieldOf(block, name);
                return axisLabels(block, field, dimensionOf(block, field, dimension));
            },
            py::arg("field"), py::arg("dimension") = 0,
            R"(What labels the entries in use of a dimension: frequencies, and the like.

An array as long as the dimension: float64, or str; in the unit that dimensions() tells. Of two dimensions where each index
of the first dimension has labels of its own, with NaN behind them. None where nothing labels it, or not as many. Raises KeyError
for a field, IndexError for a dimension that is none.)")
        .def("dimensions", &dimensionsOf, py::arg("field"),
             "The dimensions of an array, outermost first; empty for a single value.")
        .def("role", &roleOf, py::arg("field"), "What a field is for: value, count, axis, text, date or reserved.")
        .def("__bytes__",
             [](const Block& block) {
                 const Block::Now now = block.now();
                 return py::bytes(now.block->bytes.data(), now.block->bytes.size());
             })
        .def(
            "__eq__",
            [](const Block& left, const Block& right) {
                return left.image() == right.image() && left.offset() == right.offset();
            },
            py::is_operator())
        .def("__hash__",
             [](const Block& block) {
                 return py::hash(py::make_tuple(reinterpret_cast<std::uintptr_t>(block.image().get()), block.offset()));
             })
        .def("__repr__", [](const py::object& self) { return helper("_texts", "block_text")(self); })
        .def("_repr_html_", [](const py::object& self) { return helper("_texts", "block_html")(self); });
}

} // namespace Python
