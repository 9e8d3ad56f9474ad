#pragma once

#include <cstddef>

// What the sources of sums and the kernels of each target share.

namespace BP::lanes {

/// Greatest number of output rows whose taps are packed side by side; kernels take so many rows at once, or fewer.
constexpr int maxPackedRows = 8;

/// One run as kernels see it. Extents count input values of type `T`, whatever they mean: a complex element is two.
template <class T>
struct SumTask {
  const T* taps = nullptr;  ///< for each plane, input line and column: those of `packedRows` output rows
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
  T filterNorm = 0;
  const T* const* means = nullptr;                           ///< for each output row those of its windows, if centred
  void (*divide)(T* sum, T energy, T filterNorm) = nullptr;  ///< normalises one complex sum
};

/// The kernels of one target.
template <class T>
struct SumKernels {
  using Function = void(const SumTask<T>&);
  Function* realReal;  ///< also complexReal, whose parts are summed alike
  Function* realComplex;
  Function* complexComplex;
  Function* normalised;  ///< realReal divided by norms, and the same of the others
  Function* complexRealNormalised;
  Function* realComplexNormalised;
  Function* complexComplexNormalised;
  Function* centred;  ///< normalised, of windows less their means
};

/// The kernels of the target in use.
template <class T>
const SumKernels<T>& sumKernels();

}  // namespace BP::lanes
