#include "orvane/core/window_front.h"

#include <algorithm>
#include <type_traits>

#include "orvane/core/host_data.h"
#include "orvane/core/host_dims.h"

namespace BP {

template <class UT, class YT>
typename WindowFront<UT, YT>::Window& WindowFront<UT, YT>::addWindow(int hostNumDims, int* hostDims) {
  Window& window = windows.emplace_back();
  window.numDims = hostNumDims;
  window.hostDims.ptr = hostDims;
  return window;
}

template <class UT, class YT>
void WindowFront<UT, YT>::openTables(int hostNumDims, int* hostDims, PadTypeEnum pad) {
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

template <class UT, class YT>
bool WindowFront<UT, YT>::exceedsInput(const Window& window) const {
  return isHgtU(window.numDims, uNumDims, window.hostDims, hostUDims);
}

template <class UT, class YT>
void WindowFront<UT, YT>::fillWindow(Window& window) {
  fillDims(window.dims, nDims, window.hostDims, window.numDims);
  if (window.foldedAlong != unfolded) foldDims(window.dims, nDims, window.foldedAlong);
}

template <class UT, class YT>
void WindowFront<UT, YT>::fillAllDims() {
  for (Window& window : windows) fillWindow(window);
  fillDims(uDims, nDims, hostUDims, uNumDims);
}

template <class UT, class YT>
void WindowFront<UT, YT>::assignPad() {
  if (useConstantPad()) processor->assignPadValue(padValue, padIsComplex);
}

template <class UT, class YT>
void WindowFront<UT, YT>::setup(setupModeT mode) {
  switch (mode) {
    case setupFinish: return finish();
    case setupAttachWork: fillAllDims(); break;
    case setupResize: fillAllDims(); [[fallthrough]];
    case setupStart:
      assignPad();
      for (Window& window : windows) computeCentres(window.centre, nDims, window.dims);
      break;
    default: break;
  }
  processor->setup(mode);
}

template <class UT, class YT>
void WindowFront<UT, YT>::start(UT* input, YT* output, const void* newPadValue, bool isComplex) {
  adoptData(u, input);
  adoptData(y, output);
  replacePadValue<UT>(padValue, newPadValue);
  padIsComplex = isComplex;
  allocator->refreshWorkVectors();
  setup(setupAttachWork);
  setup(setupLinkTables);
  setup(setupStart);
}

template <class UT, class YT>
void WindowFront<UT, YT>::computeOutputs() {
  if (isVarSize) {
    setup(setupResize);
  } else {
    assignPad();  // before new extents are known, a separable filter's pad value could not be worked out
  }
  processor->invoke();
}

template <class UT, class YT>
void WindowFront<UT, YT>::finish() {
  processor->setup(setupFinish);
  if constexpr (std::is_same_v<UT, Fixpt>) {
    allocator->mergeFixptLog(u.ptr, false);
    for (Window& window : windows) {
      if (window.elements != nullptr) allocator->mergeFixptLog(window.elements->ptr, false);
    }
    allocator->mergeFixptLog(y.ptr, true);
  }
  processor->setup(setupFinish);
}

template <class UT, class YT>
void WindowFront<UT, YT>::end() {
  finish();
  replacePadValue<UT>(padValue, nullptr);
  processor.reset();
}

template <class UT, class YT>
void WindowFront<UT, YT>::tunePadValue(const void* value) {
  if (value != nullptr) replacePadValue<UT>(padValue, value);
}

#define ORVANE_DEFINE(UT, YT) template class WindowFront<UT, YT>;
ORVANE_FOR_ELEMENT_PAIRS(ORVANE_DEFINE)
#undef ORVANE_DEFINE

}  // namespace BP
