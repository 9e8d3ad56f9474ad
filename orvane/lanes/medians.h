#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "orvane/platform/export.h"

/// Medians of rectangular windows for a run of neighbouring outputs in several rows at once. Words are those of sums.h.
///
/// An output is the middle one of its window's values in ascending order, or the mean of the two in the middle: for
/// floating point high * 0.5 + low * 0.5, with one rounding for each operation. Vector lanes are neighbouring tiles of
/// outputs (see median_tile.h). Any exact method gives the same bits but for two cases, in which the order of
/// comparisons matters: windows that hold NaN, and medians that are zero where there is a -0. Such outputs are left to
/// the caller's `OneByOne`.
///
/// Nothing is read or written but the lines and output rows themselves and the scratch made before.
namespace BP::lanes {

/// Where a run is read and written.
template <class T>
struct MedianRun {
  /// Line k is the first input element under the first output's window in row k. Output row r takes lines r to
  /// r + window rows - 1. Each line has width + window columns - 1 elements.
  const T* const* lines;
  int rows;
  std::ptrdiff_t width;
  T* const* out;
};

/// Computes output x of output row `row` of a run by the caller's own selection.
template <class T>
struct OneByOne {
  void (*compute)(void* owner, const MedianRun<T>& run, int row, std::ptrdiff_t x);
  void* owner;
};

/// The medians of one window. T is float, double, or an integer of 8 or 16 bits. An object serves one thread at a time.
template <class T>
class LaneMedian {
 public:
  LaneMedian();
  ~LaneMedian();

  /// Makes all room for a window; false, and nothing is kept, if it has no elements or more than `mostElements`. An
  /// even window of integers is not taken either: how their mean rounds is not known here.
  bool resize(int columns, int rows);

  /// Computes a run, with any number of rows and outputs.
  void compute(const MedianRun<T>& run, const OneByOne<T>& plain) const;

  /// Runs of fewer outputs in a row leave lanes empty.
  int getPreferredWidth() const;

  static constexpr std::ptrdiff_t mostElements = std::ptrdiff_t{1} << 15;

 private:
  struct Room;
  std::unique_ptr<Room> room;
};

#define ORVANE_FOR_MEDIAN_ELEMENTS(APPLY) \
  APPLY(float)                            \
  APPLY(double)                           \
  APPLY(std::int8_t)                      \
  APPLY(std::uint8_t)                     \
  APPLY(std::int16_t)                     \
  APPLY(std::uint16_t)

#define ORVANE_DECLARE(T) extern template class LaneMedian<T>;
ORVANE_FOR_MEDIAN_ELEMENTS(ORVANE_DECLARE)
#undef ORVANE_DECLARE

}  // namespace BP::lanes
