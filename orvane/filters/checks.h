#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orvane/core/named.h"
#include "orvane/filters/array.h"
#include "orvane/filters/extents.h"

/// Checks of arguments. A failed check throws `std::invalid_argument`. The text has the argument's name, its value and
/// the allowed values.
namespace BP::filters::detail {

/// The greatest index, extent and element count. The library below this API computes indices in signed 32-bit numbers.
constexpr std::int64_t maxIndex = std::numeric_limits<std::int32_t>::max();

/// Throws with the text "ARGUMENT: VALUE; ALLOWED".
[[noreturn]] void refuse(std::string_view argument, const std::string& value, const std::string& allowed);

/// The shortest text that reads back as `value`.
std::string textOf(double value);

/// Checks a rank of 1 to `maxRank`, extents of at least 1, and at most `maxElements` elements.
void checkExtents(std::string_view argument, const Extents& extents, std::int64_t maxElements = maxIndex,
                  std::size_t maxRank = 2);

/// Checks that the extents are `expected`, that indices fit `maxSpan`, and that the pointer is not null.
void checkArray(std::string_view argument, const void* data, const Layout& layout, const Extents& expected,
                std::int64_t maxSpan = maxIndex);
template <class T>
void checkArray(std::string_view argument, const ArrayView<T>& array, const Extents& expected) {
  checkArray(argument, array.data(), array.layout(), expected);
}

/// A copy of the elements of an array, after `checkArray`.
template <class T>
std::vector<T> copyOf(const char* argument, const ArrayView<const T>& array, const Extents& expected) {
  checkArray(argument, array, expected);
  std::vector<T> copy(static_cast<std::size_t>(elementCount(expected)));
  copyDense(array, copy.data());
  return copy;
}

/// An array in memory, for the comparison of two.
struct Memory {
  const void* data;
  const Layout& layout;
  std::size_t elementBytes;
};

/// Checks that the output shares no byte with the input. Arrays with a pitch of the same number of bytes may lie
/// between each other's lines; of other arrays all bytes from the first to the last count.
void checkDisjoint(const Memory& input, const Memory& output);
template <class T, class U>
void checkDisjoint(const ArrayView<T>& input, const ArrayView<U>& output) {
  checkDisjoint({input.data(), input.layout(), sizeof(T)}, {output.data(), output.layout(), sizeof(U)});
}

/// Strides of an array as the library below keeps pointers to them.
class LineStrides {
 public:
  /// Takes those of a layout whose span fits 32 bits.
  void set(const Layout& layout);
  /// The table; null for an array without gaps.
  const int* get() const { return hasGaps ? strides.data() : nullptr; }

 private:
  std::array<int, Extents::maxRank> strides{};
  bool hasGaps = false;
};

/// A part of a pad value as the input's type T, rounded if T is a floating-point type. A finite part must not become
/// infinite, and a `bool` must be 0 or 1.
template <class T>
T padPart(double part) {
  if constexpr (std::is_same_v<T, bool>) {
    if (part == 0 || part == 1) return part == 1;
    refuse("pad value", textOf(part), "the input is bool, so it must be 0 or 1");
  } else {
    const T value = static_cast<T>(part);
    if (std::isfinite(part) && !std::isfinite(value)) {
      refuse("pad value", textOf(part), "it must lie in the range of the input's element type");
    }
    return value;
  }
}

/// As in "0 (valid), 1 (same)", for a table of `Named` values.
template <class Table>
std::string listOf(const Table& table) {
  std::string list;
  for (std::size_t i = 0; i < table.size(); ++i) {
    list += (i == 0 ? "" : ", ") + std::to_string(i) + " (" + std::string(table[i].name) + ")";
  }
  return list;
}

/// What the filters behind call `value`, whose number is its place in a table of `Named` values.
template <class Enumeration, class Table>
auto chosen(std::string_view argument, Enumeration value, const Table& table) {
  const auto number = static_cast<std::int64_t>(value);
  if (number < 0 || number >= static_cast<std::int64_t>(table.size())) {
    refuse(argument, std::to_string(number), "allowed are " + listOf(table));
  }
  return table[static_cast<std::size_t>(number)].value;
}

}  // namespace BP::filters::detail
