#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "orvane/algorithm/algorithm.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/input/tap_reader.h"
#include "orvane/median/fixed_lane_medians.h"
#include "orvane/median/lane_medians.h"
#include "orvane/median/selection_window.h"
#include "orvane/plan/block.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"

namespace BP {

/// What computes many medians of elements UT at once.
template <class UT>
struct MedianLanesOf {
  using type = LaneMedians<UT>;
};
template <>
struct MedianLanesOf<bool> {
  using type = LaneMajorities;
};
template <>
struct MedianLanesOf<Fixpt> {
  using type = FixedLaneMedians;
};

/// The median of the values under a window that has a shape and no coefficients.
///
///     n odd    the middle one of the n values in ascending order
///     n even   float, double   upper * 0.5 + lower * 0.5 of the two in the middle: no overflow where they are large
///              fixed point     (lower + upper) >> 1, summed in the type "accumulator" and rounded by its mode
///     bool     true if at least half of the values are: a tie gives true
///
/// UT and YT are the element types of input and output, equal ones. The window covers dimensions 0 and 1. With more
/// than two dimensions n counts the elements of the walked plane only. -0 and 0 compare as equal: which of them is the
/// middle one depends on the order of the values. A window that holds NaN gives one of its values, or the mean of two;
/// their rank is not specified, but the result is the same on every machine.
///
/// The store of the values is sized once, at `setupAttachWork`, for all elements that the window has at that time. A
/// window that is larger than the store, or has no elements, is not computed, and the output stays as it was. `bool`
/// needs no store and is always computed; a window without elements is a tie.
template <class AllocT, class InputT, class YT, class UT>
class MedianFilterAlgorithm : public DistanceMetricAlgorithm<AllocT, TraversableBlock, InputT, YT, UT> {
 public:
  using Base = DistanceMetricAlgorithm<AllocT, TraversableBlock, InputT, YT, UT>;
  using Out = Output<YT, AllocT>;
  using Lanes = typename MedianLanesOf<UT>::type;

  MedianFilterAlgorithm(AllocT* alloc, TraversableBlock* window, InputT* in)
      : Base(alloc, window, in), selection(alloc), laneMedians(selection) {}

  /// The common set-up; at `setupAttachWork` the store of the window's values is made.
  void setup(setupModeT mode) {
    Base::setup(mode);
    if constexpr (!isCounting) {
      if (mode == setupAttachWork) {
        constexpr std::int64_t most = std::numeric_limits<int>::max();
        const std::int64_t size = elementCount(this->filter->getNumDims(), this->filter->getDims().ptr);
        selection.makeStore(this->allocator, static_cast<int>(std::min(size, most)));
      }
    }
    if (mode == setupResize || mode == setupStart) laneMedians.resize(*this->filter);
  }

  Lanes& getLaneSums() { return laneMedians; }

  /// Whether the window can be computed. If not, kernels do not change the output.
  bool canRun() const {
    if constexpr (isCounting) {
      return true;
    } else {
      const std::int64_t n = count();
      return n > 0 && n <= selection.getCapacity();
    }
  }

  /// The median of a window wholly inside the input, whose first element has linear index `imageIndex`.
  void scoreAt(const InsideSector& /*region*/, Out& y1, int imageIndex) {
    computeMedian(InsideTaps<UT>(this->input->getBlock(), imageIndex), y1);
  }
  /// The median of a window that crosses an edge; `windowOrigin` holds the coordinates of its first element.
  void boundaryAt(const BoundarySector& sector, Out& y1, const CleverPtr<int>& windowOrigin) {
    computeMedian(BoundaryTaps<UT, InputT>(*this->input, sector, windowOrigin), y1);
  }
  /// The median of a window that misses the input.
  void outsideAt(const OutsideSector& sector, Out& y1,
                 const CleverPtr<int>& windowOrigin) requires(InputT::padType > PadTypeConstant) {
    computeMedian(OutsideTaps<UT, InputT>(*this->input, sector, windowOrigin), y1);
  }

 private:
  static constexpr bool isCounting = std::is_same_v<UT, bool>;
  using Selection = std::conditional_t<isCounting, NoSelection, MedianSelection<UT, YT>>;

  /// Number of values in the walked plane of the window.
  std::int64_t count() const {
    const int* end = this->filter->getEnd().ptr;
    const std::int64_t width = std::max(end[0] + 1, 0), height = std::max(end[1] + 1, 0);
    return width * height;
  }

  template <class TapsT>
  void computeMedian(TapsT taps, Out& y1) {
    YT& result = elementAt(y1.getBlock().getData().ptr, 0);
    if constexpr (isCounting) {
      std::int64_t trueCount = 0;
      forEachTap(taps, *this->filter, [&](int /*n*/) { trueCount += taps.read() ? 1 : 0; });
      result = 2 * trueCount >= count();
    } else {
      forEachTap(taps, *this->filter, [&](int n) { selection.put(n, taps.read()); });
      selection.select(static_cast<int>(count()), result);
    }
  }

  Selection selection;
  Lanes laneMedians;
};

}  // namespace BP
