#include "tool/chart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "tool/glyphs.h"
#include "tool/portable_math.h"
#include "tool/scramble.h"

namespace BP::tool {

namespace {

/// A part of the chart, in pixels.
struct Cell {
  int left, top, width, height;
};

constexpr double paper = 0.92;

/// Sets each pixel of `cell` to value(x, y), of 0 for black to 1 for white, at x and y counted from its corner.
template <class Value>
void paint(Image& image, const Cell& cell, const Value& value) {
  for (int y = 0; y < cell.height; ++y) {
    for (int x = 0; x < cell.width; ++x) {
      const double level = std::nearbyint(value(x, y) * image.maximum());
      image.samples[image.at(cell.left + x, cell.top + y)] = static_cast<std::uint16_t>(level);
    }
  }
}

/// The phase at the distance r from the middle is r^2 / (2 n) turns, where n is the longer side, so the frequency is
/// r / n turns a pixel.
void paintZonePlate(Image& image, const Cell& cell) {
  const std::int64_t longerSide = std::max(cell.width, cell.height);
  paint(image, cell, [&](int x, int y) {
    const std::int64_t across = 2 * x - (cell.width - 1);
    const std::int64_t down = 2 * y - (cell.height - 1);
    // Doubled distances are whole numbers, and whole turns are removed before the division rounds.
    const std::int64_t period = 8 * longerSide;
    const std::int64_t phase = (across * across + down * down) % period;
    return 0.5 + 0.5 * cosineOfTurns(static_cast<double>(phase) / static_cast<double>(period));
  });
}

/// Black lines over a height that shrinks from the height of the cell to two pixels for each line and its gap.
void paintWedge(Image& image, const Cell& cell) {
  const int pairs = std::clamp(cell.height / 8, 1, 12);
  const double slope = static_cast<double>(2 * pairs - cell.height) / cell.width;
  paint(image, cell, [&](int x, int y) {
    const double height = cell.height + slope * x;
    const double level = (y + 0.5 - 0.5 * cell.height) / height;
    if (std::fabs(level) > 0.5) return 1.0;
    return 0.5 + 0.5 * cosineOfTurns(pairs * (level + 0.5));
  });
}

/// Paints a line of text with `size` pixels a dot at the upper left corner of `box`: as many letters as fit, from
/// letter `first` of `text` on, which is repeated. Returns the number of the next letter.
std::size_t paintLine(Image& image, const Cell& box, std::string_view text, std::size_t first, int size) {
  const int advance = (glyphWidth + 1) * size;
  const int count = (box.width + size) / advance;
  paint(image, {box.left, box.top, count * advance - size, glyphHeight * size}, [&](int x, int y) {
    const char letter = text[(first + static_cast<std::size_t>(x / advance)) % text.size()];
    const int column = x % advance / size;
    return column < glyphWidth && glyphDot(letter, column, y / size) ? 0.0 : 1.0;
  });
  return first + static_cast<std::size_t>(count);
}

/// A line of large letters, one of half their size, and the rest in letters of one pixel a dot.
void paintText(Image& image, const Cell& cell) {
  constexpr std::string_view title = "ORVANE ";
  constexpr std::string_view digits = "0123456789 ";
  constexpr std::string_view body = "SLIDING WINDOWS AND EDGES IN RAIN OR SNOW ";
  constexpr int lineDots = glyphHeight + 2;
  const Cell inner{cell.left + 2, cell.top + 2, cell.width - 4, cell.height - 4};
  const int size = std::clamp(std::min(inner.width / 36, inner.height / (2 * lineDots)), 1, 64);
  paint(image, cell, [](int, int) { return 1.0; });
  std::size_t letter = 0;
  int dots = size;
  for (int line = 0, y = 0; y + glyphHeight * dots <= inner.height; ++line) {
    const std::string_view text = line == 0 ? title : line == 1 ? digits : body;
    letter = paintLine(image, {inner.left, inner.top + y, inner.width, 0}, text, line <= 2 ? 0 : letter, dots);
    y += lineDots * dots;
    dots = line == 0 ? std::max(1, size / 2) : 1;
  }
}

void paintNoise(Image& image, const Cell& cell) {
  paint(image, cell, [&](int x, int y) {
    const auto index = static_cast<std::uint64_t>(y) * static_cast<std::uint64_t>(cell.width);
    const std::uint64_t percent = scramble(index + static_cast<std::uint64_t>(x)) % 100;
    if (percent < 5) return 0.0;
    if (percent >= 95) return 1.0;
    return 0.3 + 0.4 * x / cell.width;
  });
}

void paintGradient(Image& image, const Cell& cell) {
  constexpr int steps = 16;
  paint(image, cell, [&](int x, int y) {
    if (2 * y < cell.height) return static_cast<double>(x) / (cell.width - 1);
    const int step = x * steps / cell.width;
    return static_cast<double>(step) / (steps - 1);
  });
}

}  // namespace

Image drawChart(int width, int height) {
  Image image = makeImage(width, height, 1, 8);
  const int gap = std::max(2, std::min(width, height) / 40);
  const int foot = height / 7;
  const int bodyHeight = height - foot - 3 * gap;
  const int plate = (width - 3 * gap) * 11 / 20;
  const int right = 2 * gap + plate;
  const int rightWidth = width - gap - right;
  const int third = (bodyHeight - 2 * gap) / 3;

  paint(image, {0, 0, width, height}, [](int, int) { return paper; });
  paintZonePlate(image, {gap, gap, plate, bodyHeight});
  paintWedge(image, {right, gap, rightWidth, third});
  paintText(image, {right, 2 * gap + third, rightWidth, third});
  paintNoise(image, {right, 3 * gap + 2 * third, rightWidth, bodyHeight - 2 * (third + gap)});
  paintGradient(image, {gap, 2 * gap + bodyHeight, width - 2 * gap, foot});
  return image;
}

}  // namespace BP::tool
