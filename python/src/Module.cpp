#include "Module.h"

#include "Errors.h"

#include <travik/service/ImageFile.h>

namespace Python {

namespace {

namespace py = pybind11;

constexpr std::size_t largestImage = std::size_t{256} << 20U; // as the library reads files

std::shared_ptr<Image> openPath(std::string path) {
    const py::gil_scoped_release others;
    // "-" is a file like any other here.
    const std::string file = path == "-" ? "./-" : path;
    std::vector<char> bytes;
    if (std::string why = Travik::readImageFile(file, bytes); !why.empty())
        throw FileError{std::move(why), path};
    return std::make_shared<Image>(std::move(bytes), file);
}

std::shared_ptr<Image> openBytes(const py::object& source) {
    Py_buffer buffer;
    if (PyObject_GetBuffer(source.ptr(), &buffer, PyBUF_SIMPLE) != 0)
        throw py::error_already_set();
    const std::unique_ptr<Py_buffer, void (*)(Py_buffer*)> release(&buffer, PyBuffer_Release);
    const auto size = static_cast<std::size_t>(buffer.len);
    if (size > largestImage)
        throw py::value_error("larger than 256 MiB, not a module image");
    const char* const data = static_cast<const char*>(buffer.buf);
    std::vector<char> bytes(data, data + size);
    const py::gil_scoped_release others;
    return std::make_shared<Image>(std::move(bytes), std::string());
}

std::shared_ptr<Image> open(const py::object& source) {
    if (PyObject_CheckBuffer(source.ptr()) != 0)
        return openBytes(source);
    if (py::hasattr(source, "read")) {
        if (py::isinstance(source, py::module_::import("io").attr("TextIOBase")))
            throw py::type_error("the file is opened as text: open it with \"rb\"");
        const py::object content = source.attr("read")();
        if (PyObject_CheckBuffer(content.ptr()) == 0)
            throw py::type_error("read() of the file object gives no bytes");
        return openBytes(content);
    }
    PyObject* encoded = nullptr;
    if (PyUnicode_FSConverter(source.ptr(), &encoded) == 0)
        throw py::error_already_set();
    return openPath(py::reinterpret_steal<py::bytes>(encoded));
}

} // namespace

void throwNoSuchName(const std::string& text) { throw py::key_error(text); }

} // namespace Python

PYBIND11_MODULE(_travik, module) {
    namespace py = pybind11;
    module.doc() = "The compiled part of travik.";
    module.attr("__version__") = TRAVIK_VERSION;
    Python::defineErrors(module);
    Python::defineInfo(module);
    Python::defineBlock(module);
    Python::defineImage(module);
    Python::defineDiff(module);
    module.def("open", &Python::open, py::arg("source"), py::pos_only(), R"(Reads a module image.

source: a path (str or os.PathLike), the bytes of an image (bytes, or anything with a buffer), or a file object that
is opened for reading bytes. The image is whole in memory then, and the file closed.

Any bytes are an image: what is wrong with it is in Image.problems. Raises OSError (FileNotFoundError and so on) where
a file cannot be read.)");
}
