#include "python/src/fixed_arrays.h"

#include <cstring>

#include <pybind11/complex.h>

#include "python/src/options.h"

namespace BP::python {

namespace {

constexpr std::array<Choice<Rounding>, 6> roundings = {{{"ceiling", Rounding::ceiling},
                                                        {"convergent", Rounding::convergent},
                                                        {"floor", Rounding::floor},
                                                        {"nearest", Rounding::nearest},
                                                        {"round", Rounding::round},
                                                        {"zero", Rounding::zero}}};
constexpr std::array<Choice<Overflow>, 4> overflows = {{{"wrap", Overflow::wrap},
                                                        {"saturate", Overflow::saturate},
                                                        {"symmetric", Overflow::symmetric},
                                                        {"zero", Overflow::zero}}};
constexpr std::array<Choice<Gathering>, 3> gatherings = {
    {{"nothing", Gathering::nothing}, {"counts", Gathering::counts}, {"ranges", Gathering::ranges}}};

py::dtype recordOf(const char* first, const py::object& firstType, const char* second, const py::object& secondType) {
  py::list fields;
  fields.append(py::make_tuple(first, firstType));
  fields.append(py::make_tuple(second, secondType));
  return py::dtype::from_args(fields);
}

void refuseDtype(const char* argument, const py::array& array, const FixedType& type, const py::dtype& wanted) {
  throw WrongType(std::string(argument) + ": elements of " + std::string(py::str(py::handle(array.dtype()))) +
                  "; values of " + toText(type) + " lie in " + std::string(py::str(py::handle(wanted))));
}

FixedView viewOf(const py::array& array, const Layout& layout, const FixedType& type, bool isComplex) {
  return {array.data(), layout, type, isComplex};
}

template <class T>
ArrayView<const T> doublesOf(const py::array& array) {
  return {static_cast<const T*>(array.data()), *layoutOf(array)};
}

/// The nearest doubles of values, as an array of NumPy's.
py::array toFloat(const py::object& value, const std::string& text) {
  const HeldFixed held = fixedInput("values", value, fixedType(text));
  const bool isComplex = held.view.isComplex();
  if (elementCount(held.view.extents()) == 0) throw std::invalid_argument("values: an empty array");
  const auto taken = [](auto array) {
    auto owner = std::make_shared<decltype(array)>(std::move(array));
    const Memory memory{owner->data(), Layout(owner->extents()),
                        elementOf<std::remove_cvref_t<decltype((*owner)[0])>>()};
    return arrayOf(memory, std::move(owner));
  };
  return isComplex ? taken(toComplex(held.view)) : taken(toDouble(held.view));
}

/// Raw values, and the members of the statistics of their casts.
py::tuple quantised(const py::object& value, const std::string& text, const py::dict& modes) {
  static const auto* asArray = new py::object(py::module_::import("numpy").attr("ascontiguousarray"));
  const py::array given = (*asArray)(value);
  const bool isComplex = given.dtype().kind() == 'c';
  const py::array doubles = (*asArray)(given, py::arg("dtype") = isComplex ? "complex128" : "float64");
  FixedStatistics statistics;
  statistics.label = "quantise";
  const FixedType type = fixedType(text);
  const FixedModes how = modesOf(modes);
  const FixedArray values = isComplex ? quantise(doublesOf<std::complex<double>>(doubles), type, how, &statistics)
                                      : quantise(doublesOf<double>(doubles), type, how, &statistics);
  return py::make_tuple(fixedArrayOf(values), statisticsList({statistics})[0]);
}

}  // namespace

FixedType fixedTypeOf(const py::object& text) { return fixedType(std::string(py::str(text))); }

std::optional<FixedType> optionalTypeAt(const py::dict& types, const char* name) {
  const py::object text = types[name];
  if (text.is_none()) return std::nullopt;
  return fixedTypeOf(text);
}

FixedType typeAt(const py::dict& types, const char* name) { return optionalTypeAt(types, name).value_or(FixedType()); }

FixedModes modesOf(const py::dict& types) {
  const auto text = [&](const char* name) { return std::string(py::str(py::object(types[name]))); };
  return {chosen("rounding", text("rounding"), roundings), chosen("overflow", text("overflow"), overflows),
          chosen("gather", text("gather"), gatherings)};
}

py::dtype fixedDtype(const FixedType& type, bool isComplex) {
  const int bits = detail::checkedContainerBits("type", type);
  const std::string letter = type.isSigned ? "i" : "u";
  const py::dtype real = bits == 128 ? recordOf("low", py::str("u8"), "high", py::str(letter + "8"))
                                     : py::dtype(letter + std::to_string(bits / 8));
  return isComplex ? recordOf("re", real, "im", real) : real;
}

HeldFixed fixedInput(const char* argument, const py::object& value, const FixedType& type,
                     std::optional<bool> isComplex) {
  static const auto* asArray = new py::object(py::module_::import("numpy").attr("asarray"));
  py::array array = (*asArray)(value);
  const py::dtype real = fixedDtype(type, false);
  const bool holdsComplex = isComplex.value_or(!array.dtype().equal(real));
  const py::dtype wanted = holdsComplex ? fixedDtype(type, true) : real;
  if (!array.dtype().equal(wanted)) refuseDtype(argument, array, type, wanted);
  std::optional<Layout> layout = layoutOf(array);
  if (!layout) {
    array = array.attr("copy")("C");
    layout = layoutOf(array);
  }
  const FixedView view = viewOf(array, *layout, type, holdsComplex);
  return {std::move(array), view};
}

HeldFixed fixedOutput(const py::object& out, const Extents& extents, const FixedType& type, bool isComplex) {
  const py::dtype dtype = fixedDtype(type, isComplex);
  py::array array;
  if (out.is_none()) {
    array = py::module_::import("numpy").attr("empty")(shapeOf(extents), dtype);
  } else {
    if (!py::isinstance<py::array>(out)) throw WrongType("out: it must be an array of NumPy's");
    array = py::reinterpret_borrow<py::array>(out);
    if (!array.dtype().equal(dtype)) refuseDtype("out", array, type, dtype);
    if (!array.writeable()) throw std::invalid_argument("out: the array is read-only");
  }
  const std::optional<Layout> layout = layoutOf(array);
  if (!layout) throw std::invalid_argument("out: strides that pitches cannot express");
  if (!(layout->extents() == extents)) {
    throw std::invalid_argument("out: shape " + shapeText(layout->extents()) + "; it must be " + shapeText(extents));
  }
  const FixedView view = viewOf(array, *layout, type, isComplex);
  return {std::move(array), view};
}

py::array fixedArrayOf(const FixedArray& values) {
  HeldFixed held = fixedOutput(py::none(), values.extents(), values.type(), values.isComplex());
  std::memcpy(held.array.mutable_data(), values.data(), static_cast<std::size_t>(held.array.nbytes()));
  return held.array;
}

py::tuple pairOf(const FixedArray& values) { return py::make_tuple(fixedArrayOf(values), toText(values.type())); }

py::list statisticsList(const std::vector<FixedStatistics>& labels) {
  py::list list;
  for (const FixedStatistics& s : labels) {
    list.append(py::make_tuple(s.label, s.casts, s.overflows, s.lossy, s.minimum, s.maximum));
  }
  return list;
}

void bindFixedArrays(py::module_& module) {
  module.def("quantise", &quantised);
  module.def("to_float", &toFloat);
  module.def("fixed_dtype",
             [](const std::string& type, bool isComplex) { return fixedDtype(fixedType(type), isComplex); });
  module.def("fixed_type", [](const std::string& text) {
    const FixedType type = fixedType(text);
    return py::make_tuple(toText(type), type.word, type.fraction, type.isSigned);
  });
}

}  // namespace BP::python
