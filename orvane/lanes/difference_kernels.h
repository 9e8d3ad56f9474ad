#pragma once

#include <array>
#include <cstddef>

#include "orvane/lanes/least_difference.h"
#include "orvane/lanes/sum_kernels.h"
#include "orvane/lanes/sums.h"

// What the sources of differences and the kernels of each target share.

namespace BP::lanes {

/// One row of positions in which the least difference is looked for.
template <class T>
struct SearchTask {
  SumTask<T> sums;           ///< taps, columns and rows of the template, and the width of the row
  const T* image = nullptr;  ///< the first element of the row's first window
  std::ptrdiff_t pitch = 0;
  int y = 0;  ///< number of the row
};

/// The kernels of one term in one target.
template <class T>
struct DifferenceKernels {
  using Function = void(const SumTask<T>&);
  Function* real;          ///< real input and real template
  Function* complexInput;  ///< complex input and any template
  Function* realComplex;   ///< real input and complex template
  /// Replaces `best` by the first position of those with the least score below that of `best`. Real elements.
  void (*searchRow)(const SearchTask<T>&, LeastDifference<T>& best);
};

/// Place of the kernels of a term.
constexpr std::size_t differenceIndex(Term term) {
  return static_cast<std::size_t>(term) - static_cast<std::size_t>(Term::absoluteDifference);
}

/// The kernels of the target in use, in the order of `Term` without products.
template <class T>
const std::array<DifferenceKernels<T>, 3>& differenceKernels();

}  // namespace BP::lanes
