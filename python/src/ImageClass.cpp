#include "Errors.h"
#include "Module.h"

#include <travik/registry/ModuleInfo.h>
#include <travik/service/BlockSelector.h>
#include <travik/service/ImageChange.h>

#include <pybind11/stl.h>

#include <algorithm>

namespace Python {

namespace {

namespace py = pybind11;

bool isCalled(const Travik::ImageBlock& block, const std::string& name) {
    return name == std::to_string(block.id) || name == Travik::toUtf8(Travik::keyOf(block));
}

/// A key, or an identifier in decimal: of any whole number.
std::string nameOf(const py::object& name) {
    if (py::isinstance<py::str>(name))
        return py::str(name.attr("encode")("utf-8", "replace").attr("decode")("utf-8"));
    if (PyIndex_Check(name.ptr()) == 0)
        throw py::type_error("a block is named by its key or its identifier, not by a " +
                             std::string(py::str(py::type::of(name).attr("__name__"))));
    const py::object number = py::reinterpret_steal<py::object>(PyNumber_Index(name.ptr()));
    if (!number)
        throw py::error_already_set();
    int overflow = 0;
    const long long id = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    return overflow == 0 ? std::to_string(id) : std::string(overflow < 0 ? "-" : "") + "beyond every number";
}

std::vector<Block> blocksOf(Image& image, const py::object& name) {
    const std::string text = nameOf(name);
    const StatePtr state = image.state();
    std::vector<Block> found;
    for (const Travik::ImageBlock& block : state->blocks()) {
        if (isCalled(block, text))
            found.emplace_back(image.shared_from_this(), block);
    }
    return found;
}

Block soleBlock(Image& image, const py::object& name) {
    std::vector<Block> found = blocksOf(image, name);
    const std::string text = nameOf(name);
    if (found.empty()) {
        const StatePtr state = image.state();
        const std::vector<std::string> misses = Travik::BlockSelector({text}).misses(state->module());
        throwNoSuchName(misses.empty() ? "no block " + text : misses.front());
    }
    if (found.size() > 1)
        throwNoSuchName(std::to_string(found.size()) + " blocks " + text + ": blocks_of() has them all");
    return std::move(found.front());
}

std::vector<Block> blocks(Image& image) {
    const StatePtr state = image.state();
    std::vector<Block> all;
    for (const Travik::ImageBlock& block : state->blocks())
        all.emplace_back(image.shared_from_this(), block);
    return all;
}

bool contains(Image& image, const py::object& name) {
    if (!py::isinstance<py::str>(name) && PyIndex_Check(name.ptr()) == 0)
        return false;
    const std::string text = nameOf(name);
    return std::ranges::any_of(image.state()->blocks(), [&](const auto& block) { return isCalled(block, text); });
}

std::string encodedPath(const py::object& path) {
    PyObject* encoded = nullptr;
    if (PyUnicode_FSConverter(path.ptr(), &encoded) == 0)
        throw py::error_already_set();
    const std::string text = py::reinterpret_steal<py::bytes>(encoded);
    return text == "-" ? "./-" : text;
}

py::object decodedPath(const std::string& path) {
    if (path.empty())
        return py::none();
    return py::reinterpret_steal<py::object>(
        PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<Py_ssize_t>(path.size())));
}

std::optional<std::string> backupOf(const py::object& backup) {
    if (backup.is_none() || backup.is(py::bool_(false)))
        return std::nullopt;
    return backup.is(py::bool_(true)) ? std::string() : encodedPath(backup);
}

py::object save(Image& image, const py::object& path, const py::object& backup) {
    const std::optional<std::string> file = path.is_none() ? std::nullopt : std::optional(encodedPath(path));
    const std::optional<std::string> old = backupOf(backup);
    Image::Saved saved;
    {
        const py::gil_scoped_release others;
        saved = image.save(file, old);
    }
    for (const std::string& warning : saved.warnings) {
        if (PyErr_WarnEx(PyExc_UserWarning, warning.c_str(), 1) != 0)
            throw py::error_already_set();
    }
    return decodedPath(saved.backup);
}

std::vector<std::string> reseal(Image& image, const py::args& names) {
    std::vector<std::string> patterns;
    for (const py::handle item : names) {
        const auto name = py::reinterpret_borrow<py::object>(item);
        if (blocksOf(image, name).empty())
            throwNoSuchName("no block " + nameOf(name));
        patterns.push_back(nameOf(name));
    }
    Travik::ResealReport report;
    {
        const py::gil_scoped_release others;
        image.edit([&](std::vector<char>& bytes) {
            report = Travik::resealImage(bytes, Travik::BlockSelector(patterns));
            return !report.changes.empty();
        });
    }
    std::vector<std::string> changes;
    for (const Travik::SumChange& change : report.changes)
        changes.push_back(change.block + ": " + std::string(Travik::nameOf(change.sum)) + ' ' +
                          std::to_string(change.before) + " -> " + std::to_string(change.after));
    return changes;
}

template <class Call>
auto withoutLock(Image& image, const Call& call) {
    const StatePtr state = image.state();
    const py::gil_scoped_release others;
    return call(state->module());
}

} // namespace

