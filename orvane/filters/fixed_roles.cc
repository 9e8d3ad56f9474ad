#include "orvane/filters/fixed_roles.h"

#include <algorithm>
#include <initializer_list>
#include <string>

#include "orvane/filters/checks.h"

namespace BP::filters::detail {

namespace {

/// Two types whose values are multiplied with each other.
struct Factors {
  std::string_view name;
  const FixedType& a;
  const FixedType& b;
  int moreBits = 0;  ///< 1 for a sum of two such products
};

/// The narrowest type that holds each of the products exactly.
FixedType exactProduct(std::initializer_list<Factors> all) {
  FixedType product;
  product.isSigned = false;
  int whole = -2 * static_cast<int>(KarnDSPFixpt::maxWord) * maxFraction;
  product.fraction = whole;
  for (const auto& [name, a, b, moreBits] : all) {
    whole = std::max(whole, a.word - a.fraction + b.word - b.fraction + moreBits);
    product.fraction = std::max(product.fraction, a.fraction + b.fraction);
    product.isSigned = product.isSigned || a.isSigned || b.isSigned;
  }
  product.word = whole + product.fraction;
  return product;
}

/// The same. Throws `std::invalid_argument` if there is no such type.
FixedType checkedProduct(std::initializer_list<Factors> all, const std::string& wayOut) {
  const FixedType product = exactProduct(all);
  if (product.word <= static_cast<int>(KarnDSPFixpt::maxWord)) return product;
  std::string names;
  for (const Factors& factors : all) {
    names += (names.empty() ? "" : ", ") + std::string(factors.name) + " (" + toText(factors.a) + " and " +
             toText(factors.b) + ")";
  }
  refuse("product", std::to_string(product.word) + " bits for exact products of " + names,
         "at most " + std::to_string(KarnDSPFixpt::maxWord) + " are allowed: " + wayOut);
}

bool isSigned(const Factors& factors) { return factors.a.isSigned || factors.b.isSigned; }

/// The given type of products, or the type that holds them exactly. A product is signed if one of its factors is, so a
/// given type must have this sign. The first of `all` decides it.
FixedType productOf(const std::optional<FixedType>& given, std::initializer_list<Factors> all) {
  if (!given) return checkedProduct(all, "a product type must be given");
  checkedContainerBits("product", *given);
  const Factors& first = *all.begin();
  if (given->isSigned != isSigned(first)) {
    refuse("product", toText(*given),
           (isSigned(first) ? "it must be signed, as products of " : "it must be unsigned, as products of ") +
               std::string(first.name) + " are");
  }
  return *given;
}

FixedType checked(const char* argument, const FixedType& type) {
  checkedContainerBits(argument, type);
  return type;
}

/// The role of an array that is never multiplied.
RoleDescription plainRole(const char* label, const FixedType& type, bool isComplex = false) {
  return {label, checked(label, type), type, type, isComplex};
}

/// The narrowest type that holds the mean of any two values of `input`, and their sum.
FixedType exactMean(const FixedType& input) {
  const FixedType mean{input.word + 2, input.fraction + 1, input.isSigned};
  if (mean.word <= static_cast<int>(KarnDSPFixpt::maxWord)) return mean;
  refuse("accumulator", std::to_string(mean.word) + " bits for the exact mean of two values of " + toText(input),
         "at most " + std::to_string(KarnDSPFixpt::maxWord) + " are allowed: its type must be given");
}

}  // namespace

FixedRoles::FixedRoles(const FixedTypes& types, const FixedType& filterType, bool filterIsComplex, bool isNormalised) {
  const bool isComplex = types.inputIsComplex || filterIsComplex;
  input = {"input", checked("input", types.input), {}, {}, types.inputIsComplex, "product"};
  filter = {"filter", checked("filter", filterType), {}, {}, filterIsComplex};
  accumulator = {"accumulator", checked("accumulator", types.accumulator), {}, {}, isComplex};
  output = {"output", checked("output", types.output), {}, {}, isComplex, "second product"};
  accumulator.product = accumulator.value;  // an accumulator is never multiplied
  for (RoleDescription* role : {&input, &filter, &accumulator, &output}) role->sum = accumulator.value;

  const Factors taps{"input and filter", input.value, filter.value};
  const Factors squares{"input and input", input.value, input.value, types.inputIsComplex ? 1 : 0};
  const std::string narrower = "narrower types are needed";
  input.product = isNormalised ? productOf(types.product, {taps, squares}) : productOf(types.product, {taps});
  filter.product =
      checkedProduct({{"filter and filter", filter.value, filter.value, filterIsComplex ? 1 : 0}}, narrower);
  // The intermediate array of a separable filter and the products of a pad value have the output's type.
  output.product = checkedProduct(
      {{"output and filter", output.value, filter.value}, {"output and input", output.value, input.value}}, narrower);
  if (isNormalised != types.sqrt.has_value()) {
    refuse("sqrt", types.sqrt ? toText(*types.sqrt) : "no type",
           isNormalised ? "normalise 1 (energy) needs one" : "only normalise 1 (energy) takes one");
  }
  if (!isNormalised) return;
  sqrt = {"sqrt", checked("sqrt", *types.sqrt), {}, accumulator.value, false};
  sqrt.product = checkedProduct({{"sqrt and sqrt", sqrt.value, sqrt.value}}, narrower);
}

FixedMedianRoles::FixedMedianRoles(const FixedMedianTypes& types)
    : input(plainRole("input", types.input)),
      accumulator(plainRole("accumulator", types.accumulator ? *types.accumulator : exactMean(types.input))),
      output(plainRole("output", types.output.value_or(types.input))) {}

FixedMatchRoles::FixedMatchRoles(const FixedMatchTypes& types, const FixedType& patternType, bool patternIsComplex,
                                 AlgorithmModeEnum metric)
    : image(plainRole("input", types.input, types.inputIsComplex)),
      pattern(plainRole("template", patternType, patternIsComplex)),
      accumulator(plainRole("accumulator", types.accumulator, types.inputIsComplex || patternIsComplex)),
      output(plainRole("output", types.output, accumulator.isComplex)) {
  if (metric == AlgorithmModeConvolution) {
    image.productLabel = "product";
    image.product = productOf(types.product, {{"input and template", image.value, pattern.value}});
    image.sum = accumulator.value;
  } else if (metric == AlgorithmModeSSD) {
    if (!types.accumulator.isSigned) {
      refuse("accumulator", toText(types.accumulator),
             "it must be signed, as metric 1 (ssd) squares signed differences");
    }
    accumulator.product = productOf(types.product, {{"differences", accumulator.value, accumulator.value}});
  } else if (types.product) {
    refuse("product", toText(*types.product), "only metrics 1 (ssd) and 3 (product) take one");
  }
}

}  // namespace BP::filters::detail
