#pragma once

#include <algorithm>
#include <type_traits>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/lane_sums.h"
#include "orvane/core/element.h"
#include "orvane/exec/sector_walk.h"
#include "orvane/lanes/least_difference.h"
#include "orvane/lanes/sums.h"

namespace BP {

/// Base of the metrics of differences, whose plain elements vector lanes can score: `term` says what a lane computes.
template <class AllocT, class BlockT, class InputT, class YT, class UT, lanes::Term term>
class DifferenceAlgorithm : public DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT> {
 public:
  using Base = DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT>;
  using HT = std::remove_pointer_t<decltype(std::declval<BlockT&>().getData().ptr)>;

  using Base::Base;

  /// The common set-up; a tuned template takes effect at once.
  void setup(setupModeT mode) {
    Base::setup(mode);
    if constexpr (!std::is_same_v<Lanes, NoLanes>) {
      const auto& pattern = *this->filter;
      if (mode == setupResize || mode == setupStart) laneSums.resize(pattern, std::min(pattern.getNumDims(), 2));
      laneSums.begin(pattern.getData().ptr, false, nullptr);
    }
  }

  /// The same scores in vector lanes, for plain elements.
  using Lanes = std::conditional_t<std::is_same_v<YT, Fixpt>, NoLanes, LaneSums<HT, UT, YT, 0, term>>;
  Lanes& getLaneSums() { return laneSums; }

  /// Whether a score never falls while its terms are added, so that a search may give a position up early.
  static constexpr bool scoresNeverFall = std::is_floating_point_v<YT>;
  /// The first of the positions with the least score below `limit`, counted from the walk's first.
  auto findLeast(const WalkGeometry& walk, YT limit) const requires(scoresNeverFall) {
    const int* const last = this->filter->getEnd().ptr;
    const lanes::FilterExtents extents{1, last[1] + 1, last[0] + 1};
    const UT* const first = this->input->getBlock().getData().ptr + (walk.lo[0] - walk.shift[0]) +
                            std::ptrdiff_t{walk.inputPitch} * (walk.lo[1] - walk.shift[1]);
    return lanes::findLeastDifference<YT>(
        term, {first, walk.inputPitch, walk.hi[0] - walk.lo[0] + 1, walk.hi[1] - walk.lo[1] + 1},
        this->filter->getData().ptr, extents, limit);
  }

 private:
  [[no_unique_address]] Lanes laneSums;
};

}  // namespace BP
