#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/differences_f64.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/differences-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

const std::array<DifferenceKernels<double>, 3>& differenceKernelsF64() {
  static constexpr auto kernels = makeDifferenceKernels<double>();
  return kernels;
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(differenceKernelsF64);

template <>
const std::array<DifferenceKernels<double>, 3>& differenceKernels() {
  return HWY_DISPATCH_TABLE(differenceKernelsF64)[targetIndex()]();
}

}  // namespace BP::lanes
#endif
