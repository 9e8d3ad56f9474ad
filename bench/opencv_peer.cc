#include "bench/opencv_peer.h"

#include <opencv2/imgproc.hpp>

namespace bench {
namespace {

using namespace BP::filters;

/// The array's memory as OpenCV sees it. Input and filters are only read.
template <class T>
cv::Mat matrixOf(ArrayView<const T> array) {
  const auto rows = array.extents().rank() > 1 ? array.extents()[1] : 1;
  return {static_cast<int>(rows), static_cast<int>(array.extents()[0]), cv::DataType<T>::type,
          const_cast<T*>(array.data())};
}

}  // namespace

template <class T>
std::function<void()> openCvFilter2D(ArrayView<const T> input, ArrayView<const T> filter, ArrayView<T> output) {
  cv::setNumThreads(1);
  return [from = matrixOf(input), kernel = matrixOf(filter), to = matrixOf<T>(output)]() mutable {
    cv::filter2D(from, to, -1, kernel, {-1, -1}, 0, cv::BORDER_REFLECT);
  };
}

std::function<void()> openCvFilter2DOfBytes(ArrayView<const std::uint8_t> input, ArrayView<const float> filter,
                                            ArrayView<std::uint8_t> output) {
  cv::setNumThreads(1);
  return [from = matrixOf(input), kernel = matrixOf(filter), to = matrixOf<std::uint8_t>(output)]() mutable {
    cv::filter2D(from, to, -1, kernel, {-1, -1}, 0, cv::BORDER_REFLECT);
  };
}

template <class T>
std::function<void()> openCvSeparable(ArrayView<const T> input, ArrayView<const T> first, ArrayView<const T> second,
                                      ArrayView<T> output) {
  cv::setNumThreads(1);
  return
      [from = matrixOf(input), across = matrixOf(first), down = matrixOf(second), to = matrixOf<T>(output)]() mutable {
        cv::sepFilter2D(from, to, -1, across, down, {-1, -1}, 0, cv::BORDER_REFLECT);
      };
}

template <class T>
std::function<void()> openCvMedian(ArrayView<const T> input, std::int64_t side, ArrayView<T> output) {
  if (side > 5 && sizeof(T) > 1) return {};
  cv::setNumThreads(1);
  return [from = matrixOf(input), to = matrixOf<T>(output), window = static_cast<int>(side)]() mutable {
    cv::medianBlur(from, to, window);
  };
}
template std::function<void()> openCvMedian(ArrayView<const float>, std::int64_t, ArrayView<float>);
template std::function<void()> openCvMedian(ArrayView<const std::uint8_t>, std::int64_t, ArrayView<std::uint8_t>);

std::function<void()> openCvSquaredDifferences(ArrayView<const float> image, ArrayView<const float> pattern,
                                               ArrayView<float> output) {
  cv::setNumThreads(1);
  return [from = matrixOf(image), part = matrixOf(pattern), to = matrixOf<float>(output)]() mutable {
    cv::matchTemplate(from, part, to, cv::TM_SQDIFF);
  };
}

#define ORVANE_INSTANTIATE(T)                                                                                \
  template std::function<void()> openCvFilter2D(ArrayView<const T>, ArrayView<const T>, ArrayView<T>);       \
  template std::function<void()> openCvSeparable(ArrayView<const T>, ArrayView<const T>, ArrayView<const T>, \
                                                 ArrayView<T>);
ORVANE_INSTANTIATE(float)
ORVANE_INSTANTIATE(double)

}  // namespace bench
