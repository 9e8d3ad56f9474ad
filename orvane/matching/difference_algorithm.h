#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/lane_sums.h"
#include "orvane/core/element.h"
#include "orvane/exec/sector_walk.h"
#include "orvane/lanes/least_difference.h"
#include "orvane/lanes/sums.h"
#include "orvane/matching/integer_difference_algorithm.h"
#include "orvane/matching/least_position.h"

namespace BP {

/// Base of the metrics of differences with plain elements, which vector lanes can score: `term` says what a lane
/// computes.
template <class AllocT, class BlockT, class InputT, class YT, class UT, lanes::Term term>
class PlainDifferenceAlgorithm : public DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT> {
 public:
  using Base = DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT>;
  using HT = std::remove_pointer_t<decltype(std::declval<BlockT&>().getData().ptr)>;

  using Base::Base;

  /// The common set-up; a tuned template takes effect at once.
  void setup(setupModeT mode) {
    Base::setup(mode);
    const auto& pattern = *this->filter;
    if (mode == setupResize || mode == setupStart) laneSums.resize(pattern, std::min(pattern.getNumDims(), 2));
    laneSums.begin(pattern.getData().ptr, false, nullptr);
  }

  /// The same scores in vector lanes.
  using Lanes = LaneSums<HT, UT, YT, 0, term>;
  Lanes& getLaneSums() { return laneSums; }

  /// Whether `findLeast` takes the template.
  bool canFindLeast() const { return laneSums.isReady() && this->input->getBlock().getStored() == Stored::asComputed; }
  /// The first of the positions with the least score below that of the best match so far, counted from the walk's
  /// first. Only real scores never fall while their terms are added, so that a position can be given up early.
  LeastPosition findLeast(const WalkGeometry& walk) const requires(std::is_floating_point_v<YT>) {
    const UT* const first = this->input->getBlock().getData().ptr + (walk.lo[0] - walk.shift[0]) +
                            std::ptrdiff_t{walk.inputPitch} * (walk.lo[1] - walk.shift[1]);
    const auto found = lanes::findLeastDifference<YT>(
        term, {first, walk.inputPitch, walk.hi[0] - walk.lo[0] + 1, walk.hi[1] - walk.lo[1] + 1},
        this->filter->getData().ptr, laneSums.getExtents(), *this->getMinIdxCollector().getValue().ptr);
    return {found.x, found.y};
  }

 private:
  Lanes laneSums;
};

/// Base of the metrics of differences.
template <class AllocT, class BlockT, class InputT, class YT, class UT, lanes::Term term>
using DifferenceAlgorithm =
    std::conditional_t<std::is_same_v<YT, Fixpt>, IntegerDifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, term>,
                       PlainDifferenceAlgorithm<AllocT, BlockT, InputT, YT, UT, term>>;

}  // namespace BP
