#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace BP {

/// The type in which the elements of an array lie in memory, where it is not the one in which they are computed.
///
/// Integers are converted exactly as they are read, and rounded and clipped as they are written. Only arrays whose
/// elements are computed in `float` or `double` can be stored otherwise; `float` does not hold all integers of 32 bits.
enum class Stored : int { asComputed, int8, uint8, int16, uint16, int32, uint32 };

/// Calls `visit` with a value of the C++ type of `stored`, which is not `asComputed`.
template <class VisitT>
decltype(auto) visitStored(Stored stored, VisitT&& visit) {
  switch (stored) {
    case Stored::int8: return visit(std::int8_t());
    case Stored::uint8: return visit(std::uint8_t());
    case Stored::int16: return visit(std::int16_t());
    case Stored::uint16: return visit(std::uint16_t());
    case Stored::int32: return visit(std::int32_t());
    default: return visit(std::uint32_t());
  }
}

/// The `Stored` of a C++ type.
template <class T>
constexpr Stored storedOf() {
  if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
    static_assert(sizeof(T) <= 4, "integers have 8, 16 or 32 bits");
    constexpr bool isSigned = std::is_signed_v<T>;
    if constexpr (sizeof(T) == 1) return isSigned ? Stored::int8 : Stored::uint8;
    if constexpr (sizeof(T) == 2) return isSigned ? Stored::int16 : Stored::uint16;
    return isSigned ? Stored::int32 : Stored::uint32;
  } else {
    return Stored::asComputed;
  }
}

/// Bytes of an element in memory, for elements computed in T.
template <class T>
std::size_t storedBytes(Stored stored) {
  if (stored == Stored::asComputed) return sizeof(T);
  return visitStored(stored, [](auto element) { return sizeof element; });
}

/// Element `i` of an array that begins at `data`, which has integers in place of values of T.
template <class T>
T loadStored(Stored stored, const T* data, std::ptrdiff_t i) {
  return visitStored(stored,
                     [&](auto element) { return static_cast<T>(reinterpret_cast<const decltype(element)*>(data)[i]); });
}

/// `value` as an integer: rounded to nearest, ties to even, and clipped to the range of C. NaN becomes 0. Adds 1 to
/// `clipped` if the rounded value is out of range, or NaN.
template <class C, class T>
C roundAndClip(T value, std::int64_t& clipped) {
  constexpr double least = std::numeric_limits<C>::min(), greatest = std::numeric_limits<C>::max();
  constexpr double toWhole = 0x1.8p52;  // numbers of this magnitude have no fraction, so adding it rounds
  const auto wide = static_cast<double>(value);
  const double near = wide < -0x1p33 ? -0x1p33 : wide > 0x1p33 ? 0x1p33 : wide;
  const double whole = near + toWhole - toWhole;
  const bool fits = whole >= least && whole <= greatest;
  clipped += fits ? 0 : 1;
  if (whole != whole) return 0;
  return static_cast<C>(whole < least ? least : whole > greatest ? greatest : whole);
}

/// Sets element `i` of an array that begins at `data`, which has integers in place of values of T (see `roundAndClip`).
template <class T>
void putStored(Stored stored, T* data, std::ptrdiff_t i, T value, std::int64_t& clipped) {
  visitStored(stored, [&](auto element) {
    using C = decltype(element);
    reinterpret_cast<C*>(data)[i] = roundAndClip<C>(value, clipped);
  });
}

}  // namespace BP
