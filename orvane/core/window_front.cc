#include "orvane/core/window_front.h"

#include <algorithm>
#include <type_traits>

#include "orvane/core/host_data.h"
#include "orvane/core/host_dims.h"

namespace BP {

template <class RootT, class UT, class YT>
typename WindowFront<RootT, UT, YT>::Window& WindowFront<RootT, UT, YT>::addWindow(int hostNumDims, int* hostDims,
                                                                                   int foldedAlong) {
  Window& window = windows.emplace_back();
  window.numDims = hostNumDims;
  window.hostDims.ptr = hostDims;
  window.foldedAlong = foldedAlong;
  return window;
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::openTables(int hostNumDims, int* hostDims, PadTypeEnum pad) {
  uNumDims = hostNumDims;
  hostUDims.ptr = hostDims;
  padType = pad;
  int rank = 0;
  for (const Window& window : windows) rank = std::max(rank, window.numDims);
  nDims = commonRank(rank, uNumDims);
  for (Window& window : windows) allocator->allocateArray(window.dims, nDims, "ignore");
  allocator->allocateArray(uDims, nDims, "ignore");
  for (Window& window : windows) allocator->allocateArray(window.centre, nDims, "ignore");
}

template <class RootT, class UT, class YT>
bool WindowFront<RootT, UT, YT>::exceedsInput(const Window& window) const {
  return isHgtU(window.numDims, uNumDims, window.hostDims, hostUDims);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::fillWindow(Window& window) {
  fillDims(window.dims, nDims, window.hostDims, window.numDims);
  if (window.foldedAlong != unfolded) foldDims(window.dims, nDims, window.foldedAlong);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::fillAllDims() {
  for (Window& window : windows) fillWindow(window);
  fillDims(uDims, nDims, hostUDims, uNumDims);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::assignPad() {
  if (useConstantPad()) processor->assignPadValue(padValue, padIsComplex);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::setup(setupModeT mode) {
  if (mode == setupFinish) return finish();
  if (mode == setupResize || mode == fillStage) fillAllDims();
  if (mode == setupResize || mode == setupStart) {
    assignPad();
    for (Window& window : windows) computeCentres(window.centre, nDims, window.dims);
  }
  processor->setup(mode);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::start(UT* input, const void* newPadValue, bool isComplex) {
  adoptData(u, input);
  replacePadValue<UT>(padValue, newPadValue);
  padIsComplex = isComplex;
  allocator->refreshWorkVectors();
  setup(setupAttachWork);
  setup(setupLinkTables);
  setup(setupStart);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::computeOutputs() {
  readHost();
  processor->invoke();
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::beginOutputs() {
  readHost();
  processor->beginRun();
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::readHost() {
  if (isVarSize) {
    setup(setupResize);
  } else {
    assignPad();
  }
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::finish() {
  processor->setup(setupFinish);
  for (const Keeper& keeper : keepers) allocator->mergeFixptLog(keeper.array->ptr, keeper.itself);
  processor->setup(setupFinish);
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::end() {
  finish();
  replacePadValue<UT>(padValue, nullptr);
  processor.reset();
}

template <class RootT, class UT, class YT>
void WindowFront<RootT, UT, YT>::tunePadValue(const void* value) {
  if (value != nullptr) replacePadValue<UT>(padValue, value);
}

#define ORVANE_DEFINE(UT, YT) template class WindowFront<AnyCorrelation, UT, YT>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE
#define ORVANE_DEFINE(UT, YT) template class WindowFront<AnyTemplateMatching, UT, YT>;
ORVANE_FOR_MATCHING_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP
