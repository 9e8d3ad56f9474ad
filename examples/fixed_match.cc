// Finds a patch of 3 by 2 pixels in an image of 8 by 5, all of 8 bits, with sums of 12 bits and scores of 8.
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<std::uint8_t> image{
      10, 10, 10, 10, 10, 10, 10, 10,  //
      10, 10, 10, 10, 10, 10, 10, 10,  //
      10, 10, 10, 90, 70, 50, 10, 10,  //
      10, 10, 10, 30, 60, 80, 10, 10,  //
      10, 10, 10, 10, 10, 10, 10, 10,
  };
  const std::vector<std::uint8_t> patch{92, 70, 49, 30, 58, 80};
  const FixedType pixel = fixedType("u8.0");

  FixedTemplateMatcher matcher(FixedView(ArrayView(patch, {3, 2}), pixel), {8, 5},
                               {.input = pixel, .accumulator = fixedType("s12.0"), .output = pixel}, {.map = true});
  const FixedMatch match = matcher.run(FixedView(ArrayView(image, {8, 5}), pixel));
  std::printf("window at %lld,%lld, score %g\n", static_cast<long long>(match.window.x),
              static_cast<long long>(match.window.y), match.score.real());
  for (const FixedStatistics& s : matcher.statistics()) {
    std::printf("%s: %d of %d overflowed, %g to %g\n", s.label.c_str(), static_cast<int>(s.overflows),
                static_cast<int>(s.casts), s.minimum, s.maximum);
  }
}
