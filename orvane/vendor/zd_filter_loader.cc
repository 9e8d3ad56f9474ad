#include "orvane/vendor/zd_filter_loader.h"

#include <algorithm>

#include "orvane/platform/libqv.h"

namespace BP {

ZdFilterLoader::ZdFilterLoader() : ZdLoader(clientTag) {
  fetch(filter32f, "ippiFilter_32f_C1R");
  fetch(filter64f, "ippiFilter_64f_C1R");
  fetch(bufSize64f, "ippiFilterGetBufSize_64f_C1R");
}

template <class FunctionT>
void ZdFilterLoader::fetch(FunctionT*& function, const char* name) {
  function = reinterpret_cast<FunctionT*>(getMethodPointer(name));
  if (function == nullptr) allLoaded = false;
}

void ZdFilterLoader::filter(const float* kernel, const int* kernelDims, const int* kernelCentre, const float* source,
                            int sourcePitch, float* destination, int destinationPitch, IppiSize rectangle) const {
  marshal(filter32f, kernel, kernelDims, kernelCentre, source, sourcePitch, destination, destinationPitch, rectangle);
}

void ZdFilterLoader::filter(const double* kernel, const int* kernelDims, const int* kernelCentre, const double* source,
                            int sourcePitch, double* destination, int destinationPitch, IppiSize rectangle) const {
  const auto call = [this](auto... arguments) { return callFilter64f(arguments...); };
  marshal(call, kernel, kernelDims, kernelCentre, source, sourcePitch, destination, destinationPitch, rectangle);
}

/// The functions flip the kernel, so they count the anchor from the kernel's last element.
template <class T, class CallT>
void ZdFilterLoader::marshal(CallT&& call, const T* kernel, const int* kernelDims, const int* kernelCentre,
                             const T* source, int sourcePitch, T* destination, int destinationPitch,
                             IppiSize rectangle) const {
  constexpr int elementBytes = sizeof(T);
  const IppiSize kernelSize{kernelDims[0], kernelDims[1]};
  const IppiPoint anchor{kernelDims[0] - kernelCentre[0] - 1, kernelDims[1] - kernelCentre[1] - 1};
  zdCheckStatus(call(source, sourcePitch * elementBytes, destination, destinationPitch * elementBytes, rectangle,
                     kernel, kernelSize, anchor));
}

IppStatus ZdFilterLoader::callFilter64f(const double* source, int sourceStep, double* destination, int destinationStep,
                                        IppiSize rectangle, const double* kernel, IppiSize kernelSize,
                                        IppiPoint anchor) const {
  int bufferSize = 0;
  const IppStatus asked = bufSize64f(kernelSize, rectangle.width, &bufferSize);
  if (asked < 0) return asked;
  auto* const buffer = static_cast<std::uint8_t*>(qvMalloc(static_cast<std::size_t>(std::max(bufferSize, 0))));
  const IppStatus status =
      filter64f(source, sourceStep, destination, destinationStep, rectangle, kernel, kernelSize, anchor, buffer);
  qvFree(buffer);
  return status;
}

}  // namespace BP
