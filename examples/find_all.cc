// Finds all places where a line holds something like a short one, whatever its brightness and contrast.
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<float> line = {0, 0, 1, 3, 2, 0, 0, 0, 51, 53, 52, 50, 0, 0, 9, 27, 18, 0, 0};
  const std::vector<float> shape = {0, 1, 3, 2, 0};

  const auto found = matches(ArrayView(line, {19, 1}), ArrayView(shape, {5, 1}), {.count = 3, .distance = 3},
                             {.metric = Metric::correlationCoefficient});
  for (const auto& peak : found) {
    std::printf("window at %d, score %.3f\n", static_cast<int>(peak.window.x), static_cast<double>(peak.score));
  }
}
