#include "python/src/arrays.h"

#include <array>
#include <cstdlib>
#include <utility>

namespace BP::python {

namespace {

/// NumPy's letter for a kind of element, and the bytes of one.
struct Kind {
  char letter;
  int bytes;
};
constexpr std::array<Kind, elementTypes> kinds = {
    {{'b', 1}, {'i', 1}, {'u', 1}, {'i', 2}, {'u', 2}, {'i', 4}, {'u', 4}, {'f', 4}, {'f', 8}, {'c', 8}, {'c', 16}}};

/// The dtype objects, made once.
const std::array<py::dtype, elementTypes>& dtypes() {
  static const auto* table = [] {
    auto* made = new std::array<py::dtype, elementTypes>;
    for (std::size_t i = 0; i < elementTypes; ++i) (*made)[i] = py::dtype(elementNames[i]);
    return made;
  }();
  return *table;
}

[[noreturn]] void refuseElement(const char* argument, const py::object& dtype) {
  std::string text = std::string(argument) + ": elements of " + std::string(py::str(dtype)) + "; allowed are ";
  for (std::size_t i = 0; i < elementTypes; ++i) {
    text += std::string(i == 0 ? "" : i + 1 == elementTypes ? " and " : ", ") + elementNames[i];
  }
  throw WrongType(text);
}

bool isAligned(const py::array& array) { return (array.flags() & py::detail::npy_api::NPY_ARRAY_ALIGNED_) != 0; }

/// The array in memory that the library can use, if it is such a one.
std::optional<Memory> memoryOf(const py::array& array, Element element) {
  if (!isAligned(array)) return std::nullopt;
  const std::optional<Layout> layout = layoutOf(array);
  if (!layout) return std::nullopt;
  return Memory{const_cast<void*>(array.data()), *layout, element};
}

/// The element type of an array in either byte order.
Element elementOfAny(const char* argument, const py::array& array, bool& isSwapped) {
  const py::dtype dtype = array.dtype();
  if (const auto element = elementOfDtype(dtype)) {
    isSwapped = false;
    return *element;
  }
  const py::object native = dtype.attr("newbyteorder")("=");
  const auto element = elementOfDtype(py::reinterpret_borrow<py::dtype>(native));
  if (!element) refuseElement(argument, dtype);
  isSwapped = true;
  return *element;
}

[[noreturn]] void refuseCopy(const char* argument, const py::array& array) {
  throw std::invalid_argument(
      std::string(argument) + ": strides " + std::string(py::str(py::object(array.attr("strides")))) +
      " and elements of " + std::string(py::str(py::object(array.attr("dtype").attr("str")))) +
      "; copy=False allows aligned elements in the machine's byte order, neighbours along the last axis next to each "
      "other, and lines in ascending order that do not overlap");
}

py::array denseCopy(const py::array& array, Element element, bool isSwapped) {
  constexpr int rowsFirst = 0;  // NumPy's number of the order
  const py::object native = isSwapped ? array.attr("astype")(dtypeOf(element)) : py::object(array);
  PyObject* const copy = py::detail::npy_api::get().PyArray_NewCopy_(native.ptr(), rowsFirst);
  if (copy == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::array>(copy);
}

}  // namespace

std::optional<Layout> layoutOf(const py::array& array) {
  const auto rank = static_cast<std::size_t>(array.ndim());
  const auto bytes = static_cast<std::int64_t>(array.itemsize());
  if (rank > Extents::maxRank) {
    throw std::invalid_argument("array: " + std::to_string(rank) + " dimensions; allowed are up to " +
                                std::to_string(Extents::maxRank));
  }
  std::array<std::int64_t, Extents::maxRank> extents{}, strides{};
  std::int64_t dense = 1;
  for (std::size_t d = 0; d < rank; ++d) {
    const auto axis = static_cast<py::ssize_t>(rank - 1 - d);
    const std::int64_t extent = array.shape(axis), stride = array.strides(axis);
    const bool isUsed = extent > 1 && array.size() > 0;
    if (isUsed && (stride % bytes != 0 || stride / bytes < dense || (d == 0 && stride != bytes))) return std::nullopt;
    extents[d] = extent;
    strides[d] = isUsed ? stride / bytes : dense;
    dense = strides[d] * std::max<std::int64_t>(extent, 1);
  }
  return Layout::withStrides(Extents(std::span(extents.data(), rank)), strides);
}

std::optional<Element> elementOfDtype(const py::dtype& dtype) {
  const char order = dtype.byteorder();
  if (order != '=' && order != '|') return std::nullopt;
  const char letter = dtype.kind();
  const auto bytes = static_cast<int>(dtype.itemsize());
  for (std::size_t i = 0; i < elementTypes; ++i) {
    if (kinds[i].letter == letter && kinds[i].bytes == bytes) return static_cast<Element>(i);
  }
  return std::nullopt;
}

Element checkedElement(const char* argument, const py::object& dtype) {
  const py::dtype native = py::reinterpret_borrow<py::dtype>(py::dtype::from_args(dtype).attr("newbyteorder")("="));
  const auto element = elementOfDtype(native);
  if (!element) refuseElement(argument, native);
  return *element;
}

py::dtype dtypeOf(Element element) { return dtypes()[static_cast<std::size_t>(element)]; }

Extents extentsOf(const py::handle& shape, const char* argument) {
  std::array<std::int64_t, Extents::maxRank> extents{};
  const auto axes = py::reinterpret_borrow<py::sequence>(shape);
  const std::size_t rank = py::len(axes);
  if (rank > Extents::maxRank) {
    throw std::invalid_argument(std::string(argument) + ": " + std::to_string(rank) +
                                " dimensions; allowed are up to " + std::to_string(Extents::maxRank));
  }
  for (std::size_t d = 0; d < rank; ++d) {
    const py::object extent = axes[rank - 1 - d];
    int isTooLarge = 0;
    extents[d] = PyLong_AsLongLongAndOverflow(extent.ptr(), &isTooLarge);
    if (isTooLarge != 0) {
      throw std::invalid_argument(std::string(argument) + ": " + std::string(py::str(extent)) +
                                  "; allowed are integers of 64 bits");
    }
    if (PyErr_Occurred()) throw py::error_already_set();
  }
  return Extents(std::span(extents.data(), rank));
}

py::tuple shapeOf(const Extents& extents) {
  py::tuple shape(extents.rank());
  for (std::size_t d = 0; d < extents.rank(); ++d) shape[extents.rank() - 1 - d] = extents[d];
  return shape;
}

std::string shapeText(const Extents& extents) { return py::str(shapeOf(extents)); }

py::tuple slicesOf(const Box& box) {
  py::tuple slices(box.start.rank());
  for (std::size_t d = 0; d < box.start.rank(); ++d) {
    const py::int_ first(box.start[d]), last(box.start[d] + box.extents[d]);
    slices[box.start.rank() - 1 - d] = py::reinterpret_steal<py::object>(PySlice_New(first.ptr(), last.ptr(), nullptr));
  }
  return slices;
}

py::tuple slicesOf(const Rectangle& rectangle) {
  return slicesOf(Box{{rectangle.x, rectangle.y}, {rectangle.width, rectangle.height}});
}

Copying copyingOf(const py::object& copy) {
  if (copy.is_none()) return Copying::asNeeded;
  if (py::isinstance<py::bool_>(copy)) return copy.cast<bool>() ? Copying::always : Copying::refused;
  throw WrongType("copy: " + std::string(py::repr(copy)) + "; allowed are None, True and False");
}

HeldArray readable(const char* argument, const py::object& value, Copying copying, const Element* expected) {
  py::array array;
  if (py::isinstance<py::array>(value)) {
    array = py::reinterpret_borrow<py::array>(value);
  } else {
    if (copying == Copying::refused) {
      throw WrongType(std::string(argument) + ": a " + Py_TYPE(value.ptr())->tp_name +
                      "; copy=False allows only arrays of NumPy's");
    }
    array = py::module_::import("numpy").attr("asarray")(value);
  }
  bool isSwapped = false;
  const Element element = elementOfAny(argument, array, isSwapped);
  if (expected && element != *expected) {
    throw WrongType(std::string(argument) + ": elements of " + nameOf(element) + "; they must be " + nameOf(*expected));
  }
  if (!isSwapped && copying != Copying::always) {
    if (const auto memory = memoryOf(array, element)) return {std::move(array), *memory};
  }
  if (copying == Copying::refused) refuseCopy(argument, array);
  py::array copy = denseCopy(array, element, isSwapped);
  const Memory memory = *memoryOf(copy, element);
  return {std::move(copy), memory};
}

py::object OutputArray::finish() const {
  if (given.is_none()) return held.array;
  if (!held.array.is(given)) given[py::ellipsis()] = held.array;
  return given;
}

namespace {

HeldArray newArray(const Extents& extents, Element element) {
  std::array<py::ssize_t, Extents::maxRank> shape{};
  for (std::size_t d = 0; d < extents.rank(); ++d) shape[extents.rank() - 1 - d] = extents[d];
  py::array array(dtypeOf(element), py::array::ShapeContainer(
                                        shape.begin(), shape.begin() + static_cast<std::ptrdiff_t>(extents.rank())));
  const Memory memory{array.mutable_data(), Layout(extents), element};
  return {std::move(array), memory};
}

}  // namespace

OutputArray writable(const py::object& given, const Extents& extents, Element element, Copying copying) {
  if (given.is_none()) return {newArray(extents, element), given};
  if (!py::isinstance<py::array>(given)) {
    throw WrongType(std::string("out: a ") + Py_TYPE(given.ptr())->tp_name + "; it must be an array of NumPy's");
  }
  auto array = py::reinterpret_borrow<py::array>(given);
  if (!array.writeable()) throw std::invalid_argument("out: the array is read-only");
  bool isSwapped = false;
  const Element own = elementOfAny("out", array, isSwapped);
  const py::tuple shape = array.attr("shape");
  if (!shape.equal(shapeOf(extents))) {
    throw std::invalid_argument("out: shape " + std::string(py::str(py::handle(shape))) + "; it must be " +
                                shapeText(extents));
  }
  if (!isSwapped) {
    if (const auto memory = memoryOf(array, own)) return {{std::move(array), *memory}, given};
  }
  if (copying == Copying::refused) refuseCopy("out", array);
  return {newArray(extents, own), given};
}

py::array arrayOf(const Memory& memory, std::shared_ptr<void> owner) {
  std::array<py::ssize_t, Extents::maxRank> shape{};
  const Extents& extents = memory.layout.extents();
  for (std::size_t d = 0; d < extents.rank(); ++d) shape[extents.rank() - 1 - d] = extents[d];
  const py::capsule keeper(new std::shared_ptr<void>(std::move(owner)),
                           [](void* held) { delete static_cast<std::shared_ptr<void>*>(held); });
  const py::array::ShapeContainer axes(shape.begin(), shape.begin() + static_cast<std::ptrdiff_t>(extents.rank()));
  return {dtypeOf(memory.element), axes, memory.data, keeper};
}

}  // namespace BP::python
