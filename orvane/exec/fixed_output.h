#pragma once

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "orvane/algorithm/fixed_sum_plan.h"
#include "orvane/lanes/fixed_dots.h"
#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// Adds counts of casts into an array's type to the array's statistics, if it has any.
void addCastCounts(KarnDSPFixpt::Fixpt& array, const lanes::FixedCounts& counts);
/// Whether an array wants to know the least and greatest of its values.
bool wantsRange(const KarnDSPFixpt::Fixpt& array);

/// The last step of fixed-point sums: casts rows of sums into the output's type, stores them, and counts.
///
/// Each sum is cast twice, as in the plain walk: into the scratch output, which has the accumulator's type and counts
/// that, and from there into the output.
class FixedOutput {
 public:
  using Fixpt = KarnDSPFixpt::Fixpt;

  /// Makes room for up to `mostRows` rows of `width` sums.
  void resize(int width, int mostRows);
  /// Begins a sector.
  void begin(const FixedSumPlan& newPlan, Fixpt& newScratch, Fixpt& newOutput);
  /// Where rows of sums go: their first output is element `first`, and `pitch` elements further for each row.
  struct Place {
    std::ptrdiff_t width;
    int rows;
    std::ptrdiff_t first;
    std::ptrdiff_t pitch;
  };
  /// Casts and stores rows of sums of T, `int32_t` or `int64_t`, which have slack after them.
  template <class T>
  void put(const T* const* sums, const Place& place);
  /// Whether kernels may cast and store themselves, as bytes.
  bool takesBytes() const;
  /// Has `sumDotsIntoBytes` do so for rows whose first output is element `first`, and `pitch` elements further each.
  /// Returns the number of outputs of each row that are done.
  std::ptrdiff_t putBytes(const lanes::FixedDotTask& task, std::ptrdiff_t first, std::ptrdiff_t pitch);
  /// Adds all counts to the statistics of both arrays.
  void addCounts();

 private:
  /// Rows of less are cast together.
  static constexpr std::ptrdiff_t narrow = 16;

  template <class T>
  void cast(const T* sums, std::ptrdiff_t count, std::byte* to);
  template <class T>
  void putNarrow(const T* const* sums, const Place& place);
  std::byte* address(std::ptrdiff_t element) const;

  const FixedSumPlan* plan = nullptr;
  Fixpt* scratch = nullptr;
  Fixpt* output = nullptr;
  bool counts = false;
  bool ranges = false;
  std::vector<std::int64_t> wide;                                           ///< a row of sums
  std::tuple<std::vector<std::int32_t>, std::vector<std::int64_t>> joined;  ///< the sums of several narrow rows
  std::vector<std::byte> stored;                                            ///< their outputs
  std::vector<std::uint8_t*> rows;
  lanes::FixedCounts metScratch;
  lanes::FixedCounts metOutput;
};

}  // namespace BP
