#include "orvane/lanes/least_difference.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/lanes/difference_kernels.h"

namespace BP::lanes {
namespace {

/// The first rounds visit every so many rows of positions, one after the other.
constexpr int roundSteps[] = {64, 8};

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
  const auto searchRows = [&](int first, int end, int step) {
    for (int y = first; y < end; y += step) {
      task.image = area.image + y * area.pitch;
      task.y = y;
      searchRow(task, best);
    }
  };
  for (const int step : roundSteps) {
    if (area.height <= step) continue;
    searchRows(step / 2, area.height, step);
    searchRows(std::max(0, best.y - step / 2), std::min(area.height, best.y + step / 2), step > 8 ? 8 : 1);
  }
  // The best may still be met at an earlier position with the same score.
  if (best.isFound()) best = {std::nextafter(best.score, std::numeric_limits<T>::infinity())};
  searchRows(0, area.height, 1);
  return best;
}

template LeastDifference<float> findLeastDifference(Term, const SearchArea<float>&, const float*, const FilterExtents&,
                                                    float);
template LeastDifference<double> findLeastDifference(Term, const SearchArea<double>&, const double*,
                                                     const FilterExtents&, double);

}  // namespace BP::lanes
