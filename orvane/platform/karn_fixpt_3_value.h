#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3_attributes.h"
#include "orvane/platform/karn_fixpt_3_cast.h"
#include "orvane/platform/libkarnfxp.h"

/// Fixed-point values.
///
/// Words used here: a *component* is one stored number; an *element* is one component, or two (real, imaginary) of a
/// complex type; an *exact* value is one before any rounding; a *cast* takes an exact value into a type: it rounds by
/// the rounding mode, then fits the result into the range by the overflow mode.
namespace KarnDSPFixpt {

class Fixpt;

/// Elements of an array in rows: the first one, from one to the next in a row, from one row to the next.
struct FixptWindow {
  Fixpt& array;
  int first;
  int step;
  int pitch;
};

/// An array of fixed-point values of one type, with a cursor that says which element an operation addresses.
///
/// Components are two's-complement (or unsigned) integers in the narrowest of 8, 16, 32, 64 and 128 bits that holds
/// the word, in the byte order of the machine; with an override, `double` or `float`. Of a component in host memory
/// only the bits of the word count: the others are ignored on reading, and written as extension of the sign.
///
/// Operations that take a second value take the one at that array's cursor. Sums and differences are exact before
/// their one cast into this array's type. Where exactly one operand is complex, the other counts as complex with
/// imaginary part 0, and a real target takes the real part. With an override on the target or an operand, the
/// operation is done in `double` (in `float` for a target of single) and the result is stored as the target says.
///
/// Results of `operator*`, `norm` and `conjugate` are subordinate values of their left operand: valid until its
/// next such operation, counted under their own labels. An array, its reads included, serves one thread at a time.
class ORVANE_API Fixpt {
 public:
  virtual ~Fixpt();
  /// This value := numerator / divisor, correctly rounded from the exact quotient. Either may be this value. With a
  /// divisor of 0 the quotient counts as beyond the range on the side of the numerator's sign; 0 / 0 gives 0.
  virtual void divideInto(const Fixpt& numerator, const Fixpt& divisor);
  /// Destination's value := square root of this value, correctly rounded from the exact root. Of a complex value the
  /// real part is taken and the imaginary part of the result is 0. The root of a negative value counts as an
  /// overflow and gives 0.
  virtual void sqrtInto(Fixpt* destination) const;

  Fixpt(const Fixpt&) = delete;

  /// Sets the cursor to element `i`.
  Fixpt& operator[](int i) {
    cursor_ = i << (isComplex_ ? 1 : 0);
    return *this;
  }
  /// Sets the cursor to `component`: element i of a complex array starts at component 2i.
  void setCursor(int component) { cursor_ = component; }
  int cursor() const { return cursor_; }

  /// The value := v, cast. Clearing to 0 is exact in every type and is not counted as a cast.
  Fixpt& operator=(const int& v);
  /// The value := v, cast from its exact binary value. NaN counts as an overflow and gives 0.
  Fixpt& operator=(double v);
  /// The value := v, cast.
  Fixpt& operator=(const Fixpt& v);
  /// The value := re + im i, cast; a real array takes `re`.
  void setComplex(double re, double im);

  Fixpt& operator+=(const Fixpt& v);
  Fixpt& operator-=(const Fixpt& v);
  /// The product, cast into this array's product type. The product of two complex values casts each of its four
  /// partial products into the product type and their two sums into the accumulator type; that of a real and a complex
  /// one is two products, with nothing to add.
  Fixpt& operator*(const Fixpt& v) const;
  /// The value += left * right for each pair of elements of two windows of `width` by `height`, row by row. Results and
  /// counts are those of `*` and `+=` one by one, in less time. This array shares no memory with the other two, whose
  /// cursors may move; products are not kept.
  Fixpt& addProducts(const FixptWindow& left, const FixptWindow& right, int width, int height);
  /// The squared magnitude, exact before its one cast into the product type; real.
  Fixpt& norm() const;
  /// The conjugate, in this array's type.
  Fixpt& conjugate() const;
  /// The value := value / 2^n, cast; a negative n multiplies.
  Fixpt& operator>>=(int n);

  /// Exact comparison; complex values compare by squared magnitude.
  bool operator>(const Fixpt& v) const { return compare(v) > 0; }
  bool operator<(const Fixpt& v) const { return compare(v) < 0; }
  bool isZero() const;

  /// The real part as the nearest `double`.
  double toDouble() const { return componentToDouble(cursor_); }
  /// The imaginary part as the nearest `double`; 0 in a real array.
  double imaginaryToDouble() const { return isComplex_ ? componentToDouble(cursor_ + 1) : 0; }
  /// The stored integer of the component at the cursor; an unsigned one of 128 bits as its two's-complement twin.
  /// Meaningless with an override.
  detail::Int128 stored() const;
  /// Stores the low bits of `v` in the component at the cursor, without a cast. Meaningless with an override.
  void setStored(detail::Int128 v);

  /// Lets the array use the caller's memory at `p` for its values; null is not allowed. The memory may have any
  /// alignment and stays the caller's. The array's own memory, if it had any, is released.
  void setValPtr(void* p);

  /// The type and modes of the values.
  const DSPDataAttributesHandle& attributes() const { return attributes_; }
  bool isComplex() const { return isComplex_; }
  /// Elements of the array's own memory.
  int count() const { return count_; }
  /// The first component. What is written to the array's own memory must fit the word.
  void* data() const { return values_; }
  /// Bits that one component takes in memory.
  int containerBits() const { return 8 << bytesLog_; }

