#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <functional>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

#include "python/src/arrays.h"
#include "python/src/bind.h"
#include "python/src/fixed_arrays.h"
#include "python/src/options.h"
#include "python/src/runs.h"

namespace BP::python {

namespace {

using FixedJob = std::variant<FixedConvolution, FixedSeparableConvolution, FixedMedian>;

FixedRunner& runnerOf(FixedJob& job) {
  return std::visit([](auto& filter) -> FixedRunner& { return filter; }, job);
}

FixedTypes typesOf(const py::dict& types) {
  return {.input = typeAt(types, "input"),
          .inputIsComplex = py::cast<bool>(types["input_complex"]),
          .accumulator = typeAt(types, "accumulator"),
          .output = typeAt(types, "output"),
          .product = optionalTypeAt(types, "product"),
          .sqrt = optionalTypeAt(types, "sqrt"),
          .modes = modesOf(types)};
}

/// A fixed-point filter as Python sees it.
class FixedObject {
 public:
  FixedObject(const std::string& newKind, const py::list& newFilters, const py::object& newWindow,
              const py::object& shape, const py::dict& newTypes, const py::dict& newOptions)
      : kind(newKind),
        window(newWindow),
        types(newTypes),
        given(newOptions),
        extents(extentsOf(shape, "shape")),
        input(typeAt(types, "input")) {
    ConvolutionOptions options = convolutionOptionsOf(given, runs);
    options.region = rectangleOf(given["region"]);
    for (const py::handle values : newFilters) {
      const auto pair = py::reinterpret_borrow<py::tuple>(values);
      filters.emplace_back(fixedInput("filter", pair[0], fixedTypeOf(pair[1])).view);
    }
    if (kind == "median") {
      output = optionalTypeAt(types, "output").value_or(input);
      make = [=, this, size = extentsOf(window, "window"), roles = medianTypesOf(types)] {
        return std::make_unique<FixedJob>(FixedMedian(
            size, extents, roles, {options.mode, options.pad, options.region, options.threads, options.progress}));
      };
    } else {
      const FixedTypes roles = typesOf(types);
      output = roles.output;
      isComplex = roles.inputIsComplex;
      outputIsComplex = isComplex || filters.at(0).isComplex();
      make = [=, this, isSeparable = kind == "separable"] {
        if (!isSeparable) return std::make_unique<FixedJob>(FixedConvolution(filters[0], extents, roles, options));
        return std::make_unique<FixedJob>(FixedSeparableConvolution(filters[0], filters[1], extents, roles, options));
      };
    }
    job.set(make());
  }

  py::object run(const py::object& value, const py::object& out) {
    const HeldFixed from = fixedInput("input", value, input, isComplex);
    if (!(from.view.extents() == extents)) {
      throw std::invalid_argument("input: shape " + shapeText(from.view.extents()) + "; it must be " +
                                  shapeText(extents));
    }
    const HeldFixed to = fixedOutput(out, runnerOf(*job).outputExtents(), output, outputIsComplex);
    runs([&] {
      restartInChild();
      runnerOf(*job).run(
          from.view, MutableFixedView(const_cast<void*>(to.view.data()), to.view.layout(), output, outputIsComplex));
    });
    return to.array;
  }

  /// Those of a constructor that makes such an object.
  py::tuple arguments() const {
    py::list values;
    for (const FixedArray& filter : filters) values.append(pairOf(filter));
    return py::make_tuple(kind, values, window, shape(), types, given);
  }

  py::list statistics() {
    const auto labels = runs([&] { return runnerOf(*job).statistics(); });
    return statisticsList(labels);
  }

  /// How sums run: a sentence for each pass.
  py::tuple paths() const {
    return std::visit(
        []<class Job>(const Job& filter) -> py::tuple {
          if constexpr (std::is_same_v<Job, FixedConvolution>) {
            return py::make_tuple(std::string(describe(filter.path())));
          } else if constexpr (std::is_same_v<Job, FixedSeparableConvolution>) {
            return py::make_tuple(std::string(describe(filter.firstPath())),
                                  std::string(describe(filter.secondPath())));
          } else {
            return py::tuple();
          }
        },
        *job);
  }

  void setPadValue(std::complex<double> value) {
    runs([&] {
      restartInChild();
      runnerOf(*job).setPadValue(value);
      padValue = value;
    });
    given = given.attr("copy")();
    given["pad_value"] = value;
  }

  py::tuple outputShape() const { return shapeOf(runnerOf(*job).outputExtents()); }
  py::tuple positions() const { return slicesOf(boxOf(runnerOf(*job).positions(), extents.rank())); }
  std::string inputType() const { return toText(input); }
  std::string outputType() const { return toText(output); }
  py::tuple shape() const { return shapeOf(extents); }

 private:
  static FixedMedianTypes medianTypesOf(const py::dict& types) {
    return {.input = typeAt(types, "input"),
            .accumulator = optionalTypeAt(types, "accumulator"),
            .output = optionalTypeAt(types, "output"),
            .modes = modesOf(types)};
  }
  void restartInChild() {
    if (!job.isForeign()) return;
    job.set(make());
    if (padValue) runnerOf(*job).setPadValue(*padValue);
  }

  std::string kind;
  py::object window;
  py::dict types, given;
  Runs runs;
  Extents extents;
  FixedType input, output;
  bool isComplex = false;
  bool outputIsComplex = false;
  std::optional<std::complex<double>> padValue;  ///< in place of that of the options
  std::vector<FixedArray> filters;
  std::function<std::unique_ptr<FixedJob>()> make;
  OfProcess<FixedJob> job;
};

}  // namespace

void bindFixed(py::module_& module) {
  py::class_<FixedObject>(module, "FixedFilter")
      .def(py::init<const std::string&, const py::list&, const py::object&, const py::object&, const py::dict&,
                    const py::dict&>())
      .def("__reduce__", reduce<FixedObject>())
      .def("_run", &FixedObject::run)
      .def("_statistics", &FixedObject::statistics)
      .def("set_pad_value", &FixedObject::setPadValue, py::arg("value"),
           "Sets the value of a constant pad for later runs. It must be a value of the input's type.")
      .def_property_readonly("input_type", &FixedObject::inputType, "The type of inputs, as in 'u8.0'.")
      .def_property_readonly("paths", &FixedObject::paths, "How the sums run, in a sentence for each pass.")
      .def_property_readonly("shape", &FixedObject::shape, "The shape of inputs.")
      .def_property_readonly("output_shape", &FixedObject::outputShape, "The shape of outputs.")
      .def_property_readonly("output_type", &FixedObject::outputType, "The type of outputs, as in 'u8.0'.")
      .def_property_readonly("positions", &FixedObject::positions,
                             "The positions that the output holds, a slice for each axis.");
  bindFixedMatcher(module);
  bindFixedArrays(module);
}

}  // namespace BP::python
