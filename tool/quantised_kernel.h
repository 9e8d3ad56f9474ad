#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/filter_settings.h"
#include "tool/json.h"
#include "tool/kernel.h"

namespace BP::tool {

/// A kernel in fixed point, and the range of its sums.
///
/// Element i is codes[i] * 2^-f with the fraction length f of the filter's type. A sum of products is a whole number
/// times 2^-(f + g) with the fraction length g of the input's type.
struct QuantisedKernel {
  std::vector<std::int64_t> codes;
  std::uint64_t overflows = 0;  ///< elements beyond the range of the filter's type
  double maxError = 0;          ///< the largest |element after - element before|
  double sumBefore = 0;
  std::int64_t sumOfCodes = 0;  ///< the gain for a constant input, in units of the filter's last bit
  /// The range of all sums of some or all products, in any order, for any input of the input's type.
  double minSum = 0;
  double maxSum = 0;
  filters::FixedType accumulator;  ///< the narrowest type with fraction length f + g that has all these sums
};

/// Casts a kernel into the filter's type. The sums lie between the sum of all negative and the sum of all positive
/// products h * u, for elements h and the extreme values u of the input's type.
///
/// Throws `std::runtime_error` for types of more than 32 bits, or of a fraction beyond -400 to 400, for sums that need
/// more than 64 bits, and for kernels whose sum, in units of the filter's last bit, is beyond the range of `double`.
QuantisedKernel quantiseKernel(const FilterKernel& kernel, const KernelTypes& types);

/// The kernel's codes row by row, in the form of a CSV file, and below them the other numbers with their units.
std::string quantisedKernelText(const FilterKernel& kernel, const KernelTypes& types, const QuantisedKernel& quantised);

/// The codes and these numbers as a JSON object.
JsonObject quantisedKernelJson(const KernelTypes& types, const QuantisedKernel& quantised);

}  // namespace BP::tool
