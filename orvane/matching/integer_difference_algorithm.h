#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <vector>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/integer_scores.h"
#include "orvane/core/element.h"
#include "orvane/exec/sector_walk.h"
#include "orvane/lanes/sums.h"
#include "orvane/lanes/target.h"
#include "orvane/matching/least_position.h"

namespace BP {

/// The range of the stored integers of a type. Some modes of overflow do not use the least value of a signed one.
struct StoredRange {
  std::int64_t least = 0;
  std::int64_t greatest = 0;

  explicit StoredRange(const KarnDSPFixpt::FixptType& type, bool withLeast = false) {
    const int bits = std::min(static_cast<int>(type.word), 62) - (type.isSigned ? 1 : 0);
    greatest = (std::int64_t{1} << bits) - 1;
    least = type.isSigned ? -greatest - (withLeast ? 1 : 0) : 0;
  }
  bool holds(std::int64_t low, std::int64_t high) const { return low >= least && high <= greatest; }
};

/// Base of the metrics of differences whose scores are fixed-point values. Where the types prove that no operation of
/// the plain loop rounds or overflows, vector lanes compute the scores as whole numbers: of booleans, and of real
/// values of at most 16 bits. Maps then cast each score into the output's type as the plain loop does, with the same
/// counts; differences and sums are not counted by anyone.
template <class AllocT, class BlockT, class InputT, class YT, class UT, lanes::Term term>
class IntegerDifferenceAlgorithm : public DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT> {
 public:
  using Base = DistanceMetricAlgorithm<AllocT, BlockT, InputT, YT, UT>;
  using HT = UT;

  using Base::Base;

  /// The common set-up; a tuned template takes effect at once.
  void setup(setupModeT mode) {
    Base::setup(mode);
    isPacked = false;
    if (mode != setupResize && mode != setupStart) return;
    const int* const dims = this->filter->getDims().ptr;
    const bool isPlane = this->filter->getNumDims() >= 2;
    auto usedTerm = integerTerm;
    std::int32_t least = 0;
    if constexpr (!isBoolean) {
      if (valuesAreBytes()) {
        usedTerm = lanes::IntegerTerm::byteDifference;
        least = this->filter->getData().ptr->attributes().isSigned() ? -128 : 0;
      }
    }
    scores.resize(usedTerm, isPlane ? dims[0] : 0, isPlane ? dims[1] : 0, least);
    tapCount = scores.isReady() ? std::int64_t{dims[0]} * dims[1] : 0;
    taps.resize(static_cast<std::size_t>(tapCount));
  }

  /// Computes all scores of a sector whose windows lie in the input; false, and nothing done, if lanes cannot.
  template <class OutT>
  bool runWholeSector(const Sector& sector, OutT& result) {
    Fixpt* const y = result.getBlock().getData().ptr;
    if (!canFindLeast() || !y->canAssignRow(accumulator())) return false;
    const WalkGeometry walk = walkGeometry(*this, sector, result);
    forEachTile(walk, [&](const std::int32_t* tile, int pitch, int x, int row, int width, int height) {
      for (int r = 0; r < height; ++r) {
        const int index = walk.outputPitch * (walk.lo[1] + row + r) + walk.lo[0] + x;
        y->assignRow(accumulator(), index, tile + r * pitch, width);
      }
    });
    return true;
  }

  /// Whether lanes give the scores of the plain loop: they are in use, and the types allow it.
  bool canFindLeast() { return lanes::areInUse() && scores.isReady() && isExact(); }

  /// The first of the positions with the least score, counted from the walk's first.
  LeastPosition findLeast(const WalkGeometry& walk) {
    LeastPosition best;
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    forEachTile(walk, [&](const std::int32_t* tile, int pitch, int x, int row, int width, int height) {
      for (int r = 0; r < height; ++r) {
        const std::int32_t* const from = tile + r * pitch;
        const std::int32_t found = *std::min_element(from, from + width);
        // Strips of tiles lie beside each other, so an equal score of a later tile can come earlier in the walk.
        if (found > least || (found == least && best.isFound() && row + r >= best.y)) continue;
        least = found;
        best = {x + static_cast<int>(std::find(from, from + width, found) - from), row + r};
      }
    });
    return best;
  }

 private:
  static constexpr bool isBoolean = std::is_same_v<UT, bool>;
  static constexpr bool isGreatest = term == lanes::Term::greatestDifference;
  static constexpr lanes::IntegerTerm integerTerm = isBoolean    ? lanes::IntegerTerm::unequalBits
                                                    : isGreatest ? lanes::IntegerTerm::greatestDifference
                                                    : term == lanes::Term::squaredDifference
                                                        ? lanes::IntegerTerm::squaredDifference
                                                        : lanes::IntegerTerm::absoluteDifference;

