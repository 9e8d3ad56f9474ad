#include "tool/quantised_kernel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <stdexcept>

#include "orvane/filters/fixed_array.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

void checkType(const filters::FixedType& type, const std::string& key) {
  constexpr int maxBits = 32, maxFraction = 400;
  if (type.word <= maxBits && std::abs(type.fraction) <= maxFraction) return;
  throw std::runtime_error("--fixed: " + key + ": " + filters::toText(type) +
                           "; allowed here are word lengths of 1 to 32 and fraction lengths of -400 to 400");
}

/// a + b * c; a result of more than 64 bits is refused.
std::int64_t sum(std::int64_t a, std::int64_t b, std::int64_t c) {
  std::int64_t result;
  if (!__builtin_mul_overflow(b, c, &result) && !__builtin_add_overflow(a, result, &result)) return result;
  throw std::runtime_error("--fixed: sums of products need more than 64 bits; shorter types are needed");
}

struct Range {
  std::int64_t min = 0;
  std::int64_t max = 0;
};

/// The codes of a type of up to 32 bits; symmetric saturation leaves the least code out.
Range codesOf(const filters::FixedType& type, bool isSymmetric) {
  const std::int64_t half = std::int64_t{1} << (type.word - 1);
  return type.isSigned ? Range{isSymmetric ? 1 - half : -half, half - 1} : Range{0, 2 * half - 1};
}

/// The narrowest type with all of `range`; it is signed if the range has negative values.
filters::FixedType narrowest(const Range& range, int fraction, bool isSymmetric) {
  filters::FixedType type{1, fraction, range.min < 0};
  const std::int64_t min = isSymmetric ? range.min - 1 : range.min;
  const auto fits = [&] {
    const int bits = type.isSigned ? type.word - 1 : type.word;
    return range.max >> bits == 0 && (!type.isSigned || min >> bits >= -1);
  };
  while (!fits()) ++type.word;
  return type;
}

/// The range of the sums of some or all products of codes with inputs.
Range rangeOfSums(const std::vector<std::int64_t>& codes, const Range& input) {
  Range sums;
  // The input\'s range holds 0, so one of its ends lowers the sum and the other raises it.
  for (const std::int64_t code : codes) {
    sums.min = sum(sums.min, code, code < 0 ? input.max : input.min);
    sums.max = sum(sums.max, code, code < 0 ? input.min : input.max);
  }
  return sums;
}

/// As in "units of 1/256".
std::string unitText(int fraction) {
  std::string power = numberText(std::ldexp(1.0, std::abs(fraction)));
  if (fraction <= 0) return power;
  return "1/" + power;
}

std::string matrixText(const FilterKernel& kernel, const std::vector<std::int64_t>& codes) {
  std::size_t width = 0;
  for (const std::int64_t code : codes) width = std::max(width, std::to_string(code).size());
  std::string text;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const std::string code = std::to_string(codes[i]);
    const bool endsRow = (i + 1) % static_cast<std::size_t>(kernel.width) == 0;
    text += std::string(width - code.size(), ' ') + code + (endsRow ? "\n" : ", ");
  }
  return text;
}

}  // namespace

QuantisedKernel quantiseKernel(const FilterKernel& kernel, const KernelTypes& types) {
  checkType(types.input, "input");
  checkType(types.filter, "filter");
  filters::FixedStatistics statistics;
  const auto fixed = filters::quantise(filters::ArrayView(kernel.elements, {kernel.width, kernel.height}), types.filter,
                                       types.modes, &statistics);
  const filters::Array<double> values = filters::toDouble(fixed);
  QuantisedKernel result;
  result.overflows = statistics.overflows;
  for (std::size_t i = 0; i < values.size(); ++i) {
    result.codes.push_back(static_cast<std::int64_t>(std::ldexp(values[i], types.filter.fraction)));
    result.maxError = std::max(result.maxError, std::fabs(values[i] - kernel.elements[i]));
    result.sumBefore += kernel.elements[i];
    result.sumOfCodes += result.codes.back();
  }
  if (!std::isfinite(std::ldexp(std::fabs(result.sumBefore) + result.maxError, types.filter.fraction))) {
    throw std::runtime_error("--fixed: the kernel's sum is beyond 1.8e308 units of the filter's last bit");
  }
  const int fraction = types.filter.fraction + types.input.fraction;
  const bool isSymmetric = types.modes.overflow == filters::Overflow::symmetric;
  const Range sums = rangeOfSums(result.codes, codesOf(types.input, isSymmetric));
  result.minSum = std::ldexp(static_cast<double>(sums.min), -fraction);
  result.maxSum = std::ldexp(static_cast<double>(sums.max), -fraction);
  result.accumulator = narrowest(sums, fraction, isSymmetric);
  return result;
}

std::string quantisedKernelText(const FilterKernel& kernel, const KernelTypes& types,
                                const QuantisedKernel& quantised) {
  const int fraction = types.filter.fraction;
  const double gain = std::ldexp(static_cast<double>(quantised.sumOfCodes), -fraction);
  const std::string error = quantised.maxError == 0
                                ? "none"
                                : "up to " + roundedText(quantised.maxError, 2) + ", " +
                                      roundedText(std::ldexp(quantised.maxError, fraction), 2) + " units";
  const std::string lines[] = {filters::toText(types.filter) + ", " + std::to_string(kernel.width) + "x" +
                                   std::to_string(kernel.height) + ", in units of " + unitText(fraction) + "; " +
                                   std::to_string(quantised.overflows) + " overflows",
                               error,
                               numberText(gain) + ", " + std::to_string(quantised.sumOfCodes) + " units; before " +
                                   roundedText(quantised.sumBefore, 6),
                               numberText(quantised.minSum) + " to " + numberText(quantised.maxSum) +
                                   ", whatever the input in " + filters::toText(types.input),
                               filters::toText(quantised.accumulator) + " has them all"};
  std::string text = matrixText(kernel, quantised.codes);
  const char* const names[] = {"filter       ", "error        ", "gain         ", "sums         ", "accumulator  "};
  for (std::size_t i = 0; i < std::size(lines); ++i) text += names[i] + lines[i] + "\n";
  return text;
}

JsonObject quantisedKernelJson(const KernelTypes& types, const QuantisedKernel& quantised) {
  const double gain = std::ldexp(static_cast<double>(quantised.sumOfCodes), -types.filter.fraction);
  JsonObject json;
  json.add("filter", filters::toText(types.filter)).add("input", filters::toText(types.input));
  json.add("codes", quantised.codes).add("overflows", quantised.overflows).add("maxError", quantised.maxError);
  json.add("gain", gain).add("minSum", quantised.minSum).add("maxSum", quantised.maxSum);
  return json.add("accumulator", filters::toText(quantised.accumulator));
}

}  // namespace BP::tool
