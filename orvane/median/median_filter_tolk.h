#pragma once

#include "orvane/core/any_bp.h"
#include "orvane/core/enums.h"
#include "orvane/core/window_front.h"
#include "orvane/median/median_filter.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Front of the median filter: what a host holds for one block.
///
/// The median, edges and extents are those of `MedianFilter`. `WindowFront` says what the host gives and keeps, and
/// where the window's centre is. The host gives only the extents of the window.
///
/// If sizes vary, the window must have its largest extents when `setup` starts the block (or at a
/// `setup(setupAttachWork)`), because the store of its values is sized only then. Later windows may be smaller. A run
/// with a window of more elements than the store holds computes nothing and leaves the output as it was.
///
/// UT and YT are the element types of input and output: both `double`, `float`, `bool` or `Fixpt`.
template <class UT, class YT>
class ORVANE_API MedianFilterTolk : public WindowFront<AnyCorrelation, UT, YT> {
  using Base = WindowFront<AnyCorrelation, UT, YT>;

 public:
  using Handle = KarnDSPFixpt::DSPDataAttributesHandle;

  MedianFilterTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
                   PadTypeEnum padType, OutputModeEnum outputMode, bool isVarSize);
  /// With the fixed-point types of the three roles; the two middle values are added in that of `accumulator`.
  MedianFilterTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
                   PadTypeEnum padType, OutputModeEnum outputMode, bool isVarSize, const Handle& input,
                   const Handle& output, const Handle& accumulator);
  ~MedianFilterTolk() override;

  /// Swaps the pad value, the third argument, between runs; null leaves it as it is. There is nothing else to tune.
  void tune(void* first, void* second, void* third) override;

  using Base::setup;
  /// The one-shot start. `padValue` is one input element; `isComplex` has no meaning for real elements.
  void setup(UT* input, YT* output, const void* padValue, bool isComplex);

  const AnyCorrelation* getMedianFilter() const { return this->processor.get(); }

 private:
  void constructMedianFilter(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad);
};

#define ORVANE_DECLARE(UT, YT) extern template class MedianFilterTolk<UT, YT>;
ORVANE_FOR_MEDIAN_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
