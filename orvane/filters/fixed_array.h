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
/// A value is an integer of `word` bits times 2^-fraction. Its *container* is the narrowest of 8, 16, 32, 64 and 128
/// bits that holds the word. An 8-bit picture is thus an array of type u8.0 without conversion. Bits of the container
/// beyond the word are ignored. The two parts of a complex value are neighbours.
namespace BP::filters {

/// The type of a fixed-point value. The default is no type, which is an error where a type is needed.
struct FixedType {
  int word = 0;          ///< bits, 1 to 128
  int fraction = 0;      ///< bits of fraction, -1024 to 1024; may be negative or exceed the word
  bool isSigned = true;  ///< in two's complement

  bool operator==(const FixedType&) const = default;
};

/// Reads a type from a text such as "u8.0" or "s16.12" (signed, 16 bits, 12 of them fraction). Throws
/// `std::invalid_argument` with the allowed form.
ORVANE_API FixedType fixedType(std::string_view text);
ORVANE_API std::string toText(const FixedType& type);

/// How a cast rounds a value that lies between two multiples of 2^-fraction.
enum class Rounding {
  ceiling,     ///< up
  convergent,  ///< to nearest, ties to even
  floor,       ///< down
  nearest,     ///< to nearest, ties up
  round,       ///< to nearest, ties away from zero
  zero,        ///< towards zero
};

/// How a cast treats a value outside the range of its type.
enum class Overflow {
  wrap,       ///< it keeps the low bits
  saturate,   ///< it gives the nearest end of the range
  symmetric,  ///< it saturates to a range without the least value of a signed type
  zero,       ///< it gives 0
};

/// What statistics of casts are gathered. What is not gathered costs nothing.
enum class Gathering {
  nothing,
  counts,  ///< casts, overflows and lossy roundings
  ranges,  ///< these, and the least and greatest values
};

/// How values are cast into a type, and what is gathered about it.
struct FixedModes {
  Rounding rounding = Rounding::nearest;
  Overflow overflow = Overflow::saturate;
  Gathering gathering = Gathering::ranges;
};

/// The counts of casts of one label. Without a cast, or where ranges are not gathered, the range is empty: its minimum
/// exceeds its maximum.
struct FixedStatistics {
  std::string label;
  std::uint64_t casts = 0;                                    ///< values cast into the label's type
  std::uint64_t overflows = 0;                                ///< values outside the type's range
  std::uint64_t lossy = 0;                                    ///< values whose rounding lost bits
  double minimum = std::numeric_limits<double>::infinity();   ///< least value after the cast
  double maximum = -std::numeric_limits<double>::infinity();  ///< greatest value after the cast
};

namespace detail {
/// The number of bits of a container of the type. Throws `std::invalid_argument` if the type is out of range.
ORVANE_API int checkedContainerBits(std::string_view argument, const FixedType& type);
/// Throws `std::invalid_argument` unless containers of the type have `bits` bits.
ORVANE_API void checkContainer(int bits, const FixedType& type);
/// The number of bytes of a value. Throws `std::invalid_argument` if the type is out of range.
ORVANE_API std::ptrdiff_t bytesOfValue(const FixedType& type, bool isComplex);
/// The number of bytes of an array. Throws like the constructor of `FixedArray`.
ORVANE_API std::size_t bytesOf(const Extents& extents, const FixedType& type, bool isComplex);
}  // namespace detail

/// A view of a fixed-point array that it does not own. Memory may have any alignment. Void is `void` or `const void`.
/// Pitches count values, and a complex value is one.
template <class Void>
class BasicFixedView {
 public:
  /// `data` must point to one container for each value, or to two for each complex value.
  BasicFixedView(Void* data, const Extents& extents, const FixedType& type, bool isComplex = false)
      : BasicFixedView(data, Layout(extents), type, isComplex) {}
  BasicFixedView(Void* data, const Extents& extents, const Pitch& pitch, const FixedType& type, bool isComplex = false)
      : BasicFixedView(data, Layout(extents, pitch), type, isComplex) {}
  BasicFixedView(Void* data, const Layout& layout, const FixedType& type, bool isComplex = false)
      : first(data), lines(layout), kind(type), complex(isComplex) {}
  /// Real values in an array of integers. Throws `std::invalid_argument` if an integer does not have the size of a
  /// container.
  template <std::integral C>
  BasicFixedView(const ArrayView<C>& containers, const FixedType& type)
      : BasicFixedView(containers.data(), containers.layout(), type) {
    detail::checkContainer(static_cast<int>(8 * sizeof(C)), type);
  }
  /// A read-only view of the same array.
  template <class Other>
  requires(std::same_as<const Other, Void>) BasicFixedView(const BasicFixedView<Other>& view)
      : BasicFixedView(view.data(), view.layout(), view.type(), view.isComplex()) {}

