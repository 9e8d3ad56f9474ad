#pragma once

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element_pairs.h"
#include "orvane/core/enums.h"
#include "orvane/exec/window_processor.h"
#include "orvane/plan/block.h"
#include "orvane/plan/region.h"
#include "orvane/platform/export.h"

namespace BP {

/// Convolution or correlation of an input u with a filter h into an output y.
///
///     y(p) = sum over j1, then j0, of u(p + hLoc + j) * h(f)
///
/// with p the position of the filter's centre, hLoc minus the centre's index, and f running over the filter's elements
/// from the last to the first for convolution and from the first to the last for correlation; optionally divided by the
/// norms of filter and window (see `ConvCorrAlgorithm`). Each output is one sum in this order, with one rounding for
/// each operation in the element type itself; but an application can have a vendor's functions compute interiors, see
/// `ZdFilterLoader`. Modes, pads, arrays and ownership are those of `WindowProcessor`.
///
/// HT, UT and YT are the element types of filter, input and output. A pad type or an algorithm mode out of range builds
/// a processor that does nothing.
template <class HT, class UT, class YT, class AllocT>
class ORVANE_API ConvCorr : public WindowProcessor<AnyCorrelation, UT, YT, AllocT> {
 public:
  /// `isHgtU` tells that the filter exceeds the input in some dimension. `regionOfInterest`, if given, restricts the
  /// outputs to its positions; the output array then holds just these.
  ConvCorr(AllocT* allocator, int nDims, CleverPtr<int>& hDims, bool isHgtU, CleverPtr<int>& uDims,
           OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType,
           CleverPtr<int>& hCentre, CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<YT>& y,
           const Region* regionOfInterest = nullptr);

  /// Works out what the filter makes of an input that is nothing but the pad value: the sum of the filter, then one
  /// multiplication.
  void computePadOutput();
  /// Whether there are an input and an algorithm: not so for a pad type or an algorithm mode out of range.
  bool getIsBuilt() const { return this->kernel != nullptr; }
  /// What `computePadOutput` worked out; only if `getIsBuilt()`.
  const CleverPtr<YT>& getPadOutput();
  /// Takes element 0 of `value` for the pad value, if the pad is constant.
  void setPadValue(const CleverPtr<UT>& value);

 private:
  using Base = WindowProcessor<AnyCorrelation, UT, YT, AllocT>;
  using FilterBlock = TraversableDataBlock<HT, AllocT>;

  void build(AlgorithmModeEnum algorithmMode, NormEnum norm, PadTypeEnum padType);

  FilterBlock* filter;
};

/// Applies a macro to the nine triples of element types: filter, input, output.
#define ORVANE_FOR_CONV_CORR_TRIPLES(APPLY) \
  ORVANE_FOR_PLAIN_TRIPLES(APPLY)           \
  APPLY(KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt)

#define ORVANE_DECLARE(HT, UT, YT) extern template class ConvCorr<HT, UT, YT, AllocatorTolk>;
ORVANE_FOR_CONV_CORR_TRIPLES(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
