#pragma once

#include <cmath>
#include <complex>
#include <limits>
#include <type_traits>

#include "orvane/core/clever_ptr.h"
#include "orvane/platform/karn_fixpt_3.h"

/// Operations on elements: the one place where plain and fixed-point elements differ.
///
/// A plain array is a row of values; a fixed-point array is one object with a cursor. Code that reaches elements
/// through these functions is written once for both. A reference to a fixed-point element is the array itself with its
/// cursor on the element. It is valid until the cursor moves, so never hold two elements of one array. Every sum and
/// product rounds in the element type itself, one operation at a time.
namespace BP {

using KarnDSPFixpt::Fixpt;

/// Element `i` of an array. For fixed point this moves the cursor to it (to component 2i of a complex array).
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

/// to := from. Fixed point is cast into the type of `to`. A real value gives a complex element the imaginary part 0.
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

/// a[i] > a[j], of one array. Where only one element can be referred to at a time, `spare` holds a copy of the other.
template <class T>
inline bool isGreaterElement(T* a, int i, int j, T* /*spare*/) {
  return isGreater(a[i], a[j]);
}
inline bool isGreaterElement(Fixpt* a, int i, int j, Fixpt* spare) {
  Fixpt& first = elementAt(spare, 0);
  first = elementAt(a, i);
  return first > elementAt(a, j);
}

/// Swaps a[i] and a[j] through `spare`, which has room for two elements of the same type.
template <class T>
inline void swapElements(T* a, int i, int j, T* spare) {
  assign(elementAt(spare, 0), elementAt(a, i));
  assign(elementAt(spare, 1), elementAt(a, j));
  assign(elementAt(a, i), elementAt(spare, 1));
  assign(elementAt(a, j), elementAt(spare, 0));
}

/// lower := mean of `lower` and `upper`. Both are halved before they are added, so the sum cannot overflow.
template <class T>
inline void averageInto(T& lower, const T& upper) {
  lower = upper * T(0.5) + lower * T(0.5);
}
/// The sum is cast into the type of `lower`, and then its half is.
inline void averageInto(Fixpt& lower, const Fixpt& upper) {
  lower += upper;
  lower >>= 1;
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
/// A real tap counts as complex with imaginary part 0, so an infinite or NaN component reaches both parts.
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

/// product := a * b; two complex elements take the full complex product.
template <class T>
inline void multiply(T& product, const T& a, const T& b) {
  product = a * b;
}
template <class T>
inline void multiply(std::complex<T>& product, const std::complex<T>& a, const std::complex<T>& b) {
  product = {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + b.real() * a.imag()};
}
/// A real factor scales both parts.
template <class T>
inline void multiply(std::complex<T>& product, const std::complex<T>& a, const T& b) {
  product = {a.real() * b, a.imag() * b};
}
/// The product is cast into the product type of `a`, then into the type of `product`.
inline void multiply(Fixpt& product, Fixpt& a, Fixpt& b) { product = a * b; }

/// energy := energy + |x|^2.
template <class T>
inline void addEnergy(T& energy, const T& x) {
  energy = x * x + energy;
}
template <class T>
inline void addEnergy(std::complex<T>& energy, const T& x) {
  energy.real(energy.real() + x * x);
}
/// x times its conjugate, as a complex product.
template <class T>
inline void addEnergy(std::complex<T>& energy, const std::complex<T>& x) {
  const T a = x.real(), b = x.imag();
  energy = {energy.real() + (a * a - b * (-b)), energy.imag() + (b * a + a * (-b))};
}
inline void addEnergy(Fixpt& energy, Fixpt& x) { energy += x.norm(); }

/// root := square root of x, or of the real part of a complex x.
template <class T>
inline void setRoot(T& root, const T& x) {
  root = std::sqrt(x);
}
template <class T>
inline void setRoot(std::complex<T>& root, const std::complex<T>& x) {
  root = {std::sqrt(x.real()), T(0)};
}
inline void setRoot(Fixpt& root, Fixpt& x) { x.sqrtInto(&root); }

/// Whether x is 0, in both parts of a complex element.
template <class T>
inline bool isZero(const T& x) {
  return x == T(0);
}
inline bool isZero(Fixpt& x) { return x.isZero(); }

/// x := x / divisor.
template <class T>
inline void divideBy(T& x, const T& divisor) {
  x = x / divisor;
}
inline void divideBy(Fixpt& x, Fixpt& divisor) { x.divideInto(x, divisor); }

/// Values whose magnitude is at most this one, and divisors that are at least its inverse, can be divided part by part
/// where the divisor is real: no step of a full complex division overflows or underflows then.
template <class T>
inline constexpr T greatestDividend = std::numeric_limits<T>::max_exponent > 128 ? T(0x1p500) : T(0x1p60);

/// x := x / divisor. The library's division gives the same where the divisor is real and all is within bounds; only its
/// own way of scaling, which differs among compilers, decides beyond.
template <class T>
inline void divideBy(std::complex<T>& x, const std::complex<T>& divisor) {
  constexpr T most = greatestDividend<T>;
  const T re = x.real(), im = x.imag(), d = divisor.real();
  if (divisor.imag() == 0 && d >= 1 / most && d <= most && std::abs(re) <= most && std::abs(im) <= most) {
    x = {(re + im * T(0)) / d, (im - re * T(0)) / d};
  } else {
    x = x / divisor;
  }
}

/// The norm of a window from its energy, and the division by it: sample := sample / (root of the energy * norm of the
/// filter), 0 where that divisor is 0.
template <class T>
inline void divideByNorms(T& sample, T& energy, T& root, T& filterNorm) {
  setRoot(root, energy);
  multiply(energy, root, filterNorm);
  if (isZero(energy)) {
    putZero(sample);
  } else {
    divideBy(sample, energy);
  }
}

/// d := a - t; a real operand beside a complex one counts as complex with imaginary part 0.
template <class T>
inline void subtract(T& d, const T& a, const T& t) {
  d = a - t;
}
template <class T>
inline void subtract(std::complex<T>& d, const T& a, const std::complex<T>& t) {
  d = {a - t.real(), T(0) - t.imag()};
}
template <class T>
inline void subtract(std::complex<T>& d, const std::complex<T>& a, const T& t) {
  d = {a.real() - t, a.imag() - T(0)};
}
inline void subtract(Fixpt& d, Fixpt& a, Fixpt& t) {
  d = a;
  d -= t;
}
/// The difference of two booleans is 1 or 0.
inline void subtract(Fixpt& d, bool a, bool t) { d = static_cast<int>(a != t); }

/// d := a - t if a > t (see `isGreater`), else t - a. A difference of complex values stays complex, so it can have any
/// sign.
template <class YT, class UT, class HT>
inline void orientedDifference(YT& d, UT& a, HT& t) {
  bool aIsGreater;
  if constexpr (std::is_same_v<UT, HT>) {
    aIsGreater = isGreater(a, t);
  } else {
    aIsGreater = isGreater(YT(a), YT(t));
  }
  if (aIsGreater) {
    subtract(d, a, t);
  } else {
    subtract(d, t, a);
  }
}

/// sum := sum + d.
template <class T>
inline void add(T& sum, const T& d) {
  sum += d;
}

/// sum := d * d + sum. The square of a complex d is the complex one, without a conjugate.
template <class T>
inline void addSquare(T& sum, const T& d) {
  sum = d * d + sum;
}
template <class T>
inline void addSquare(std::complex<T>& sum, const std::complex<T>& d) {
  sum = {sum.real() + (d.real() * d.real() - d.imag() * d.imag()), sum.imag() + T(2) * d.real() * d.imag()};
}
inline void addSquare(Fixpt& sum, Fixpt& d) { sum += d * d; }

/// Sets `to` from host memory, which holds one real element, a `Fixpt` for fixed point, or for a complex element a real
/// part and, if `isComplex`, an imaginary part.
template <class T>
inline void assignFrom(T& to, const void* value, bool /*isComplex*/) {
  to = *static_cast<const T*>(value);
}
template <class T>
inline void assignFrom(std::complex<T>& to, const void* value, bool isComplex) {
  const T* parts = static_cast<const T*>(value);
  to = {parts[0], isComplex ? parts[1] : T(0)};
}
inline void assignFrom(Fixpt& to, const void* value, bool /*isComplex*/) { to = *static_cast<const Fixpt*>(value); }

/// The element that a loop adds into. A plain element is kept in a local variable until the loop ends, so no store
/// comes between two additions. Fixed point adds in its own array.
template <class T>
class RunningElement {
 public:
  explicit RunningElement(T* store) : target(store), value(*store) {}
  RunningElement(const RunningElement&) = delete;
  RunningElement& operator=(const RunningElement&) = delete;
  ~RunningElement() { *target = value; }
  T& get() { return value; }

 private:
  T* target;
  T value;
};
template <>
class RunningElement<Fixpt> {
 public:
  explicit RunningElement(Fixpt* store) : target(&elementAt(store, 0)) {}
  Fixpt& get() { return *target; }

 private:
  Fixpt* target;
};

/// One element that lives for one computation. For fixed point the allocator makes it, with the type of a role.
template <class T, class AllocT>
class TemporaryElement {
 public:
  TemporaryElement(AllocT& /*allocator*/, const char* /*roleName*/) {}
  T* getStore() { return &value; }
  T& get() { return value; }

 private:
  T value{};
};
template <class AllocT>
class TemporaryElement<Fixpt, AllocT> {
 public:
  TemporaryElement(AllocT& allocator, const char* roleName) { allocator.createFixptArray(handle, 1, roleName); }
  Fixpt* getStore() { return handle.ptr; }
  Fixpt& get() { return elementAt(handle.ptr, 0); }

 private:
  CleverPtr<Fixpt> handle;
};

}  // namespace BP