  Void* data() const { return first; }
  const Extents& extents() const { return lines.extents(); }
  const Layout& layout() const { return lines; }
  const FixedType& type() const { return kind; }
  bool isComplex() const { return complex; }

  /// A view of the part that begins at `start`. Throws `std::invalid_argument` if it does not lie within the view.
  BasicFixedView subview(const Extents& start, const Extents& extents) const {
    using Byte = std::conditional_t<std::is_const_v<Void>, const std::byte, std::byte>;
    const Layout part = lines.part(start, extents);
    const std::int64_t offset = elementCount(extents) == 0 ? 0 : lines.offsetOf(start);
    return {static_cast<Byte*>(first) + offset * detail::bytesOfValue(kind, complex), part, kind, complex};
  }

 private:
  Void* first;
  Layout lines;
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
  /// A copy of the values of a view.
  explicit FixedArray(const FixedView& view);

  const Extents& extents() const { return size; }
  const FixedType& type() const { return kind; }
  bool isComplex() const { return complex; }
  void* data() { return bytes.data(); }
  const void* data() const { return bytes.data(); }

  MutableFixedView view() { return {data(), size, kind, complex}; }
  FixedView view() const { return {data(), size, kind, complex}; }
  operator MutableFixedView() { return view(); }
  operator FixedView() const { return view(); }
  /// A view of the part that begins at `start`. Throws `std::invalid_argument` if it does not lie within the array.
  MutableFixedView subview(const Extents& start, const Extents& extents) { return view().subview(start, extents); }
  FixedView subview(const Extents& start, const Extents& extents) const { return view().subview(start, extents); }

 private:
  Extents size;
  FixedType kind;
  bool complex;
  std::vector<std::byte> bytes;
};

/// Casts values into a fixed-point type. Each value is the exact number that the `double` represents. NaN is an
/// overflow and gives 0. The counts are added to `statistics`, if given. Throws `std::invalid_argument` for null data,
/// an empty array, and a type or mode out of range.
ORVANE_API FixedArray quantise(ArrayView<const double> values, const FixedType& type, const FixedModes& modes = {},
                               FixedStatistics* statistics = nullptr);
ORVANE_API FixedArray quantise(ArrayView<const std::complex<double>> values, const FixedType& type,
                               const FixedModes& modes = {}, FixedStatistics* statistics = nullptr);

/// The same, into an array that is there, of the values' extents and of the type of the view. Throws
/// `std::invalid_argument` also if the extents differ, or the view is complex and the values are not, or reverse.
ORVANE_API void quantiseInto(ArrayView<const double> values, const MutableFixedView& output,
                             const FixedModes& modes = {}, FixedStatistics* statistics = nullptr);
ORVANE_API void quantiseInto(ArrayView<const std::complex<double>> values, const MutableFixedView& output,
                             const FixedModes& modes = {}, FixedStatistics* statistics = nullptr);

/// The values of a real array, each as the nearest `double`. Throws `std::invalid_argument` for a complex array, null
/// data, or a type out of range.
ORVANE_API Array<double> toDouble(const FixedView& values);
/// The values of any array, each part as the nearest `double`. Throws `std::invalid_argument` for null data or a type
/// out of range.
ORVANE_API Array<std::complex<double>> toComplex(const FixedView& values);

}  // namespace BP::filters