  /// Subordinate value `i`, or null if it was never needed: 0 product, 1 sum of a complex product, 2 norm, 3 none
  /// so far, 4 conjugate.
  Fixpt* subordinate(int i) const;
  /// The subordinate value that `*this * v` would use, made ready without a multiplication.
  Fixpt& productFor(const Fixpt& v) const;

  /// Switches the counting of casts on or off, for subordinate values too. It is on at first.
  void setStatistics(bool on);
  bool statistics() const { return counting_; }
  /// Adds what was counted elsewhere, and widens the range by the other's.
  void addStatistics(const fxpLogStruct_tag& counts);
  /// The statistics gathered since the last call; gathering starts anew in another record. The record is kept alive
  /// by the handle's adaptor, or without one by the process.
  fxpBlockProperties* takeProperties();

 private:
  friend class FixptFactory;

  /// How a narrow operation with a second value of one type goes; the key of that type says for which it holds. The
  /// inline operations ask for `key`, which is set where neither value is complex.
  struct Plan {
    std::uint64_t key = 0;
    std::uint64_t partsKey = 0;
    int append = 0;       // bits to append to the value before it is rounded; of a sum, to this array's value
    int otherAppend = 0;  // of a sum, to the other value
    detail::Rounder<std::int64_t> rounder;
  };

  struct Counters {
    unsigned overflows = 0;
    unsigned casts = 0;
    unsigned lossy = 0;
    // The range is kept as integers where they are at hand: a conversion for each cast would cost more than the cast.
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
  };

  Fixpt(const DSPDataAttributesHandle& attributes, int count, bool counting);

  void adoptType(const DSPDataAttributesHandle& attributes);
  std::byte* address(int component) const { return values_ + (static_cast<std::ptrdiff_t>(component) << bytesLog_); }

  // Narrow components: fixed point, and no more than detail::narrowBits bits.
  std::int64_t loadNarrow(int component) const;
  void storeNarrow(int component, std::int64_t v);
  void putNarrow(int component, std::int64_t exact, const detail::Rounder<std::int64_t>& rounder);
  void addNarrow(int component, const Fixpt& v, int other, bool subtracts);

  // All values.
  template <class I>
  I load(int component) const;
  template <class I>
  void put(int component, const I& exact, std::int64_t fraction);
  void store(int component, detail::Uint128 bits);
  double componentToDouble(int component) const;
  void putDouble(int component, double exact);
  void clear();
  void clearAny();
  void assignInteger(int v);
  bool planCast(Plan& plan, std::uint64_t key, bool isReal, int bits, std::int64_t fraction) const;
  bool planAssign(const Fixpt& v);
  bool planSum(const Fixpt& v);
  Fixpt& assignAny(const Fixpt& v);
  Fixpt& addAny(const Fixpt& v, bool subtracts);
  void putSum(int target, const Fixpt& a, int i, const Fixpt& b, int j, bool subtracts);
  Fixpt& productAny(const Fixpt& v) const;
  template <class I>
  bool prepareProducts(const Fixpt& a, const Fixpt& b, detail::ProductSum<I>& casts);
  template <class I>
  void addProductsBy(detail::ProductSum<I>& casts, const FixptWindow& left, const FixptWindow& right, int width,
                     int height);
  template <class I>
  bool prepareCast(detail::CountingCast<I>& cast, int bits, std::int64_t fraction) const;
  template <class I>
  void count(const detail::CountingCast<I>& cast, unsigned casts);
  void putPartialProduct(int component, int own, const Fixpt& v, int other) const;
  void putPartialSum(int component, int i, int j, bool subtracts) const;
  void putProduct(int component, const Fixpt& a, int i, const Fixpt& b, int j);
  Fixpt& normAny() const;
  template <class I>
  I squaredMagnitude() const;
  int compare(const Fixpt& v) const;
  int compareAny(const Fixpt& v) const;
  template <class I>
  void putQuotient(int component, const I& numerator, const I& divisor, std::int64_t fraction);
  int quotientShift(std::int64_t fraction) const;
  template <class I>
  void divideExact(const Fixpt& numerator, const Fixpt& divisor, std::int64_t fraction);
  template <class I>
  void putRoot(const I& v, int shift);
  template <class Op>
  void inTier(int bits, std::int64_t fraction, Op op) const;
  Fixpt& subordinateAs(std::size_t i, const DSPDataAttributesHandle& attributes) const;
  void prepareProduct(const Fixpt& v) const;

  int cursor_ = 0;
  unsigned char bytesLog_ = 0;
  bool isComplex_ = false;
  bool isNarrow_ = false;
  bool counting_ = true;
  std::byte* values_ = nullptr;
  std::uint64_t key_ = 0;  // equal keys: equal word, fraction, sign, complexity and override
  detail::Range<std::int64_t> range_;
  Plan assignPlan_;
  Plan integerPlan_;
  Plan sumPlan_;
  mutable Plan productPlan_;
  mutable Plan partialSumPlan_;
  mutable Plan normPlan_;
  mutable std::uint64_t preparedFor_ = 0;  // key of the right operand that the product subordinates are typed for
  mutable std::array<std::unique_ptr<Fixpt>, 5> subordinates_;
  Counters counters_;
  alignas(16) std::array<std::byte, 64> few_{};  // the values of short arrays; four components for a complex product
  std::unique_ptr<std::byte[]> many_;            // those of long ones
  int count_ = 0;
  DSPDataAttributesHandle attributes_;
};

/// Makes arrays.
class ORVANE_API FixptFactory {
 public:
  /// A new array of `count` elements of the handle's type, all 0, with its cursor at 0. A negative count counts as 0.
  /// The last argument has no meaning yet; pass 0.
  static Fixpt* createFixpt(const DSPDataAttributesHandle& handle, int count, int);
};

}  // namespace KarnDSPFixpt
