#pragma once

#include <complex>
#include <memory>
#include <vector>

#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/job_handle.h"
#include "orvane/filters/rectangle.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
class FixedFilterJob;
}

/// The common base of `FixedConvolution`, `FixedSeparableConvolution` and `FixedMedian`: everything except the filters.
///
/// The rules for objects, overlap and errors are those of `ConvolutionRunner`. Complex arrays have at most 2^30
/// elements, because indices count the two parts of each value.
class ORVANE_API FixedRunner {
 public:
  /// Filters `input` into `output`, which must have the types and extents given at construction.
  void run(const FixedView& input, const MutableFixedView& output);
  /// Filters `input` into a new array.
  FixedArray run(const FixedView& input);

  /// Sets the value of a constant pad for later runs. It must be a value of the input's type.
  void setPadValue(std::complex<double> value);

  const Extents& outputExtents() const;
  /// The positions that the output holds, counted from the input's first element.
  Rectangle positions() const;
  /// The extents of the window.
  const Extents& windowExtents() const;

  /// The statistics of all runs so far, sorted by label. The documentation of each filter has its labels. Within one
  /// run, counts are modulo 2^32.
  std::vector<FixedStatistics> statistics();

 protected:
  explicit FixedRunner(std::unique_ptr<detail::FixedFilterJob> newJob);
  FixedRunner(FixedRunner&&) = default;
  FixedRunner& operator=(FixedRunner&&) = default;
  ~FixedRunner() = default;

  detail::JobHandle<detail::FixedFilterJob> job;
};

}  // namespace BP::filters
