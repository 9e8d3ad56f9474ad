#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/sums_f32.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

const SumKernels<float>& sumKernelsF32() {
  static constexpr SumKernels<float> kernels = makeSumKernels<float>();
  return kernels;
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(sumKernelsF32);

template <>
const SumKernels<float>& sumKernels() {
  return HWY_DISPATCH_TABLE(sumKernelsF32)[targetIndex()]();
}

}  // namespace BP::lanes
#endif
