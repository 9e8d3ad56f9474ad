#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/medians_f32.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/medians-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void computeMediansF32(const MedianTask<float>& task) { computeMedians(task); }

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(computeMediansF32);

template <>
MedianKernel<float>* medianKernel() {
  return HWY_DISPATCH_TABLE(computeMediansF32)[targetIndex()];
}

}  // namespace BP::lanes
#endif
