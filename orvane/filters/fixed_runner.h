#pragma once

#include <complex>
#include <memory>
#include <vector>

#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/job_handle.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
class FixedFilterJob;
}

/// What `FixedConvolution`, `FixedSeparableConvolution` and `FixedMedian` have in common: all but what is laid over the
/// input.
///
/// Objects, overlap and errors are as those of `ConvolutionRunner`. Indices count the parts of complex values, so
/// complex arrays have at most 2^30 elements.
class ORVANE_API FixedRunner {
 public:
  /// Filters `input` into `output`, which must have the types and extents given at construction.
  void run(const FixedView& input, const MutableFixedView& output);
  /// Filters `input` into a new array.
  FixedArray run(const FixedView& input);

  /// Takes another value for a constant pad for the runs to come. It must be a value of the input's type.
  void setPadValue(std::complex<double> value);

  const Extents& outputExtents() const;

  /// What happened to values in all runs so far, in the order of labels; the filters say which there are. Within one
  /// run, counts of a label are kept modulo 2^32.
  std::vector<FixedStatistics> statistics();

 protected:
  explicit FixedRunner(std::unique_ptr<detail::FixedFilterJob> newJob);
  FixedRunner(FixedRunner&&) = default;
  FixedRunner& operator=(FixedRunner&&) = default;
  ~FixedRunner() = default;

  detail::JobHandle<detail::FixedFilterJob> job;
};

}  // namespace BP::filters
