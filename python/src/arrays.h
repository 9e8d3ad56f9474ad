#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <cstdint>
#include <optional>

#include "python/src/elements.h"

/// NumPy's arrays as the library sees them. NumPy's last axis is the library's dimension 0.
namespace BP::python {

namespace py = pybind11;

/// The element type of an array in the machine's byte order; none if filters do not take it.
std::optional<Element> elementOfDtype(const py::dtype& dtype);
/// The same of anything that NumPy takes for a dtype. Throws `WrongType`, which names `argument`.
Element checkedElement(const char* argument, const py::object& dtype);
py::dtype dtypeOf(Element element);

/// Axes reversed.
Extents extentsOf(const py::handle& shape, const char* argument);
py::tuple shapeOf(const Extents& extents);
/// As in "(480, 640)".
std::string shapeText(const Extents& extents);
/// A slice for each axis.
py::tuple slicesOf(const Box& box);
py::tuple slicesOf(const Rectangle& rectangle);

/// Whether an array that the library cannot read in place may be copied.
enum class Copying { asNeeded, refused, always };
Copying copyingOf(const py::object& copy);

/// The layout of an array, if a pitch for each dimension can express its strides.
std::optional<Layout> layoutOf(const py::array& array);

/// Elements of one array, and what keeps them alive.
struct HeldArray {
  py::array array;
  Memory memory;
};

/// An array to read, or a copy of it. `element`, if given, is the type that it must have.
HeldArray readable(const char* argument, const py::object& value, Copying copying, const Element* element = nullptr);

/// An array to write. `given` is that of the caller, whose elements can lie elsewhere.
struct OutputArray {
  HeldArray held;
  py::object given;

  /// Brings results to where the caller wants them.
  py::object finish() const;
};

/// The array `given`, or a new one. Throws unless it has these extents.
OutputArray writable(const py::object& given, const Extents& extents, Element element, Copying copying);

/// A new array of scores that the memory behind them is kept for.
py::array arrayOf(const Memory& memory, std::shared_ptr<void> owner);

}  // namespace BP::python
