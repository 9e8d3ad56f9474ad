#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/sums_f64.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

const SumKernels<double>& sumKernelsF64() {
  static constexpr SumKernels<double> kernels = makeSumKernels<double>();
  return kernels;
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(sumKernelsF64);

template <>
const SumKernels<double>& sumKernels() {
  return HWY_DISPATCH_TABLE(sumKernelsF64)[targetIndex()]();
}

}  // namespace BP::lanes
#endif
