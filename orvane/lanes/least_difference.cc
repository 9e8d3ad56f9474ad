#include "orvane/lanes/least_difference.h"

#include <algorithm>

#include "orvane/lanes/difference_kernels.h"

namespace BP::lanes {
namespace {

/// The first rounds visit every so many rows of positions, one after the other.
constexpr int roundSteps[] = {64, 8};

}  // namespace

template <class T>
LeastDifference<T> findLeastDifference(Term term, const SearchArea<T>& area, const T* taps,
                                       const FilterExtents& extents, T limit) {
  const SearchTask<T> task{taps, extents.columns, extents.rows, area.image, area.pitch, area.width};
  const auto search = differenceKernels<T>()[differenceIndex(term)].search;
  LeastDifference<T> best{limit};
  for (const int step : roundSteps) {
    if (area.height <= step) continue;
    for (int y = step / 2; y < area.height; y += step) search(task, y, y + 1, best);
    search(task, std::max(0, best.y - step / 2), std::min(area.height, best.y + step / 2), best);
  }
  // The best may still be met at an earlier position with the same score.
  if (best.isFound()) best = {SearchTask<T>::nextAbove(best.score)};
  search(task, 0, area.height, best);
  return best;
}

template LeastDifference<float> findLeastDifference(Term, const SearchArea<float>&, const float*, const FilterExtents&,
                                                    float);
template LeastDifference<double> findLeastDifference(Term, const SearchArea<double>&, const double*,
                                                     const FilterExtents&, double);

}  // namespace BP::lanes
