#pragma once

#include <memory>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/block_proc_tolk_cache.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/matching/template_matching.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Front of template matching: what a host holds for one block. Metrics, positions and results are those of
/// `TemplateMatching`.
///
/// Template and image have extents in arrays of the host's, dimension 0 (contiguous in memory) first; missing
/// dimensions count as 1, and a one-dimensional signal is one line along dimension 0. With sizes that vary the arrays
/// are read again on every run. The template's anchor is its middle element, the lower one of the two for an even
/// extent; so lies the best position in the neighbourhood block. The region of interest is one array: the start of each
/// dimension, then the size of each.
///
/// HT, UT and YT are the element types of template, image and scores, a row of those that `TemplateMatching` knows.
/// Arrays and pad value are borrowed and must outlive the object; but `Fixpt` objects given to `setup` and `tune`
/// become this object's. Nothing is checked; messages go to the adaptor.
template <class HT, class UT, class YT>
class ORVANE_API TemplateMatchingTolk : public BlockProcTolkCache {
 public:
  using Handle = KarnDSPFixpt::DSPDataAttributesHandle;

  TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
                       PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode,
                       TMModeEnum tmMode, bool isVarSize, bool roiEnabled, bool roiValidEnabled,
                       SearchMethodEnum searchMethod);
  /// The form with fixed-point types of the four roles.
  TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
                       PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode,
                       TMModeEnum tmMode, bool isVarSize, bool roiEnabled, bool roiValidEnabled,
                       SearchMethodEnum searchMethod, const Handle& accumulator, const Handle& input,
                       const Handle& output, const Handle& filter);
  ~TemplateMatchingTolk() override;

  /// Swaps template and pad value between runs; null leaves one as it is, the second argument has no use.
  void tune(void* first, void* second, void* third) override;
  /// Swaps image and template, in this order, between runs; null leaves one as it is.
  void updateInputPointers(void* first, void* second) override;
  /// Swaps main output, location, neighbourhood and the two flags between runs; null leaves one as it is.
  void updateOutputPointers(void* a, void* b, void* c, void* d, void* e) override;
  /// One run over the image as it stands.
  void computeOutputs() override;

  /// One stage of set-up.
  void setup(setupModeT mode);
  /// The one-shot start. `y`, `location` and the flags may be null where the mode does not write them; `roi` holds 2
  /// times the common rank of entries. `edge` is the extent of the neighbourhood block in every dimension.
  void setup(HT* pattern, UT* image, int* roi, YT* scores, int* position, int edge, YT* neighborhood, bool* blockValid,
             bool* regionValid, const void* newPadValue, bool isComplex);

  bool useConstantPad() const { return padType == PadTypeConstant && outputMode != OutputModeValid; }
  PadTypeEnum getPadType() const { return padType; }
  const AnyTemplateMatching* getTemplateMatching() const { return templateMatching.get(); }
  /// The allocator, through whose records the host learns which work vectors to provide.
  AllocatorTolk& getAllocator() { return *allocator; }

 private:
  template <class RegisterT>
  TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
                       PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode,
                       TMModeEnum tmMode, bool isVarSize, bool roiEnabled, bool roiValidEnabled,
                       SearchMethodEnum searchMethod, RegisterT&& registerTypes);
  void constructTemplateMatching(int hCount, int* hHost, int uCount, int* uHost);
  void assignPad();
  void forwardFinish();

  OutputModeEnum outputMode;
  AlgorithmModeEnum algorithmMode;
  TMModeEnum tmMode;
  bool isVarSize;
  bool roiEnabled;
  bool roiValidEnabled;
  SearchMethodEnum searchMethod;
  int nDims = 0;
  int hNumDims = 0;
  int uNumDims = 0;
  CleverPtr<int> hDims;
  CleverPtr<int> uDims;
  CleverPtr<int> hostHDims;
  CleverPtr<int> hostUDims;
  CleverPtr<int> neighborhoodDims;
  int neighborhoodSize = 0;
  CleverPtr<int> roiLoc;
  CleverPtr<int> roiDims;
  CleverPtr<int> hCentre;
  CleverPtr<HT> h;
  CleverPtr<UT> u;
  CleverPtr<YT> y;
  CleverPtr<int> location;
  CleverPtr<YT> yNeighborhoodData;
  CleverPtr<bool> neighborhoodValid;
  CleverPtr<bool> roiValid;
  PadTypeEnum padType;
  const void* padValue = nullptr;
  bool padIsComplex = false;
  std::unique_ptr<AnyTemplateMatching> templateMatching;
};

#define ORVANE_DECLARE(HT, UT, YT) extern template class TemplateMatchingTolk<HT, UT, YT>;
ORVANE_FOR_MATCHING_ROWS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
