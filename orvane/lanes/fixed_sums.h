#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3_cast.h"

/// Sums of fixed-point products for a run of neighbouring outputs, on the stored integers.
///
/// Each output starts at 0 and takes its taps one by one, row by row, as the operations on single values do: the exact
/// product is cast into the product's type, the exact sum into the accumulator's. What the casts met is counted.
///
///   product := cast(line[r + j][i + c] * tap[j][c] * 2^append)
///   sum     := cast(sum * 2^ownAppend + product * 2^otherAppend)
///
/// Lanes are neighbouring outputs. All calls are thread-safe and allocate nothing.
namespace BP::lanes {

/// Greatest number of taps, and of outputs in a row, which callers see to: lanes count the casts of a row in 32 bits.
inline constexpr int maxFixedTaps = 1 << 16;
inline constexpr int maxFixedWidth = 1 << 12;

/// A cast of exact integers: rounding, and the range.
struct FixedCast {
  KarnDSPFixpt::detail::Rounder<std::int64_t> rounder;
  KarnDSPFixpt::detail::Range<std::int64_t> range;
};

/// Whether every value beyond the range becomes its nearest end.
inline bool clamps(const FixedCast& cast) {
  return !cast.range.wraps && cast.range.below == cast.range.least && cast.range.above == cast.range.greatest;
}

/// What many casts met; the range is that of their results.
struct FixedCounts {
  std::uint64_t casts = 0;
  std::uint64_t overflows = 0;
  std::uint64_t lossy = 0;
  std::int64_t least = std::numeric_limits<std::int64_t>::max();
  std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
  /// Adds the counts of other casts.
  ORVANE_API void add(const FixedCounts& other);
};

/// What a kernel does with products and sums.
enum class FixedForm {
  exact,           ///< no cast changes a value: the taps carry all scaling, products are in units of the sum
  quickRound,      ///< products are rounded by one term for all values and fit; sums are exact, and clamped into their
                   ///< range
  round,           ///< the same with any rounding
  quickRoundWord,  ///< as quickRound, but sums have the very bits of a lane, and saturate there
  roundWord,       ///< the same with any rounding
  any,             ///< everything
};

/// A run of outputs and its filter. T is `int32_t` or `int64_t`, and holds every exact value with the term of its
/// rounding, but for sums of the two forms that saturate at the ends of T; these are for `int32_t`. Operands of
/// `int64_t` lanes fit 32 bits.
template <class T>
struct FixedSumTask {
  /// Values past the last one that a line or output row has room for.
  static constexpr std::ptrdiff_t slack = 64 / std::ptrdiff_t(sizeof(T));

  FixedForm form = FixedForm::any;
  bool gathers = true;  ///< whether the overflows of sums are counted; in the form `any`, everything
  bool ranges = true;   ///< whether, beside that, the least and greatest sum are looked for
  int columns = 1;
  int filterRows = 1;
  const T* taps = nullptr;  ///< in the order of the sum
  /// Bits appended to a product before its cast; in exact form those from a product in units of the sum to one in its
  /// own units, which may be negative.
  int append = 0;
  int ownAppend = 0;  ///< bits appended to the sum before an addition, and to the product
  int otherAppend = 0;
  FixedCast product;
  FixedCast sum;

  /// Line r + j is read for output row r and filter row j: width + columns - 1 values, and slack.
  const T* const* lines = nullptr;
  /// Beside each line, all bits set where a value counts among the products, and 0 where it does not; or null: all do.
  /// Only for the form `any`, and for `countCasts`.
  const T* const* counted = nullptr;
  int rows = 1;
  std::ptrdiff_t width = 1;
  T* const* out = nullptr;  ///< rows of width values, and slack
};

/// Outcome of a run; `exact` forms have no overflows and no lossy casts.
struct FixedSumCounts {
  FixedCounts product;
  FixedCounts sum;
};

/// Computes a run. Counts are added to `counts`, which is not touched if the task does not gather. Only the form `any`
/// counts products and the numbers of casts (see `countCasts`).
template <class T>
ORVANE_API void sumFixed(const FixedSumTask<T>& task, FixedSumCounts& counts);

/// Least and greatest of `count` values, at least one.
template <class T>
void findRange(const T* values, std::ptrdiff_t count, T& least, T& greatest);
/// The number of values that have any bit of the mask.
template <class T>
std::uint32_t countWith(const T* values, std::ptrdiff_t count, T mask);

/// Adds the numbers of casts of a run alone.
template <class T>
ORVANE_API void countCasts(const FixedSumTask<T>& task, FixedSumCounts& counts);
/// Products of output row `row` that count.
template <class T>
std::uint64_t countedProducts(const FixedSumTask<T>& task, int row);

}  // namespace BP::lanes
