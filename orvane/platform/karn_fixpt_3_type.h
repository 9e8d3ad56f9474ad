#pragma once

#include <string>
#include <string_view>

#include "orvane/platform/export.h"

/// The data types of fixed-point values, the modes of their casts, and the texts that people write for them.
///
/// A value is an integer of `word` bits, in two's complement if it is signed, times 2^-fraction.

/// What a cast does with a value that lies outside the range of its type.
enum fxpModeOverflow_tag : int {
  fxpOverflowWrap = 0,       ///< keeps the low bits
  fxpOverflowSaturate = 1,   ///< takes the nearest end of the range
  fxpOverflowSymmetric = 2,  ///< the same, in a range without the least value of a signed type
  fxpOverflowZero = 3,       ///< takes zero
};

/// Which neighbour a cast takes for a value between two multiples of 2^-fraction.
enum fxpModeRounding_tag : int {
  fxpRoundCeiling = 0,     ///< the greater one
  fxpRoundConvergent = 1,  ///< the nearest one; of two as near the even one
  fxpRoundFloor = 2,       ///< the smaller one
  fxpRoundNearest = 3,     ///< the nearest one; of two as near the greater one
  fxpRoundRound = 4,       ///< the nearest one; of two as near the one away from zero
  fxpRoundZero = 5,        ///< the one towards zero
};

namespace KarnSimCommon {

/// Whether values are kept in floating point in place of their fixed-point type.
enum overrideDType : int {
  overrideDouble = 0,  ///< elements are `double`, nothing is quantised
  overrideSingle = 1,  ///< elements are `float`, nothing is quantised
  overrideNone = 2,    ///< elements are fixed point
};

}  // namespace KarnSimCommon

namespace KarnDSPFixpt {

inline constexpr unsigned minWord = 1;
inline constexpr unsigned maxWord = 128;

/// The type of a value: `word` bits (1 to 128) times 2^-fraction. `fraction` may be negative or exceed `word`.
struct FixptType {
  unsigned word = 16;
  int fraction = 0;
  bool isSigned = true;

  bool operator==(const FixptType&) const = default;
};

/// The type that a text such as "s16.12" (signed, 16 bits, 12 of them fraction) or "u8.0" means; a negative
/// fraction length is written "s16.-4". Throws std::invalid_argument that says what is allowed.
ORVANE_API FixptType parseFixptType(std::string_view text);
/// The text that `parseFixptType` reads as `type`.
ORVANE_API std::string formatFixptType(const FixptType& type);

/// The mode called "wrap", "saturate", "symmetric" or "zero". Throws std::invalid_argument for another name.
ORVANE_API fxpModeOverflow_tag parseOverflowMode(std::string_view name);
/// The mode called "ceiling", "convergent", "floor", "nearest", "round" or "zero". Throws std::invalid_argument for
/// another name.
ORVANE_API fxpModeRounding_tag parseRoundingMode(std::string_view name);
/// The mode called "double", "single" or "none". Throws std::invalid_argument for another name.
ORVANE_API KarnSimCommon::overrideDType parseOverrideMode(std::string_view name);

/// The name of a mode; "unknown" for a number that is no mode.
ORVANE_API std::string_view modeName(fxpModeOverflow_tag mode);
ORVANE_API std::string_view modeName(fxpModeRounding_tag mode);
ORVANE_API std::string_view modeName(KarnSimCommon::overrideDType mode);

}  // namespace KarnDSPFixpt
