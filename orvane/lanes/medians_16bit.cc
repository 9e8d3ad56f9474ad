#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/medians_16bit.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/medians-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void computeMediansI16(const MedianTask<std::int16_t>& task) { computeMedians(task); }
void computeMediansU16(const MedianTask<std::uint16_t>& task) { computeMedians(task); }

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(computeMediansI16);
HWY_EXPORT(computeMediansU16);

template <>
MedianKernel<std::int16_t>* medianKernel() {
  return HWY_DISPATCH_TABLE(computeMediansI16)[targetIndex()];
}
template <>
MedianKernel<std::uint16_t>* medianKernel() {
  return HWY_DISPATCH_TABLE(computeMediansU16)[targetIndex()];
}

}  // namespace BP::lanes
#endif
