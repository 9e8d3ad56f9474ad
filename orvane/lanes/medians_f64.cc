#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/medians_f64.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/medians-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void computeMediansF64(const MedianTask<double>& task) { computeMedians(task); }

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(computeMediansF64);

template <>
MedianKernel<double>* medianKernel() {
  return HWY_DISPATCH_TABLE(computeMediansF64)[targetIndex()];
}

}  // namespace BP::lanes
#endif
