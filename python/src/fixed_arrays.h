#pragma once

#include <optional>
#include <string>
#include <vector>

#include "python/src/arrays.h"

/// Fixed-point values in NumPy's arrays.
///
/// A real value of up to 64 bits is an integer of 8, 16, 32 or 64 bits. One of up to 128 bits is a record of two
/// integers, `low` and `high`. A complex value is a record of two such values, `re` and `im`.
namespace BP::python {

FixedType fixedTypeOf(const py::object& text);
FixedType typeAt(const py::dict& types, const char* name);
std::optional<FixedType> optionalTypeAt(const py::dict& types, const char* name);
/// Rounding, overflow and gathering by their names.
FixedModes modesOf(const py::dict& types);

/// The dtype of an array of values.
py::dtype fixedDtype(const FixedType& type, bool isComplex);

/// Values of an array, which it keeps alive.
struct HeldFixed {
  py::array array;
  FixedView view;
};

/// An array to read, or a copy of it where its strides are none of pitches. Throws unless its dtype is that of the
/// type, whose values are complex if `isComplex` says so, and either if it says nothing.
HeldFixed fixedInput(const char* argument, const py::object& value, const FixedType& type,
                     std::optional<bool> isComplex = std::nullopt);
/// The array `out`, or a new one if that is None.
HeldFixed fixedOutput(const py::object& out, const Extents& extents, const FixedType& type, bool isComplex);
/// A new array with these values.
py::array fixedArrayOf(const FixedArray& values);
/// That array, and the type as a text.
py::tuple pairOf(const FixedArray& values);

/// The members of `FixedStatistics` for each label.
py::list statisticsList(const std::vector<FixedStatistics>& labels);

/// `quantise`, `to_float` and `fixed_dtype`.
void bindFixedArrays(py::module_& module);
void bindFixedMatcher(py::module_& module);

}  // namespace BP::python
