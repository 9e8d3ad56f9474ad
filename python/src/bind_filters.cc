#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <utility>
#include <vector>

#include "python/src/arrays.h"
#include "python/src/bind.h"
#include "python/src/filter.h"
#include "python/src/options.h"
#include "python/src/runs.h"

namespace BP::python {

namespace {

/// A filter as Python sees it: any of `Convolution`, `SeparableConvolution` and `Median`. It keeps what it was made
/// of, because a process that is forked from this one has to make it again.
class FilterObject {
 public:
  FilterObject(const std::string& newKind, const py::list& newFilters, const py::object& window,
               const py::object& shape, const py::object& dtype, const py::dict& newOptions)
      : kind(newKind), options(newOptions), request{checkedElement("dtype", dtype),
                                                    extentsOf(shape, "shape"),
                                                    {},
                                                    extentsOf(window, "window"),
                                                    convolutionOptionsOf(options, runs),
                                                    regionOf(options["region"])} {
    for (const py::handle taken : newFilters) {
      taps.push_back(readable("filter", py::reinterpret_borrow<py::object>(taken), Copying::always));
    }
    start();
  }

  py::object run(const py::object& input, const py::object& out, const py::object& dtype, const py::object& copy) {
    const Element own = filter->inputElement();
    const Copying copying = copyingOf(copy);
    const HeldArray from = readable("input", input, copying, &own);
    if (!(from.memory.layout.extents() == request.inputExtents)) {
      throw std::invalid_argument("input: shape " + shapeText(from.memory.layout.extents()) + "; it must be " +
                                  shapeText(request.inputExtents));
    }
    const Element wanted = dtype.is_none() ? filter->outputElement() : checkedElement("dtype", dtype);
    const OutputArray to = writable(out, filter->outputExtents(), wanted, copying);
    if (!dtype.is_none() && to.held.memory.element != wanted) {
      throw WrongType("dtype: " + nameOf(wanted) + "; out has elements of " + nameOf(to.held.memory.element));
    }
    clipped = runs([&] {
      restartInChild();
      return filter->run(from.memory, to.held.memory);
    });
    return to.finish();
  }

  void setFilters(const py::list& filters) {
    if (filters.size() != taps.size()) throw WrongType("set_filter: this object has no such filter");
    std::vector<HeldArray> next;
    for (std::size_t i = 0; i < taps.size(); ++i) {
      next.push_back(readable("filter", filters[i], Copying::always, &taps[i].memory.element));
    }
    const std::vector<Memory> memory = memoryOf(next);
    runs([&] {
      restartInChild();
      filter->setFilters(memory);
      taps.swap(next);
    });
  }

  void setPadValue(std::complex<double> value) {
    runs([&] {
      restartInChild();
      filter->setPadValue(value);
      request.options.pad.value = value;
    });
    options = options.attr("copy")();
    options["pad_value"] = value;
  }

  /// Those of a constructor that makes such an object.
  py::tuple arguments() const {
    py::list filters;
    for (const HeldArray& array : taps) filters.append(array.array);
    return py::make_tuple(kind, filters, shapeOf(request.window), shapeOf(request.inputExtents), dtypeOf(request.input),
                          options);
  }

  const Filter& get() const { return *filter; }
  const FilterRequest& getRequest() const { return request; }
  std::int64_t getClipped() const { return clipped; }

 private:
  static std::vector<Memory> memoryOf(const std::vector<HeldArray>& arrays) {
    std::vector<Memory> memory;
    for (const HeldArray& array : arrays) memory.push_back(array.memory);
    return memory;
  }

  void start() {
    const std::vector<Memory> memory = memoryOf(taps);
    request.filters = memory;
    const auto make = kind == "median" ? makeMedian : kind == "separable" ? makeSeparable : makeConvolution;
    filter.set(make(request));
    request.filters = {};
  }
  void restartInChild() {
    if (filter.isForeign()) start();
  }

  std::string kind;
  py::dict options;
  Runs runs;
  std::vector<HeldArray> taps;
  FilterRequest request;
  OfProcess<Filter> filter;
  std::int64_t clipped = 0;
};

py::tuple haloTuple(const Filter& filter) {
  const Halo halo = haloOf(filter);
  const py::tuple before = shapeOf(halo.before), after = shapeOf(halo.after);
  py::tuple pairs(before.size());
  for (std::size_t axis = 0; axis < pairs.size(); ++axis) pairs[axis] = py::make_tuple(before[axis], after[axis]);
  return pairs;
}

}  // namespace

void bindFilters(py::module_& module) {
  const py::object none = py::none();
  py::class_<FilterObject>(module, "Filter")
      .def(py::init<const std::string&, const py::list&, const py::object&, const py::object&, const py::object&,
                    const py::dict&>())
      .def("__reduce__", reduce<FilterObject>())
      .def("run", &FilterObject::run, py::arg("input"), py::arg("out") = none, py::kw_only(), py::arg("dtype") = none,
           py::arg("copy") = none,
           "Filters `input` into `out`, or into a new array, and returns that.\n\n"
           "The input has the shape and the dtype that the object was made for. The output has `output_shape` and\n"
           "`output_dtype`; sums of float32 and float64 are on request rounded to integers of 8, 16 or 32 bits, by\n"
           "the dtype of `out` or by `dtype`, ties to even, and clipped to their range (see `clipped`). The two\n"
           "arrays must not overlap. Arrays whose memory the library cannot take as it is are copied; `copy=False`\n"
           "refuses them with ValueError. The interpreter lock is released.")
      .def("_set_filters", &FilterObject::setFilters)
      .def("set_pad_value", &FilterObject::setPadValue, py::arg("value"),
           "Sets the value of a constant pad for later runs.")
      .def_property_readonly(
          "shape", [](const FilterObject& self) { return shapeOf(self.getRequest().inputExtents); },
          "The shape of inputs.")
      .def_property_readonly(
          "dtype", [](const FilterObject& self) { return dtypeOf(self.get().inputElement()); }, "The dtype of inputs.")
      .def_property_readonly(
          "output_shape", [](const FilterObject& self) { return shapeOf(self.get().outputExtents()); },
          "The shape of outputs.")
      .def_property_readonly(
          "output_dtype", [](const FilterObject& self) { return dtypeOf(self.get().outputElement()); },
          "The dtype of the sums, or of medians.")
      .def_property_readonly(
          "positions", [](const FilterObject& self) { return slicesOf(self.get().positions()); },
          "The positions that the output holds, a slice for each axis, counted from the input's first element.")
      .def_property_readonly(
          "halo", [](const FilterObject& self) { return haloTuple(self.get()); },
          "How many elements before and after a region its outputs depend on, a pair for each axis.")
      .def_property_readonly("clipped", &FilterObject::getClipped,
                             "How many outputs of the last run were clipped to the range of integers.");
}

}  // namespace BP::python