void defineImage(py::module_& module) {
    MadeHere<Image, std::shared_ptr<Image>> type(module, "Image", R"(A module image: a sequence of blocks.

image["KEY"] or image[15716] is a block; iterating gives the blocks in the order of the image. An edit of a block is an
edit of the image in memory; save() writes it. Images may be used from several threads. As a context manager, it is
closed at the end, which lets its memory go; arrays that were taken of it stay valid.)");
    type.def("__getitem__", &soleBlock, py::arg("name"), R"(The block of a key name or an identifier.

Raises KeyError where there is none, with the names that are near, and where there are several (see blocks_of).)")
        .def("__contains__", &contains, py::arg("name"))
        .def("__len__", [](Image& image) { return image.state()->blocks().size(); })
        .def("__iter__", [](Image& image) { return py::iter(py::cast(blocks(image))); })
        .def("blocks_of", &blocksOf, py::arg("name"),
             "All blocks of a key name or an identifier, in the order of the image; an empty list where there is none.")
        .def_property_readonly("blocks", &blocks, "All blocks, in the order of the image.")
        .def_property_readonly(
            "info", [](Image& image) { return withoutLock(image, &Travik::moduleInfo); },
            "Who the module is, its service, how worn it is. What is not recorded is None.")
        .def_property_readonly(
            "problems",
            [](Image& image) { return withoutLock(image, [](const auto& blocks) { return blocks.problems(); }); },
            "What is wrong with the image, a list of Finding; empty where it holds together.")
        .def_property_readonly(
            "findings",
            [](Image& image) { return withoutLock(image, [](const auto& blocks) { return blocks.findings(); }); },
            "The problems, and what is worth a look besides.")
        .def_property_readonly(
            "path", [](Image& image) { return decodedPath(image.path()); }, "The file that it was read from, or None.")
        .def_property_readonly(
            "size", [](Image& image) { return image.state()->bytes().size(); }, "In bytes.")
        .def_property_readonly(
            "modified", [](Image& image) { return image.isModified(); },
            "Whether it differs from what was read, or saved last.")
        .def_property_readonly("closed", [](Image& image) { return image.isClosed(); })
        .def(
            "close", [](Image& image) { image.close(); },
            "Lets the memory go. Whatever needs it afterwards raises ValueError.")
        .def("__enter__",
             [](Image& image) {
                 static_cast<void>(image.state());
                 return image.shared_from_this();
             })
        .def("__exit__", [](Image& image, const py::args&) { image.close(); })
        .def("__bytes__",
             [](Image& image) {
                 const StatePtr state = image.state();
                 return py::bytes(state->bytes().data(), state->bytes().size());
             })
        .def("save", &save, py::arg("path") = py::none(), py::kw_only(), py::arg("backup") = false,
             R"(Writes the image, whole or not at all: to the file that it was read from, or to another.

backup: True keeps the old bytes of the file beside it, under its name and "~" ("~2", ... where that exists); a path
keeps them there. Returns the path of the backup, or None.

Raises Error where the file was changed by another program since it was opened (nothing is written then), OSError where
it cannot be written, and ValueError where the image did not come from a path and none is given. What could not be kept
of the rights of the old file is a UserWarning.)")
        .def("reseal", &reseal, R"(Makes the wrong checksums and CRC-32s of the blocks named (all, by default) right.

Returns a line for each change. What the wrong sums told of cannot be seen any more.)")
        .def(
            "to_dataframe",
            [](const py::object& self, const py::object& block, const py::object& field) {
                return helper("_tables", "to_dataframe")(self[block], field);
            },
            py::arg("block"), py::arg("field") = py::none(), R"(A table of a block as a pandas.DataFrame.

Rows go along the dimension that has an axis (else the longest) and are labelled by it; columns along the others, or
are the fields that lie side by side. Only the entries in use. attrs["units"] has the units. Raises ValueError where the
block has no table, or several and `field` does not say which; ImportError without pandas.)")
        .def(
            "plot",
            [](const py::object& self, const py::object& block, const py::object& field, const py::object& ax,
               const py::kwargs& style) { return helper("_tables", "plot")(self[block], field, ax, **style); },
            py::arg("block"), py::arg("field") = py::none(), py::kw_only(), py::arg("ax") = py::none(),
            R"(Draws a table of a block over its axis, a line a column, and returns the matplotlib Axes.

ax: the Axes to draw into. Further keywords go to Axes.plot. Raises as to_dataframe; ImportError without matplotlib.)")
        .def("__repr__", [](const py::object& self) { return helper("_texts", "image_text")(self); })
        .def("_repr_html_", [](const py::object& self) { return helper("_texts", "image_html")(self); });
}

} // namespace Python
