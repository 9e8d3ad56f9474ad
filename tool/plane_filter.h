#pragma once

#include <complex>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "orvane/filters/array.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_median.h"
#include "tool/band_filter.h"
#include "tool/filter_settings.h"
#include "tool/fixed_table.h"

namespace BP::tool {

/// A filter that sums in T: `float`, `double`, or a complex type of these. Elements of the kernel are rounded to the
/// precision of T. Throws `std::invalid_argument` if the kernels do not fit the extents.
template <class T>
PlaneRun<T> makePlaneFilter(const FilterSettings& settings, const PlanePart& part);

/// A filter in fixed point, with statistics of its values by label. Values of rows that are not the part's own are not
/// counted as casts into the input's type.
class FixedPlaneFilter {
 public:
  /// A filter as of `makePlaneFilter`, for the types in `settings.fixed`; kernels are cast into the filter's type.
  FixedPlaneFilter(const FilterSettings& settings, const PlanePart& part, bool isComplex);
  /// A median over planes of the input's type.
  FixedPlaneFilter(filters::FixedMedian median, const filters::FixedMedianTypes& types, const PlanePart& part);

  /// Casts a plane into the input's type, filters it, and puts the values of the output into another. T is `double` for
  /// real planes and `std::complex<double>` for complex ones.
  template <class T>
  void run(filters::ArrayView<const T> plane, filters::ArrayView<T> output);

  /// The statistics of all runs, and what each label's type is.
  std::vector<filters::FixedStatistics> allStatistics() const;
  const FixedRows& types() const { return rows; }
  /// How sums run, if that is wanted, in lines.
  const std::string& howSumsRun() const { return explanation; }

 private:
  template <class Filter>
  void hold(Filter made);
  filters::FixedArray cast(const FilterKernel& kernel, const filters::Extents& extents, const filters::FixedType& type);

  FixedRows rows;
  PlanePart part;
  filters::FixedType inputType;
  filters::FixedModes modes;
  filters::FixedStatistics inputStatistics{.label = "input"};
  filters::FixedStatistics filterStatistics{.label = "filter"};
  std::function<filters::FixedArray(const filters::FixedView&)> filter;
  std::function<std::vector<filters::FixedStatistics>()> statistics;
  std::string explanation;
};

/// The most bytes that a filter in fixed point needs for an element: two containers and the result as T.
template <class T>
constexpr std::size_t fixedBytes = 2 * 16 * (sizeof(T) / sizeof(double)) + sizeof(T);

/// The filters of all parts of a plane in fixed point, whose values are counted together.
class FixedPlaneFilters {
 public:
  using Maker = std::function<FixedPlaneFilter(const PlanePart& part)>;
  explicit FixedPlaneFilters(Maker filterMaker) : make(std::move(filterMaker)) {}

  /// Makes filters of parts, which live as long as this object.
  template <class T>
  PlaneMaker<T> maker();

  /// The statistics as a table (see `fixedTable`).
  std::string table() const;

 private:
  Maker make;
  std::mutex mutex;
  std::vector<std::unique_ptr<FixedPlaneFilter>> made;
};

}  // namespace BP::tool
