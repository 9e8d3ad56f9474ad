#pragma once

#include <memory>
#include <string>

#include "orvane/platform/karn_fixpt_3.h"

/// Checked ways to describe and make fixed-point values, for people; the constructors themselves refuse nothing.
namespace KarnDSPFixpt {

/// What `makeAttributes` is told, by designated initialisers:
/// `{.value = {16, 12}, .product = {32, 24}, .accumulator = {40, 24}, .overflow = fxpOverflowSaturate}`.
/// The defaults of product and accumulator lose nothing of the default value type in 256 sums.
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

/// The handle that `description` asks for. Throws std::invalid_argument for a word length outside 1 to 128, for types
/// of different sign, and for an unknown mode; the text names the field and what is allowed.
ORVANE_API DSPDataAttributesHandle makeAttributes(const FixptDescription& description);

/// An array of `count` elements, all 0. Throws std::invalid_argument for a negative count.
ORVANE_API std::unique_ptr<Fixpt> makeFixpt(const DSPDataAttributesHandle& attributes, int count = 1);

}  // namespace KarnDSPFixpt
