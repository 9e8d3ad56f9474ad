#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/filter_settings.h"
#include "tool/kernel.h"

namespace BP::tool {

/// What becomes of a kernel in fixed point, and what its sums need.
///
/// Element i is codes[i] times 2^-fraction of the filter's type, a sum of products a whole number times 2^-(that
/// fraction + the input's).
struct QuantisedKernel {
  std::vector<std::int64_t> codes;
  std::uint64_t overflows = 0;  ///< elements beyond the range of the filter's type
  double greatestError = 0;     ///< the greatest |element after - element before|
  double sumBefore = 0;
  std::int64_t sumOfCodes = 0;  ///< the gain for a constant input, in units of the filter's last bit
  /// The range of all sums of some or all products, in any order, for any input of the input's type.
  double leastSum = 0;
  double greatestSum = 0;
  filters::FixedType accumulator;  ///< the narrowest type of that fraction with all these sums
};

/// Casts a kernel into the filter's type. With u the input's extreme values, sums lie between that of the negative and
/// that of the positive ones of the products h * u.
///
/// Throws `std::runtime_error` for types of more than 32 bits, or of a fraction beyond -400 to 400, for sums that need
/// more than 64 bits, and for kernels whose sum, in units of the filter's last bit, is beyond the range of `double`.
QuantisedKernel quantiseKernel(const Kernel& kernel, const KernelTypes& types);

/// The kernel's codes row by row, as a CSV file takes them too, and below them the numbers above with their units.
std::string quantisedKernelText(const Kernel& kernel, const KernelTypes& types, const QuantisedKernel& quantised);

}  // namespace BP::tool
