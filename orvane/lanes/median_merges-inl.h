// Tiles of any extents, merged at run time. Included once for each target.
//
// A list is a vector of keys for each rank, in memory. A merge deals both lists out by residue, like cards, into 2, 4
// or 8 pairs of shorter lists; short ones are merged in registers, by the networks made when the library was built. One
// streaming pass then undoes one to three levels of odd-even merging, for the ranks that are wanted alone.

#if defined(ORVANE_LANES_MEDIAN_MERGES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_MEDIAN_MERGES_INL
#undef ORVANE_LANES_MEDIAN_MERGES_INL
#else
#define ORVANE_LANES_MEDIAN_MERGES_INL
#endif

#include <algorithm>

#include "orvane/lanes/median_keys-inl.h"
#include "orvane/lanes/median_networks-inl.h"

#undef ORVANE_UNROLL_8
#ifdef __clang__
#define ORVANE_UNROLL_8 _Pragma("clang loop unroll(full)")
#else
#define ORVANE_UNROLL_8 _Pragma("GCC unroll 8")
#endif

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {

/// Undoes `levels` levels of odd-even merging: 2^levels sorted lists become one. Each step gives as many values.
template <class K, int levels>
struct Interleaver {
  using V = typename K::V;
  using Key = typename K::Key;
  static constexpr std::size_t half = std::size_t{1} << (levels - 1);
  Interleaver<K, levels - 1> even, odd;
  V carried, first;

  HWY_INLINE void begin(const Key* const* lists, int entry) {
    even.begin(lists, entry);
    odd.begin(lists + half, entry);
    carried = odd.first;
    first = even.first;
  }
  HWY_INLINE void step(int entry, V* out) {
    V fromEven[half], fromOdd[half];
    even.step(entry, fromEven);
    odd.step(entry, fromOdd);
    ORVANE_UNROLL_8 for (std::size_t i = 0; i < half; ++i) {
      const V before = i == 0 ? carried : fromOdd[i - 1];
      out[2 * i] = K::min(before, fromEven[i]);
      out[2 * i + 1] = K::max(before, fromEven[i]);
    }
    carried = fromOdd[half - 1];
  }
};

template <class K>
struct Interleaver<K, 0> {
  using V = typename K::V;
  using Key = typename K::Key;
  const Key* list;
  V first;

  HWY_INLINE void begin(const Key* const* lists, int entry) {
    list = lists[0];
    first = K::load(list + entry * K::lanes);
  }
  HWY_INLINE void step(int entry, V* out) { out[0] = K::load(list + (entry + 1) * K::lanes); }
};

/// Gives out the ranks from `low` to before `high`, and up to 16 more on either side. The first step after an entry in
/// the middle has no values carried to it, so it begins one step early.
template <class K, int levels>
HWY_NOINLINE void interleave(const typename K::Key* const* lists, int low, int high, typename K::Key* out) {
  constexpr int width = 1 << levels;
  int entry = std::max(0, (low - 1) / width - 1);
  Interleaver<K, levels> lanes;
  lanes.begin(lists, entry);
  if (low == 0) K::store(out, lanes.first);
  for (; 1 + entry * width < high; ++entry) {
    typename K::V values[std::size_t{width}];
    lanes.step(entry, values);
    ORVANE_UNROLL_8 for (int i = 0; i < width; ++i) K::store(out + (1 + entry * width + i) * K::lanes, values[i]);
  }
}

/// A sorted list in memory. It has 16 bytes, so that it is passed in registers.
template <class Key>
struct MergedList {
  const Key* keys = nullptr;
  int stride = 0;  ///< keys from one rank to the next
  int size = 0;

  /// Every `step`-th entry from `first` on.
  HWY_INLINE MergedList dealt(int first, int step) const {
    return {keys + static_cast<std::ptrdiff_t>(first) * stride, stride * step,
            size > first ? (size - first + step - 1) / step : 0};
  }
};

/// The operations of a tile (see `TileWalk`) on lists in memory.
template <class K>
class MergedTile {
 public:
  using V = typename K::V;
  using Key = typename K::Key;
  using List = MergedList<Key>;
  using Networks = SmallNetworks<K>;

  MergedTile(const TilePlan& tilePlan, const StripLayout& stripLayout, Key* arena)
      : plan(tilePlan), layout(stripLayout), top(arena), start(arena) {}

  /// Sorts the stretches of one prepared row, whose single elements are there.
  void sortRow(Key* row, std::ptrdiff_t vectors) {
    for (const auto& family : plan.rows.families) {
      if (family.length > 1) mergeFamily(plan.rows, family, row, vectors);
    }
  }

  /// Sorts the columns of the tiles whose first row is `rows`, and groups of them.
  void sortColumns(const Key* rows, Key* columns, std::ptrdiff_t vectors) {
    const TileShape& shape = plan.shape;
    for (const auto& family : plan.columns.families) {
      if (family.length > 1) {
        mergeFamily(plan.columns, family, columns, vectors);
        continue;
      }
      const Key* const pixels =
          rows + (shape.tileHeight - 1) * layout.row + plan.rows.of(family.phase, 1).firstLine * layout.line;
      for (std::ptrdiff_t v = 0; v < vectors; ++v) {
        top = start;
        const List sorted = sort({pixels + v * K::lanes, static_cast<int>(layout.row), shape.commonRows()});
        keep(sorted, columns + family.firstLine * layout.line + v * K::lanes);
      }
    }
  }

  void computeTiles(const Key* rows, const Key* columns, Key* out, std::ptrdiff_t vectors) {
    for (std::ptrdiff_t v = 0; v < vectors; ++v) {
      top = start;
      rowKeys = rows + v * K::lanes;
      columnKeys = columns + v * K::lanes;
      outKeys = out + v * K::lanes;
      TileWalk<MergedTile>(plan.shape, *this).run();
    }
  }

  List columns(int first, int count) const {
    return lines(columnKeys + plan.columns.of(first, count).firstLine * layout.line + first / plan.shape.tileWidth,
                 count * plan.shape.commonRows());
  }
  List row(int y, int first, int count) const {
    return lines(
        rowKeys + y * layout.row + plan.rows.of(first, count).firstLine * layout.line + first / plan.shape.tileWidth,
        count);
  }
  List pixels(int column, int first, int count) {
    const Key* const pixel = row(first, column, 1).keys;
    return sort({pixel, static_cast<int>(layout.row), count});
  }
  List merge(List a, List b) { return merge(a, b, 0, a.size + b.size); }
  List merge(List a, List b, int low, int high);
  void emit(int x, int y, List a, List b, int low, int high);
  Key* mark() const { return top; }
  void release(Key* to) { top = to; }

 private:
  List lines(const Key* first, int count) const { return {first, static_cast<int>(layout.line), count}; }
  void keep(List list, Key* to) const {
    for (int i = 0; i < list.size; ++i) {
      K::store(to + i * layout.line, K::load(list.keys + static_cast<std::ptrdiff_t>(i) * list.stride));
    }
  }
  void mergeFamily(const FamilyTable& table, const FamilyTable::Family& family, Key* base, std::ptrdiff_t vectors);
  List sort(List list);
  V select(List a, List b, int rank) const;
  void insert(List a, V value, int low, int high, Key* out) const;
  void mergeInto(List a, List b, int low, int high, Key* out);

  const TilePlan& plan;
  const StripLayout& layout;
  Key* top;
  Key* const start;
  const Key* rowKeys = nullptr;
  const Key* columnKeys = nullptr;
  Key* outKeys = nullptr;
};

template <class K>
void MergedTile<K>::mergeFamily(const FamilyTable& table, const FamilyTable::Family& family, Key* base,
                                std::ptrdiff_t vectors) {
  const auto& left = table.families[static_cast<std::size_t>(family.left)];
  const auto& right = table.families[static_cast<std::size_t>(family.right)];
  for (std::ptrdiff_t v = 0; v < vectors; ++v) {
    top = start;
    const List a = lines(base + left.firstLine * layout.line + v * K::lanes, left.length * table.linesPerColumn);
    const List b = lines(base + right.firstLine * layout.line + v * K::lanes + family.rightShift,
                         right.length * table.linesPerColumn);
    keep(merge(a, b), base + family.firstLine * layout.line + v * K::lanes);
  }
}

template <class K>
typename MergedTile<K>::List MergedTile<K>::sort(List list) {
  if (list.size <= Networks::mostSorted) {
    Key* const out = top;
    top += (list.size + TilePlan::margin) * K::lanes;
    Networks::sorts[list.size](list.keys, list.stride, out);
    return {out, static_cast<int>(K::lanes), list.size};
  }
  int part = Networks::mostSorted;
  while (2 * part < list.size) part *= 2;
  const List first = sort({list.keys, list.stride, part});
  return merge(first,
               sort({list.keys + static_cast<std::ptrdiff_t>(part) * list.stride, list.stride, list.size - part}));
}

template <class K>
typename MergedTile<K>::List MergedTile<K>::merge(List a, List b, int low, int high) {
  if (a.size < b.size) std::swap(a, b);
  if (b.size == 0) return {a.keys + static_cast<std::ptrdiff_t>(low) * a.stride, a.stride, high - low};
  Key* const out = top + (TilePlan::margin - low) * K::lanes;
  top += (high - low + 2 * TilePlan::margin) * K::lanes;
  if (b.size == 1) {
    insert(a, K::load(b.keys), low, high, out);
  } else {
    mergeInto(a, b, low, high, out);
  }
  return {out + low * K::lanes, static_cast<int>(K::lanes), high - low};
}

/// Merges one value into a list.
template <class K>
void MergedTile<K>::insert(List a, V value, int low, int high, Key* out) const {
  const auto at = [&](int i) { return K::load(a.keys + static_cast<std::ptrdiff_t>(i) * a.stride); };
  int i = low;
  if (i == 0) K::store(out + i++ * K::lanes, K::min(at(0), value));
  for (; i < std::min(high, a.size); ++i) K::store(out + i * K::lanes, K::min(at(i), K::max(at(i - 1), value)));
  if (high > a.size) K::store(out + a.size * K::lanes, K::max(at(a.size - 1), value));
}

/// Stores the ranks from `low` to before `high` of the merged lists, and up to 16 more on either side.
template <class K>
void MergedTile<K>::mergeInto(List a, List b, int low, int high, Key* out) {
  if (a.size < b.size) std::swap(a, b);
  constexpr int most = Networks::mostMerged;
  if (a.size <= most) {
    if (a.size == 0) return;
    Networks::merges[a.size * (a.size + 1) / 2 - 1 + b.size](a.keys, a.stride, b.keys, b.stride, out);
    return;
  }
  const int levels = a.size <= 2 * most ? 1 : a.size <= 4 * most ? 2 : 3, width = 1 << levels;
  Key* const save = top;
  const Key* lists[8];
  const int needed = (high - 2 + width) / width + 2;  // entries that are read of each
  for (int k = 0; k < width; ++k) {
    int residue = 0;
    for (int level = 0; level < levels; ++level) residue |= (k >> (levels - 1 - level) & 1) << level;
    const List x = a.dealt(residue, width), y = b.dealt(residue, width);
    const int size = x.size + y.size;
    Key* const list = top + TilePlan::margin / 2 * K::lanes;
    top = list + (std::max(size, needed) + TilePlan::margin / 2) * K::lanes;
    lists[k] = list;
    mergeInto(x, y, std::max(0, low / width - 3), std::min(size, needed), list);
    for (int i = size; i < needed; ++i) K::store(list + i * K::lanes, K::greatest());
  }
  (levels == 1 ? interleave<K, 1> : levels == 2 ? interleave<K, 2> : interleave<K, 3>)(lists, low, high, out);
  top = save;
}

/// The value of one rank: of the least values so far, i come from b and the others from a, for the best i.
template <class K>
typename MergedTile<K>::V MergedTile<K>::select(List a, List b, int rank) const {
  if (a.size < b.size) std::swap(a, b);
  const auto at = [](const List& list, int i) {
    return K::load(list.keys + static_cast<std::ptrdiff_t>(i) * list.stride);
  };
  int first = std::max(0, rank + 1 - a.size), last = std::min(b.size, rank + 1);
  V some = K::greatest(), others = some;
  if (first == 0) {
    some = at(a, rank);
    first = 1;
  }
  if (last == rank + 1) others = at(b, last-- - 1);
  int i = first;
  for (; i < last; i += 2) {
    some = K::min(some, K::max(at(b, i - 1), at(a, rank - i)));
    others = K::min(others, K::max(at(b, i), at(a, rank - i - 1)));
  }
  if (i == last) some = K::min(some, K::max(at(b, i - 1), at(a, rank - i)));
  return K::min(some, others);
}

template <class K>
void MergedTile<K>::emit(int x, int y, List a, List b, int low, int high) {
  const int number = (y * plan.shape.tileWidth + x) * (high - low + 1);
  for (int rank = low; rank <= high; ++rank) {
    K::store(outKeys + (number + rank - low) * static_cast<std::ptrdiff_t>(layout.tiles), select(a, b, rank));
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif
