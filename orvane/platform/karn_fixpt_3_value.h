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
/// Words used here:
///
/// - A *component* is one stored number.
/// - An *element* is one component, or two (real, imaginary) of a complex type.
/// - An *exact* value has not been rounded.
/// - A *cast* converts an exact value into a type. It rounds by the rounding mode, then fits the result into the range
/// by
///   the overflow mode.
namespace KarnDSPFixpt {

class Fixpt;

/// A window over an array: rows of elements. Indices and distances count elements, and distances may be negative.
struct FixptWindow {
  Fixpt& array;
  int first;  ///< index of the first element
  int step;   ///< distance of neighbours in a row
  int pitch;  ///< distance of neighbouring rows
};

/// An array of fixed-point values of one type, with a cursor. The cursor selects the element that an operation uses.
///
/// Components are two's-complement or unsigned integers in the byte order of the machine. Their container is the
/// narrowest of 8, 16, 32, 64 and 128 bits that holds the word. With an override they are `double` or `float`. In host
/// memory a container may have more bits than the word: these are ignored on reading, and written as copies of the
/// sign.
///
/// An operation with a second array uses the element at that array's cursor. A sum or difference is exact before its
/// one cast into this array's type. If only one operand is complex, the other one has imaginary part 0. A real target
/// takes the real part. If the target or an operand has an override, the operation is done in `double` (in `float` for
/// a target of single precision), and the result is converted into the target's type.
///
/// The results of `operator*`, `norm` and `conjugate` are subordinate values of the left operand. They are valid until
/// its next such operation, and are counted under their own labels.
///
/// One thread at a time may use an array, since even a read moves the cursor.
class ORVANE_API Fixpt {
 public:
  virtual ~Fixpt();
  /// This value := numerator / divisor, correctly rounded from the exact quotient. Either operand may be this value.
  /// A divisor of 0 is an overflow towards the numerator's sign; 0 / 0 gives 0.
  virtual void divideInto(const Fixpt& numerator, const Fixpt& divisor);
  /// The destination's value := square root of this value, correctly rounded from the exact root. A complex value
  /// counts by its real part, and the imaginary part of the result is 0. The root of a negative value is an overflow
  /// and gives 0.
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

  /// The value := v, cast. 0 is exact in every type, so setting it is not counted as a cast.
  Fixpt& operator=(const int& v);
  /// The value := v, cast from its exact binary value. NaN is an overflow and gives 0.
  Fixpt& operator=(double v);
  /// The value := v, cast.
  Fixpt& operator=(const Fixpt& v);
  /// The value := re + im i, cast. A real array takes `re`.
  void setComplex(double re, double im);

  Fixpt& operator+=(const Fixpt& v);
  Fixpt& operator-=(const Fixpt& v);
  /// The product, cast into this array's product type. For two complex values, each of the four partial products is
  /// cast into the product type, and each of the two sums into the accumulator type. For a real and a complex value
  /// there are two products and no sum.
  Fixpt& operator*(const Fixpt& v) const;
  /// The value += left * right for each pair of elements of two windows of `width` by `height`, row by row.
  ///
  /// The result and all counts are the same as those of `*` and `+=` for each pair, but the time is shorter. This array
  /// must not share memory with the other two. The cursors of these may move. The last product is not kept.
  Fixpt& addProducts(const FixptWindow& left, const FixptWindow& right, int width, int height);
  /// Whether `readRow` can read this array: real values in containers of 8 or 16 bits.
  bool canReadRow() const;
  /// Reads the stored integers of `count` elements from element `first` on. The cursor stays.
  void readRow(int first, int count, std::int32_t* to) const;
  /// Whether `assignRow` can take values of the type of `like`: real ones, if neither word is wide.
  bool canAssignRow(const Fixpt& like);
  /// The values from element `first` on := `count` values of the type of `like`, given by their stored integers. The
  /// result and all counts are those of one assignment for each. The cursor ends on the last one.
  void assignRow(const Fixpt& like, int first, const std::int32_t* stored, int count);
  /// The squared magnitude, a real value. It is exact before its one cast into the product type.
  Fixpt& norm() const;
  /// The conjugate, in this array's type.
  Fixpt& conjugate() const;
  /// The value := value / 2^n, cast. A negative n multiplies.
  Fixpt& operator>>=(int n);

