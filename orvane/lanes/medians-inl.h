// The kernels of medians. Included once for each target.
//
// A run is computed strip by strip. Of each input row of a strip the lines are prepared once: elements become keys,
// every tileWidth-th of them in a line of its own, and stretches of the row are sorted. Then, for each row of tiles,
// columns are sorted, tiles computed, and their outputs put in order again.

#if defined(ORVANE_LANES_MEDIANS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_MEDIANS_INL
#undef ORVANE_LANES_MEDIANS_INL
#else
#define ORVANE_LANES_MEDIANS_INL
#endif

#include <algorithm>

#include "orvane/lanes/median_keys-inl.h"
#include "orvane/lanes/median_merges-inl.h"
#include "orvane/lanes/median_networks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

/// Tiles as straight-line code, with the interface of `MergedTile`.
template <class Tile>
struct StraightTile {
  template <class Key>
  static void sortRow(Key* row, std::ptrdiff_t vectors) {
    for (const auto family : Tile::rowFamilies) {
      if (family != nullptr) family(row, static_cast<int>(vectors));
    }
  }
  template <class Key>
  static void sortColumns(const Key* rows, Key* columns, std::ptrdiff_t vectors) {
    for (const auto family : Tile::columnFamilies) family(rows, columns, static_cast<int>(vectors));
  }
  template <class Key>
  static void computeTiles(const Key* rows, const Key* columns, Key* out, std::ptrdiff_t vectors) {
    Tile::tile(rows, columns, out, static_cast<int>(vectors));
  }
};

/// Computes outputs one by one: all of a stretch, or those that are zero.
template <class T>
void computeAgain(const MedianTask<T>& task, int row, std::ptrdiff_t first, std::ptrdiff_t count, bool zerosAlone) {
  for (std::ptrdiff_t x = first; x < first + count; ++x) {
    if (!zerosAlone || task.run.out[row][x] == T(0)) task.plain.compute(task.plain.owner, task.run, row, x);
  }
}

/// Computes `count` outputs of some rows again where lines with these flags ask for it.
template <class T>
void repair(const MedianTask<T>& task, unsigned flags, int firstRow, int rows, std::ptrdiff_t first,
            std::ptrdiff_t count) {
  if (flags == 0) return;
  for (int r = firstRow; r < firstRow + rows; ++r) {
    computeAgain(task, r, first, count, (flags & MedianFlags::nan) == 0);
  }
}

/// Prepares `vectors` vectors of tiles of a line: keys, one line for each column of a tile. Returns the flags.
template <class K, int tileWidth>
unsigned prepareLine(const typename K::T* from, typename K::Key* to, std::ptrdiff_t line, std::ptrdiff_t vectors) {
  typename K::Seen seen;
  for (std::ptrdiff_t v = 0; v < vectors; ++v) {
    typename K::V keys[std::size_t{tileWidth}], parts[std::size_t{tileWidth}];
    for (int i = 0; i < tileWidth; ++i) {
      const auto elements = hn::LoadU(K::elementTag, from + (v * tileWidth + i) * K::lanes);
      if constexpr (K::isFloating) seen.add(elements);
      keys[i] = K::keyOf(elements);
    }
    splitAll<K, std::size_t{tileWidth}>(keys, parts);
    for (int i = 0; i < tileWidth; ++i) K::store(to + i * line + v * K::lanes, parts[i]);
  }
  if constexpr (K::isFloating) return seen.flags();
  return 0;
}

/// Puts one row of one vector of tiles in order: `keys` are the lines of the first output, `middles` for each output.
template <class K, int tileWidth, int middles>
HWY_INLINE void finishOutputs(const typename K::Key* keys, std::ptrdiff_t line, typename K::T* out) {
  typename K::V parts[std::size_t{tileWidth}], ordered[std::size_t{tileWidth}];
  for (int i = 0; i < tileWidth; ++i) {
    auto element = K::elementOf(K::load(keys + i * middles * line));
    if constexpr (middles == 2) element = K::mean(element, K::elementOf(K::load(keys + (2 * i + 1) * line)));
    parts[i] = hn::BitCast(K::tag, element);
  }
  joinAll<K, std::size_t{tileWidth}>(parts, ordered);
  for (int i = 0; i < tileWidth; ++i)
    hn::StoreU(hn::BitCast(K::elementTag, ordered[i]), K::elementTag, out + i * K::lanes);
}

