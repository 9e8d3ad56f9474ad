#pragma once

#include <memory>
#include <string>

#include "orvane/platform/karn_fixpt_3.h"

/// Functions that describe and make fixed-point values and check their arguments. The constructors check nothing.
namespace KarnDSPFixpt {

/// The arguments of `makeAttributes`, for designated initialisers:
/// `{.value = {16, 12}, .product = {32, 24}, .accumulator = {40, 24}, .overflow = fxpOverflowSaturate}`.
/// With the default types, products are exact, and so is a sum of 256 products.
struct FixptDescription {
  FixptType value = {16, 0, true};
  FixptType product = {32, 0, true};
  FixptType accumulator = {40, 0, true};
  fxpModeOverflow_tag overflow = fxpOverflowSaturate;
  fxpModeRounding_tag rounding = fxpRoundNearest;
  bool isComplex = false;
  std::string valueLabel = "value";
  std::string productLabel = "product";
  std::string accumulatorLabel = "accumulator";
  KarnSimCommon::overrideDType override = KarnSimCommon::overrideNone;
  brekk::BrekkAdaptorTolk* adaptor = nullptr;
};

/// Makes a handle from `description`. Throws std::invalid_argument for a word length outside 1 to 128, for types of
/// different sign, and for an unknown mode. The text names the field and the allowed values.
ORVANE_API DSPDataAttributesHandle makeAttributes(const FixptDescription& description);

/// An array of `count` elements, all 0. Throws std::invalid_argument for a negative count.
ORVANE_API std::unique_ptr<Fixpt> makeFixpt(const DSPDataAttributesHandle& attributes, int count = 1);

}  // namespace KarnDSPFixpt
