#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include "tool/array.h"
#include "tool/elements.h"

/// Samples of a file as elements of the filters, and back.
namespace BP::tool {

/// How a sum becomes a sample: round(sum * scale + offset), clipped.
struct SampleScaling {
  double scale = 1;
  double offset = 0;
};

/// What happened to values on the way.
struct SampleCounts {
  std::uint64_t rounded = 0;  ///< input values that the type of sums cannot represent, or means that are no sample
  std::uint64_t clipped = 0;  ///< samples that lay beyond the range of their type after rounding

  void add(const SampleCounts& other) {
    rounded += other.rounded;
    clipped += other.clipped;
  }
};

/// The type of the parts of an element.
template <class T>
struct PartOf {
  using Type = T;
};
template <class T>
struct PartOf<std::complex<T>> {
  using Type = T;
};

/// Whether elements of type To represent every value of From.
template <class From, class To>
constexpr bool isRepresented = std::numeric_limits<typename PartOf<From>::Type>::digits <=
                                   std::numeric_limits<typename PartOf<To>::Type>::digits &&
                               (IsComplex<To>::value || !IsComplex<From>::value);

/// Sample `channel` of each of `count` pixels of `channels` samples as an element.
template <class From, class To>
void loadSamples(const From* from, std::size_t channels, std::size_t count, To* to, SampleCounts& counts) {
  if constexpr (std::is_same_v<To, bool>) {
    for (std::size_t i = 0; i < count; ++i) to[i] = from[i * channels] != From(0);
  } else if constexpr (isRepresented<From, To> && IsComplex<To>::value && !IsComplex<From>::value) {
    using Part = typename PartOf<To>::Type;
    for (std::size_t i = 0; i < count; ++i) to[i] = To(static_cast<Part>(from[i * channels]));
  } else if constexpr (isRepresented<From, To>) {
    for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<To>(from[i * channels]);
  } else {
    for (std::size_t i = 0; i < count; ++i) to[i] = Into<To>::convert(from[i * channels], counts.rounded);
  }
}

/// round(sum * scale + offset), ties to even, for `count` sums, clipped to the range of To, which has at most 32 bits.
/// Throws `std::runtime_error` for a sum that is infinite or no number.
template <class Sum, class To>
void storeRounded(const Sum* sums, std::size_t count, const SampleScaling& scaling, To* to, std::size_t channels,
                  SampleCounts& counts) {
  // Adding this number to one of up to 2^51 rounds it to a whole one: the sum has no bits below 1.
  constexpr double magic = 6755399441055744.0;
  constexpr double least = std::numeric_limits<To>::min(), greatest = std::numeric_limits<To>::max();
  constexpr std::size_t block = 256;
  std::array<std::int32_t, block> clips;
  std::array<To, block> samples;
  for (std::size_t first = 0; first < count; first += block) {
    const std::size_t size = std::min(block, count - first);
    bool isFinite = true;
    for (std::size_t i = 0; i < size; ++i) {
      const double value = static_cast<double>(sums[first + i]) * scaling.scale + scaling.offset;
      isFinite = isFinite & (value - value == 0);
      const double near = std::min(std::max(value, least - 1), greatest + 1);
      const double rounded = (near + magic) - magic;
      const double clipped = std::min(std::max(rounded, least), greatest);
      clips[i] = clipped != rounded ? 1 : 0;
      samples[i] = static_cast<To>(clipped);
    }
    if (!isFinite) throw std::runtime_error("an output is beyond 1.8e308, the range of float64");
    for (std::size_t i = 0; i < size; ++i) {
      counts.clipped += static_cast<std::uint64_t>(clips[i]);
      to[(first + i) * channels] = samples[i];
    }
  }
}

/// sum * scale + offset in the type of the sums.
template <class Sum>
void storeScaled(const Sum* sums, std::size_t count, const SampleScaling& scaling, Sum* to, std::size_t channels) {
  using Real = typename PartOf<Sum>::Type;
  const auto scale = static_cast<Real>(scaling.scale), offset = static_cast<Real>(scaling.offset);
  const bool isPlain = scaling.scale == 1 && scaling.offset == 0;
  for (std::size_t i = 0; i < count; ++i) to[i * channels] = isPlain ? sums[i] : sums[i] * scale + offset;
}

}  // namespace BP::tool
