#pragma once

#include <array>
#include <cassert>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "orvane/filters/extents.h"
#include "orvane/platform/export.h"

namespace BP::filters {

/// Pitches of an array, in elements: from one line to the next, from one plane to the next, and so on for dimensions 1,
/// 2, .... One number is that of lines. The dimensions that are left out follow without gaps.
class ORVANE_API Pitch {
 public:
  template <std::integral I>
  Pitch(I lines) : Pitch({Extent(lines)}) {}
  /// Throws `std::invalid_argument` for more pitches than an array can have.
  Pitch(std::initializer_list<Extent> pitches);

  std::size_t size() const { return count; }
  std::int64_t operator[](std::size_t i) const { return values[i]; }

 private:
  std::array<std::int64_t, Extents::maxRank> values{};
  std::size_t count = 0;
};

/// How the elements of an array lie in memory: its extents, and how far neighbours are apart in each dimension.
///
///     a b c d . .      extents {4, 3}, pitch 6: the elements of a line are neighbours, lines are 6 elements apart;
///     e f g h . .      the elements between them, drawn as dots, do not belong to the array
///     i j k l
class ORVANE_API Layout {
 public:
  /// Dense: no gaps.
  Layout(const Extents& extents);
  /// Throws `std::invalid_argument` for more pitches than slower dimensions, and for a pitch so small that lines, or
  /// planes, would overlap.
  Layout(const Extents& extents, const Pitch& pitch);
  /// With the distances of neighbours in all dimensions, the first of them 1. Throws as the constructor before.
  static Layout withStrides(const Extents& extents, const std::array<std::int64_t, Extents::maxRank>& strides);

  const Extents& extents() const { return size; }
  /// Elements from one neighbour to the next in a dimension; 1 in dimension 0.
  std::int64_t pitch(std::size_t dimension) const { return strides[dimension]; }
  /// The number of elements from the first one to the last, also those between lines. 2^63 - 1 if it exceeds that.
  std::int64_t span() const;
  /// Whether there are no gaps.
  bool isDense() const;
  bool operator==(const Layout&) const = default;

  /// The number of the element in memory. Indices must lie within the extents; assertions check it.
  template <std::integral... I>
  std::ptrdiff_t indexOf(I... index) const {
    static_assert(sizeof...(I) >= 1 && sizeof...(I) <= Extents::maxRank, "1 to 8 indices");
    assert(sizeof...(I) == size.rank());
    std::ptrdiff_t linear = 0;
    std::size_t d = 0;
    const auto add = [&](std::ptrdiff_t i) {
      assert(i >= 0 && i < size[d]);
      linear += static_cast<std::ptrdiff_t>(strides[d++]) * i;
    };
    (add(static_cast<std::ptrdiff_t>(index)), ...);
    return linear;
  }

  /// The number in memory of the element at `start`, and the layout of a part that begins there. Throws
  /// `std::invalid_argument` if the part does not lie within the array.
  std::int64_t offsetOf(const Extents& start) const;
  Layout part(const Extents& start, const Extents& extents) const;

  /// Calls `take(first, number)` for each line of the array in turn, with the number in memory of its first element and
  /// the number of the line. An array without elements has no line.
  template <class Take>
  void forEachLine(Take&& take) const;

 private:
  void checkPitches() const;

  Extents size;
  std::array<std::int64_t, Extents::maxRank> strides{};  // 0 beyond the rank
};

template <class Take>
void Layout::forEachLine(Take&& take) const {
  if (elementCount(size) == 0) return;
  std::array<std::int64_t, Extents::maxRank> index{};
  std::int64_t first = 0;
  for (std::int64_t number = 0;; ++number) {
    take(static_cast<std::ptrdiff_t>(first), static_cast<std::ptrdiff_t>(number));
    std::size_t d = 1;
    for (; d < size.rank(); ++d) {
      first += strides[d];
      if (++index[d] < size[d]) break;
      first -= strides[d] * size[d];
      index[d] = 0;
    }
    if (d >= size.rank()) return;
  }
}

}  // namespace BP::filters
