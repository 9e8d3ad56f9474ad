#pragma once

#include <array>

#include "orvane/lanes/sum_kernels.h"
#include "orvane/lanes/sums.h"

// What the sources of differences and the kernels of each target share.

namespace BP::lanes {

/// The kernels of one term in one target.
template <class T>
struct DifferenceKernels {
  using Function = void(const SumTask<T>&);
  Function* real;          ///< real input and real template
  Function* complexInput;  ///< complex input and any template
  Function* realComplex;   ///< real input and complex template
};

/// The kernels of the target in use, in the order of `Term` without products.
template <class T>
const std::array<DifferenceKernels<T>, 3>& differenceKernels();

}  // namespace BP::lanes
