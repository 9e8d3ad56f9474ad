#include "orvane/lanes/dispatch.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/lanes/fixed_sums_32.cc"
#include <hwy/foreach_target.h>

#include "orvane/lanes/fixed_pairs-inl.h"
#include "orvane/lanes/fixed_sums-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

void sumFixed32(const FixedSumTask<std::int32_t>& task, FixedSumCounts& counts) { sumFixedOnTarget(task, counts); }

void castFixed32(const FixedCastTask<std::int32_t>& task, FixedCounts& values, FixedCounts& results) {
  castFixedOnTarget(task, values, results);
}

void sumPairs(const FixedPairTask& task) { sumPairsOnTarget(task); }

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace BP::lanes {

HWY_EXPORT(sumFixed32);
HWY_EXPORT(castFixed32);
HWY_EXPORT(sumPairs);

void sumFixedPairs(const FixedPairTask& task) { HWY_DISPATCH_TABLE(sumPairs)[targetIndex()](task); }

template <>
void sumFixed(const FixedSumTask<std::int32_t>& task, FixedSumCounts& counts) {
  HWY_DISPATCH_TABLE(sumFixed32)[targetIndex()](task, counts);
}
template <>
void castFixed(const FixedCastTask<std::int32_t>& task, FixedCounts& values, FixedCounts& results) {
  HWY_DISPATCH_TABLE(castFixed32)[targetIndex()](task, values, results);
}

}  // namespace BP::lanes
#endif
