#pragma once

#include <set>
#include <vector>

namespace BP::tool {

/// The coordinates, in pixels, of the positions of a dimension in a picture.
///
/// The dimension is cut into runs. In a short run each position has a cell. A long run is shortened, so that the
/// picture of an input with thousands of positions still shows a boundary of one position. All numbers are whole.
///
///     |  |  |  |  ·  ·  ·  |  |  |
///      short      long     short
class PlanAxis {
 public:
  /// Each element of `breaks` is the first position of a run; the last element is the end of the last run. There must
  /// be two or more.
  explicit PlanAxis(const std::set<int>& breaks);

  /// Sets the pixels of a cell.
  void setCell(int pixels) { cell = pixels; }
  /// The length of the axis in cells.
  int cells() const;
  /// The length of the axis in pixels.
  int length() const { return cells() * cell; }
  /// True if a run is shortened.
  bool isShortened() const;
  /// The low end of the cell of `position`, which must lie in a run or be the end of the last run.
  int at(int position) const;
  /// The positions from `first` to `last`, both included, that lie in runs that are not shortened.
  std::vector<int> wholeCells(int first, int last) const;

 private:
  struct Run {
    int first;
    int count;
    int offset;  // in cells
    int length;
  };

  std::vector<Run> runs;
  int cell = 1;
};

}  // namespace BP::tool
