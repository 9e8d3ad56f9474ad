#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/fixed_sums_32.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/fixed_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void sumFixed32(const FixedSumTask<std::int32_t>& task, FixedSumCounts& counts) { sumFixedOnTarget(task, counts); }

void castFixed32(const FixedCastTask<std::int32_t>& task, FixedCounts& values, FixedCounts& results) {
  castFixedOnTarget(task, values, results);
}

void findRange32(const std::int32_t* values, std::ptrdiff_t count, std::int32_t& least, std::int32_t& greatest) {
  findRangeOnTarget(values, count, least, greatest);
}

std::uint32_t countWith32(const std::int32_t* values, std::ptrdiff_t count, std::int32_t mask) {
  return countWithOnTarget(values, count, mask);
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(sumFixed32);
HWY_EXPORT(castFixed32);
HWY_EXPORT(findRange32);
HWY_EXPORT(countWith32);

template <>
void sumFixed(const FixedSumTask<std::int32_t>& task, FixedSumCounts& counts) {
  HWY_DISPATCH_TABLE(sumFixed32)[targetIndex()](task, counts);
}
template <>
void castFixed(const FixedCastTask<std::int32_t>& task, FixedCounts& values, FixedCounts& results) {
  HWY_DISPATCH_TABLE(castFixed32)[targetIndex()](task, values, results);
}
template <>
void findRange(const std::int32_t* values, std::ptrdiff_t count, std::int32_t& least, std::int32_t& greatest) {
  HWY_DISPATCH_TABLE(findRange32)[targetIndex()](values, count, least, greatest);
}
template <>
std::uint32_t countWith(const std::int32_t* values, std::ptrdiff_t count, std::int32_t mask) {
  return HWY_DISPATCH_TABLE(countWith32)[targetIndex()](values, count, mask);
}

}  // namespace BP::lanes
#endif
