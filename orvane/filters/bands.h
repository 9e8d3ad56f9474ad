#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "orvane/core/any_bp.h"
#include "orvane/filters/box.h"
#include "orvane/filters/crew.h"
#include "orvane/filters/extents.h"
#include "orvane/platform/export.h"

namespace BP::filters::detail {

/// A box of positions in the tables of the library below.
struct BoxTables {
  std::array<int, Extents::maxRank> loc{};
  std::array<int, Extents::maxRank> dims{};

  BoxTables() = default;
  /// A box whose numbers fit 32 bits. Further dimensions have the one position 0.
  explicit BoxTables(const Box& box);
  PositionBox get() const { return {loc.data(), dims.data()}; }
};

/// A box cut into bands along one dimension, the slowest one that is long enough.
class Bands {
 public:
  Bands() = default;
  /// Cuts the first `rank` dimensions of `box` for the threads of a crew, and for its reports. An output costs about as
  /// much as `taps` products. A box without positions gives no band, and little work gives one.
  /// `inOrder` cuts along the slowest dimension alone, so that all positions of a band come before those of the next.
  Bands(const BoxTables& box, std::size_t rank, std::int64_t taps, const Crew& crew, bool inOrder = false);

  int size() const { return count; }
  BoxTables operator[](int k) const;

 private:
  BoxTables whole;
  std::size_t along = 0;
  int count = 0;
};

/// Sets the number of products below which a run is not divided among threads, and returns the one before. For tests:
/// results do not depend on it.
ORVANE_API std::int64_t setLeastWorkOfThreads(std::int64_t taps);

}  // namespace BP::filters::detail
