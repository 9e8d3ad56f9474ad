#pragma once

#include <algorithm>
#include <type_traits>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/lane_sums.h"
#include "orvane/core/element.h"
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

 private:
  [[no_unique_address]] Lanes laneSums;
};

}  // namespace BP
