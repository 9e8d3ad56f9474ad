#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

/// Medians of a tile of neighbouring windows, described once.
///
/// Neighbouring windows share most of their values. What all windows of a *tile* of outputs share, the *core*, is
/// sorted once. Then the tile is halved again and again. The windows of a half share some more columns or rows, which
/// are merged into the core, and values of too low or too high a rank for any median are dropped. A single output
/// remains at last, and of its core the middle.
///
///     window 5 x 5, tile 2 x 2          left half of the tile
///
///       c . . . . c                       . . . . . c        '.' core: sorted, without hopeless values
///       r - - - - r      core: 4 x 4      . - - - - c        'c' single columns, sorted over the rows of the core
///       r - - - - r      values           . - - - - c        'r' single rows, sorted over its columns
///
/// Sorted columns and groups of them serve all tiles that they lie in, and so do sorted stretches of rows. So they are
/// made once for a whole strip of tiles, the `FamilyTable`s tell which. Neighbouring tiles are neighbouring lanes, so
/// this code walks the tile once for a vector of tiles. It is a template over the operations: these make a vector
/// program, record a network that becomes source code, or only count.
///
/// The method is that of A. Adams, "Fast median filters using separable sorting networks" (2021), with K. E. Batcher's
/// odd-even merges (1968).
namespace BP::lanes {

/// Extents of a window and of the tile of outputs that are computed together.
struct TileShape {
  int columns = 1;
  int rows = 1;
  int tileWidth = 1;   ///< a power of two, at most `columns` and `maxTile`
  int tileHeight = 1;  ///< a power of two, at most `rows` and `maxTile`

  constexpr int count() const { return columns * rows; }
  /// Ranks, from 0 on, of the one or two values in the middle.
  constexpr int lowMiddle() const { return (count() - 1) / 2; }
  constexpr int highMiddle() const { return count() / 2; }
  constexpr int middles() const { return highMiddle() - lowMiddle() + 1; }
  /// Rows that all windows of a tile have.
  constexpr int commonRows() const { return rows - tileHeight + 1; }
  /// Tiles from a tile to the one that its last column begins in.
  constexpr int reach() const { return (columns + tileWidth - 2) / tileWidth; }
};

constexpr int maxTile = 16;

/// The greatest power of two up to `extent`, at most `most`.
constexpr int tileExtent(int extent, int most) {
  int tile = 1;
  while (2 * tile <= std::min(extent, most)) tile *= 2;
  return tile;
}

/// The tile that is fastest, as measured, for a window.
constexpr TileShape tileShapeFor(int columns, int rows) {
  const auto most = [](int extent) { return extent < 6 ? 2 : extent < 24 ? 4 : extent < 80 ? 8 : maxTile; };
  const bool isFlat = columns < 16 && rows < 16;
  return {columns, rows, tileExtent(columns, most(columns)), tileExtent(rows, isFlat ? 2 : most(rows))};
}

/// Bytes of the widest vector of any target. Scratch is laid out by it, whatever the target in use.
constexpr int widestVector = 64;

/// How the scratch lines of a strip of tiles lie in memory, in keys of `keySize` bytes.
struct StripLayout {
  int tiles;            ///< tiles of a strip
  std::ptrdiff_t line;  ///< keys from one line to the next
  std::ptrdiff_t row;   ///< keys from the lines of one input row to those of the next