/// One strip of a run.
template <class K, class Tile, int tileWidth>
class Strip {
 public:
  using T = typename K::T;
  using Key = typename K::Key;

  Strip(const MedianTask<T>& medianTask, Tile& medianTile, std::ptrdiff_t start)
      : task(medianTask),
        tile(medianTile),
        shape(medianTask.plan->shape),
        first(start),
        count(std::min<std::ptrdiff_t>(medianTask.layout.tiles * tileWidth, medianTask.run.width - start)),
        vectors((count + perVector - 1) / perVector),
        familyVectors((vectors * K::lanes + shape.reach() + K::lanes - 1) / K::lanes) {}

  void compute() {
    int begin = 0, end = 0;  // the rows in the ring, counted from the run's first line
    int place = 0;           // of the first one in the ring
    const int needed = shape.rows + shape.tileHeight - 1;
    for (int y = 0; y < task.run.rows; y += shape.tileHeight) {
      place += y - begin;
      begin = y;
      if (place + needed > task.ringRows) {
        std::copy(task.rows + place * task.layout.row, task.rows + (place + end - begin) * task.layout.row, task.rows);
        std::copy(task.flags + place, task.flags + place + end - begin, task.flags);
        place = 0;
      }
      for (; end < y + needed; ++end) {
        const int at = place + end - begin;
        task.flags[at] = prepare(std::min(end, task.run.rows + shape.rows - 2), task.rows + at * task.layout.row);
      }
      unsigned flags = 0;
      for (int k = 0; k < needed; ++k) flags |= task.flags[place + k];
      const int rows = std::min(shape.tileHeight, task.run.rows - y);
      if ((flags & MedianFlags::nan) == 0) computeTiles(task.rows + place * task.layout.row, y, rows);
      repair(task, flags, y, rows, first, count);
    }
  }

 private:
  static constexpr std::ptrdiff_t perVector = K::lanes * tileWidth;

  unsigned prepare(int number, Key* row) {
    const T* line = task.run.lines[number] + first;
    const std::ptrdiff_t needed = familyVectors * perVector;
    const std::ptrdiff_t there = task.run.width - first + shape.columns - 1;
    if (there < needed) {
      std::copy_n(line, there, task.inputEdge);
      std::fill(task.inputEdge + there, task.inputEdge + needed, line[there - 1]);
      line = task.inputEdge;
    }
    const unsigned flags = prepareLine<K, tileWidth>(line, row, task.layout.line, familyVectors);
    if ((flags & MedianFlags::nan) == 0) tile.sortRow(row, familyVectors);
    return flags;
  }

  void computeTiles(const Key* rows, int y, int outputRows) {
    tile.sortColumns(rows, task.columns, familyVectors);
    tile.computeTiles(rows, task.columns, task.outputs, vectors);
    for (int r = 0; r < outputRows; ++r) {
      if (shape.middles() == 1) {
        finish<1>(r, task.run.out[y + r] + first);
      } else {
        finish<2>(r, task.run.out[y + r] + first);
      }
    }
  }

  template <int middles>
  void finish(int row, T* out) {
    const std::ptrdiff_t line = task.layout.tiles;
    const Key* keys = task.outputs + row * tileWidth * middles * line;
    const std::ptrdiff_t whole = count / perVector, rest = count - whole * perVector;
    for (std::ptrdiff_t v = 0; v < whole; ++v) {
      finishOutputs<K, tileWidth, middles>(keys + v * K::lanes, line, out + v * perVector);
    }
    if (rest == 0) return;
    finishOutputs<K, tileWidth, middles>(keys + whole * K::lanes, line, task.outputEdge);
    std::copy_n(task.outputEdge, rest, out + whole * perVector);
  }

  const MedianTask<T>& task;
  Tile& tile;
  const TileShape& shape;
  const std::ptrdiff_t first, count, vectors, familyVectors;
};

template <class K, int tileWidth, class Tile>
void computeStrips(const MedianTask<typename K::T>& task, Tile& tile) {
  for (std::ptrdiff_t x = 0; x < task.run.width; x += task.layout.tiles * tileWidth) {
    Strip<K, Tile, tileWidth>(task, tile, x).compute();
  }
}

