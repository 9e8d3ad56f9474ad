#pragma once

#include <cstddef>

#include "orvane/algorithm/run_limits.h"
#include "orvane/core/element.h"
#include "orvane/exec/line_walk.h"
#include "orvane/lanes/majorities.h"
#include "orvane/lanes/medians.h"
#include "orvane/lanes/sums.h"
#include "orvane/median/selection_window.h"
#include "orvane/plan/block.h"

namespace BP {

/// How much one call of the medians' lanes computes, at most. Its lines are sorted once for all of its rows.
struct MedianLimits : RunLimits {
  static constexpr int rows = 256;
};

/// A window as the vector lanes want it, for medians in place of `LaneSums`; T is the type of the elements in memory.
/// `MediansT` computes runs, upright or turned.
template <class T, class MediansT>
class MedianWindow {
 public:
  using InputElement = T;
  using OutputElement = T;
  using Real = T;
  using Run = lanes::Run<T>;
  using Limits = MedianLimits;
  static constexpr int maxWidth = Limits::lineBytes / static_cast<int>(sizeof(T));

  /// Takes the window's extents and makes all room.
  void resize(const Block& window) {
    const int* dims = window.getDims().ptr;
    extents = {0, 0, 0};
    if (window.getNumDims() < 2 || !upright.resize(dims[0], dims[1])) return;
    isSquare = dims[0] == dims[1];
    if (!isSquare && !turned.resize(dims[1], dims[0])) return;
    extents = {1, dims[1], dims[0]};
  }

  bool isReady() const { return extents.planes > 0; }
  static constexpr bool getCanTurn() { return true; }
  const lanes::FilterExtents& getExtents() const { return extents; }
  /// Areas of fewer outputs along dimension 0 are turned, if they are higher than wide.
  int getNarrow() const { return upright.getPreferredWidth(); }

 protected:
  MediansT& mediansOf(bool isTurned) { return isTurned && !isSquare ? turned : upright; }
  static lanes::MedianRun<T> runOf(const Run& run) { return {run.lines, run.rows, run.width, run.out}; }

 private:
  lanes::FilterExtents extents{0, 0, 0};
  MediansT upright, turned;
  bool isSquare = false;
};

/// Medians of floating-point values. Outputs that depend on the order of the plain loop's comparisons are selected as
/// in the plain loop, from the same values in the same order.
template <class T>
class LaneMedians : public MedianWindow<T, lanes::LaneMedian<T>> {
 public:
  using Base = MedianWindow<T, lanes::LaneMedian<T>>;
  using Selection = MedianSelection<T, T>;

  /// `selection` stays the caller's.
  explicit LaneMedians(Selection& plain) : selection(plain) {}

  /// Computes a run. `turned`: lines are columns of the input.
  void compute(bool isTurned, const typename Base::Run& run) {
    Again again{*this, isTurned};
    this->mediansOf(isTurned).compute(Base::runOf(run), {&LaneMedians::computeAgain, &again});
  }

 private:
  struct Again {
    LaneMedians& medians;
    bool isTurned;
  };

  /// Inlined as a whole, as the plain loop is, so that pictures full of NaN take no longer than there.
  [[gnu::flatten]] static void computeAgain(void* owner, const lanes::MedianRun<T>& run, int row, std::ptrdiff_t x) {
    const Again& again = *static_cast<Again*>(owner);
    Selection& selection = again.medians.selection;
    const int rows = again.medians.getExtents().rows, columns = again.medians.getExtents().columns;
    T* to = selection.getValues();
    if (again.isTurned) {
      for (int j = 0; j < rows; ++j) {
        for (int i = 0; i < columns; ++i) *to++ = run.lines[row + i][x + j];
      }
    } else {
      const T* const* const lines = run.lines + row;
      for (int j = 0; j < rows; ++j) {
        const T* const line = lines[j] + x;
        for (int i = 0; i < columns; ++i) *to++ = line[i];
      }
    }
    selection.select(rows * columns, run.out[row][x]);
  }

  Selection& selection;
};

/// In place of `MedianSelection` where values are counted.
struct NoSelection {
  template <class AllocT>
  explicit NoSelection(AllocT* /*allocator*/) {}
};

class MajorityWalk;

/// Medians of `bool`, by counting.
class LaneMajorities : public MedianWindow<unsigned char, lanes::LaneMajority> {
 public:
  using Walk = MajorityWalk;

  explicit LaneMajorities(NoSelection& /*plain*/) {}

  void compute(bool isTurned, const Run& run) { mediansOf(isTurned).compute(runOf(run)); }
};

/// Reads and writes `bool` as bytes.
class MajorityWalk : private LineWalk<LaneMajorities> {
 public:
  using Base = LineWalk<LaneMajorities>;
  using Base::Base;
  using Base::resize;

  bool run(const LineSource<bool>& source, const Sector& sector, const OuterSector* edges, const Block& filter,
           const Block& input, const Block& output, const LineTarget<bool>& target) {
    const auto bytes = [](const bool* p) { return reinterpret_cast<const unsigned char*>(p); };
    return Base::run(
        {bytes(source.data), source.dims, source.strides, source.rank, source.padType, bytes(source.padValue)}, sector,
        edges, filter, input, output, {reinterpret_cast<unsigned char*>(target.data), target.strides});
  }
};

}  // namespace BP
