#pragma once

#include <memory>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/any_bp.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/element_pairs.h"
#include "orvane/exec/window_processor.h"
#include "orvane/plan/block.h"
#include "orvane/plan/input.h"
#include "orvane/plan/output.h"
#include "orvane/plan/region.h"
#include "orvane/plan/scope.h"
#include "orvane/platform/export.h"

namespace BP {

/// What a call of template matching produces.
enum TMModeEnum : int {
  TMModeMetric = 0,                 ///< the map of scores
  TMModeBestMatch = 1,              ///< the position of the best score
  TMModeBestMatchNeighborhood = 2,  ///< that position, and a block of scores around it
};

/// How positions are visited where the best one is wanted; any other value than 0 behaves like 1.
enum SearchMethodEnum : int {
  SearchMethodExhaustive = 0,  ///< every position
  SearchMethodThreeStep = 1,   ///< a shrinking pattern of 3 by 3 positions
};

/// The handles of region of interest and results. The caller owns them and may rebind them between runs.
template <class YT>
struct MatchingHandles {
  CleverPtr<int>& roiLoc;  ///< region of interest
  CleverPtr<int>& roiDims;
  CleverPtr<int>& location;  ///< best position, an entry per dimension
  CleverPtr<int>& neighborhoodDims;
  CleverPtr<YT>& yNeighborhoodData;
  CleverPtr<bool>& neighborhoodValid;
  CleverPtr<bool>& roiValid;
};

/// Slides a template over an image and scores each position.
///
/// A *position* is the image coordinate on which the template's anchor lies. The region of support (ROS) is the set of
/// positions that the output mode allows. The region of interest (ROI) is the set that the caller asks for. Scores come
/// from one of the metrics `SADAlgorithm`, `SSDAlgorithm`, `MaxADAlgorithm` or, for the two modes of convolution, from
/// the sum of products with the template walked backwards. Where the template does not lie wholly in the image, the
/// score is 0.
///
/// The best match is the least score, whatever the metric. Complex scores compare by squared magnitude. The first one
/// visited of equal scores stays; inside positions come before those at the edges, row by row. A NaN score stays if it
/// came first; otherwise it is ignored.
///
/// The matching is two-dimensional. A rank above 2 is not supported, and nothing checks for it. A lower rank scores
/// nothing. HT, UT and YT are the element types of template, image and scores. Geometry, set-up and run are those of
/// `WindowProcessor`. Nothing is checked or reported; an algorithm mode out of range builds a processor that does
/// nothing. One thread at a time.
template <class HT, class UT, class YT, class AllocT>
class ORVANE_API TemplateMatching : public WindowProcessor<AnyTemplateMatching, UT, YT, AllocT> {
 public:
  /// `isHgtU` tells that the template exceeds the image in some dimension. With `roiEnabled` only positions in both
  /// regions are scored. With `roiValidEnabled` each call writes to `roiValid` whether the ROI lies wholly in the ROS.
  TemplateMatching(AllocT* allocator, int nDims, CleverPtr<int>& hDims, bool isHgtU, CleverPtr<int>& uDims,
                   OutputModeEnum outputMode, AlgorithmModeEnum algorithmMode, TMModeEnum tmMode, bool roiEnabled,
                   bool roiValidEnabled, SearchMethodEnum searchMethod, CleverPtr<int>& hCentre, CleverPtr<HT>& h,
                   CleverPtr<UT>& u, CleverPtr<int>& roiLoc, CleverPtr<int>& roiDims, CleverPtr<YT>& y,
                   CleverPtr<int>& location, CleverPtr<int>& neighborhoodDims, CleverPtr<YT>& yNeighborhoodData,
                   CleverPtr<bool>& neighborhoodValid, CleverPtr<bool>& roiValid);

  void setup(setupModeT mode) override;
  void invoke() override;
  void beginRun() override;
  void searchBand(const PositionBox& band, bool isFirst) override;
  void adoptBest(AnyTemplateMatching& other) override;
  void finishSearch() override;

  /// Places template, image and neighbourhood, and computes the region of support.
  void initializeParameters();

  /// Called by the plan: has the kernel run one sector in the way of the present pass.
  template <class SectorT>
  void runSector(SectorT& sector);

 private:
  using Base = WindowProcessor<AnyTemplateMatching, UT, YT, AllocT>;
  using FilterBlock = TraversableDataBlock<HT, AllocT>;
  using InputT = Input<UT, YT, AllocT>;
  using Out = Output<YT, AllocT>;

  bool hasNeighborhood() const { return tmMode == TMModeBestMatchNeighborhood; }
  void makeNeighborhood();
  void placeNeighborhood();
  void build(AlgorithmModeEnum algorithmMode);
  bool roiIsEmpty() const;
  void clearNeighborhood();
  void scoreNeighborhood();
  void testRegion();
  void placeBest();

  TMModeEnum tmMode;
  TMModeEnum passMode;
  bool leavesInside = false;  ///< the pass has only positions outside the inside sector
  bool roiEnabled;
  bool roiValidEnabled;
  SearchMethodEnum searchMethod;
  MatchingHandles<YT> host;
  std::unique_ptr<RestrictedRegion> roiRegion;
  std::unique_ptr<UnrestrictedRegion> neighborhoodAllRegion;
  std::unique_ptr<RestrictedRegion> neighborhoodRegion;
  std::unique_ptr<Scope> neighborhoodScope;
  CleverPtr<int> neighborhoodStart;
  CleverPtr<int> yNeighborhoodOrigin;
  CleverPtr<int> yNeighborhoodLoc;
  CleverPtr<int> yNeighborhoodDims;
  std::unique_ptr<Out> yNeighborhood;
  CleverPtr<int> locationShape;
  FilterBlock* filter;
};

/// Applies a macro to the ten rows of element types: template, image, scores.
#define ORVANE_FOR_MATCHING_ROWS(APPLY)  \
  ORVANE_FOR_PLAIN_TRIPLES(APPLY)        \
  APPLY(bool, bool, KarnDSPFixpt::Fixpt) \
  APPLY(KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt)

#define ORVANE_DECLARE(HT, UT, YT) extern template class TemplateMatching<HT, UT, YT, AllocatorTolk>;
ORVANE_FOR_MATCHING_ROWS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP
