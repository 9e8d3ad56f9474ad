#include "orvane/median/median_filter_tolk.h"

#include <memory>

#include "orvane/core/host_data.h"

namespace BP {

template <class UT, class YT>
MedianFilterTolk<UT, YT>::MedianFilterTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount,
                                           int* uHost, PadTypeEnum pad, OutputModeEnum outMode, bool varSize)
    : Base(adaptor, outMode, varSize) {
  constructMedianFilter(hCount, hHost, uCount, uHost, pad);
}

template <class UT, class YT>
MedianFilterTolk<UT, YT>::MedianFilterTolk(brekk::BrekkAdaptorTolk* adaptor, int hCount, int* hHost, int uCount,
                                           int* uHost, PadTypeEnum pad, OutputModeEnum outMode, bool varSize,
                                           const Handle& input, const Handle& output, const Handle& accumulator)
    : Base(adaptor, outMode, varSize) {
  this->allocator->registerTypeName("input", input);
  this->allocator->registerTypeName("output", output);
  this->allocator->registerTypeName("accumulator", accumulator);
  constructMedianFilter(hCount, hHost, uCount, uHost, pad);
}

template <class UT, class YT>
MedianFilterTolk<UT, YT>::~MedianFilterTolk() {
  this->end();
}

template <class UT, class YT>
void MedianFilterTolk<UT, YT>::constructMedianFilter(int hCount, int* hHost, int uCount, int* uHost, PadTypeEnum pad) {
  auto& window = this->addWindow(hCount, hHost);
  this->keepStatistics(this->u, false);
  this->keepStatistics(this->y, true);
  this->openTables(uCount, uHost, pad);
  this->processor = std::make_unique<MedianFilter<UT, YT, AllocatorTolk>>(
      this->allocator.get(), this->nDims, window.dims, this->exceedsInput(window), this->uDims, this->outputMode, pad,
      window.centre, this->u, this->y);
}

template <class UT, class YT>
void MedianFilterTolk<UT, YT>::setup(UT* input, YT* output, const void* newPadValue, bool isComplex) {
  adoptData(this->y, output);
  this->start(input, newPadValue, isComplex);
}

template <class UT, class YT>
void MedianFilterTolk<UT, YT>::tune(void* /*first*/, void* /*second*/, void* third) {
  this->tunePadValue(third);
}

#define ORVANE_DEFINE(UT, YT) template class MedianFilterTolk<UT, YT>;
ORVANE_FOR_MEDIAN_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP
