#pragma once

#include "orvane/lanes/sums.h"

namespace BP::lanes {

/// A filter along the lines and a filter across them, one after the other for each output, with the bits of two passes:
///
///   between[k][i] := sum over columns c of lines[k][i + c] * along[c],   rounded to the element's type
///   out[r][i]     := sum over rows j of between[r + j][i] * across[j]
///
/// The array between is never written. Columns are cut into strips, and of each strip only the lines that the next
/// output rows need are kept, in scratch that fits a core's own cache. Each line is filtered once, one by one from the
/// first.
template <class T>
class ORVANE_API SeparableSums {
 public:
  /// Room that a run takes: values of `T`, and pointers.
  struct Scratch {
    std::size_t values = 0;
    std::size_t pointers = 0;
  };
  /// The scratch for runs of up to `width` outputs in any number of rows.
  static Scratch scratchFor(const PackedFilter<T>& across, std::ptrdiff_t width);

  SeparableSums() = default;
  /// `along` has one plane and one row, `across` one plane and one column; the input of `across` is what `along` puts
  /// out. Filters and scratch stay the caller's. The scratch belongs to one run at a time.
  SeparableSums(const PackedFilter<T>& along, const PackedFilter<T>& across, T* values, const T** pointers);

  /// `run` is as for a filter with the rows of `across` and the columns of `along`, with one plane. A line that is null
  /// stands for a line between that need not be filtered, as it lies beyond an edge: `beyond`, as wide as the run.
  void sumProducts(const Run<T>& run, const T* beyond = nullptr) const;

 private:
  class Strip;

  const PackedFilter<T>* along = nullptr;
  const PackedFilter<T>* across = nullptr;
  T* values = nullptr;
  const T** pointers = nullptr;
};

extern template class SeparableSums<float>;
extern template class SeparableSums<double>;

}  // namespace BP::lanes
