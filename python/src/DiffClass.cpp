#include "Module.h"

#include <travik/service/ImageDiff.h>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>

namespace Python {

namespace {

namespace py = pybind11;

/// A comparison with the images that it refers to.
struct Comparison : std::enable_shared_from_this<Comparison> {
    StatePtr before;
    StatePtr after;
    Travik::ImageDiff result;

    Comparison(StatePtr first, StatePtr second, const Travik::DiffOptions& options)
        : before(std::move(first)), after(std::move(second)), result(before->bytes(), after->bytes(), options) {}
};
using ComparisonPtr = std::shared_ptr<const Comparison>;

struct BlockDifference {
    ComparisonPtr all;
    const Travik::BlockDiff* block;
};

struct FieldDifference {
    BlockDifference in;
    const Travik::FieldDiff* field;
};

std::string keyOf(const BlockDifference& difference) {
    return Travik::toUtf8(Travik::keyOf(difference.block->block()));
}

std::string nameOf(const BlockDifference& difference) {
    const std::string key = keyOf(difference);
    return key.empty() ? std::to_string(difference.block->block().id) : key;
}

std::string differenceKind(const BlockDifference& difference) {
    const Travik::BlockDiff& block = *difference.block;
    return block.isOnlyBefore()  ? "only before"
           : block.isOnlyAfter() ? "only after"
           : block.isChanged()   ? "changed"
                                 : "moved";
}

py::object offsetOf(const Travik::ImageBlock* block) {
    return block ? py::object(py::int_(block->offset)) : py::object(py::none());
}

std::vector<BlockDifference> blockDifferences(const ComparisonPtr& all) {
    std::vector<BlockDifference> blocks;
    for (const Travik::BlockDiff& block : all->result.blocks())
        blocks.push_back({all, &block});
    return blocks;
}

std::vector<FieldDifference> fieldsOf(const BlockDifference& in) {
    std::vector<FieldDifference> fields;
    for (const Travik::FieldDiff& field : in.block->fields)
        fields.push_back({in, &field});
    return fields;
}

std::string countsOf(const Travik::DiffCounts& counts) {
    std::string text;
    const auto add = [&](std::size_t count, const char* what) {
        if (count > 0)
            text += (text.empty() ? "" : ", ") + std::to_string(count) + what;
    };
    add(counts.changed, " changed");
    add(counts.moved, " moved");
    add(counts.onlyBefore, " only before");
    add(counts.onlyAfter, " only after");
    add(counts.same, " the same");
    add(counts.forgiven, " of them within the tolerance");
    return text.empty() ? "no blocks" : text;
}

py::list bytesOf(const std::vector<Travik::BytesDiff>& differences) {
    py::list all;
    for (const Travik::BytesDiff& difference : differences)
        all.append(py::make_tuple(difference.offset, py::bytes(difference.before.data(), difference.before.size()),
                                  py::bytes(difference.after.data(), difference.after.size())));
    return all;
}

py::array indicesOf(const FieldDifference& difference) {
    const Travik::FieldDiff& field = *difference.field;
    const std::size_t rank = field.field().rank;
    py::array_t<std::int64_t> indices({field.elements.size(), rank});
    std::int64_t* to = indices.mutable_data();
    for (const Travik::ElementDiff& element : field.elements)
        to = std::copy_n(element.index.begin(), rank, to);
    return indices;
}

/// Numbers as an array; of a text or a date a list.
py::object valuesOf(const FieldDifference& difference, bool isAfter) {
    const Travik::FieldDiff& field = *difference.field;
    const Travik::Field* const own = isAfter ? field.after : field.before;
    if (field.field().stored == Travik::Stored::Text || field.field().role == Travik::Role::Date) {
        const Travik::ImageBlock* const block = isAfter ? difference.in.block->after : difference.in.block->before;
        py::list texts;
        for (const Travik::ElementDiff& element : field.elements) {
            const bool isThere = block && own && (isAfter ? element.isInAfter : element.isInBefore);
            const std::span<const unsigned int> index(element.index.data(), field.field().rank);
            if (isThere)
                texts.append(py::str(Travik::elementText(*block, own, index)));
            else
                texts.append(py::none());
        }
        return texts;
    }
    py::array_t<double> numbers(static_cast<py::ssize_t>(field.elements.size()));
    std::ranges::transform(field.elements, numbers.mutable_data(), [&](const Travik::ElementDiff& element) {
        const bool isThere = isAfter ? element.isInAfter : element.isInBefore;
        return isThere ? (isAfter ? element.after : element.before) : std::numeric_limits<double>::quiet_NaN();
    });
    return numbers;
}

std::shared_ptr<Comparison> compare(const Image& before, const Image& after, double tolerance, double relative,
                                    const std::vector<std::string>& blocks) {
    const Travik::DiffOptions options{tolerance, relative, Travik::BlockSelector(blocks)};
    if (!options.isValid())
        throw py::value_error("a tolerance is a number from 0 on");
    StatePtr first = before.state();
    StatePtr second = after.state();
    const py::gil_scoped_release others;
    return std::make_shared<Comparison>(std::move(first), std::move(second), options);
}

void defineParts(py::module_& module) {
    MadeHere<FieldDifference>(module, "FieldDiff", "The elements of a field that differ. Arrays have a row for each.")
        .def_property_readonly("name", [](const FieldDifference& it) { return std::string(it.field->name()); })
        .def_property_readonly("unit", [](const FieldDifference& it) { return std::string(it.field->field().unit); })
        .def_property_readonly("indices", &indicesOf, "int64, elements × dimensions: where.")
        .def_property_readonly(
            "before", [](const FieldDifference& it) { return valuesOf(it, false); },
            "Physical values, float64; NaN where there is no such element. Of texts and dates a list of str or None.")
        .def_property_readonly(
            "after", [](const FieldDifference& it) { return valuesOf(it, true); }, "The same of the other image.")
        .def_property_readonly(
            "largest", [](const FieldDifference& it) { return it.field->largest; },
            "The largest difference that is a finite number, without its sign.")
        .def("__len__", [](const FieldDifference& it) { return it.field->elements.size(); })
        .def("__repr__", [](const FieldDifference& it) {
            return "<FieldDiff " + nameOf(it.in) + '.' + std::string(it.field->name()) + ": " +
                   std::to_string(it.field->elements.size()) + " elements>";
        });
    MadeHere<BlockDifference>(module, "BlockDiff", "A block that differs, or that only one of the images has.")
        .def_property_readonly("key",
                               [](const BlockDifference& it) {
                                   const std::string key = keyOf(it);
                                   return key.empty() ? py::object(py::none()) : py::object(py::str(key));
                               })
        .def_property_readonly("id", [](const BlockDifference& it) { return it.block->block().id; })
        .def_property_readonly("kind", &differenceKind, "\"changed\", \"moved\", \"only before\" or \"only after\".")
        .def_property_readonly(
            "offset_before", [](const BlockDifference& it) { return offsetOf(it.block->before); }, "None: not there.")
        .def_property_readonly(
            "offset_after", [](const BlockDifference& it) { return offsetOf(it.block->after); }, "None: not there.")
        .def_property_readonly("fields", &fieldsOf, "A list of FieldDiff.")
        .def_property_readonly(
            "words",
            [](const BlockDifference& it) {
                py::dict words;
                for (const Travik::WordDiff& word : it.block->words)
                    words[py::str(std::string(Travik::nameOf(word.word)))] = py::make_tuple(word.before, word.after);
                return words;
            },
            "Words that are no values, \"checksum\" and the like: before and after.")
        .def_property_readonly(
            "bytes", [](const BlockDifference& it) { return bytesOf(it.block->bytes); },
            "Bytes that no field covers: a list of offset in the block, bytes before and after.")
        .def_property_readonly(
            "forgiven", [](const BlockDifference& it) { return it.block->forgiven; },
            "How many elements differ within the tolerance.")
        .def("__repr__", [](const BlockDifference& it) {
            return "<BlockDiff " + nameOf(it) + ": " + differenceKind(it) + ", " +
                   std::to_string(it.block->fields.size()) + " fields>";
        });
}

} // namespace

void defineDiff(py::module_& module) {
    defineParts(module);
    MadeHere<Comparison, std::shared_ptr<Comparison>>(module, "Diff",
                                                      R"(What differs between two images; false where nothing does.

Iterating gives the blocks that differ. It shows the images as they were when they were compared.)")
        .def("__bool__", [](const Comparison& it) { return !it.result.isSame(); })
        .def("__len__", [](const Comparison& it) { return it.result.blocks().size(); })
        .def("__iter__",
             [](const Comparison& it) { return py::iter(py::cast(blockDifferences(it.shared_from_this()))); })
        .def_property_readonly(
            "blocks", [](const Comparison& it) { return blockDifferences(it.shared_from_this()); },
            "A list of BlockDiff.")
        .def_property_readonly(
            "rest", [](const Comparison& it) { return bytesOf(it.result.rest()); },
            "Bytes behind the last block that differ: a list of offset from there, bytes before and after.")
        .def("__repr__", [](const Comparison& it) {
            return "<travik.Diff: " + countsOf(it.result.counts()) +
                   (it.result.rest().empty() ? "" : ", other bytes behind the blocks") + '>';
        });
    module.def("diff", &compare, py::arg("before"), py::arg("after"), py::kw_only(), py::arg("tolerance") = 0.0,
               py::arg("relative") = 0.0, py::arg("blocks") = std::vector<std::string>(),
               R"(Compares two images block by block and value by value.

tolerance: numbers whose physical values differ by no more, in the unit of their field, count as the same; relative: the
same by the difference over the larger of their magnitudes; one of the two suffices. Without a tolerance every bit
counts. blocks: only those of these keys or identifiers, which may be globs ("RFBO_*").

Returns a Diff, which is false where nothing differs. Raises ValueError for a tolerance that is none.)");
}

} // namespace Python
