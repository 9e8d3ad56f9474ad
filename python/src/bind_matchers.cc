#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <utility>

#include "python/src/arrays.h"
#include "python/src/bind.h"
#include "python/src/matcher.h"
#include "python/src/options.h"
#include "python/src/runs.h"

namespace BP::python {

namespace {

/// Axes in NumPy's order.
template <class T>
py::tuple pointOf(const std::array<T, 2>& location) {
  return py::make_tuple(location[1], location[0]);
}

py::object scoreOf(std::complex<double> score, Element element) {
  if (element == Element::int32) return py::int_(static_cast<std::int64_t>(score.real()));
  if (element == Element::float32 || element == Element::float64) return py::float_(score.real());
  return py::reinterpret_steal<py::object>(PyComplex_FromDoubles(score.real(), score.imag()));
}

py::object arrayOrNone(std::optional<Scores>& scores) {
  if (!scores) return py::none();
  return arrayOf(scores->memory, std::move(scores->owner));
}

/// A `TemplateMatcher` as Python sees it; in a forked process it is made again, as `FilterObject`.
class MatcherObject {
 public:
  MatcherObject(const py::object& newPattern, const py::object& shape, const py::object& dtype,
                const py::dict& newOptions)
      : pattern(readable("template", newPattern, Copying::always)),
        image(checkedElement("dtype", dtype)),
        extents(extentsOf(shape, "shape")),
        given(newOptions),
        options(matchOptionsOf(given, runs)) {
    start();
  }

  /// Those of a constructor that makes such an object.
  py::tuple arguments() const { return py::make_tuple(pattern.array, shapeOf(extents), dtypeOf(image), given); }

  /// The members of a `Match`, in their order.
  py::tuple run(const py::object& value, const py::object& copy) {
    const HeldArray from = imageOf(value, copy);
    AnyMatch match = runs([&] {
      restartInChild();
      return matcher->run(from.memory);
    });
    return py::make_tuple(match.found, pointOf(match.location), slicesOf(match.window),
                          scoreOf(match.score, matcher->scoreElement()), pointOf(match.refined), match.regionValid,
                          match.neighbourhoodValid, slicesOf(match.positions), arrayOrNone(match.neighbourhood),
                          arrayOrNone(match.map));
  }

  /// The members of a `Peak` for each match.
  py::list runPeaks(const py::object& value, std::int64_t count, double distance, bool refine, const py::object& copy) {
    const HeldArray from = imageOf(value, copy);
    const auto peaks = runs([&] {
      restartInChild();
      return matcher->runPeaks(from.memory, {count, distance, refine});
    });
    py::list found;
    for (const Peak<double>& peak : peaks) {
      found.append(py::make_tuple(pointOf(peak.location), slicesOf(peak.window),
                                  scoreOf(peak.score, matcher->scoreElement()), pointOf(peak.refined)));
    }
    return found;
  }

  void setTemplate(const py::object& value) {
    HeldArray next = readable("template", value, Copying::always, &pattern.memory.element);
    runs([&] {
      restartInChild();
      matcher->setTemplate(next.memory);
      std::swap(pattern, next);
    });
  }

  void setRegion(const py::object& region) {
    const std::optional<Rectangle> next = rectangleOf(region);
    runs([&] {
      restartInChild();
      matcher->setRegion(next);
      options.region = next;
    });
    given = given.attr("copy")();
    given["region"] = region;
  }

  const Matcher& get() const { return *matcher; }
  const Extents& getExtents() const { return extents; }
  const py::dict& getOptions() const { return given; }

 private:
  HeldArray imageOf(const py::object& value, const py::object& copy) const {
    HeldArray from = readable("image", value, copyingOf(copy), &image);
    if (from.memory.layout.extents() == extents) return from;
    throw std::invalid_argument("image: shape " + shapeText(from.memory.layout.extents()) + "; it must be " +
                                shapeText(extents));
  }

  void start() { matcher.set(makeMatcher(pattern.memory, image, extents, options)); }
  void restartInChild() {
    if (matcher.isForeign()) start();
  }

  Runs runs;
  HeldArray pattern;
  Element image;
  Extents extents;
  py::dict given;
  MatchOptions options;
  OfProcess<Matcher> matcher;
};

}  // namespace

void bindMatchers(py::module_& module) {
  py::class_<MatcherObject>(module, "Matcher")
      .def(py::init<const py::object&, const py::object&, const py::object&, const py::dict&>())
      .def("__reduce__", reduce<MatcherObject>())
      .def("_run", &MatcherObject::run)
      .def("_run_peaks", &MatcherObject::runPeaks)
      .def("_set_template", &MatcherObject::setTemplate)
      .def("_set_region", &MatcherObject::setRegion)
      .def_property_readonly("_geometry",
                             [](const MatcherObject& self) {
                               return py::make_tuple(shapeOf(self.getExtents()), shapeOf(self.get().windowExtents()),
                                                     py::object(self.getOptions()["mode"]));
                             })
      .def_property_readonly(
          "shape", [](const MatcherObject& self) { return shapeOf(self.getExtents()); }, "The shape of images.")
      .def_property_readonly(
          "dtype", [](const MatcherObject& self) { return dtypeOf(self.get().imageElement()); }, "The dtype of images.")
      .def_property_readonly(
          "positions", [](const MatcherObject& self) { return slicesOf(self.get().positions()); },
          "The positions in the region of interest, a slice for each axis.");
}

}  // namespace BP::python
