#include "tool/plane_filter.h"

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>

#include "orvane/filters/convolution.h"
#include "tool/fixed_types.h"

namespace BP::tool {

namespace {

using filters::Extents;

Extents planeExtents(const FilterKernel& kernel) { return {kernel.width, kernel.height}; }

/// Extents of one of the two kernels of a separable filter.
Extents lineExtents(const FilterKernel& kernel) { return {static_cast<std::int64_t>(kernel.elements.size())}; }

/// The kernel's elements in precision T.
template <class T>
filters::Array<T> elementsOf(const FilterKernel& kernel, const Extents& extents) {
  filters::Array<T> elements(extents);
  std::ranges::transform(kernel.elements, elements.begin(), [](double element) { return static_cast<T>(element); });
  return elements;
}

template <class T, class Filter>
PlaneRun<T> shared(Filter filter) {
  return [held = std::make_shared<Filter>(std::move(filter))](
             filters::ArrayView<const T> plane, filters::ArrayView<T> output) { held->run(plane, output); };
}

std::string explained(const std::string& what, filters::FixedPath path) {
  return "  " + what + ": " + filters::describe(path) + '\n';
}

}  // namespace

template <class T>
PlaneRun<T> makePlaneFilter(const FilterSettings& settings, const PlanePart& part) {
  filters::ConvolutionOptions options = settings.options;
  options.region = part.region;
  using Real = filters::RealOf<T>;
  const FilterKernel& kernel = settings.kernels.front();
  if (settings.isSeparable()) {
    const FilterKernel& column = settings.kernels.back();
    const auto across = elementsOf<Real>(kernel, lineExtents(kernel));
    const auto down = elementsOf<Real>(column, lineExtents(column));
    return shared<T>(filters::SeparableConvolution<T, Real>(across, down, part.extents, options));
  }
  const auto elements = elementsOf<Real>(kernel, planeExtents(kernel));
  return shared<T>(filters::Convolution<T, Real>(elements, part.extents, options));
}

template PlaneRun<float> makePlaneFilter(const FilterSettings&, const PlanePart&);
template PlaneRun<double> makePlaneFilter(const FilterSettings&, const PlanePart&);
template PlaneRun<std::complex<float>> makePlaneFilter(const FilterSettings&, const PlanePart&);
template PlaneRun<std::complex<double>> makePlaneFilter(const FilterSettings&, const PlanePart&);

template <class Filter>
void FixedPlaneFilter::hold(Filter made) {
  const auto held = std::make_shared<Filter>(std::move(made));
  filter = [held](const filters::FixedView& plane) { return held->run(plane); };
  statistics = [held] { return held->statistics(); };
}

FixedPlaneFilter::FixedPlaneFilter(const FilterSettings& chosen, const PlanePart& planePart, bool isComplex)
    : part(planePart), inputType(chosen.fixed->types.input), modes(chosen.fixed->types.modes) {
  filters::FixedTypes types = chosen.fixed->types;
  types.inputIsComplex = isComplex;
  filters::ConvolutionOptions options = chosen.options;
  options.region = part.region;
  checkFixedPad(chosen.options.mode, chosen.options.pad, types.input);
  const filters::FixedType& filterType = chosen.fixed->filter;
  rows = {{"input", filters::toText(types.input)},
          {"filter", filters::toText(filterType)},
          {"filter product", "exact"},
          {"product", textOrExact(types.product)},
          {"product sum", filters::toText(types.accumulator)},
          {"second product", "exact"},
          {"accumulator", filters::toText(types.accumulator)},
          {"sqrt", textOrExact(types.sqrt)},
          {"output", filters::toText(types.output)}};
  const FilterKernel& kernel = chosen.kernels.front();
  if (chosen.isSeparable()) {
    const FilterKernel& column = chosen.kernels.back();
    filters::FixedSeparableConvolution made(cast(kernel, lineExtents(kernel), filterType),
                                            cast(column, lineExtents(column), filterType), part.extents, types,
                                            options);
    explanation = explained("first pass", made.firstPath()) + explained("second pass", made.secondPath());
    hold(std::move(made));
  } else {
    filters::FixedConvolution made(cast(kernel, planeExtents(kernel), filterType), part.extents, types, options);
    explanation = explained("sums", made.path());
    hold(std::move(made));
  }
  if (!chosen.explains) explanation.clear();
}

FixedPlaneFilter::FixedPlaneFilter(filters::FixedMedian median, const filters::FixedMedianTypes& types,
                                   const PlanePart& planePart)
    : rows{{"input", filters::toText(types.input)}, {"output", filters::toText(types.output.value_or(types.input))}},
      part(planePart),
      inputType(types.input),
      modes(types.modes) {
  hold(std::move(median));
}

filters::FixedArray FixedPlaneFilter::cast(const FilterKernel& kernel, const Extents& extents,
                                           const filters::FixedType& type) {
  return filters::quantise(filters::ArrayView<const double>(kernel.elements, extents), type, modes, &filterStatistics);
}

template <class T>
void FixedPlaneFilter::run(filters::ArrayView<const T> plane, filters::ArrayView<T> output) {
  filters::FixedArray input(plane.extents(), inputType, !std::is_same_v<T, double>);
  const std::int64_t endOwn = part.firstOwn + part.ownRows, width = plane.extents()[0];
  const auto castRows = [&](std::int64_t first, std::int64_t end, filters::FixedStatistics* counts) {
    if (first >= end) return;
    const Extents start{0, first}, rowExtents{width, end - first};
    filters::quantiseInto(plane.subview(start, rowExtents), input.subview(start, rowExtents), modes, counts);
  };
  castRows(0, part.firstOwn, nullptr);
  castRows(part.firstOwn, endOwn, &inputStatistics);
  castRows(endOwn, plane.extents()[1], nullptr);
  const filters::FixedArray result = filter(input);
  if constexpr (std::is_same_v<T, double>) {
    std::ranges::copy(filters::toDouble(result), output.data());
  } else {
    std::ranges::copy(filters::toComplex(result), output.data());
  }
}

template void FixedPlaneFilter::run(filters::ArrayView<const double>, filters::ArrayView<double>);
template void FixedPlaneFilter::run(filters::ArrayView<const std::complex<double>>,
                                    filters::ArrayView<std::complex<double>>);

std::vector<filters::FixedStatistics> FixedPlaneFilter::allStatistics() const {
  std::vector<filters::FixedStatistics> all = statistics();
  all.insert(all.end(), {inputStatistics, filterStatistics});
  return all;
}

template <class T>
PlaneMaker<T> FixedPlaneFilters::maker() {
  return [this](const PlanePart& part) -> PlaneRun<T> {
    auto filter = std::make_unique<FixedPlaneFilter>(make(part));
    const std::lock_guard lock(mutex);
    FixedPlaneFilter& kept = *made.emplace_back(std::move(filter));
    return [&kept](filters::ArrayView<const T> in, filters::ArrayView<T> out) { kept.run<T>(in, out); };
  };
}

template PlaneMaker<double> FixedPlaneFilters::maker();
template PlaneMaker<std::complex<double>> FixedPlaneFilters::maker();

std::string FixedPlaneFilters::table() const {
  if (made.empty()) return {};
  std::vector<filters::FixedStatistics> all = made.front()->allStatistics();
  for (std::size_t i = 1; i < made.size(); ++i) {
    for (const filters::FixedStatistics& more : made[i]->allStatistics()) {
      if (more.label != "filter") addStatistics(all, more);  // all filters cast the same kernel
    }
  }
  return made.front()->howSumsRun() + fixedTable(made.front()->types(), all);
}

}  // namespace BP::tool
