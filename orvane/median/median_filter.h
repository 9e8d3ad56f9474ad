#pragma once

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/exec/window_processor.h"
#include "orvane/plan/region.h"
#include "orvane/platform/export.h"

namespace BP {

/// Median filter of an input u into an output y.
///
///     y(p) = median of u(p + hLoc + j) over all j in the window
///
/// with p the position of the window's centre and hLoc minus the centre's index; see `MedianFilterAlgorithm` for even
/// windows, `bool` and NaN. The window has extents and no coefficients. Modes, pads, arrays and ownership are those of
/// `WindowProcessor`. With more than two dimensions only the window's first plane counts. The store of the window's
/// values is sized at `setupAttachWork` only, so start with the largest window. A run with a window larger than the
/// store leaves the output as it was.
///
/// UT and YT are the element types of input and output: both `double`, `float`, `bool` or `Fixpt`. A pad type out of
/// range builds a processor that does nothing.
template <class UT, class YT, class AllocT>
class ORVANE_API MedianFilter : public WindowProcessor<AnyCorrelation, UT, YT, AllocT> {
 public:
  /// `isHgtU` tells that the window exceeds the input in some dimension. `regionOfInterest`, if given, restricts the
  /// outputs to its positions; the output array then holds just these.
  MedianFilter(AllocT* allocator, int nDims, CleverPtr<int>& hDims, bool isHgtU, CleverPtr<int>& uDims,
               OutputModeEnum outputMode, PadTypeEnum padType, CleverPtr<int>& hCentre, CleverPtr<UT>& u,
               CleverPtr<YT>& y, const Region* regionOfInterest = nullptr);
};

/// Applies a macro to the four pairs of input and output elements.
#define ORVANE_FOR_MEDIAN_PAIRS(APPLY) \
  APPLY(double, double)                \
  APPLY(float, float)                  \
  APPLY(bool, bool)                    \
  APPLY(KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt)

#define ORVANE_DECLARE(UT, YT) extern template class MedianFilter<UT, YT, AllocatorTolk>;
ORVANE_FOR_MEDIAN_PAIRS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
