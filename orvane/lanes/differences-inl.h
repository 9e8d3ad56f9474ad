// The kernels of differences: the blocks of sums with other elements. Included once for each target.

#if defined(ORVANE_LANES_DIFFERENCES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_DIFFERENCES_INL
#undef ORVANE_LANES_DIFFERENCES_INL
#else
#define ORVANE_LANES_DIFFERENCES_INL
#endif

#include <hwy/highway.h>

#include "orvane/lanes/difference_elements-inl.h"
#include "orvane/lanes/difference_kernels.h"
#include "orvane/lanes/least_difference-inl.h"
#include "orvane/lanes/sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template <class T, Term term>
constexpr DifferenceKernels<T> makeDifferenceKernelsOf() {
  using D = hn::ScalableTag<T>;
  return {computeSums<RealDifference<D, term>>, computeSums<ComplexDifference<D, term, true>>,
          computeSums<ComplexDifference<D, term, false>>, search<RealDifference<D, term>>};
}

template <class T>
constexpr std::array<DifferenceKernels<T>, 3> makeDifferenceKernels() {
  return {makeDifferenceKernelsOf<T, Term::absoluteDifference>(), makeDifferenceKernelsOf<T, Term::squaredDifference>(),
          makeDifferenceKernelsOf<T, Term::greatestDifference>()};
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
