#pragma once

#include <complex>
#include <functional>
#include <string>
#include <vector>

#include "orvane/filters/array.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_median.h"
#include "tool/band_filter.h"
#include "tool/filter_settings.h"
#include "tool/fixed_table.h"

namespace BP::tool {

/// A filter that sums in T: `float`, `double`, or a complex type of these. Elements of the kernel are rounded to the
/// precision of T. Its outputs are those at the positions in `region`. Throws `std::invalid_argument` if the kernels do
/// not fit the extents.
template <class T>
PlaneRun<T> makePlaneFilter(const FilterSettings& settings, const filters::Extents& extents,
                            const filters::Rectangle& region);

/// A filter in fixed point, with statistics of its values by label.
class FixedPlaneFilter {
 public:
  /// A filter as of `makePlaneFilter`, for the types in `settings.fixed`; kernels are cast into the filter's type.
  FixedPlaneFilter(const FilterSettings& settings, const filters::Extents& extents, bool isComplex);
  /// A median over planes of the input's type.
  FixedPlaneFilter(filters::FixedMedian median, const filters::FixedMedianTypes& types);

  /// Casts a plane into the input's type, filters it, and puts the values of the output into another. T is `double` for
  /// real planes and `std::complex<double>` for complex ones.
  template <class T>
  void run(filters::ArrayView<const T> plane, filters::ArrayView<T> output);

  /// The statistics as a table (see `fixedTable`).
  std::string table() const;

 private:
  template <class Filter>
  void hold(Filter made);
  filters::FixedArray cast(const FilterKernel& kernel, const filters::Extents& extents, const filters::FixedType& type);

  FixedRows rows;
  filters::FixedType inputType;
  filters::FixedModes modes;
  filters::FixedStatistics inputStatistics{.label = "input"};
  filters::FixedStatistics filterStatistics{.label = "filter"};
  std::function<filters::FixedArray(const filters::FixedView&)> filter;
  std::function<std::vector<filters::FixedStatistics>()> statistics;
  std::string explanation;  ///< of how sums run, if that is wanted
};

}  // namespace BP::tool
