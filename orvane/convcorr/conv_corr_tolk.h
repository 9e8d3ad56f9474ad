#pragma once

#include <memory>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/block_proc_tolk_cache.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Front of convolution and correlation: what a host holds for one block.
///
/// Filter and input have extents in arrays of the host's, dimension 0 (contiguous in memory) first; missing
/// dimensions count as 1, and a one-dimensional signal is one row. The filter's centre is its middle element, the
/// lower one of the two for an even extent. See `ConvCorr` for the sum that is computed and its extents.
///
/// So far one combination does its work: `OutputModeValid`, `NormNone`, sizes that stay. In that mode no pad is
/// ever read. Nothing is checked; arrays must outlive the object.
template <class HT, class UT, class YT>
class ORVANE_API ConvCorrTolk : public BlockProcTolkCache {
 public:
  ConvCorrTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
               PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, NormEnum norm,
               bool isVarSize);
  ~ConvCorrTolk() override;

  /// The one-shot start: takes filter, input and output, and makes everything ready to run.
  void setup(HT* h, UT* u, YT* y, const void* padValue, bool padIsComplex);

  /// One run over the input as it stands.
  void computeOutputs() override;

  /// The allocator, through whose records the host learns which work vectors to provide.
  AllocatorTolk& getAllocator() { return *allocator; }

 private:
  void fillAllDims();
  void computeCentre();

  int nDims;
  int hNumDims;
  int uNumDims;
  CleverPtr<int> hDims;
  CleverPtr<int> uDims;
  CleverPtr<int> hostHDims;
  CleverPtr<int> hostUDims;
  CleverPtr<int> hCentre;
  CleverPtr<HT> h;
  CleverPtr<UT> u;
  CleverPtr<YT> y;
  std::unique_ptr<AnyCorrelation> processor;
};

extern template class ConvCorrTolk<double, double, double>;

}  // namespace BP
