#pragma once

#include <cstddef>
#include <vector>

#include "tool/array.h"

namespace BP::tool {

/// An array as numbers that can be shown as grey or colour.
struct Levels {
  std::vector<double> values;  ///< in the order of the elements; the magnitude of complex ones
  double min = 0;              ///< of the finite values
  double max = 0;              ///< of the finite values
  std::size_t notFinite = 0;   ///< the number of other values

  /// (value - min) / (max - min), or 0 if all values are equal; 1 for a value that is not finite.
  double fraction(double value) const;
};

/// The levels of an array of type bool, int32, float32, float64, complex64 or complex128.
Levels levelsOf(const Array& array);

}  // namespace BP::tool
