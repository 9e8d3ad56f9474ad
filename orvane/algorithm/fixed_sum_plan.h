#pragma once

#include <cstdint>
#include <span>

#include "orvane/lanes/fixed_dots.h"
#include "orvane/lanes/fixed_sums.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// How a sum of fixed-point products is computed, the fastest way first. The results are the same on each.
enum class FixedSumPath {
  exact,            ///< no product and no sum can round or overflow: integer products and sums, one cast at the end
  roundedProducts,  ///< products are rounded in vector lanes; sums cannot round or overflow
  checkedSums,      ///< each sum is cut to the accumulator's range, tap by tap, in vector lanes
  generalCasts,     ///< every cast takes place, tap by tap, in vector lanes
  singleValues,     ///< one operation on single values after the other
};

/// A type and the modes of casts into it.
struct FixedFormat {
  KarnDSPFixpt::FixptType type;
  fxpModeRounding_tag rounding = fxpRoundFloor;
  fxpModeOverflow_tag overflow = fxpOverflowWrap;

  bool operator==(const FixedFormat&) const = default;
};
/// The format of an array.
inline FixedFormat formatOf(const KarnDSPFixpt::Fixpt& array) {
  const auto& attributes = array.attributes();
  return {attributes.type(), attributes.roundingMode(), attributes.overflowMode()};
}

/// The formats that a sum of products of real values meets.
struct FixedSumFormats {
  KarnDSPFixpt::FixptType input;
  KarnDSPFixpt::FixptType filter;
  FixedFormat product;
  FixedFormat accumulator;
  FixedFormat output;

  bool operator==(const FixedSumFormats&) const = default;
};

/// What lanes need for a sum.
struct FixedSumPlan {
  FixedSumPath path = FixedSumPath::singleValues;
  int laneBits = 0;  ///< 32 or 64; 0 for single values
  lanes::FixedForm form = lanes::FixedForm::any;
  int tapShift = 0;  ///< bits appended to each tap; if negative, bits dropped, all of them 0
  int append = 0;    ///< see `FixedSumTask`
  int ownAppend = 0;
  int otherAppend = 0;
  lanes::FixedCast product;
  lanes::FixedCast sum;
  lanes::DotOperands dots = lanes::DotOperands::none;  ///< for exact sums of narrow operands (see `FixedDotTask`)
  bool dotsInTwo = false;  ///< sums of 64 bits: taps are 256 * high + low, and there are two sums of 32 bits
  int bias = 0;            ///< added to each value of a line, so that it fits the operands
  int outputLaneBits = 0;  ///< of the last cast
  int outputAppend = 0;    ///< bits appended to a sum before the cast into the output
  lanes::FixedCast output;
};

/// Chooses the way of a sum, from the formats and the taps alone, which are in the order of the sum.
///
/// Interval arithmetic follows the products and the running sums of all inputs that the type has. A bound that is just
/// reached still counts as safe. Lanes of 32 bits are chosen where all exact values fit, else lanes of 64 bits.
/// Operands of more than 32 bits, taps beyond 2^16 and values beyond the lanes leave single values.
ORVANE_API FixedSumPlan planFixedSum(const FixedSumFormats& formats, std::span<const std::int64_t> taps);

/// What a path means, in one sentence.
ORVANE_API const char* describe(FixedSumPath path);

}  // namespace BP