  constexpr StripLayout(const TileShape& shape, int keySize, int rowLines) : tiles(0), line(0), row(0) {
    const int lanes = widestVector / keySize;
    const int vectors = shape.columns <= 5   ? (keySize == 1 ? 8 : 16)
                        : shape.columns < 40 ? 4
                        : shape.columns < 80 ? 2
                                             : 1;
    tiles = vectors * lanes;
    line = (tiles + 2 * shape.reach() + 2 * lanes - 1) / lanes * lanes + lanes;
    line += line * keySize % 1024 == 0 ? lanes : 0;  // lines at equal places of all pages would share few cache sets
    row = line * rowLines;
    row += row * keySize % 1024 == 0 ? lanes : 0;
  }
};

/// The sorted groups of neighbouring columns that tiles need, or the sorted stretches of rows.
///
/// A *family* is one group for each tile: it has `length` columns from column `phase` of the tile on. It takes `length`
/// times `linesPerColumn` lines, one for each rank. All families but those of one column are merged from two others.
struct FamilyTable {
  struct Family {
    int phase, length, firstLine;
    int left, right;  ///< numbers of the families that are merged; the right one begins `rightShift` tiles later
    int rightShift;
  };

  FamilyTable() = default;
  FamilyTable(int tileWidth, int columns, int perColumn)
      : period(tileWidth),
        linesPerColumn(perColumn),
        numbers(static_cast<std::size_t>(tileWidth) * static_cast<std::size_t>(columns + tileWidth), -1) {}

  std::size_t place(int phase, int length) const { return static_cast<std::size_t>(length * period + phase); }
  /// The family of a group that begins at column `first`, counted from the tile's first one.
  const Family& of(int first, int length) const {
    return families[static_cast<std::size_t>(numbers[place(first % period, length)])];
  }

  /// Enters a family and those that it is merged from, and returns its number.
  int enter(int phase, int length) {
    if (const int known = numbers[place(phase, length)]; known >= 0) return known;
    Family family{phase, length, 0, -1, -1, 0};
    if (length > 1) {
      int part = 1;
      while (2 * part < length) part *= 2;
      family.left = enter(phase, part);
      family.right = enter((phase + part) % period, length - part);
      family.rightShift = (phase + part) / period;
    }
    family.firstLine = lines;
    lines += length * linesPerColumn;
    families.push_back(family);
    return numbers[place(phase, length)] = static_cast<int>(families.size()) - 1;
  }

  int period = 1;
  int linesPerColumn = 1;
  int lines = 0;
  std::vector<Family> families;
  std::vector<int> numbers;
};

/// Walks one tile. `Ops` has a type `List` of sorted values, which can be copied and made empty, and
///
///     columns(first, count)        the values of `count` neighbouring columns in the rows that all windows share
///     row(y, first, count)         the values of a stretch of row y
///     pixels(column, first, count) the values of a stretch of a column
///     merge(a, b), merge(a, b, low, high)       all values, or those of the ranks from `low` to before `high`
///     emit(x, y, a, b, low, high)  output (x, y) has the ranks from `low` to `high`, both included, of a and b
///     mark(), release(mark)        lists that were made after a mark are not used after its release
///
/// Columns and rows are counted from those of the tile's first window.
template <class Ops>
class TileWalk {
 public:
  using List = typename Ops::List;

  TileWalk(const TileShape& tileShape, Ops& operations) : shape(tileShape), ops(operations) {}

  void run() {
    const int firstColumn = shape.tileWidth - 1, columns = shape.columns - firstColumn;
    Node root;
    root.x1 = shape.tileWidth;
    root.y1 = shape.tileHeight;
    root.count = shape.count();
    root.low = shape.lowMiddle();
    root.high = shape.highMiddle();
    root.hasCommonRows = true;
    const int groups = (columns + shape.tileWidth - 1) / shape.tileWidth, half = (groups + 1) / 2;
    const auto group = [&](int i) {
      const int first = firstColumn + i * shape.tileWidth;
      return ops.columns(first, std::min(shape.tileWidth, shape.columns - first));
    };
    const List left = mergeAll(0, half, group), right = groups > 1 ? mergeAll(half, groups, group) : List();
    if (addToCore(root, left, shape.commonRows() * columns, right)) return;
    forEachPartial(root.x0, root.x1, shape.columns, [&](int c) { root.columns[slot(c, true)] = ops.columns(c, 1); });
    forEachPartial(root.y0, root.y1, shape.rows,
                   [&](int y) { root.rows[slot(y, false)] = ops.row(y, firstColumn, columns); });
    split(root);
  }

