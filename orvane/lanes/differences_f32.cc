#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/differences_f32.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/differences-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

const std::array<DifferenceKernels<float>, 3>& differenceKernelsF32() {
  static constexpr auto kernels = makeDifferenceKernels<float>();
  return kernels;
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(differenceKernelsF32);

template <>
const std::array<DifferenceKernels<float>, 3>& differenceKernels() {
  return HWY_DISPATCH_TABLE(differenceKernelsF32)[targetIndex()]();
}

}  // namespace BP::lanes
#endif
