#include "Errors.h"

#include "Block.h"

#include <array>
#include <cerrno>
#include <cstring>

namespace Python {

namespace {

namespace py = pybind11;

PyObject* errorType = nullptr; // lives as long as the process, as the module does

/// The number of which the library's text tells, so that Python makes a FileNotFoundError and the like of it.
int numberOf(const std::string& text) {
    for (const int number : {ENOENT, EACCES, EISDIR, ENOTDIR, EPERM, EROFS, ENOSPC, EDQUOT, EFBIG, ELOOP, ENAMETOOLONG,
                             EMFILE, ENFILE, EEXIST, EIO}) {
        if (text.ends_with(std::strerror(number))) // NOLINT(concurrency-mt-unsafe): these texts are constant
            return number;
    }
    return 0;
}

void raiseFileError(const FileError& error) {
    const py::object path = py::reinterpret_steal<py::object>(
        PyUnicode_DecodeFSDefaultAndSize(error.path.data(), static_cast<Py_ssize_t>(error.path.size())));
    const int number = numberOf(error.text);
    const py::handle type(PyExc_OSError);
    const py::object raised =
        number != 0 ? type(number, error.text, path) : type(std::string(py::str(path)) + ": " + error.text);
    PyErr_SetObject(py::type::handle_of(raised).ptr(), raised.ptr());
}

void translate(std::exception_ptr thrown) { // NOLINT(performance-unnecessary-value-param): the form is pybind11's
    try {
        if (thrown)
            std::rethrow_exception(thrown);
    } catch (const ClosedError&) {
        PyErr_SetString(PyExc_ValueError, "the image is closed");
    } catch (const GoneError&) {
        PyErr_SetString(errorType, "the block is not there any more");
    } catch (const NoPathError&) {
        PyErr_SetString(PyExc_ValueError, "the image was not opened from a path: save it to one");
    } catch (const DamagedError& error) {
        PyErr_SetString(errorType, error.text.c_str());
    } catch (const ChangedError& error) {
        PyErr_SetString(errorType, (error.path + ": was changed by another program since it was opened").c_str());
    } catch (const FileError& error) {
        raiseFileError(error);
    }
}

} // namespace

void defineErrors(py::module_& module) {
    errorType = PyErr_NewExceptionWithDoc(
        "travik.Error",
        "The image stands against it: a block whose sums do not hold or whose end is doubtful takes no change, and a "
        "file that was changed by another program is not overwritten.",
        nullptr, nullptr);
    if (!errorType)
        throw py::error_already_set();
    module.add_object("Error", errorType);
    py::register_local_exception_translator(translate);
}

} // namespace Python
