#pragma once

#include <cstdint>
#include <vector>

#include "orvane/algorithm/fixed_sum_plan.h"
#include "orvane/lanes/sums.h"
#include "orvane/plan/block.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// The fixed-point sums of an algorithm as vector lanes want them: its arrays, its filter and the plan that follows. In
/// place of `LaneSums`, for real values.
class ORVANE_API FixedSums {
 public:
  using Fixpt = KarnDSPFixpt::Fixpt;

  /// Takes the filter's extents in dimensions 0 and 1.
  void resize(const Block& filter);
  /// Begins a run: takes the arrays and reads the filter, in the opposite order if `reversed`. Elements that have
  /// changed take effect.
  void begin(Fixpt& newInput, Fixpt& newFilter, Fixpt& newAccumulator, bool reversed);

  /// The plan for an output of this format; of single values if an array is not real fixed point.
  const FixedSumPlan& planFor(const Fixpt& output);
  const lanes::FilterExtents& getExtents() const { return extents; }
  /// The filter's values in the order of the sum.
  const std::vector<std::int64_t>& getTaps() const { return taps; }
  Fixpt& getInput() const { return *input; }
  Fixpt& getProduct() const { return input->productFor(*filter); }
  Fixpt& getAccumulator() const { return *accumulator; }
  /// Whether `pad` has the types of the input, for itself and for its products.
  bool isLikeInput(const Fixpt& pad) const;

 private:
  lanes::FilterExtents extents{1, 0, 0};
  Fixpt* input = nullptr;
  Fixpt* filter = nullptr;
  Fixpt* accumulator = nullptr;
  std::vector<std::int64_t> taps;
  bool isPlanned = false;
  FixedSumFormats plannedFormats;
  std::vector<std::int64_t> plannedTaps;
  FixedSumPlan plan;
};

}  // namespace BP
