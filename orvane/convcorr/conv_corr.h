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
/// from the last to the first for convolution and from the first to the last for correlation. With normalisation the
/// sum is divided by the norms of filter and window (see `ConvCorrAlgorithm`). Each output is one sum in this order,
/// with one rounding for each operation in the element type itself. An exception: an application can have a vendor's
/// functions compute inside sectors (see `ZdFilterLoader`). Modes, pads, arrays and ownership are those of
/// `WindowProcessor`.
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

  /// Computes the filter's response to an input of nothing but the pad value v:
  ///
  ///     (...((h(0) + h(1)) + h(2)) + ...) * v
  ///
  /// The sum starts with a copy of the first element and runs in storage order, for convolution and correlation alike,
  /// with one rounding for each addition. One multiplication by v follows. All of this is in YT. The response of a
  /// filter without elements is 0.
  void computePadOutput();
  /// Whether there are an input and an algorithm. A pad type or an algorithm mode out of range has neither.
  bool getIsBuilt() const { return this->kernel != nullptr; }
  /// The result of `computePadOutput`; only if `getIsBuilt()`.
  const CleverPtr<YT>& getPadOutput();
  /// The store of the pad value; only if `getIsBuilt()`.
  const CleverPtr<UT>& getPadValue() const { return this->input->padValues(); }
  /// Sets the pad value to element 0 of `value`, if the pad is constant.
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
