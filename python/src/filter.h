#pragma once

#include <complex>
#include <cstdint>
#include <memory>
#include <span>

#include "python/src/elements.h"

/// Filters whose element types are chosen at run time.
namespace BP::python {

/// A filter for inputs of one size and one type.
class Filter {
 public:
  Filter() = default;
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;
  virtual ~Filter() = default;

  virtual Element inputElement() const = 0;
  /// The type of the sums, or of the medians.
  virtual Element outputElement() const = 0;
  virtual const Extents& outputExtents() const = 0;
  virtual const Extents& windowExtents() const = 0;
  virtual Box positions() const = 0;
  /// Filters `input`, whose elements are those of the filter, into an output of `outputElement` or of integers, to
  /// which sums are rounded. Returns how many of these were clipped.
  virtual std::int64_t run(const Memory& input, const Memory& output) = 0;
  virtual void setFilters(std::span<const Memory> filters) = 0;
  virtual void setPadValue(std::complex<double> value) = 0;
};

/// What a filter is made for.
struct FilterRequest {
  Element input;
  Extents inputExtents;
  std::span<const Memory> filters;  ///< of one element type
  Extents window;                   ///< of a median
  ConvolutionOptions options;
  std::optional<Box> region;  ///< in place of that of the options
};

/// In rank 1 and 2 a `Convolution`, beyond that a `CorrelationND`.
std::unique_ptr<Filter> makeConvolution(const FilterRequest& request);
std::unique_ptr<Filter> makeSeparable(const FilterRequest& request);
std::unique_ptr<Filter> makeMedian(const FilterRequest& request);
/// A `CorrelationND`. A convolution is the correlation with the reversed filter: the same products in the same order.
std::unique_ptr<Filter> makeCorrelation(const FilterRequest& request);

/// Throws the `WrongType` of an output that a filter cannot write.
[[noreturn]] void refuseOutput(Element output, Element sums);

/// Runs a job of the library into an output of its own type or of integers.
template <class UT, class YT, class Job>
std::int64_t runInto(Job& job, const Memory& input, const Memory& output) {
  const ArrayView<const UT> from = input.view<const UT>();
  if (output.element == elementOf<YT>()) {
    job.run(from, output.view<YT>());
    return 0;
  }
  if constexpr (std::is_floating_point_v<YT>) {
    return visitElement(output.element, [&]<class Y>(std::type_identity<Y>) -> std::int64_t {
      if constexpr (StoredInteger<Y>) {
        return job.runRounded(from, output.view<Y>());
      } else {
        refuseOutput(output.element, elementOf<YT>());
      }
    });
  } else {
    refuseOutput(output.element, elementOf<YT>());
  }
}

}  // namespace BP::python
