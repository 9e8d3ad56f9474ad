#pragma once

#include <set>
#include <vector>

namespace BP::tool {

/// Where the positions of a dimension lie in a picture, in pixels.
///
/// The dimension is cut into runs. In a short run each position has a cell; a long one is shortened, so that an input
/// of thousands of positions with a boundary of one still shows both. All is whole numbers.
///
///     |  |  |  |  ·  ·  ·  |  |  |
///      short      long     short
class PlanAxis {
 public:
  /// Each element of `breaks`, of which there must be two or more, is the first position of a run; the last one is the
  /// end of all.
  explicit PlanAxis(const std::set<int>& breaks);

  /// Sets the pixels of a cell.
  void setCell(int pixels) { cell = pixels; }
  /// Length of all in cells, and in pixels.
  int cells() const;
  int length() const { return cells() * cell; }
  /// Whether some run is.
  bool isShortened() const;
  /// Low end of the cell of `position`, which must lie in the runs or be the end.
  int at(int position) const;
  /// Positions from `first` up to and including `last` whose cells are as wide as they should be.
  std::vector<int> wholeCells(int first, int last) const;

 private:
  struct Run {
    int first;
    int count;
    int offset;  // in cells, as are lengths
    int length;
  };

  std::vector<Run> runs;
  int cell = 1;
};

}  // namespace BP::tool
