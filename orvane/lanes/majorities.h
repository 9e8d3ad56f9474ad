#pragma once

#include <cstddef>
#include <vector>

#include "orvane/lanes/medians.h"
#include "orvane/platform/export.h"

namespace BP::lanes {

/// Medians of values that are 0 or 1: an output is 1 if at least half of the values in its window are. Words are those
/// of medians.h.
///
/// The sums of all columns over the window's rows are kept from output row to output row: a line is added, another one
/// subtracted. Sums over neighbouring columns are put together from sums of 1, 2, 4 and so on of them. An object serves
/// one thread at a time.
class LaneMajority {
 public:
  /// Makes all room for a window; false if it has no elements, or more than `mostElements`.
  bool resize(int columns, int rows);

  void compute(const MedianRun<unsigned char>& run);

  /// Runs of fewer outputs in a row leave lanes empty.
  static constexpr int getPreferredWidth() { return 16; }

  static constexpr std::ptrdiff_t mostElements = std::ptrdiff_t{1} << 30;

 private:
  int columns = 0;
  int rows = 0;
  std::vector<std::byte> sums;
};

}  // namespace BP::lanes
