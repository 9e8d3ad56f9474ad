#pragma once

#include <complex>
#include <concepts>
#include <cstdint>
#include <type_traits>

#include "orvane/core/stored.h"
#include "orvane/filters/array.h"

/// Which element types filters take, and the types in which they compute.
///
///     input                              filter                       sums and output
///     float, std::complex<float>         float, std::complex<float>   the same, complex if either is
///     double, std::complex<double>       double, std::complex<double> the same, complex if either is
///     integers of 8 and 16 bits          any of these                 those of the filter
///     integers of 32 bits                double, std::complex<double> those of the filter
///
/// Integers are converted exactly, line by line as they are read; no converted copy of an array is made. Outputs can be
/// rounded to integers on request.
namespace BP::filters {

/// The type of the parts of a floating-point element, real or complex.
template <class T>
using RealOf = decltype(std::real(T()));

/// Integers of 8, 16 and 32 bits, signed or unsigned.
template <class T>
concept StoredInteger = std::integral<T> && !std::same_as<T, bool> && sizeof(T) <= 4;

/// The element type of an `Array` or `ArrayView`.
template <class A>
using ElementOf = std::remove_const_t<typename A::element_type>;

/// An array of other elements with the same values, such as a template of `float` cut out of a picture of bytes. Values
/// that T does not have are rounded to nearest.
template <std::floating_point T, class A>
Array<T> converted(const A& array) {
  const auto from = array.view();
  Array<T> to(from.extents());
  std::size_t n = 0;
  const std::int64_t width = from.extents().rank() == 0 ? 0 : from.extents()[0];
  from.layout().forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t) {
    for (std::int64_t i = 0; i < width; ++i) to[n++] = static_cast<T>(from.data()[first + i]);
  });
  return to;
}

namespace detail {

template <class T>
inline constexpr bool isFilterElement =
    std::is_same_v<T, float> || std::is_same_v<T, double> || std::is_same_v<T, std::complex<float>> ||
    std::is_same_v<T, std::complex<double>>;

/// The types of a filter with inputs of UT and taps of HT. Refuses others at compile time, and says what to do.
template <class UT, class HT>
struct FilterElements {
  static_assert(
      isFilterElement<HT>,
      "orvane: elements of filters and templates are float, double or their complex types; converted<float>() "
      "makes such an array of integers");
  static_assert(
      !std::is_same_v<UT, bool>,
      "orvane: bool inputs have no sums; use converted<float>(), or Median and TemplateMatcher, which take bool");
  static_assert(
      !std::is_integral_v<UT> || sizeof(UT) <= 4,
      "orvane: double does not hold all integers of 64 bits; converted<double>() rounds them, if that will do");
  static_assert(!(StoredInteger<UT> && sizeof(UT) == 4 && std::is_same_v<RealOf<HT>, float>),
                "orvane: float does not hold all integers of 32 bits; give the filter elements of double");
  static_assert(std::is_integral_v<UT> || isFilterElement<UT>,
                "orvane: elements of inputs are float, double, their complex types, or integers of 8 to 32 bits");
  static_assert(std::is_integral_v<UT> || !isFilterElement<UT> || std::is_same_v<RealOf<UT>, RealOf<HT>>,
                "orvane: input and filter differ in precision; convert one, as by converted<double>()");

  /// In which inputs are computed.
  using Computed = std::conditional_t<std::is_integral_v<UT>, RealOf<HT>, UT>;
  using Output = std::conditional_t<std::is_same_v<HT, Computed>, Computed, std::complex<RealOf<HT>>>;
};

}  // namespace detail

}  // namespace BP::filters
