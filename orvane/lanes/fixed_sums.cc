#include "orvane/lanes/fixed_sums.h"

#include <algorithm>

namespace BP::lanes {

void FixedCounts::add(const FixedCounts& other) {
  casts += other.casts;
  overflows += other.overflows;
  lossy += other.lossy;
  least = std::min(least, other.least);
  greatest = std::max(greatest, other.greatest);
}

template <class T>
std::uint64_t countedProducts(const FixedSumTask<T>& task, int row) {
  const std::ptrdiff_t columns = task.columns, length = task.width + columns - 1, most = std::min(columns, task.width);
  if (task.counted == nullptr) return std::uint64_t(columns * task.filterRows) * std::uint64_t(task.width);
  std::uint64_t count = 0;
  for (int j = 0; j < task.filterRows; ++j) {
    const T* const counted = task.counted[row + j];
    for (std::ptrdiff_t k = 0; k < length; ++k) {  // as many taps read element k as there are windows that it lies in
      if (counted[k] != 0) count += std::uint64_t(std::min({k + 1, length - k, most}));
    }
  }
  return count;
}

template <class T>
void countCasts(const FixedSumTask<T>& task, FixedSumCounts& counts) {
  for (int r = 0; r < task.rows; ++r) {
    counts.product.casts += countedProducts(task, r);
    counts.sum.casts += std::uint64_t(task.columns) * std::uint64_t(task.filterRows) * std::uint64_t(task.width);
  }
}

template std::uint64_t countedProducts(const FixedSumTask<std::int32_t>&, int);
template std::uint64_t countedProducts(const FixedSumTask<std::int64_t>&, int);
template void countCasts(const FixedSumTask<std::int32_t>&, FixedSumCounts&);
template void countCasts(const FixedSumTask<std::int64_t>&, FixedSumCounts&);

}  // namespace BP::lanes
