#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/lanes/fixed_sums.h"

namespace BP::lanes {

/// Casts of a row of integers T, `int32_t` or `int64_t`, into stored values of a type.
template <class T>
struct FixedCastTask {
  int append = 0;  ///< bits appended before the cast
  FixedCast cast;
  const T* values = nullptr;  ///< with slack after them (see `FixedSumTask`)
  std::ptrdiff_t count = 0;
  void* to = nullptr;  ///< of any alignment
  int bytes = 1;       ///< of a stored value: 1, 2, 4 or 8
  bool counts = true;  ///< whether casts are counted
  bool ranges = true;  ///< whether, beside that, least and greatest values are looked for
};

/// Casts and stores. Adds the counts of the casts to `results`, and number and range of the values before them to
/// `values`.
template <class T>
void castFixed(const FixedCastTask<T>& task, FixedCounts& values, FixedCounts& results);

}  // namespace BP::lanes
