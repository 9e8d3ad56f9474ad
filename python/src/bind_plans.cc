#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "orvane/filters/plan_description.h"
#include "python/src/arrays.h"
#include "python/src/bind.h"
#include "python/src/options.h"

namespace BP::python {

namespace {

std::vector<int> intsOf(const py::object& shape, const char* argument) {
  std::vector<int> ints;
  for (const std::int64_t extent : extentsOf(shape, argument)) {
    if (extent < -longestPlanExtent || extent > longestPlanExtent) {
      throw std::invalid_argument(std::string(argument) + ": " + std::to_string(extent) + "; allowed are up to " +
                                  std::to_string(longestPlanExtent));
    }
    ints.push_back(static_cast<int>(extent));
  }
  return ints;
}

/// In NumPy's order: the last dimension first.
template <class T>
py::tuple reversed(const std::vector<T>& values) {
  py::tuple tuple(values.size());
  for (std::size_t d = 0; d < values.size(); ++d) tuple[values.size() - 1 - d] = values[d];
  return tuple;
}

/// Slices from `first` to `last`, which is behind the last position.
py::tuple slices(const std::vector<int>& first, const std::vector<int>& extents) {
  const auto wide = [](const std::vector<int>& v) {
    const std::vector<std::int64_t> w(v.begin(), v.end());
    return Extents(std::span(w));
  };
  return slicesOf(Box{wide(first), wide(extents)});
}

py::tuple axesOf(const std::vector<int>& dimensions, std::size_t rank) {
  py::tuple axes(dimensions.size());
  for (std::size_t i = 0; i < dimensions.size(); ++i) {
    axes[dimensions.size() - 1 - i] = static_cast<int>(rank) - 1 - dimensions[i];
  }
  return axes;
}

const char* nameOf(SectorKind kind) {
  return kind == SectorKind::inside ? "inside" : kind == SectorKind::boundary ? "boundary" : "outside";
}

PadTypeEnum padTypeOf(const std::string& name) { return padTypes[static_cast<std::size_t>(padRuleOf(name))].value; }

/// A dict, of which Python makes an object.
py::dict plan(const py::object& shape, const py::object& window, const std::string& mode, const std::string& pad,
              const std::optional<int>& reach, const py::object& region) {
  PlanRequest request{.input = intsOf(shape, "shape"), .window = intsOf(window, "window")};
  request.mode = outputModes[static_cast<std::size_t>(modeOf(mode))].value;
  request.pad = padTypeOf(pad);
  request.reach = reach;
  if (!region.is_none()) {
    const auto pair = py::reinterpret_borrow<py::tuple>(region);
    request.region = PlanRegion{intsOf(pair[0], "region"), intsOf(pair[1], "region")};
  }
  const PlanDescription description = describePlan(request);
  const std::size_t rank = description.centre.size();
  py::list sectors;
  for (const PlanSector& sector : description.sectors) {
    std::vector<int> extents;
    for (std::size_t d = 0; d < sector.first.size(); ++d) extents.push_back(sector.last[d] - sector.first[d] + 1);
    sectors.append(py::make_tuple(nameOf(sector.kind), slices(sector.first, extents), axesOf(sector.preEdge, rank),
                                  axesOf(sector.postEdge, rank)));
  }
  py::dict result;
  result["centre"] = reversed(description.centre);
  result["reach"] = description.reach;
  result["output"] = slices(description.output.first, description.output.extents);
  result["sectors"] = py::tuple(sectors);
  return result;
}

}  // namespace

void bindPlans(py::module_& module) {
  module.def("plan", &plan);
  module.def("pad_name", [](const std::string& name) {
    return std::string(padTypes[static_cast<std::size_t>(padRuleOf(name))].name);
  });
}

}  // namespace BP::python
