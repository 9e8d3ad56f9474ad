#pragma once

#include <cstddef>

// What the sources of sums and the kernels of each target share.

namespace BP::lanes {

/// Greatest number of output rows whose taps are packed side by side; kernels take so many rows at once, or fewer.
constexpr int mostPackedRows = 8;

/// One run as kernels see it: extents count values of `T`, whatever they mean. Input row offsets, `width` and `step`
/// are those of the input; output rows are as wide, or twice as wide where only the filter is complex.
template <class T>
struct SumTask {
  const T* taps = nullptr;  ///< for each plane, input line and column: `packedRows` taps
  int packedRows = 1;
  int planes = 1;
  int filterRows = 1;
  int columns = 1;
  std::ptrdiff_t step = 1;  ///< from one column to the next
  const T* const* lines = nullptr;
  std::ptrdiff_t planeStride = 0;
  int rows = 1;
  std::ptrdiff_t width = 1;
  T* const* out = nullptr;
};

/// The kernels of one target.
template <class T>
struct SumKernels {
  void (*realReal)(const SumTask<T>&);  ///< also complexReal, as twice as many real columns with step 2
  void (*realComplex)(const SumTask<T>&);
  void (*complexComplex)(const SumTask<T>&);
  void (*realSquares)(const SumTask<T>&);
  void (*complexSquares)(const SumTask<T>&);
  void (*divideByNorms)(T* sums, const T* energies, T filterNorm, std::ptrdiff_t count);
};

/// The kernels of the target in use.
template <class T>
const SumKernels<T>& sumKernels();

}  // namespace BP::lanes
