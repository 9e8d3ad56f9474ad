#include "tool/match_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "tool/heat.h"
#include "tool/levels.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using filters::Rectangle;

constexpr Colour paper{245, 245, 242}, dark{20, 22, 26}, found{255, 64, 48}, asked{0, 200, 220};

/// Colours the part of `box` that lies in `limits`.
void fill(Image& image, const Rectangle& limits, const Rectangle& box, const Colour& colour) {
  const std::int64_t right = std::min(box.x + box.width, limits.x + limits.width);
  const std::int64_t bottom = std::min(box.y + box.height, limits.y + limits.height);
  for (std::int64_t y = std::max(box.y, limits.y); y < bottom; ++y) {
    for (std::int64_t x = std::max(box.x, limits.x); x < right; ++x) putColour(image, x, y, colour);
  }
}

/// A ring of some width round `box`, which stays as it is.
void ring(Image& image, const Rectangle& limits, const Rectangle& box, std::int64_t gap, std::int64_t width,
          const Colour& colour) {
  const std::int64_t out = gap + width;
  const std::int64_t x = box.x - out, y = box.y - out;
  const std::int64_t w = box.width + 2 * out, h = box.height + 2 * out;
  fill(image, limits, {x, y, w, width}, colour);
  fill(image, limits, {x, y + h - width, w, width}, colour);
  fill(image, limits, {x, y, width, h}, colour);
  fill(image, limits, {x + w - width, y, width, h}, colour);
}

/// A frame that can be seen on every background: a ring of colour between two dark ones.
void frame(Image& image, const Rectangle& limits, const Rectangle& box, std::int64_t width, const Colour& colour) {
  ring(image, limits, box, 0, 1, dark);
  ring(image, limits, box, 1, width, colour);
  ring(image, limits, box, 1 + width, 1, dark);
}

/// How a map becomes cells of a heat map. A cell shows `shrink` by `shrink` scores and has `enlarge` by `enlarge`
/// pixels; at least one of the two numbers is 1.
struct HeatLayout {
  HeatLayout(const Array& map, const Image& picture) : scores{map.extents[0], map.extents[1]} {
    const std::int64_t width = std::max(picture.width / 3, 48), height = std::max(picture.height, 48);
    shrink = std::max({std::int64_t{1}, (scores[0] + width - 1) / width, (scores[1] + height - 1) / height});
    enlarge = std::max(std::int64_t{1}, std::min(width / scores[0], height / scores[1]));
  }
  std::int64_t cells(std::size_t d) const { return (scores[d] + shrink - 1) / shrink; }
  std::int64_t pixels(std::size_t d) const { return cells(d) * enlarge; }

  std::array<std::int64_t, 2> scores;
  std::int64_t shrink;
  std::int64_t enlarge;
};

/// How good the best of the scores in a cell is: from 0 for the worst of all to 1.
double bestIn(const Levels& levels, const HeatLayout& layout, bool greatestIsBest, std::int64_t column,
              std::int64_t row) {
  double best = 0;
  const std::int64_t right = std::min((column + 1) * layout.shrink, layout.scores[0]);
  const std::int64_t bottom = std::min((row + 1) * layout.shrink, layout.scores[1]);
  for (std::int64_t y = row * layout.shrink; y < bottom; ++y) {
    for (std::int64_t x = column * layout.shrink; x < right; ++x) {
      const double part = levels.fraction(levels.values[static_cast<std::size_t>(x + y * layout.scores[0])]);
      best = std::max(best, greatestIsBest ? part : 1 - part);
    }
  }
  return best;
}

/// Draws the heat map with its upper left corner in (left, top).
void drawHeat(Image& image, const MatchResult& match, const HeatLayout& layout, std::int64_t left, std::int64_t top) {
  const Levels levels = levelsOf(match.map);
  const Rectangle all{0, 0, image.width, image.height};
  for (std::int64_t row = 0; row < layout.cells(1); ++row) {
    for (std::int64_t column = 0; column < layout.cells(0); ++column) {
      const Rectangle cell{left + column * layout.enlarge, top + row * layout.enlarge, layout.enlarge, layout.enlarge};
      fill(image, all, cell, heatColour(bestIn(levels, layout, match.greatestIsBest, column, row)));
    }
  }
  const Rectangle area{left, top, layout.pixels(0), layout.pixels(1)};
  ring(image, all, area, 0, 1, dark);
  const auto cellOf = [&](std::int64_t distance) { return distance / layout.shrink * layout.enlarge; };
  const std::int64_t column = cellOf(match.location[0] - match.positions.x);
  const std::int64_t row = cellOf(match.location[1] - match.positions.y);
  const std::int64_t room = std::max<std::int64_t>(2, 5 - layout.enlarge);
  const Rectangle best{left + column - room, top + row - room, layout.enlarge + 2 * room, layout.enlarge + 2 * room};
  frame(image, area, best, 1, found);
}

}  // namespace

ScorePicture scorePicture(const Array& map) {
  const Levels levels = levelsOf(map);
  ScorePicture picture{makeImage(static_cast<int>(map.extents[0]), static_cast<int>(map.extents[1]), 1, 8), {}};
  std::transform(levels.values.begin(), levels.values.end(), picture.image.samples.begin(),
                 [&](double v) { return static_cast<std::uint16_t>(std::nearbyint(255 * levels.fraction(v))); });
  const bool isComplex = map.type == ElementType::complex64 || map.type == ElementType::complex128;
  picture.scale = std::string(isComplex ? "magnitudes of scores" : "scores") + " of " + numberText(levels.min) +
                  " to " + numberText(levels.max) + " are shown as 0 to 255";
  if (levels.notFinite > 0) picture.scale += ", " + std::to_string(levels.notFinite) + " that are not finite as 255";
  return picture;
}

Image matchOverlay(const Image& picture, const MatchResult& match, const std::optional<Rectangle>& region) {
  constexpr std::int64_t gap = 12;
  const HeatLayout layout(match.map, picture);
  Image image = makeImage(static_cast<int>(picture.width + layout.pixels(0) + 2 * gap),
                          static_cast<int>(std::max<std::int64_t>(picture.height, layout.pixels(1) + 2)), 3, 8);
  fill(image, {0, 0, image.width, image.height}, {0, 0, image.width, image.height}, paper);
  for (int y = 0; y < picture.height; ++y) {
    std::copy_n(&picture.samples[picture.at(0, y)], picture.rowSamples(), &image.samples[image.at(0, y)]);
  }
  const Rectangle ground{0, 0, picture.width, picture.height};
  const std::int64_t width = std::max(2, std::min(picture.width, picture.height) / 150);
  if (region) frame(image, ground, *region, width, asked);
  for (const MatchPeak& peak : match.peaks) frame(image, ground, peak.window, width, found);
  frame(image, ground, match.window, width, found);
  drawHeat(image, match, layout, picture.width + gap, 1);
  return image;
}

}  // namespace BP::tool
