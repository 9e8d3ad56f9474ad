#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "orvane/filters/layout.h"
#include "tests/support/random_values.h"

namespace BP::test {

using Bytes = std::vector<std::byte>;

/// A layout of these extents with random gaps between lines, planes and so on.
inline filters::Layout randomLayout(auto& random, const filters::Extents& extents) {
  std::array<std::int64_t, filters::Extents::maxRank> strides{1};
  std::int64_t span = extents.rank() > 0 ? extents[0] : 1;
  for (std::size_t d = 1; d < extents.rank(); ++d) {
    strides[d] = span + pick(random, 0, 9);
    span += (extents[d] - 1) * strides[d];
  }
  return filters::Layout::withStrides(extents, strides);
}

/// An array among other bytes: before it, behind it, and between its lines if it has a pitch.
class ArrayStore {
 public:
  ArrayStore(const filters::Layout& arrayLayout, std::size_t elementBytes)
      : arrays(arrayLayout),
        size(elementBytes),
        bytes((static_cast<std::size_t>(arrays.span()) + 2 * around) * size, other) {}

  void* data() { return bytes.data() + around * size; }
  const filters::Layout& layout() const { return arrays; }

  /// Writes and reads the elements, one line after the other.
  void put(const Bytes& dense) {
    forEachLine([&](std::byte* line, std::size_t number, std::size_t length) {
      std::copy_n(dense.data() + number * length, length, line);
    });
  }
  Bytes get() {
    Bytes dense(static_cast<std::size_t>(elementCount(arrays.extents())) * size);
    forEachLine([&](std::byte* line, std::size_t number, std::size_t length) {
      std::copy_n(line, length, dense.data() + number * length);
    });
    return dense;
  }
  /// Whether nobody has written to the other bytes. The elements are lost.
  bool othersAreUntouched() {
    forEachLine([&](std::byte* line, std::size_t /*number*/, std::size_t length) { std::fill_n(line, length, other); });
    return std::ranges::all_of(bytes, [](std::byte b) { return b == other; });
  }

 private:
  static constexpr std::byte other{0x5A};
  static constexpr std::size_t around = 3;

  template <class Take>
  void forEachLine(Take&& take) {
    const std::size_t length = static_cast<std::size_t>(arrays.extents()[0]) * size;
    arrays.forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t number) {
      take(bytes.data() + (around + static_cast<std::size_t>(first)) * size, static_cast<std::size_t>(number), length);
    });
  }

  filters::Layout arrays;
  std::size_t size;
  Bytes bytes;
};

/// The bytes of values, all NaN made one.
template <class T>
Bytes bytesOf(std::vector<T> values) {
  if constexpr (!std::is_integral_v<T>) {
    using Real = decltype(std::real(T()));
    auto* const reals = reinterpret_cast<Real*>(values.data());
    for (std::size_t i = 0; i < values.size() * sizeof(T) / sizeof(Real); ++i) {
      if (std::isnan(reals[i])) reals[i] = std::numeric_limits<Real>::quiet_NaN();
    }
  }
  Bytes bytes(values.size() * sizeof(T));
  if (!values.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

}  // namespace BP::test
