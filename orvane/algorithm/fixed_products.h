#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "orvane/algorithm/fixed_sum_plan.h"
#include "orvane/lanes/fixed_sums.h"
#include "orvane/lanes/sums.h"

namespace BP {

/// What casts of fixed-point products meet, worked out from the lines of the input instead of the products.
///
/// A tap meets all values of a rectangle of the input. Rounding is monotonic, so its least and greatest product come
/// from the least and greatest of these values. A product loses bits where value and tap together have fewer zeros at
/// the end than bits are dropped, so the values that lose bits can be counted for each number of zeros. That takes a
/// few steps for each value, not for each product. Products that can overflow are not served.
class FixedProducts {
 public:
  /// Makes room for filters of these extents and for `lineCount` lines that are kept at a time.
  void resize(const lanes::FilterExtents& newExtents, int lineCount);
  /// Begins a sector. `taps` are those of the plan, shifted as it says, in the order of the sum.
  void begin(const FixedSumPlan& plan, const std::vector<std::int64_t>& taps, bool countsLossy, bool looksForRange);
  bool isInUse() const { return ranges || !masks.empty(); }
  /// Begins lines for `newWidth` outputs. Values `first` to before `last` of each line count.
  void beginStrip(int newWidth, int first, int last);
  /// Reads line k of the strip; none of its values count if it is not inside.
  template <class T>
  void addLine(int k, const T* line, bool isInside);
  /// Adds what the products of `rows` output rows meet, the first of which begins with line k.
  void addTile(int k, int rows, lanes::FixedCounts& met);

 private:
  /// Least and greatest of some values; of none at first.
  struct Extremes {
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
    Extremes& operator+=(const Extremes& other) {
      return *this = {std::min(least, other.least), std::max(greatest, other.greatest)};
    }
  };
  /// The number of some values.
  struct Number {
    std::uint32_t count = 0;
    Number& operator+=(const Number& other) {
      count += other.count;
      return *this;
    }
  };

  template <class T, class S, class OfT>
  void slide(const T* line, bool isInside, const S& common, OfT&& of, S* to) const;
  std::size_t place(int k) const { return static_cast<std::size_t>(k % lines) * static_cast<std::size_t>(columns); }
  void addRange(int k, int rows, lanes::FixedCounts& met);
  void addLossy(int k, int rows, lanes::FixedCounts& met);
  std::int64_t productOf(std::int64_t value, std::int64_t tap) const;

  int columns = 1;
  int filterRows = 1;
  int lines = 1;
  bool ranges = false;
  lanes::FixedForm form = lanes::FixedForm::exact;
  int append = 0;
  KarnDSPFixpt::detail::Rounder<std::int64_t> rounder;
  const std::vector<std::int64_t>* filter = nullptr;
  int width = 1;
  int firstCounted = 0;
  int endCounted = 1;
  std::vector<Extremes> extremes;          ///< of each line, for each column of the filter: of the values that it meets
  std::vector<Extremes> all;               ///< the same for a tile
  std::vector<std::int64_t> masks;         ///< bits that lose something, for each number of zeros that occurs
  std::vector<int> maskOf;                 ///< for each tap its mask, -1 if it loses nothing
  std::vector<std::vector<Number>> lossy;  ///< for each mask, as `extremes`, of the values that lose bits
  std::vector<std::int64_t> running;
};

}  // namespace BP