/// Tiles of this width merged at run time.
template <class K>
void computeMerged(const MedianTask<typename K::T>& task) {
  MergedTile<typename K::Vectors> tile(*task.plan, task.layout, task.arena);
  switch (task.plan->shape.tileWidth) {
    case 1: return computeStrips<K, 1>(task, tile);
    case 2: return computeStrips<K, 2>(task, tile);
    case 4: return computeStrips<K, 4>(task, tile);
    case 8: return computeStrips<K, 8>(task, tile);
    default: return computeStrips<K, 16>(task, tile);
  }
}

/// Columns of a 3 x 3 window that are sorted at a time.
template <class T>
constexpr std::ptrdiff_t columns3x3 = 2048 / sizeof(T);

/// Three values of a column in order, for one output in each lane.
template <class V>
struct Sorted3 {
  V low, middle, high;
};

/// A value more among an ordered pair.
template <class V>
HWY_INLINE Sorted3<V> insert3(V low, V high, V value) {
  const V greater = hn::Max(low, value);
  return {hn::Min(low, value), hn::Min(greater, high), hn::Max(greater, high)};
}

/// The middle of nine: the middle of the greatest low, the middle middle and the least high value.
template <class V>
HWY_INLINE V medianOf(const Sorted3<V>& a, const Sorted3<V>& b, const Sorted3<V>& c) {
  const V low = hn::Max(hn::Max(a.low, b.low), c.low), high = hn::Min(hn::Min(a.high, b.high), c.high);
  const V middle = hn::Max(hn::Min(a.middle, b.middle), hn::Min(hn::Max(a.middle, b.middle), c.middle));
  return hn::Max(hn::Min(low, middle), hn::Min(hn::Max(low, middle), high));
}

/// Calls `visit(x)` for the places of vectors that cover `count` elements, at least as many as a vector has. The last
/// one overlaps the one before.
template <class VisitT>
HWY_INLINE void forEachVector(std::ptrdiff_t count, std::ptrdiff_t lanes, VisitT&& visit) {
  for (std::ptrdiff_t x = 0; x < count - lanes; x += lanes) visit(x);
  visit(count - lanes);
}

/// Sorts the columns of four lines for two output rows of a 3 x 3 window, which share the pair of the middle lines:
/// `upper` and `lower` are three lines each. What the last two lines hold is added to `seen`.
template <class K, class T>
void sortColumns3(const T* const* lines, std::ptrdiff_t count, T (*upper)[columns3x3<T>], T (*lower)[columns3x3<T>],
                  typename K::Seen& allSeen) {
  const hn::ScalableTag<T> tag;
  typename K::Seen seen = allSeen;
  forEachVector(count, static_cast<std::ptrdiff_t>(HWY_LANES(T)), [&](std::ptrdiff_t x) HWY_ATTR {
    const auto a = hn::LoadU(tag, lines[1] + x), b = hn::LoadU(tag, lines[2] + x);
    const auto last = hn::LoadU(tag, lines[3] + x);
    if constexpr (K::isFloating) seen.add(b), seen.add(last);
    const auto low = hn::Min(a, b), high = hn::Max(a, b);
    const auto store = [&](T(*to)[columns3x3<T>], const auto& sorted) HWY_ATTR {
      hn::StoreU(sorted.low, tag, to[0] + x);
      hn::StoreU(sorted.middle, tag, to[1] + x);
      hn::StoreU(sorted.high, tag, to[2] + x);
    };
    store(upper, insert3(low, high, hn::LoadU(tag, lines[0] + x)));
    store(lower, insert3(low, high, last));
  });
  allSeen = seen;
}

/// One output row from its sorted columns.
template <class T>
void mergeColumns3(const T (*sorted)[columns3x3<T>], T* out, std::ptrdiff_t count) {
  const hn::ScalableTag<T> tag;
  using V = hn::Vec<decltype(tag)>;
  forEachVector(count, static_cast<std::ptrdiff_t>(HWY_LANES(T)), [&](std::ptrdiff_t x) HWY_ATTR {
    Sorted3<V> columns[3];
    ORVANE_UNROLL_8 for (int c = 0; c < 3; ++c) {
      columns[c] = {hn::LoadU(tag, sorted[0] + x + c), hn::LoadU(tag, sorted[1] + x + c),
                    hn::LoadU(tag, sorted[2] + x + c)};
    }
    hn::StoreU(medianOf(columns[0], columns[1], columns[2]), tag, out + x);
  });
}

