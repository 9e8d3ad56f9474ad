#include <pybind11/complex.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <utility>

#include "python/src/arrays.h"
#include "python/src/bind.h"
#include "python/src/fixed_arrays.h"
#include "python/src/options.h"
#include "python/src/runs.h"

namespace BP::python {

namespace {

/// A `FixedTemplateMatcher` as Python sees it.
class FixedMatcherObject {
 public:
  FixedMatcherObject(const py::tuple& newPattern, const py::object& shape, const py::dict& newTypes,
                     const py::dict& newOptions)
      : givenTypes(newTypes),
        givenOptions(newOptions),
        extents(extentsOf(shape, "shape")),
        types{.input = typeAt(newTypes, "input"),
              .inputIsComplex = py::cast<bool>(newTypes["input_complex"]),
              .accumulator = typeAt(newTypes, "accumulator"),
              .output = typeAt(newTypes, "output"),
              .product = optionalTypeAt(newTypes, "product"),
              .modes = modesOf(newTypes)},
        pattern(fixedInput("template", newPattern[0], fixedTypeOf(newPattern[1])).view),
        options(matchOptionsOf(newOptions, runs)) {
    start();
  }

  /// The members of a `Match`, in their order.
  py::tuple run(const py::object& value) {
    const HeldFixed image = fixedInput("image", value, types.input, types.inputIsComplex);
    if (!(image.view.extents() == extents)) {
      throw std::invalid_argument("image: shape " + shapeText(image.view.extents()) + "; it must be " +
                                  shapeText(extents));
    }
    const FixedMatch match = runs([&] {
      if (matcher.isForeign()) start();
      return matcher->run(image.view);
    });
    const bool isComplex = types.inputIsComplex || pattern.isComplex();
    const py::object score = isComplex ? py::cast(match.score) : py::object(py::float_(match.score.real()));
    const auto scores = [](bool isThere, const FixedArray& array) {
      return isThere ? py::object(fixedArrayOf(array)) : py::object(py::none());
    };
    return py::make_tuple(match.found, py::make_tuple(match.location[1], match.location[0]), slicesOf(match.window),
                          score, py::make_tuple(match.refined[1], match.refined[0]), match.regionValid,
                          match.neighbourhoodValid, slicesOf(match.positions),
                          scores(options.neighbourhood > 0, match.neighbourhood), scores(options.map, match.map));
  }

  py::list statistics() {
    const auto labels = runs([&] { return matcher->statistics(); });
    return statisticsList(labels);
  }

  /// Those of a constructor that makes such an object.
  py::tuple arguments() const { return py::make_tuple(pairOf(pattern), shape(), givenTypes, givenOptions); }

  py::tuple shape() const { return shapeOf(extents); }
  std::string inputType() const { return toText(types.input); }
  std::string outputType() const { return toText(types.output); }

 private:
  void start() { matcher.set(std::make_unique<FixedTemplateMatcher>(pattern, extents, types, options)); }

  py::dict givenTypes, givenOptions;
  Runs runs;
  Extents extents;
  FixedMatchTypes types;
  FixedArray pattern;
  MatchOptions options;
  OfProcess<FixedTemplateMatcher> matcher;
};

}  // namespace

void bindFixedMatcher(py::module_& module) {
  py::class_<FixedMatcherObject>(module, "FixedMatcher")
      .def(py::init<const py::tuple&, const py::object&, const py::dict&, const py::dict&>())
      .def("__reduce__", reduce<FixedMatcherObject>())
      .def("_run", &FixedMatcherObject::run)
      .def("_statistics", &FixedMatcherObject::statistics)
      .def_property_readonly("input_type", &FixedMatcherObject::inputType, "The type of images, as in 'u8.0'.")
      .def_property_readonly("shape", &FixedMatcherObject::shape, "The shape of images.")
      .def_property_readonly("output_type", &FixedMatcherObject::outputType, "The type of scores, as in 'u16.0'.");
}

}  // namespace BP::python
