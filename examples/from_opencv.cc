// What cv::filter2D and cv::matchTemplate would do: bytes in, bytes out, mirrored edges, the greatest coefficient.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  // Rows of 5 pixels, 8 bytes apart, as a cv::Mat with a step.
  const std::vector<std::uint8_t> frame = {10, 20, 30, 40, 50, 0, 0, 0,  //
                                           60, 70, 80, 90, 99, 0, 0, 0,  //
                                           15, 25, 35, 45, 55, 0, 0, 0};
  const ArrayView image(frame.data(), {5, 3}, 8);
  const std::vector<float> sharpen = {0, -1, 0, -1, 5, -1, 0, -1, 0};

  Array<std::uint8_t> result({5, 3});
  const auto clipped = convolveInto(image, ArrayView(sharpen, {3, 3}), result,
                                    {.direction = FilterDirection::correlation, .pad = PadRule::mirror});
  for (std::size_t i = 0; i < result.size(); ++i) std::printf("%d%s", result[i], i % 5 == 4 ? "\n" : " ");

  const auto patch = converted<float>(image.subview({2, 1}, {3, 2}));
  const auto match = matchTemplate(image, patch, {.metric = Metric::correlationCoefficient});
  std::printf("%d clipped; found at %d,%d\n", static_cast<int>(clipped), static_cast<int>(match.window.x),
              static_cast<int>(match.window.y));
}