 private:
  /// The outputs x0 <= x < x1, y0 <= y < y1 of the tile.
  struct Node {
    int x0 = 0, x1 = 0, y0 = 0, y1 = 0;
    int count = 0;          ///< values of each window, without those that were dropped
    int low = 0, high = 0;  ///< ranks of its middles among these
    int coreSize = 0;
    bool hasCommonRows = false;  ///< still those that all windows of the tile share
    List core{};
    std::array<List, 2 * maxTile> columns{}, rows{};  ///< those that only some of the windows have

    int width() const { return x1 - x0; }
    int height() const { return y1 - y0; }
  };

  std::size_t slot(int i, bool isColumn) const {
    const int tile = isColumn ? shape.tileWidth : shape.tileHeight, window = isColumn ? shape.columns : shape.rows;
    return static_cast<std::size_t>(i < tile ? i : i - window + tile);
  }

  /// Visits the columns, or rows, that some of the windows from `first` to before `end` have, and others have not.
  template <class VisitT>
  static void forEachPartial(int first, int end, int window, VisitT&& visit) {
    for (int i = first; i < end - 1; ++i) visit(i);
    for (int i = first + window; i < end - 1 + window; ++i) visit(i);
  }

  /// Merges the lists `get(first)` to `get(end - 1)`.
  template <class GetT>
  List mergeAll(int first, int end, const GetT& get) {
    if (end - first == 1) return get(first);
    const int middle = (first + end + 1) / 2;
    const List left = mergeAll(first, middle, get);
    return ops.merge(left, mergeAll(middle, end, get));
  }

  /// Merges two lists of `size` values together into the core of a node and drops what cannot be a median. A node of
  /// one output is given out, and true returned.
  bool addToCore(Node& node, const List& a, int size, const List& b) {
    if (node.width() == 1 && node.height() == 1) {
      ops.emit(node.x0, node.y0, a, b, node.low, node.high);
      return true;
    }
    const int low = std::max(0, size - node.count + node.low), high = std::min(size, node.high + 1);
    node.core = ops.merge(a, b, low, high);
    node.coreSize = high - low;
    node.count -= size - node.coreSize;
    node.low -= low;
    node.high -= low;
    return false;
  }

  void split(const Node& node) {
    for (const bool isSecond : {false, true}) {
      const auto mark = ops.mark();
      Node half;
      half.x0 = node.x0, half.x1 = node.x1, half.y0 = node.y0, half.y1 = node.y1;
      half.count = node.count, half.low = node.low, half.high = node.high;
      if (node.width() >= node.height()) {
        splitColumns(node, half, isSecond);
      } else {
        splitRows(node, half, isSecond);
      }
      ops.release(mark);
    }
  }

  /// The columns, or rows, that the windows of a half share beyond those of the whole: the first and their number.
  static std::pair<int, int> cut(int& first, int& end, int window, bool isSecond) {
    const int start = first, stop = end, middle = (first + end) / 2;
    (isSecond ? first : end) = middle;
    return isSecond ? std::pair{start + window, middle - start} : std::pair{middle - 1, stop - middle};
  }

  void splitColumns(const Node& node, Node& half, bool isSecond) {
    const auto [first, count] = cut(half.x0, half.x1, shape.columns, isSecond);
    half.hasCommonRows = node.hasCommonRows;
    const int height = shape.rows - node.height() + 1;
    const List added = node.hasCommonRows ? ops.columns(first, count)
                                          : mergeAll(first, first + count,
                                                     [&, n = &node](int c) { return n->columns[slot(c, true)]; });
    if (addToCore(half, node.core, node.coreSize + count * height, added)) return;
    forEachPartial(half.x0, half.x1, shape.columns,
                   [&](int c) { half.columns[slot(c, true)] = node.columns[slot(c, true)]; });
    forEachPartial(half.y0, half.y1, shape.rows, [&, start = first, length = count](int y) {
      half.rows[slot(y, false)] = ops.merge(node.rows[slot(y, false)], ops.row(y, start, length));
    });
    split(half);
  }

