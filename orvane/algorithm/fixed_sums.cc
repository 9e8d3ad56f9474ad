#include "orvane/algorithm/fixed_sums.h"

#include <algorithm>
#include <cstddef>

namespace BP {
namespace {

using KarnDSPFixpt::Fixpt;

bool isRealFixed(const Fixpt& array) { return !array.isComplex() && !array.attributes().isFloating(); }

}  // namespace

void FixedSums::resize(const Block& block) {
  const bool hasPlane = block.getNumDims() >= 2;
  extents = {1, hasPlane ? block.getDims().ptr[1] : 0, hasPlane ? block.getDims().ptr[0] : 0};
  const std::int64_t count = std::int64_t{std::max(extents.rows, 0)} * std::max(extents.columns, 0);
  if (count > lanes::maxFixedTaps) extents = {1, 0, 0};
  taps.clear();
  plannedTaps.clear();
  plannedTaps.reserve(static_cast<std::size_t>(std::clamp<std::int64_t>(count, 0, lanes::maxFixedTaps)));
  taps.reserve(static_cast<std::size_t>(std::min<std::int64_t>(count, lanes::maxFixedTaps)));
}

void FixedSums::begin(Fixpt& newInput, Fixpt& newFilter, Fixpt& newAccumulator, bool reversed) {
  input = &newInput;
  filter = &newFilter;
  accumulator = &newAccumulator;
  isPlanned = false;
  taps.clear();
  if (extents.rows < 1 || extents.columns < 1 || !isRealFixed(newFilter)) return;
  const int count = extents.rows * extents.columns;
  for (int n = 0; n < count; ++n) {
    taps.push_back(static_cast<std::int64_t>(newFilter[reversed ? count - 1 - n : n].stored()));
  }
}

const FixedSumPlan& FixedSums::planFor(const Fixpt& output) {
  if (taps.empty() || !isRealFixed(*input) || !isRealFixed(*accumulator) || !isRealFixed(output)) {
    plan = {};
    isPlanned = false;
    plannedTaps.clear();
    return plan;
  }
  const FixedSumFormats formats{input->attributes().type(), filter->attributes().type(), formatOf(getProduct()),
                                formatOf(*accumulator), formatOf(output)};
  if (isPlanned && formats == plannedFormats) return plan;
  if (formats != plannedFormats || taps != plannedTaps) plan = planFixedSum(formats, taps);
  plannedFormats = formats;
  plannedTaps = taps;
  isPlanned = true;
  return plan;
}

bool FixedSums::isLikeInput(const Fixpt& pad) const {
  return isRealFixed(pad) && formatOf(pad) == formatOf(*input) &&
         formatOf(pad.productFor(*filter)) == formatOf(getProduct());
}

}  // namespace BP
