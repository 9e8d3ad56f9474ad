#pragma once

#include <complex>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/array.h"
#include "tool/image.h"

namespace BP::tool {

/// An element of any type without rounding: `long double` represents every whole number of 64 bits and every `double`.
using Element = std::complex<long double>;

/// The differences between the elements a of an array and the elements b of another array of the same extents.
///
/// Two elements are equal if their values are: +0 and -0 are equal, a NaN equals another NaN, and the element type does
/// not matter. The error of a pair is |b - a|; it is infinite if just one of the two is NaN, or if infinities differ.
struct Comparison {
  std::vector<std::int64_t> extents;
  ElementType firstType{}, secondType{};
  std::uint64_t elements = 0;
  std::uint64_t differentBits = 0;    ///< pairs of different bits; 0 if the element types differ
  std::uint64_t differentValues = 0;  ///< pairs that are not equal
  std::uint64_t infiniteErrors = 0;   ///< pairs whose error is infinite
  long double maxError = 0;
  std::vector<std::int64_t> position;  ///< of the first pair with the largest error, dimension 0 first
  Element before, after;               ///< a and b there
  Element mean;                        ///< of b - a, over the pairs with a finite error
  long double rms = 0;                 ///< the root of the mean of |b - a|^2, over the same pairs

  bool hasSameTypes() const { return firstType == secondType; }
};

/// Compares two arrays element by element. Throws `std::runtime_error` for extents that differ, and for empty arrays.
Comparison compare(const Array& first, const Array& second);

/// The comparison as a JSON object, with the same peak.
std::string comparisonJson(const Comparison& comparison, const std::optional<double>& peak);

/// A picture of the differences: the first array in dark grey, and on it a heat map of the distances where there are
/// any, the greatest brightest; of the samples of a pixel the greatest counts. Throws `std::runtime_error` for arrays
/// of other extents than width and height, or channels, width and height.
Image comparisonPicture(const Array& first, const Array& second);

/// The comparison as text, a line for each number. With a peak there is a line for the peak signal-to-noise ratio,
/// 20 log10(peak / rms).
std::string comparisonText(const Comparison& comparison, const std::optional<double>& peak);

}  // namespace BP::tool
