// Finds a patch of 3 by 2 pixels in an image of 8 by 5 that differs from it a little, and prints where and how much.
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<float> image{
      10, 10, 10, 10, 10, 10, 10, 10,  //
      10, 10, 10, 10, 10, 10, 10, 10,  //
      10, 10, 10, 90, 70, 50, 10, 10,  //
      10, 10, 10, 30, 60, 80, 10, 10,  //
      10, 10, 10, 10, 10, 10, 10, 10,
  };
  const std::vector<float> patch{92, 70, 49, 30, 58, 80};

  const auto match = matchTemplate(ArrayView(image, {8, 5}), ArrayView(patch, {3, 2}), {.metric = Metric::ssd});
  std::printf("window at %lld,%lld, score %g\n", static_cast<long long>(match.window.x),
              static_cast<long long>(match.window.y), static_cast<double>(match.score));
}
