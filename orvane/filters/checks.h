#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
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

/// Checks that the extents are `expected` and that the pointer is not null.
void checkArray(std::string_view argument, const void* data, const Extents& extents, const Extents& expected);
template <class T>
void checkArray(std::string_view argument, const ArrayView<T>& array, const Extents& expected) {
  checkArray(argument, array.data(), array.extents(), expected);
}

/// A copy of the elements of an array, after `checkArray`.
template <class T>
std::vector<T> copyOf(const char* argument, const ArrayView<const T>& array, const Extents& expected) {
  checkArray(argument, array, expected);
  return {array.data(), array.data() + elementCount(expected)};
}

/// Checks that the output shares no byte with the input.
void checkDisjoint(const void* input, std::size_t inputBytes, const void* output, std::size_t outputBytes);
template <class T, class U>
void checkDisjoint(const ArrayView<T>& input, const ArrayView<U>& output) {
  checkDisjoint(input.data(), static_cast<std::size_t>(elementCount(input.extents())) * sizeof(T), output.data(),
                static_cast<std::size_t>(elementCount(output.extents())) * sizeof(U));
}

/// A part of a pad value, rounded to the input's type T. A finite part must not become infinite.
template <class T>
T padPart(double part) {
  const T value = static_cast<T>(part);
  if (std::isfinite(part) && !std::isfinite(value)) {
    refuse("padValue", textOf(part), "it must lie in the range of the input's element type");
  }
  return value;
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
