#pragma once

#include "Block.h"

#include <pybind11/numpy.h>

/// Fields as Python values, and the way back.
namespace Python {

namespace py = pybind11;

/// Whether numbers are physical, in the unit of their field, or as they are stored.
enum class Kind : bool { Physical, Stored };

/// What a field holds: int, float, str, datetime.date or None; of an array those in use, read-only. An array whose
/// numbers are stored as they are shown is a view of the bytes.
py::object fieldValue(const Block& block, const Travik::Field& field, Kind kind);

/// Stores a value, an array, or what an index of the array (as NumPy has it) names; all or nothing. `index` is None for
/// the whole.
void setFieldValue(const Block& block, const Travik::Field& field, Kind kind, const py::object& index,
                   const py::object& value);

/// What labels the entries of a dimension, or None.
py::object axisLabels(const Block& block, const Travik::Field& field, std::size_t dimension);

/// The shape of what `fieldValue` hands out; empty for a single value.
std::vector<py::ssize_t> usedShape(const Travik::FieldValues& shape);

/// "int32", "float32", ...: the NumPy type of what is stored; of an extended number that of its value.
py::dtype storedType(const Travik::Field& field);

} // namespace Python
