#pragma once

#include <complex>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orvane/filters/array.h"
#include "orvane/filters/extents.h"
#include "orvane/platform/export.h"

/// Arrays of fixed-point values.
///
/// A value is an integer of `word` bits times 2^-fraction. It is stored in the narrowest of 8, 16, 32, 64 and 128 bits
/// that hold the word (its *container*), so that an 8-bit picture is an array of type u8.0 as it stands; of a container
/// only the bits of the word count. The two parts of a complex value are neighbours.
namespace BP::filters {

/// The type of a fixed-point value. The default is no type: a role that needs one is then refused.
struct FixedType {
  int word = 0;          ///< bits, 1 to 128
  int fraction = 0;      ///< bits of fraction, -1024 to 1024: negative, or more than the word, scale it beyond its bits
  bool isSigned = true;  ///< in two's complement

  bool operator==(const FixedType&) const = default;
};

/// The type of a text such as "s16.12" (signed, 16 bits, 12 of them fraction) or "u8.0". Throws
/// `std::invalid_argument` that says what is allowed.
ORVANE_API FixedType fixedType(std::string_view text);
ORVANE_API std::string toText(const FixedType& type);

/// Which neighbour a cast takes for a value between two multiples of 2^-fraction.
enum class Rounding {
  ceiling,     ///< the greater one
  convergent,  ///< the nearest one; of two as near the even one
  floor,       ///< the smaller one
  nearest,     ///< the nearest one; of two as near the greater one
  round,       ///< the nearest one; of two as near the one away from zero
  zero,        ///< the one towards zero
};

/// What a cast does with a value beyond the range of its type.
enum class Overflow {
  wrap,       ///< keeps the low bits
  saturate,   ///< takes the nearest end of the range
  symmetric,  ///< the same, in a range without the least value of a signed type
  zero,       ///< takes zero
};

/// How values are cast into a type.
struct FixedModes {
  Rounding rounding = Rounding::nearest;
  Overflow overflow = Overflow::saturate;
};

/// What happened to the values of one label. The range is empty, its minimum above its maximum, without a cast.
struct FixedStatistics {
  std::string label;
  std::uint64_t casts = 0;                                    ///< values cast into the label's type
  std::uint64_t overflows = 0;                                ///< those that lay beyond its range
  std::uint64_t lossy = 0;                                    ///< those whose rounding lost bits
  double minimum = std::numeric_limits<double>::infinity();   ///< least and
  double maximum = -std::numeric_limits<double>::infinity();  ///< greatest value after the cast
};

namespace detail {
/// Bits of a container of the type; throws `std::invalid_argument` unless the type is one.
ORVANE_API int checkedContainerBits(std::string_view argument, const FixedType& type);
/// Throws `std::invalid_argument` unless elements of `bits` bits are containers of the type.
ORVANE_API void checkContainer(int bits, const FixedType& type);
/// Bytes of an array; throws as the constructor of `FixedArray`.
ORVANE_API std::size_t bytesOf(const Extents& extents, const FixedType& type, bool isComplex);
}  // namespace detail

/// A fixed-point array that somebody else owns. Memory may have any alignment. Void is `void` or `const void`.
template <class Void>
class BasicFixedView {
 public:
  /// `data` must point to as many containers as there are values, twice as many if they are complex.
  BasicFixedView(Void* data, const Extents& extents, const FixedType& type, bool isComplex = false)
      : first(data), size(extents), kind(type), complex(isComplex) {}
  /// Real values in an array of integers. Throws `std::invalid_argument` if these have not the size of a container.
  template <std::integral C>
  BasicFixedView(const ArrayView<C>& containers, const FixedType& type)
      : BasicFixedView(containers.data(), containers.extents(), type) {
    detail::checkContainer(static_cast<int>(8 * sizeof(C)), type);
  }
  /// A view to read from, made of one to write to.
  template <class Other>
  requires(std::same_as<const Other, Void>) BasicFixedView(const BasicFixedView<Other>& view)
      : BasicFixedView(view.data(), view.extents(), view.type(), view.isComplex()) {}

  Void* data() const { return first; }
  const Extents& extents() const { return size; }
  const FixedType& type() const { return kind; }
  bool isComplex() const { return complex; }

 private:
  Void* first;
  Extents size;
  FixedType kind;
  bool complex;
};

using FixedView = BasicFixedView<const void>;
using MutableFixedView = BasicFixedView<void>;

/// A fixed-point array that owns its values: dense, dimension 0 first.
class ORVANE_API FixedArray {
 public:
  /// No values, of type u1.0.
  FixedArray() : FixedArray({0}, {1, 0, false}) {}
  /// All values are 0. Throws `std::invalid_argument` for a negative extent or a type out of range.
  FixedArray(const Extents& extents, const FixedType& type, bool isComplex = false);

  const Extents& extents() const { return size; }
  const FixedType& type() const { return kind; }
  bool isComplex() const { return complex; }
  void* data() { return bytes.data(); }
  const void* data() const { return bytes.data(); }

  MutableFixedView view() { return {data(), size, kind, complex}; }
  FixedView view() const { return {data(), size, kind, complex}; }
  operator MutableFixedView() { return view(); }
  operator FixedView() const { return view(); }

 private:
  Extents size;
  FixedType kind;
  bool complex;
  std::vector<std::byte> bytes;
};

/// Casts values into a fixed-point type; each is taken for the exact number it is, NaN for an overflow that gives 0.
/// What happened is added to `statistics`, if given. Throws `std::invalid_argument` for null data, an empty array, and
/// a type or mode out of range.
ORVANE_API FixedArray quantise(ArrayView<const double> values, const FixedType& type, const FixedModes& modes = {},
                               FixedStatistics* statistics = nullptr);
ORVANE_API FixedArray quantise(ArrayView<const std::complex<double>> values, const FixedType& type,
                               const FixedModes& modes = {}, FixedStatistics* statistics = nullptr);

/// The values of a real array, each as the nearest `double`. Throws `std::invalid_argument` for a complex array, null
/// data, or a type out of range.
ORVANE_API Array<double> toDouble(const FixedView& values);
/// The values of any array, each part as the nearest `double`; errors likewise.
ORVANE_API Array<std::complex<double>> toComplex(const FixedView& values);

}  // namespace BP::filters
