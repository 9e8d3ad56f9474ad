// Takes the place of opencv_peer.cc where OpenCV is not installed.
#include "bench/opencv_peer.h"

namespace bench {

using namespace BP::filters;

template <class T>
std::function<void()> openCvFilter2D(ArrayView<const T>, ArrayView<const T>, ArrayView<T>) {
  return {};
}

std::function<void()> openCvFilter2DOfBytes(ArrayView<const std::uint8_t>, ArrayView<const float>,
                                            ArrayView<std::uint8_t>) {
  return {};
}

template <class T>
std::function<void()> openCvSeparable(ArrayView<const T>, ArrayView<const T>, ArrayView<const T>, ArrayView<T>) {
  return {};
}

template <class T>
std::function<void()> openCvMedian(ArrayView<const T>, std::int64_t, ArrayView<T>) {
  return {};
}
template std::function<void()> openCvMedian(ArrayView<const float>, std::int64_t, ArrayView<float>);
template std::function<void()> openCvMedian(ArrayView<const std::uint8_t>, std::int64_t, ArrayView<std::uint8_t>);

std::function<void()> openCvSquaredDifferences(ArrayView<const float>, ArrayView<const float>, ArrayView<float>) {
  return {};
}

#define ORVANE_INSTANTIATE(T)                                                                                \
  template std::function<void()> openCvFilter2D(ArrayView<const T>, ArrayView<const T>, ArrayView<T>);       \
  template std::function<void()> openCvSeparable(ArrayView<const T>, ArrayView<const T>, ArrayView<const T>, \
                                                 ArrayView<T>);
ORVANE_INSTANTIATE(float)
ORVANE_INSTANTIATE(double)

}  // namespace bench
