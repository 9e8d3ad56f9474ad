#pragma once

#include <cfloat>
#include <type_traits>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/fixed_sums.h"
#include "orvane/algorithm/lane_sums.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/enums.h"
#include "orvane/input/tap_reader.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"
#include "orvane/vendor/zd_filter_loader.h"

namespace BP {

static_assert(FLT_EVAL_METHOD == 0, "sums must round to their own type after every operation");

/// Sum of products of the window's values and the filter: convolution (`flipFilter` 1, the filter walked from its last
/// element to its first) or correlation (0, in storage order; nothing is conjugated), plain or normalised.
///
///     y = sum over j1, then j0, of u(j0, j1) * h(f)
///     normalised: y / (sqrt(sum of h^2) * sqrt(sum of u^2)), or 0 where that divisor is 0
///
/// HT, UT and YT are the element types of filter, input and output. There is no wider accumulator: sums run in YT in
/// the order given, with one rounding for each operation, and zero taps count. The walk covers dimensions 0 and 1; the
/// filter's norm covers all its elements. Fixed point makes each cast where element.h says. Booleans count the elements
/// that are true in both, in fixed point.
///
/// An unnormalised sum of `float` or of `double` leaves a sector whose windows lie wholly in the input to the vendor's
/// functions, if `ZdFilterLoader` finds them when this object is made: one call, whose result is the same up to
/// rounding.
template <class AllocT, class BlockT, class InputT, class YT, class HT, class UT, int flipFilter, int normalise>
class ConvCorrAlgorithm : public DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT> {
 public:
  using Base = DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT>;
  using Out = Output<YT, AllocT>;
  static constexpr bool isBoolean = std::is_same_v<UT, bool>;
  /// Whether the vendor's functions know this sum and these elements.
  static constexpr bool usesVendor =
      normalise == 0 && std::is_floating_point_v<YT> && std::is_same_v<HT, YT> && std::is_same_v<UT, YT>;

  ConvCorrAlgorithm(AllocT* alloc, BlockT* filterBlock, InputT* in) : Base(alloc, filterBlock, in) {
    alloc->allocateArray(accumulator, 1, "accumulator");
    if constexpr (normalise != 0) alloc->allocateArray(filterNorm, 1, "sqrt");
    if constexpr (isBoolean) alloc->allocateArray(product, 1, "uint8");
  }

  /// The common set-up; the filter's norm is computed at `setupStart` and at `setupInvoke`, so that a tuned filter
  /// takes effect at once. Fixed point hands its statistics over at `setupFinish`. At `setupAttachWork` a correlation
  /// that can use the vendor's functions allocates its reversed filter, for the extents that the filter has at that
  /// time.
  void setup(setupModeT mode);

  /// The sample of a window wholly inside the input, whose first element has linear index `imageIndex`.
  void scoreAt(const InsideSector& /*region*/, Out& y1, int imageIndex) {
    accumulate(InsideTaps<UT>(this->input->getBlock(), imageIndex), y1);
  }
  /// The sample of a window that crosses an edge; `windowOrigin` holds the coordinates of its first element. Out of
  /// line, like `outsideAt`: the tests at each tap outweigh a call, and all walks share one copy.
  [[gnu::noinline]] void boundaryAt(const BoundarySector& sector, Out& y1,
                                    const CleverPtr<int>& windowOrigin) requires(InputT::padType != 0) {
    accumulate(BoundaryTaps<UT, InputT>(*this->input, sector, windowOrigin), y1);
  }
  /// The sample of a window that misses the input.
  [[gnu::noinline]] void outsideAt(const OutsideSector& sector, Out& y1,
                                   const CleverPtr<int>& windowOrigin) requires(InputT::padType > PadTypeConstant) {
    accumulate(OutsideTaps<UT, InputT>(*this->input, sector, windowOrigin), y1);
  }

  /// Has the vendor's functions compute all outputs of `sector`. Returns false, and does nothing, if they cannot: they
  /// are not there, a row is too long for them, the filter's centre lies outside the filter, or the filter has outgrown
  /// its reversed copy.
  bool runWholeSector(const InsideSector& sector, Out& result) requires(usesVendor) {
    return loader.getAllLoaded() && sendToVendor(sector, result);
  }

  /// The same sums in vector lanes.
  using Lanes = std::conditional_t<!std::is_same_v<YT, Fixpt>, LaneSums<HT, UT, YT, normalise>,
                                   std::conditional_t<normalise == 0 && !isBoolean, FixedSums, NoLanes>>;
  Lanes& getLaneSums() { return laneSums; }

  /// filterNorm := square root of the filter's energy.
  void computeFilterNorm();

 private:
  struct Nothing {};

  template <class TapsT>
  void accumulate(TapsT taps, Out& y1);
  template <class TapsT, class ActionT>
  void sumProducts(TapsT& taps, ActionT&& beforeProduct);
  void sumFixedWindow(const InsideTaps<UT>& taps);
  void addProduct(YT& sum, UT& tap, HT& h);
  void normaliseSample(YT& sample, YT& energy);
  void makeReversedFilter();
  const HT* vendorKernel();
  bool sendToVendor(const InsideSector& sector, Out& result);

  CleverPtr<YT> accumulator;
  [[no_unique_address]] std::conditional_t<normalise != 0, CleverPtr<YT>, Nothing> filterNorm;
  [[no_unique_address]] std::conditional_t<isBoolean, CleverPtr<YT>, Nothing> product;
  [[no_unique_address]] Lanes laneSums;
  [[no_unique_address]] std::conditional_t<normalise == 0, ZdFilterLoader, Nothing> loader;
  CleverPtr<HT> reversedFilter;
  int reversedCapacity = 0;
};

}  // namespace BP

#include "orvane/algorithm/conv_corr_algorithm-inl.h"
