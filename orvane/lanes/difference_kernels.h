#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "orvane/lanes/least_difference.h"
#include "orvane/lanes/sum_kernels.h"
#include "orvane/lanes/sums.h"

// What the sources of differences and the kernels of each target share.

namespace BP::lanes {

/// An area of positions in which the least difference is looked for.
template <class T>
struct SearchTask {
  const T* taps;  ///< of the template, in storage order
  int columns, rows;
  const T* image;  ///< the first element of the first window
  std::ptrdiff_t pitch;
  std::ptrdiff_t width;  ///< positions in a row

  static T nextAbove(T score) { return std::nextafter(score, std::numeric_limits<T>::infinity()); }
};

/// The kernels of one term in one target.
template <class T>
struct DifferenceKernels {
  using Function = void(const SumTask<T>&);
  Function* real;          ///< real input and real template
  Function* complexInput;  ///< complex input and any template
  Function* realComplex;   ///< real input and complex template
  /// Replaces `best` by the first position, in the rows from `y` to before `end`, of those with the least score below
  /// that of `best`. A best in the same rows gives way to an equal score in an earlier one. Real elements.
  void (*search)(const SearchTask<T>&, int y, int end, LeastDifference<T>& best);
};

/// Place of the kernels of a term.
constexpr std::size_t differenceIndex(Term term) {
  return static_cast<std::size_t>(term) - static_cast<std::size_t>(Term::absoluteDifference);
}

/// The kernels of the target in use, in the order of `Term` without products.
template <class T>
const std::array<DifferenceKernels<T>, 3>& differenceKernels();

}  // namespace BP::lanes
