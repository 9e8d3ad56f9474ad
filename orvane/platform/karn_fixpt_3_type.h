#pragma once

#include <string>
#include <string_view>

#include "orvane/platform/export.h"

/// The data types of fixed-point values, the modes of their casts, and the texts for both.
///
/// A value is an integer of `word` bits, in two's complement if it is signed, times 2^-fraction.

/// How a cast treats a value outside the range of its type.
enum fxpModeOverflow_tag : int {
  fxpOverflowWrap = 0,       ///< it keeps the low bits
  fxpOverflowSaturate = 1,   ///< it gives the nearest end of the range
  fxpOverflowSymmetric = 2,  ///< it saturates to a range without the least value of a signed type
  fxpOverflowZero = 3,       ///< it gives 0
};

/// How a cast rounds a value that lies between two multiples of 2^-fraction.
enum fxpModeRounding_tag : int {
  fxpRoundCeiling = 0,     ///< up
  fxpRoundConvergent = 1,  ///< to nearest, ties to even
  fxpRoundFloor = 2,       ///< down
  fxpRoundNearest = 3,     ///< to nearest, ties up
  fxpRoundRound = 4,       ///< to nearest, ties away from zero
  fxpRoundZero = 5,        ///< towards zero
};

namespace KarnSimCommon {

/// Whether elements are floating-point numbers instead of fixed-point ones.
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

/// Reads a type from a text such as "u8.0" or "s16.12" (signed, 16 bits, 12 of them fraction). A fraction length may be
/// negative, as in "s16.-4". Throws std::invalid_argument with the allowed form.
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