  void splitRows(const Node& node, Node& half, bool isSecond) {
    const auto [first, count] = cut(half.y0, half.y1, shape.rows, isSecond);
    const int width = shape.columns - node.width() + 1;
    const List added = mergeAll(first, first + count, [&, n = &node](int y) { return n->rows[slot(y, false)]; });
    if (addToCore(half, node.core, node.coreSize + count * width, added)) return;
    forEachPartial(half.y0, half.y1, shape.rows, [&](int y) { half.rows[slot(y, false)] = node.rows[slot(y, false)]; });
    forEachPartial(half.x0, half.x1, shape.columns, [&, start = first, length = count](int c) {
      half.columns[slot(c, true)] = ops.merge(node.columns[slot(c, true)], ops.pixels(c, start, length));
    });
    split(half);
  }

  const TileShape& shape;
  Ops& ops;
};

/// What a shape needs: its families, and the room that the lists of a tile take at run time.
class TilePlan {
 public:
  TilePlan() = default;
  explicit TilePlan(const TileShape& tileShape);

  TileShape shape;
  FamilyTable columns;  ///< sorted over the rows that all windows of a tile share
  FamilyTable rows;
  std::size_t arena = 0;  ///< vectors

  /// Vectors between lists, as merges write some beyond both ends.
  static constexpr int margin = 32;
  /// Vectors that a merge of `size` values takes beside its result.
  static constexpr std::size_t mergeRoom(int size) { return static_cast<std::size_t>(2 * size) + 4096; }
};

namespace tile_plan {

/// Enters families, and counts the vectors of lists.
struct Count {
  struct List {
    int size = 0;
  };
  TilePlan& plan;
  std::size_t used = 0, most = 0;

  List columns(int first, int count) {
    plan.columns.enter(first % plan.shape.tileWidth, count);
    return {count * plan.shape.commonRows()};
  }
  List row(int /*y*/, int first, int count) {
    plan.rows.enter(first % plan.shape.tileWidth, count);
    return {count};
  }
  List pixels(int column, int /*first*/, int count) {
    plan.rows.enter(column % plan.shape.tileWidth, 1);
    return take(count);
  }
  List take(int size) {
    used += static_cast<std::size_t>(size + 2 * TilePlan::margin);
    most = std::max(most, used + TilePlan::mergeRoom(size));
    return {size};
  }
  List merge(List a, List b) { return take(a.size + b.size); }
  List merge(List a, List b, int low, int high) {
    most = std::max(most, used + TilePlan::mergeRoom(a.size + b.size));
    return take(high - low);
  }
  void emit(int /*x*/, int /*y*/, List /*a*/, List /*b*/, int /*low*/, int /*high*/) {}
  std::size_t mark() const { return used; }
  void release(std::size_t to) { used = to; }
};

}  // namespace tile_plan

inline TilePlan::TilePlan(const TileShape& tileShape)
    : shape(tileShape),
      columns(shape.tileWidth, shape.columns, shape.commonRows()),
      rows(shape.tileWidth, shape.columns, 1) {
  for (int phase = 0; phase < shape.tileWidth; ++phase) rows.enter(phase, 1);
  tile_plan::Count count{*this};
  TileWalk<tile_plan::Count>(shape, count).run();
  // sorting a column takes pieces of it beside the result
  arena = count.most + TilePlan::mergeRoom(shape.count()) +
          8 * static_cast<std::size_t>(margin) * static_cast<std::size_t>(shape.commonRows() / 4 + 8);
}

}  // namespace BP::lanes
