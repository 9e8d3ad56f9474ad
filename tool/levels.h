#pragma once

#include <cstddef>
#include <vector>

#include "tool/array.h"

namespace BP::tool {

/// An array as numbers that can be shown as grey or colour.
struct Levels {
  std::vector<double> values;  ///< in the order of the elements; the magnitude of complex ones
  double least = 0;            ///< of the finite values
  double greatest = 0;
  std::size_t notFinite = 0;

  /// The place of a value between the least (0) and the greatest (1). A value that is not finite gives 1. If all are
  /// equal, finite ones give 0.
  double place(double value) const;
};

/// The levels of an array of type bool, int32, float32, float64, complex64 or complex128.
Levels levelsOf(const Array& array);

}  // namespace BP::tool