  /// Compares exactly. Complex values compare by squared magnitude.
  bool operator>(const Fixpt& v) const { return compare(v) > 0; }
  bool operator<(const Fixpt& v) const { return compare(v) < 0; }
  bool isZero() const;

  /// The real part as the nearest `double`.
  double toDouble() const { return componentToDouble(cursor_); }
  /// The imaginary part as the nearest `double`; 0 in a real array.
  double imaginaryToDouble() const { return isComplex_ ? componentToDouble(cursor_ + 1) : 0; }
  /// The stored integer of the component at the cursor. An unsigned one of 128 bits is returned as the signed integer
  /// of the same bits. Meaningless with an override.
  detail::Int128 stored() const;
  /// Stores the low bits of `v` in the component at the cursor, without a cast. Meaningless with an override.
  void setStored(detail::Int128 v);

  /// Makes the array use the caller's memory at `p`, which must not be null. The memory may have any alignment and must
  /// outlive its use. The array's own memory is released.
  void setValPtr(void* p);

  /// The type and modes of the values.
  const DSPDataAttributesHandle& attributes() const { return attributes_; }
  bool isComplex() const { return isComplex_; }
  /// The number of elements in the array's own memory.
  int count() const { return count_; }
  /// The address of the first component. A component written there must fit the word.
  void* data() const { return values_; }
  /// The number of bits that one component takes in memory.
  int containerBits() const { return 8 << bytesLog_; }

  /// Subordinate value `i`, or null if it was never needed: 0 product, 1 sum of a complex product, 2 norm, 3 unused, 4
  /// conjugate.
  Fixpt* subordinate(int i) const;
  /// The subordinate value that `*this * v` uses for its result, prepared without a multiplication.
  Fixpt& productFor(const Fixpt& v) const;

  /// Switches the counting of casts on or off, also for subordinate values. A new array counts, unless its handle says
  /// otherwise.
  void setStatistics(bool on);
  bool statistics() const { return counting_; }
  /// Adds the counts of another record, and widens the range by that record's range.
  void addStatistics(const fxpLogStruct_tag& counts);
  /// The statistics gathered since the last call, without a range if the handle wants counts alone. Gathering then
  /// starts again in a new record. The handle's adaptor keeps the returned record alive; without an adaptor it lives
  /// until the process ends.
  fxpBlockProperties* takeProperties();

 private:
  friend class FixptFactory;

  /// A narrow operation with a second value of one type, prepared. `partsKey` is the key of that type. `key` is the
  /// same if neither value is complex, else 0. The inline operations compare `key`.
  struct Plan {
    std::uint64_t key = 0;
    std::uint64_t partsKey = 0;
    int append = 0;       // bits to append to the value before rounding; in a sum, to this array's value
    int otherAppend = 0;  // in a sum, bits to append to the other value
    detail::Rounder<std::int64_t> rounder;
  };

  struct Counters {
    unsigned overflows = 0;
    unsigned casts = 0;
    unsigned lossy = 0;
    // Narrow casts keep the range as integers, because a conversion to double would cost more than the cast.
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
  };

  Fixpt(const DSPDataAttributesHandle& attributes, int count, bool counting);

  void adoptType(const DSPDataAttributesHandle& attributes);
  std::byte* address(int component) const { return values_ + (static_cast<std::ptrdiff_t>(component) << bytesLog_); }

  // Operations on narrow components: fixed point of at most detail::narrowBits bits.
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
  std::uint64_t key_ = 0;  // the same for equal word, fraction, sign, complexity and override
  detail::Range<std::int64_t> range_;
  Plan assignPlan_;
  Plan integerPlan_;
  Plan sumPlan_;
  mutable Plan productPlan_;
  mutable Plan partialSumPlan_;
  mutable Plan normPlan_;
  mutable std::uint64_t preparedFor_ = 0;  // key of the right operand for which the product's types were set
  mutable std::array<std::unique_ptr<Fixpt>, 5> subordinates_;
  Counters counters_;
  alignas(16) std::array<std::byte, 64> few_{};  // values of short arrays, four components of a complex product
  std::unique_ptr<std::byte[]> many_;            // values of long arrays
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
