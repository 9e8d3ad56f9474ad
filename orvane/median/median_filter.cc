#include "orvane/median/median_filter.h"

#include "orvane/exec/window_processor-inl.h"

#include "orvane/core/visit_enumerator.h"
#include "orvane/input/pad_extended_input.h"
#include "orvane/median/median_filter_algorithm.h"
#include "orvane/plan/block.h"

namespace BP {

template <class UT, class YT, class AllocT>
MedianFilter<UT, YT, AllocT>::MedianFilter(AllocT* alloc, int rank, CleverPtr<int>& windowDims, bool isHgtU,
                                           CleverPtr<int>& inputDims, OutputModeEnum outMode, PadTypeEnum padType,
                                           CleverPtr<int>& windowCentre, CleverPtr<UT>& u, CleverPtr<YT>& result,
                                           const Region* regionOfInterest)
    : WindowProcessor<AnyCorrelation, UT, YT, AllocT>(alloc, rank, windowDims, inputDims, outMode, windowCentre, u,
                                                      result, regionOfInterest) {
  auto* const window = this->template makeWindow<TraversableBlock>();
  visitPadType(padType, [&](auto pad) {
    using InputT = PadExtendedInput<UT, YT, AllocT, pad()>;
    this->template makeAlgorithm<MedianFilterAlgorithm<AllocT, InputT, YT, UT>>(window,
                                                                                this->template makeInput<InputT>());
  });
  this->makePlan(isHgtU);
}

#define ORVANE_DEFINE(UT, YT) template class MedianFilter<UT, YT, AllocatorTolk>;
ORVANE_FOR_MEDIAN_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP
