#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/medians_8bit.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/medians-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void computeMediansI8(const MedianTask<std::int8_t>& task) { computeMedians(task); }
void computeMediansU8(const MedianTask<std::uint8_t>& task) { computeMedians(task); }

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(computeMediansI8);
HWY_EXPORT(computeMediansU8);

template <>
MedianKernel<std::int8_t>* medianKernel() {
  return HWY_DISPATCH_TABLE(computeMediansI8)[targetIndex()];
}
template <>
MedianKernel<std::uint8_t>* medianKernel() {
  return HWY_DISPATCH_TABLE(computeMediansU8)[targetIndex()];
}

}  // namespace BP::lanes
#endif
