#include "tool/heat.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace BP::tool {

Colour heatColour(double part) {
  constexpr Colour heat[] = {{40, 0, 60},    {60, 40, 130},  {30, 115, 145},
                             {70, 185, 110}, {200, 220, 60}, {255, 250, 190}};
  constexpr int spans = std::size(heat) - 1;
  const double at = part * spans;
  const int below = std::min(static_cast<int>(at), spans - 1);
  const double rest = at - below;
  const auto mix = [&](int a, int b) { return static_cast<int>(std::nearbyint(a + rest * (b - a))); };
  const Colour &a = heat[below], &b = heat[below + 1];
  return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

void putColour(Image& image, std::int64_t x, std::int64_t y, const Colour& colour) {
  std::uint16_t* const sample = &image.samples[image.at(static_cast<int>(x), static_cast<int>(y))];
  sample[0] = static_cast<std::uint16_t>(colour.red);
  sample[1] = static_cast<std::uint16_t>(colour.green);
  sample[2] = static_cast<std::uint16_t>(colour.blue);
}

}  // namespace BP::tool
