#pragma once

#include <memory>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/core/window_front.h"
#include "orvane/matching/template_matching.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Front of template matching: what a host holds for one block.
///
/// Metrics, positions and results are those of `TemplateMatching`. `WindowFront` says what the host gives and keeps,
/// and where the template's anchor is; but here the extents are first read at `setupStart`. The best position is the
/// centre of the neighbourhood block, as the anchor is the centre of the template. The region of interest is one array:
/// the start of each dimension, then the size of each. No score reads the pad value.
///
/// HT, UT and YT are the element types of template, image and scores, one of the rows of `TemplateMatching`. This
/// object also takes over the `Fixpt` objects of scores given to `setup`.
template <class HT, class UT, class YT>
class ORVANE_API TemplateMatchingTolk : public WindowFront<AnyTemplateMatching, UT, YT> {
  using Base = WindowFront<AnyTemplateMatching, UT, YT>;

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

  /// Swaps template and pad value between runs; null leaves one as it is. The second argument is not used.
  void tune(void* first, void* second, void* third) override;
  /// Swaps image and template, in this order, between runs; null leaves one as it is.
  void updateInputPointers(void* first, void* second) override;
  /// Swaps main output, location, neighbourhood and the two flags between runs; null leaves one as it is.
  void updateOutputPointers(void* a, void* b, void* c, void* d, void* e) override;

  using Base::setup;
  /// The one-shot start. `y`, `location` and the flags may be null where the mode does not write them; `roi` holds 2
  /// times the common rank of entries. `edge` is the extent of the neighbourhood block in every dimension.
  void setup(HT* pattern, UT* image, int* roi, YT* scores, int* position, int edge, YT* neighborhood, bool* blockValid,
             bool* regionValid, const void* newPadValue, bool isComplex);

  const AnyTemplateMatching* getTemplateMatching() const { return this->processor.get(); }

 private:
  template <class RegisterT>
  TemplateMatchingTolk(brekk::BrekkAdaptorTolk* adaptor, int hNumDims, int* hDims, int uNumDims, int* uDims,
                       PadTypeEnum padType, OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode,
                       TMModeEnum tmMode, bool isVarSize, bool roiEnabled, bool roiValidEnabled,
                       SearchMethodEnum searchMethod, RegisterT&& registerTypes);
  void bindResults(YT* scores, int* position, YT* neighborhood, bool* blockValid, bool* regionValid);

  CleverPtr<HT> h;
  CleverPtr<int> neighborhoodDims;
  CleverPtr<int> roiLoc;
  CleverPtr<int> roiDims;
  CleverPtr<int> location;
  CleverPtr<YT> yNeighborhoodData;
  CleverPtr<bool> neighborhoodValid;
  CleverPtr<bool> roiValid;
};

#define ORVANE_DECLARE(HT, UT, YT) extern template class TemplateMatchingTolk<HT, UT, YT>;
ORVANE_FOR_MATCHING_ROWS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
