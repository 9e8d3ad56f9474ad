#pragma once

#include <complex>

#include "orvane/platform/karn_fixpt_3.h"

/// The one place where plain and fixed-point elements differ.
///
/// A plain array is a row of values; a fixed-point array is one object with a cursor. Code that reaches elements
/// through these functions is written once for both. A reference to a fixed-point element is the array itself with its
/// cursor on the element, good until the cursor moves: never hold two elements of one array. Every sum and product
/// rounds in the element type itself, one operation at a time.
namespace BP {

using KarnDSPFixpt::Fixpt;

/// Element `i` of an array; for fixed point the cursor goes there (component 2i of a complex array).
template <class T>
inline T& elementAt(T* data, int i) {
  return data[i];
}
inline Fixpt& elementAt(Fixpt* data, int i) { return (*data)[i]; }

/// x := 0, in both parts of a complex element.
template <class T>
inline void putZero(T& x) {
  x = T(0);
}
inline void putZero(Fixpt& x) { x = 0; }

/// to := from; fixed point is cast into the type of `to`, a real value into a complex element has imaginary part 0.
template <class To, class From>
inline void assign(To& to, const From& from) {
  to = from;
}

/// a > b; complex values compare by their squared magnitudes, in their own precision and without a root.
template <class T>
inline bool isGreater(const T& a, const T& b) {
  return a > b;
}
template <class T>
inline bool isGreater(const std::complex<T>& a, const std::complex<T>& b) {
  return a.real() * a.real() + a.imag() * a.imag() > b.real() * b.real() + b.imag() * b.imag();
}

/// sum := sum + tap * h, for real elements.
template <class T>
inline void multiplyAdd(T& sum, const T& tap, const T& h) {
  sum = sum + tap * h;
}
/// A real filter scales the components of a complex tap.
template <class T>
inline void multiplyAdd(std::complex<T>& sum, const std::complex<T>& tap, const T& h) {
  sum = {tap.real() * h + sum.real(), tap.imag() * h + sum.imag()};
}
/// A real tap is multiplied in full, with imaginary part 0, so that an infinite or NaN component reaches both parts.
template <class T>
inline void multiplyAdd(std::complex<T>& sum, const T& tap, const std::complex<T>& h) {
  sum = {(tap * h.real() - h.imag() * T(0)) + sum.real(), sum.imag() + (tap * h.imag() + h.real() * T(0))};
}
template <class T>
inline void multiplyAdd(std::complex<T>& sum, const std::complex<T>& tap, const std::complex<T>& h) {
  sum = {(tap.real() * h.real() - tap.imag() * h.imag()) + sum.real(),
         sum.imag() + (tap.real() * h.imag() + h.real() * tap.imag())};
}
/// The product is cast into the tap's product type, the sum into the type of `sum`.
inline void multiplyAdd(Fixpt& sum, Fixpt& tap, Fixpt& h) { sum += tap * h; }

}  // namespace BP
