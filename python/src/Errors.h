#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace Python {

/// A block that takes no change because it is damaged.
struct DamagedError {
    std::string text;
};

/// Makes `travik.Error`, and Python's exceptions of what the functions of this folder throw.
void defineErrors(pybind11::module_& module);

} // namespace Python
