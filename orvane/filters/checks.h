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

/// Checks of arguments. Each throws `std::invalid_argument` whose text starts with the argument's name and its value,
/// and says what is allowed.
namespace BP::filters::detail {

/// The greatest index, extent and element count of the filters behind, whose index arithmetic is signed 32-bit.
constexpr std::int64_t greatestIndex = std::numeric_limits<std::int32_t>::max();

/// Throws: "ARGUMENT: VALUE; ALLOWED".
[[noreturn]] void refuse(std::string_view argument, const std::string& value, const std::string& allowed);

/// The shortest text that reads back as `value`.
std::string textOf(double value);

/// Extents of 1 and more, of rank 1 to `greatestRank`, with no more than `most` elements.
void checkExtents(std::string_view argument, const Extents& extents, std::int64_t most = greatestIndex,
                  std::size_t greatestRank = 2);

/// Extents equal to `expected`, an array that is there.
void checkArray(std::string_view argument, const void* data, const Extents& extents, const Extents& expected);
template <class T>
void checkArray(std::string_view argument, const ArrayView<T>& array, const Extents& expected) {
  checkArray(argument, array.data(), array.extents(), expected);
}

/// The elements of an array that passes `checkArray`.
template <class T>
std::vector<T> copyOf(const char* argument, const ArrayView<const T>& array, const Extents& expected) {
  checkArray(argument, array, expected);
  return {array.data(), array.data() + elementCount(expected)};
}

/// An output that shares no byte with the input.
void checkDisjoint(const void* input, std::size_t inputBytes, const void* output, std::size_t outputBytes);
template <class T, class U>
void checkDisjoint(const ArrayView<T>& input, const ArrayView<U>& output) {
  checkDisjoint(input.data(), static_cast<std::size_t>(elementCount(input.extents())) * sizeof(T), output.data(),
                static_cast<std::size_t>(elementCount(output.extents())) * sizeof(U));
}

/// A part of a pad value in the precision of the input; infinity only if it was asked for.
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
