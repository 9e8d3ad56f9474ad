#include "orvane/lanes/least_difference.h"

#include <cmath>
#include <limits>

#include "orvane/lanes/difference_kernels.h"

namespace BP::lanes {
namespace {

/// Every so many rows of positions are visited in the first round.
constexpr int firstRoundStep = 8;

}  // namespace

template <class T>
LeastDifference<T> findLeastDifference(Term term, const SearchArea<T>& area, const T* taps,
                                       const FilterExtents& extents, T limit) {
  SearchTask<T> task;
  task.sums.taps = taps;
  task.sums.filterRows = extents.rows;
  task.sums.columns = extents.columns;
  task.sums.width = area.width;
  task.pitch = area.pitch;
  LeastDifference<T> best{limit};
  const auto searchRow = differenceKernels<T>()[differenceIndex(term)].searchRow;
  const auto searchRows = [&](int first, int step) {
    for (int y = first; y < area.height; y += step) {
      task.image = area.image + y * area.pitch;
      task.y = y;
      searchRow(task, best);
    }
  };
  if (area.height > firstRoundStep) {
    searchRows(firstRoundStep / 2, firstRoundStep);
    // The best may still be met at an earlier position with the same score.
    if (best.isFound()) best = {std::nextafter(best.score, std::numeric_limits<T>::infinity())};
  }
  searchRows(0, 1);
  return best;
}

template LeastDifference<float> findLeastDifference(Term, const SearchArea<float>&, const float*, const FilterExtents&,
                                                    float);
template LeastDifference<double> findLeastDifference(Term, const SearchArea<double>&, const double*,
                                                     const FilterExtents&, double);

}  // namespace BP::lanes
