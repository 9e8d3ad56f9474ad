#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/lanes/integer_differences.h"

namespace BP {

/// Scores of a template of whole numbers in vector lanes, tile by tile.
///
///     area   +-------+-------+     A tile has a few rows. The lines that the next tile below needs as well stay in a
///            | tile  |       |     ring, so each line of a strip of tiles is read and prepared once.
///            +-------+       |
///            | tile  | strip |
///            +-------+-------+
///
/// `resize` makes all room: a number of lines that follows from the template, of limited length.
class IntegerScores {
 public:
  /// Takes the extents of a template; one without elements, or of too many, is not taken. `least` is that of bytes.
  void resize(lanes::IntegerTerm term, int columns, int rows, std::int32_t least = 0);
  bool isReady() const { return extents.columns > 0; }

  /// Takes the template's values, in storage order. Needed once after `resize`, and for new values.
  void pack(const std::int32_t* values) { pattern.pack(values); }

  /// Scores `width` x `height` positions. Calls `read(x, y, count, to)` for the input elements from (x, y) on, counted
  /// from the first window's first, and `take(scores, pitch, x, y, width, height)` for each tile.
  template <class ReadT, class TakeT>
  void forEachTile(int width, int height, ReadT&& read, TakeT&& take);
  /// The scores of the present tile, which `take` may change.
  std::int32_t* getTile() { return scores.data(); }

 private:
  static constexpr int tileWidth = 512;
  static_assert(tileWidth % lanes::IntegerTemplate::outputGroup == 0);
  static constexpr int tileRows = 24;
  static constexpr std::int64_t maxElements = std::int64_t{1} << 21;

  std::int32_t* line(int k) { return lineStore.data() + std::size_t(k % ringLines) * linePitch; }

  lanes::FilterExtents extents{1, 0, 0};
  lanes::IntegerTemplate pattern;
  int ringLines = 0;
  std::size_t linePitch = 0;
  std::vector<std::int32_t> taps;
  std::vector<std::int32_t> lineStore;
  std::vector<std::int32_t> scores;
  std::vector<const std::int32_t*> lines;
  std::vector<std::int32_t*> out;
};

inline void IntegerScores::resize(lanes::IntegerTerm term, int columns, int rows, std::int32_t least) {
  extents = {1, 0, 0};
  if (columns < 1 || rows < 1) return;
  const std::int64_t pitch = std::int64_t{tileWidth} + columns + lanes::IntegerTemplate::spare;
  const std::int64_t count = std::int64_t{tileRows} + rows - 1;
  if (pitch * count > maxElements || !lanes::IntegerTemplate::canTake(term, {1, rows, columns})) return;
  extents = {1, rows, columns};
  ringLines = static_cast<int>(count);
  linePitch = static_cast<std::size_t>(pitch);
  taps.resize(lanes::IntegerTemplate::sizeFor(term, extents));
  pattern = {term, extents, taps.data(), least};
  lineStore.resize(linePitch * static_cast<std::size_t>(count));
  scores.resize(std::size_t{tileWidth} * tileRows);
  lines.resize(static_cast<std::size_t>(count));
  out.resize(tileRows);
  for (std::size_t r = 0; r < out.size(); ++r) out[r] = scores.data() + r * tileWidth;
}

template <class ReadT, class TakeT>
void IntegerScores::forEachTile(int width, int height, ReadT&& read, TakeT&& take) {
  for (int x = 0; x < width; x += tileWidth) {
    const int count = std::min(tileWidth, width - x), length = count + extents.columns - 1;
    int ready = 0;
    for (int y = 0; y < height; y += tileRows) {
      const int rows = std::min(tileRows, height - y), needed = rows + extents.rows - 1;
      for (; ready < y + needed; ++ready) {
        read(x, ready, length, line(ready));
        pattern.prepareLine(line(ready), length);
      }
      for (int k = 0; k < needed; ++k) lines[static_cast<std::size_t>(k)] = line(y + k);
      pattern.score({lines.data(), 0, rows, count, out.data()});
      take(static_cast<const std::int32_t*>(scores.data()), tileWidth, x, y, count, rows);
    }
  }
}

}  // namespace BP
