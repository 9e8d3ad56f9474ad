#pragma once

#include <cstdint>
#include <functional>

#include "orvane/filters/array.h"

/// OpenCV's filters, in one thread, on the same arrays and with the same edge rule (symmetric). T is `float` or
/// `double`. The functions are empty where OpenCV is not installed.
namespace bench {

/// Correlates with a filter of rank 2 into `output`. The arrays must outlive the function that is returned.
template <class T>
std::function<void()> openCvFilter2D(BP::filters::ArrayView<const T> input, BP::filters::ArrayView<const T> filter,
                                     BP::filters::ArrayView<T> output);

/// The same over bytes, whose results are rounded and clipped to bytes.
std::function<void()> openCvFilter2DOfBytes(BP::filters::ArrayView<const std::uint8_t> input,
                                            BP::filters::ArrayView<const float> filter,
                                            BP::filters::ArrayView<std::uint8_t> output);

/// Correlates with a filter of rank 1 along dimension 0 and with one along dimension 1.
template <class T>
std::function<void()> openCvSeparable(BP::filters::ArrayView<const T> input, BP::filters::ArrayView<const T> first,
                                      BP::filters::ArrayView<const T> second, BP::filters::ArrayView<T> output);

/// The median of a square window, with pad replicate. T is `float` for sides 3 and 5, empty for others, or a byte.
template <class T>
std::function<void()> openCvMedian(BP::filters::ArrayView<const T> input, std::int64_t side,
                                   BP::filters::ArrayView<T> output);
/// The sums of squared differences of a template at each position where it lies inside the image.
std::function<void()> openCvSquaredDifferences(BP::filters::ArrayView<const float> image,
                                               BP::filters::ArrayView<const float> pattern,
                                               BP::filters::ArrayView<float> output);

}  // namespace bench