  /// A value of the accumulator's type.
  Fixpt& accumulator() const { return *this->getMinIdxCollector().getValue().ptr; }

  static bool isReal(const Fixpt& v) { return !v.attributes().isFloating() && !v.isComplex(); }

  /// Whether lanes hold a score of so many terms up to `term`, and the accumulator as well.
  bool holdsScore(std::int64_t greatestTerm, const StoredRange& sums) const {
    const std::int64_t most = std::min<std::int64_t>(sums.greatest, std::numeric_limits<std::int32_t>::max());
    return greatestTerm <= most / (isGreatest ? 1 : tapCount);
  }

  bool isExact() const {
    const Fixpt& sum = accumulator();
    if (!isReal(sum)) return false;
    const StoredRange sums(sum.attributes().type());
    if constexpr (isBoolean) {
      return sum.attributes().type().fraction == 0 && holdsScore(1, sums);
    } else {
      return valuesAreExact(sum, sums);
    }
  }

  bool valuesAreExact(const Fixpt& sum, const StoredRange& sums) const requires(!isBoolean) {
    const Fixpt &image = *this->input->getBlock().getData().ptr, &pattern = *this->filter->getData().ptr;
    if (!isReal(image) || !isReal(pattern) || !image.canReadRow() || !pattern.canReadRow()) return false;
    const auto imageType = image.attributes().type(), patternType = pattern.attributes().type();
    const int fraction = sum.attributes().type().fraction;
    if (imageType.fraction != fraction || patternType.fraction != fraction) return false;
    const StoredRange a(imageType, true), t(patternType, true);
    const std::int64_t most = std::max(a.greatest - t.least, t.greatest - a.least);
    if (!sums.holds(std::min(a.least, t.least), std::max({a.greatest, t.greatest, most}))) return false;
    if constexpr (term == lanes::Term::squaredDifference) {
      const auto product = sum.attributes().productType(sum.attributes());
      return fraction == 0 && product.fraction == 0 && sums.holds(-most, most) &&
             StoredRange(product).holds(0, most * most) && holdsScore(most * most, sums);
    }
    return holdsScore(most, sums);
  }

  /// Whether image and template are both unsigned bytes, or both signed ones, of which absolute differences are wanted.
  bool valuesAreBytes() const requires(!isBoolean) {
    if constexpr (term == lanes::Term::absoluteDifference) {
      const Fixpt *const image = this->input->getBlock().getData().ptr, *const pattern = this->filter->getData().ptr;
      return image != nullptr && pattern != nullptr && isReal(*image) && isReal(*pattern) &&
             image->attributes().type().word <= 8 && pattern->attributes().type().word <= 8 &&
             image->attributes().isSigned() == pattern->attributes().isSigned();
    }
    return false;
  }

  static void read(const bool* from, int first, int count, std::int32_t* to) { std::copy_n(from + first, count, to); }
  static void read(const Fixpt* from, int first, int count, std::int32_t* to) { from->readRow(first, count, to); }

  template <class TakeT>
  void forEachTile(const WalkGeometry& walk, TakeT&& take) {
    if (!isPacked) {
      read(this->filter->getData().ptr, 0, static_cast<int>(tapCount), taps.data());
      scores.pack(taps.data());
      isPacked = true;
    }
    const UT* const image = this->input->getBlock().getData().ptr;
    const int first = (walk.lo[0] - walk.shift[0]) + walk.inputPitch * (walk.lo[1] - walk.shift[1]);
    scores.forEachTile(
        walk.hi[0] - walk.lo[0] + 1, walk.hi[1] - walk.lo[1] + 1,
        [&](int x, int y, int count, std::int32_t* to) { read(image, first + x + walk.inputPitch * y, count, to); },
        [&](const std::int32_t* tile, int pitch, int x, int y, int width, int height) {
          take(isBoolean && isGreatest ? anyOf(pitch, height) : tile, pitch, x, y, width, height);
        });
  }

  /// Counts of a tile that become 1 where they are not 0.
  const std::int32_t* anyOf(int pitch, int height) {
    std::int32_t* const tile = scores.getTile();
    for (int i = 0; i < pitch * height; ++i) tile[i] = tile[i] != 0;
    return tile;
  }

  IntegerScores scores;
  std::vector<std::int32_t> taps;
  std::int64_t tapCount = 0;
  bool isPacked = false;
};

}  // namespace BP
