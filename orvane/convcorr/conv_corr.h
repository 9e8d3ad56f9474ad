#pragma once

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/platform/export.h"

namespace BP {

/// Convolution or correlation of a two-dimensional input with a filter, over the positions where the filter lies
/// wholly in the input.
///
///     y(i0, i1) = sum over j1, then j0, of u(i0 + j0, i1 + j1) * h(f)
///
/// with f running over the filter's elements from the last to the first for convolution and from the first to the
/// last for correlation. Element (i0, i1) of an array stands at i0 + i1 * extent[0]; dimension 0 is contiguous. Each
/// output is one sum in this order, with one rounding for each product and each addition.
///
/// Input of extents u and filter of extents h give an output of extents u - h + 1; a filter that exceeds the input
/// gives none. Tables and data belong to the caller, may be rebound between runs, and must outlive the object.
template <class HT, class UT, class YT, class AllocT>
class ORVANE_API ConvCorr : public AnyCorrelation {
 public:
  ConvCorr(AllocT* allocator, int nDims, CleverPtr<int>& hDims, CleverPtr<int>& uDims, AlgorithmModeEnum algorithmMode,
           CleverPtr<int>& hCentre, CleverPtr<HT>& h, CleverPtr<UT>& u, CleverPtr<YT>& y);

  void setup(setupModeT mode) override;
  ~ConvCorr() override;
  void invoke() override;
  /// Does nothing: no window leaves the input.
  void assignPadValue(const void* value, bool isComplex) override;

 private:
  void initializeParameters();
  void computeROS();
  YT sumAt(const UT* window) const;

  AlgorithmModeEnum algorithmMode;
  int nDims;
  CleverPtr<int> rosLoc;
  CleverPtr<int> rosDims;
  CleverPtr<int>& hDims;
  CleverPtr<int>& hCentre;
  CleverPtr<int> hLoc;
  CleverPtr<int>& uDims;
  CleverPtr<UT>& uData;
  CleverPtr<int> yDims;
  CleverPtr<YT>& yData;
  CleverPtr<HT>& hData;
};

extern template class ConvCorr<double, double, double, AllocatorTolk>;

}  // namespace BP
