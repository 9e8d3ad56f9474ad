#pragma once

#include <cstddef>

#include "orvane/lanes/sums.h"
#include "orvane/platform/export.h"

namespace BP::lanes {

/// Where a template is looked for: a rectangle of positions, at each of which a window of real elements begins.
template <class T>
struct SearchArea {
  const T* image;        ///< the first element of the window at the first position
  std::ptrdiff_t pitch;  ///< elements from one row of the image to the next
  int width;             ///< positions in a row
  int height;            ///< rows of positions
};

/// A position and its score.
template <class T>
struct LeastDifference {
  T score;
  int x = -1, y = 0;

  bool isFound() const { return x >= 0; }
};

/// The first position, row by row, of those with the least score, if that is less than `limit`; otherwise there is
/// none. The score is what `PackedFilter::sumDifferences` gives for `term`; a position whose score is NaN is ignored.
/// `taps` is the template in storage order, of `extents` with one plane.
///
/// Terms are never negative, and rounding is monotonic, so a score never falls while its terms are added: a position is
/// given up as soon as its score so far reaches the least one that is known. A first round over some of the rows finds
/// a low score early; all positions are visited after it, in their order.
template <class T>
ORVANE_API LeastDifference<T> findLeastDifference(Term term, const SearchArea<T>& area, const T* taps,
                                                  const FilterExtents& extents, T limit);

extern template ORVANE_API LeastDifference<float> findLeastDifference(Term, const SearchArea<float>&, const float*,
                                                                      const FilterExtents&, float);
extern template ORVANE_API LeastDifference<double> findLeastDifference(Term, const SearchArea<double>&, const double*,
                                                                       const FilterExtents&, double);

}  // namespace BP::lanes
