#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>

#include "orvane/platform/export.h"

namespace BP::filters {

/// One extent, or another number of elements, from an integer of any type. Throws `std::invalid_argument` for a number
/// above 2^63 - 1.
class ORVANE_API Extent {
 public:
  template <std::integral I>
  requires(!std::same_as<I, bool>) Extent(I extent)
      : number(std::in_range<std::int64_t>(extent) ? static_cast<std::int64_t>(extent)
                                                   : refuse(static_cast<std::uint64_t>(extent))) {}
  std::int64_t value() const { return number; }

 private:
  [[noreturn]] static std::int64_t refuse(std::uint64_t extent);

  std::int64_t number;
};

/// The extents of an array, dimension 0 first. Neighbours along dimension 0 are neighbours in memory.
///
/// Element (i0, i1) of a dense array of extents {e0, e1} has index i0 + i1 * e0, so a picture has extents
/// {width, height}. Extents may be integers of any type. This class checks only the number of dimensions. Each filter
/// has its own limits of extents.
class ORVANE_API Extents {
 public:
  static constexpr std::size_t maxRank = 8;

  Extents() = default;
  /// Throws `std::invalid_argument` for more than `maxRank` dimensions.
  Extents(std::initializer_list<Extent> extents);
  explicit Extents(std::span<const std::int64_t> extents);

  /// The number of dimensions.
  std::size_t rank() const { return count; }
  std::int64_t operator[](std::size_t dimension) const { return values[dimension]; }
  const std::int64_t* begin() const { return values.data(); }
  const std::int64_t* end() const { return values.data() + count; }
  bool operator==(const Extents&) const = default;

 private:
  void checkRank() const;

  std::array<std::int64_t, maxRank> values{};  // 0 beyond `count`
  std::size_t count = 0;
};

/// The product of the extents: 1 for rank 0, 0 if an extent is below 1, and 2^63 - 1 if the product exceeds that.
ORVANE_API std::int64_t elementCount(const Extents& extents);

/// The extents as text, as in "640 x 480".
ORVANE_API std::string toText(const Extents& extents);

}  // namespace BP::filters
