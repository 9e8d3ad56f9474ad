// Blurs a part of a cv::Mat in place: views of matrices, whatever their step.
#include <cstdio>
#include <opencv2/core.hpp>

#include "orvane/filters/convolution.h"

/// A view of a matrix of one channel, whose elements are T.
template <class T>
BP::filters::ArrayView<T> viewOf(cv::Mat& mat) {
  return {mat.ptr<T>(), {mat.cols, mat.rows}, mat.step1()};
}

int main() {
  using namespace BP::filters;
  cv::Mat picture(4, 8, CV_32FC1, cv::Scalar(2)), blurred(4, 8, CV_32FC1, cv::Scalar(0));
  cv::Mat part = picture(cv::Rect(1, 1, 5, 2)), place = blurred(cv::Rect(2, 1, 3, 2));

  const Array<float> filter({3, 1}, {0.25F, 0.5F, 0.25F});
  convolveInto(viewOf<float>(part), filter, viewOf<float>(place), {.mode = OutputMode::valid});

  for (int y = 0; y < blurred.rows; ++y) {
    for (int x = 0; x < blurred.cols; ++x) std::printf("%g ", static_cast<double>(blurred.at<float>(y, x)));
    std::printf("\n");
  }
}