/// Two output rows of a 3 x 3 window, of at least a vector. Columns are sorted piece by piece into the nearest cache.
/// Returns the flags of the last two lines.
template <class K, class T>
unsigned medianRows3x3(const T* const* lines, T* first, T* second, std::ptrdiff_t width) {
  typename K::Seen seen;
  constexpr std::ptrdiff_t piece = columns3x3<T> - 2;
  alignas(64) T upper[3][columns3x3<T>], lower[3][columns3x3<T>];
  for (std::ptrdiff_t next = 0; next < width; next += piece) {
    const std::ptrdiff_t x = std::min(next, width - static_cast<std::ptrdiff_t>(HWY_LANES(T)));
    const std::ptrdiff_t count = std::min(piece, width - x);
    const T* const from[] = {lines[0] + x, lines[1] + x, lines[2] + x, lines[3] + x};
    sortColumns3<K>(from, count + 2, upper, lower, seen);
    mergeColumns3<T>(upper, first + x, count);
    mergeColumns3<T>(lower, second + x, count);
  }
  if constexpr (K::isFloating) return seen.flags();
  return 0;
}

/// The flags of a stretch of line.
template <class K>
unsigned flagsOf(const typename K::T* line, std::ptrdiff_t count) {
  if constexpr (K::isFloating) {
    typename K::Seen seen;
    for (std::ptrdiff_t i = 0; i + K::lanes <= count; i += K::lanes) seen.add(hn::LoadU(K::elementTag, line + i));
    if (count >= K::lanes) seen.add(hn::LoadU(K::elementTag, line + count - K::lanes));
    return seen.flags();
  }
  return 0;
}

/// A strip of a 3 x 3 window, which needs no lines but those of the input.
template <class K>
class Strip3x3 {
 public:
  using T = typename K::T;

  Strip3x3(const MedianTask<T>& medianTask, std::ptrdiff_t start)
      : task(medianTask), first(start), count(std::min(stripOf3x3, medianTask.run.width - start)) {}

  void compute() {
    unsigned known =
        flagsOf<K>(task.run.lines[0] + first, count + 2) | flagsOf<K>(task.run.lines[1] + first, count + 2);
    for (int y = 0; y < task.run.rows; y += 2) {
      const T* lines[4];
      for (int k = 0; k < 4; ++k) lines[k] = task.run.lines[std::min(y + k, task.run.rows + 1)] + first;
      const int rows = std::min(2, task.run.rows - y);
      T* const out = task.run.out[y] + first;
      T* const next = rows == 2 ? task.run.out[y + 1] + first : task.outputEdge;
      // Where a line that stays holds NaN the lanes would work in vain.
      const bool isLost = (known & MedianFlags::nan) != 0;
      const unsigned flags = isLost ? flagsOf<K>(lines[2], count + 2) | flagsOf<K>(lines[3], count + 2)
                                    : medianRows3x3<K, T>(lines, out, next, count);
      repair(task, known | flags, y, rows, first, count);
      known = flags;
    }
  }

 private:
  const MedianTask<T>& task;
  const std::ptrdiff_t first, count;
};

template <class K>
void compute3x3(const MedianTask<typename K::T>& task) {
  for (std::ptrdiff_t x = 0; x < task.run.width; x += stripOf3x3) {
    const std::ptrdiff_t start = task.run.width - x < K::lanes ? task.run.width - K::lanes : x;
    Strip3x3<K>(task, start).compute();
  }
}

template <class T>
void computeMedians(const MedianTask<T>& task) {
  using K = Keys<T>;
  const TileShape& shape = task.plan->shape;
  if (shape.columns == 3 && shape.rows == 3 && task.run.width >= K::lanes) return compute3x3<K>(task);
#if HWY_TARGET != HWY_SCALAR  // one value at a time gains little, and would take as long to compile
  bool isDone = false;
  forEachTile<typename K::Vectors>([&](auto tile) HWY_ATTR {
    using Tile = decltype(tile);
    if (Tile::shape.columns != shape.columns || Tile::shape.rows != shape.rows) return;
    StraightTile<Tile> straight;
    computeStrips<K, Tile::shape.tileWidth>(task, straight);
    isDone = true;
  });
  if (isDone) return;
#endif
  computeMerged<K>(task);
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
