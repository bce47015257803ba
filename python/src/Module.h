#pragma once

#include "Block.h"

#include <pybind11/pybind11.h>

#include <span>
#include <string>
#include <vector>

namespace Python {

/// A class of which functions of the module make the objects; nobody else does, nor derives from it. Its functions take
/// the object by reference: by pointer, or by a holder, None would be one.
template <class T, class... Options>
class MadeHere : public pybind11::class_<T, Options...> {
public:
    MadeHere(pybind11::module_& module, const char* name, const char* documentation)
        : pybind11::class_<T, Options...>(module, name, documentation, pybind11::is_final()) {
        // Else __new__ alone would make an object without a value, which any use of it would trust.
        reinterpret_cast<PyTypeObject*>(this->ptr())->tp_new = [](PyTypeObject* made, PyObject*, PyObject*) {
            PyErr_Format(PyExc_TypeError, "a %s is not made by hand", made->tp_name);
            return static_cast<PyObject*>(nullptr);
        };
        this->attr("__module__") = "travik";
    }
};

void defineImage(pybind11::module_& module);
void defineBlock(pybind11::module_& module);
void defineInfo(pybind11::module_& module);
void defineDiff(pybind11::module_& module);

/// What calls a function of the Python part of the package.
inline pybind11::object helper(const char* file, const char* name) {
    return pybind11::module_::import((std::string("travik.") + file).c_str()).attr(name);
}

/// What is in NumPy.
inline pybind11::object numpy(const char* name) { return pybind11::module_::import("numpy").attr(name); }

/// The names that are near to one which is none, as "no field valeus; near: values".
[[noreturn]] void throwNoSuchName(const std::string& text);

} // namespace Python
