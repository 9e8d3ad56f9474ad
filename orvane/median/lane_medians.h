#pragma once

#include <cstddef>
#include <type_traits>

#include "orvane/algorithm/algorithm.h"
#include "orvane/algorithm/run_limits.h"
#include "orvane/core/element.h"
#include "orvane/lanes/medians.h"
#include "orvane/lanes/sums.h"
#include "orvane/median/selection_window.h"
#include "orvane/plan/block.h"

namespace BP {

/// How much one call of the medians' lanes computes, at most. Its lines are sorted once for all of its rows.
struct MedianLimits : RunLimits {
  static constexpr int rows = 128;
};

/// Medians of many outputs at once, in place of `LaneSums`: a window as the vector lanes want it. Outputs that depend on
/// the order of the plain loop's comparisons are selected as in the plain loop, from the same values in the same order.
///
/// T is the element type of input and output, float or double.
template <class T>
class LaneMedians {
 public:
  using InputElement = T;
  using OutputElement = T;
  using Real = T;
  using Run = lanes::Run<T>;
  using Limits = MedianLimits;
  using Selection = MedianSelection<T, T>;
  static constexpr int maxWidth = Limits::lineBytes / static_cast<int>(sizeof(T));

  /// `selection` stays the caller's.
  explicit LaneMedians(Selection& plain) : selection(plain) {}

  /// Takes the window's extents and makes all room. Without a store for so many values there are no medians.
  void resize(const Block& window) {
    const int* dims = window.getDims().ptr;
    extents = {0, 0, 0};
    isTurnable = false;
    if (window.getNumDims() < 2 || !upright.resize(dims[0], dims[1])) return;
    if (dims[0] * dims[1] > selection.getCapacity()) return;
    extents = {1, dims[1], dims[0]};
    isTurnable = dims[0] == dims[1] || turned.resize(dims[1], dims[0]);
  }

  bool isReady() const { return extents.planes > 0; }
  bool getCanTurn() const { return isTurnable; }
  const lanes::FilterExtents& getExtents() const { return extents; }
  /// Areas of fewer outputs along dimension 0 are turned, if they are higher than wide.
  int getNarrow() const { return upright.getPreferredWidth(); }

  /// Computes a run. `turned`: lines are columns of the input.
  void compute(bool isTurned, const Run& run) {
    Again again{*this, isTurned};
    const lanes::LaneMedian<T>& medians = isTurned && extents.rows != extents.columns ? turned : upright;
    medians.compute({run.lines, run.rows, run.width, run.out}, {&LaneMedians::computeAgain, &again});
  }

 private:
  struct Again {
    LaneMedians& medians;
    bool isTurned;
  };

  static void computeAgain(void* owner, const lanes::MedianRun<T>& run, int row, std::ptrdiff_t x) {
    const Again& again = *static_cast<Again*>(owner);
    const lanes::FilterExtents& window = again.medians.extents;
    Selection& selection = again.medians.selection;
    int n = 0;
    for (int j = 0; j < window.rows; ++j) {
      for (int i = 0; i < window.columns; ++i) {
        selection.put(n++, again.isTurned ? run.lines[row + i][x + j] : run.lines[row + j][x + i]);
      }
    }
    selection.select(n, run.out[row][x]);
  }

  Selection& selection;
  lanes::FilterExtents extents{0, 0, 0};
  lanes::LaneMedian<T> upright, turned;
  bool isTurnable = false;
};

/// In place of `MedianSelection` where values are counted.
struct NoSelection {
  template <class AllocT>
  explicit NoSelection(AllocT* /*allocator*/) {}
};

}  // namespace BP
