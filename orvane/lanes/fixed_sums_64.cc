#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/fixed_sums_64.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/fixed_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void sumFixed64(const FixedSumTask<std::int64_t>& task, FixedSumCounts& counts) { sumFixedOnTarget(task, counts); }

void castFixed64(const FixedCastTask<std::int64_t>& task, FixedCounts& values, FixedCounts& results) {
  castFixedOnTarget(task, values, results);
}

void findRange64(const std::int64_t* values, std::ptrdiff_t count, std::int64_t& least, std::int64_t& greatest) {
  findRangeOnTarget(values, count, least, greatest);
}

std::uint32_t countWith64(const std::int64_t* values, std::ptrdiff_t count, std::int64_t mask) {
  return countWithOnTarget(values, count, mask);
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(sumFixed64);
HWY_EXPORT(castFixed64);
HWY_EXPORT(findRange64);
HWY_EXPORT(countWith64);

template <>
void sumFixed(const FixedSumTask<std::int64_t>& task, FixedSumCounts& counts) {
  HWY_DISPATCH_TABLE(sumFixed64)[targetIndex()](task, counts);
}
template <>
void castFixed(const FixedCastTask<std::int64_t>& task, FixedCounts& values, FixedCounts& results) {
  HWY_DISPATCH_TABLE(castFixed64)[targetIndex()](task, values, results);
}
template <>
void findRange(const std::int64_t* values, std::ptrdiff_t count, std::int64_t& least, std::int64_t& greatest) {
  HWY_DISPATCH_TABLE(findRange64)[targetIndex()](values, count, least, greatest);
}
template <>
std::uint32_t countWith(const std::int64_t* values, std::ptrdiff_t count, std::int64_t mask) {
  return HWY_DISPATCH_TABLE(countWith64)[targetIndex()](values, count, mask);
}

}  // namespace BP::lanes
#endif
