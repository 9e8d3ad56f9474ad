#include "tool/tiff_samples.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace BP::tool {

namespace {

/// Sample `i` of a row of samples of less than 8 bits, the first in the highest bits.
std::uint8_t smallSample(const std::uint8_t* row, std::size_t i, std::size_t bits) {
  const std::size_t place = i * bits;
  const unsigned shift = static_cast<unsigned>(8 - bits - place % 8);
  return static_cast<std::uint8_t>(row[place / 8] >> shift & ((1u << bits) - 1));
}

template <class T>
void turnRound(std::uint8_t* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    T value;
    std::memcpy(&value, bytes + i * sizeof(T), sizeof(T));
    value = static_cast<T>(std::numeric_limits<T>::max() - value);
    std::memcpy(bytes + i * sizeof(T), &value, sizeof(T));
  }
}

void turnRound(std::uint8_t* bytes, std::size_t count, ElementType type) {
  switch (sizeOf(type)) {
    case 1: return turnRound<std::uint8_t>(bytes, count);
    case 2: return turnRound<std::uint16_t>(bytes, count);
    case 4: return turnRound<std::uint32_t>(bytes, count);
    default: return turnRound<std::uint64_t>(bytes, count);
  }
}

/// The colours of indices, of 16 bits each if not all of the palette are of 8.
void lookUp(const std::uint8_t* from, std::size_t width, const TiffLayout& layout, std::uint8_t* to) {
  const bool isWide = std::ranges::any_of(
      layout.palette, [](const auto& c) { return std::ranges::any_of(c, [](auto v) { return v % 257 != 0; }); });
  for (std::size_t x = 0; x < width; ++x) {
    for (const std::uint16_t value : layout.palette[from[x]]) {
      if (isWide) {
        std::memcpy(to, &value, 2);
        to += 2;
      } else {
        *to++ = static_cast<std::uint8_t>(value / 257);
      }
    }
  }
}

}  // namespace

void spreadSamples(const std::uint8_t* from, std::size_t width, const TiffLayout& layout, std::size_t plane,
                   std::uint8_t* to) {
  const auto bits = static_cast<std::size_t>(layout.bits), samples = static_cast<std::size_t>(layout.samples);
  const std::size_t held = layout.isSeparate ? 1 : samples;
  const std::size_t size = std::max<std::size_t>(1, bits / 8);
  if (bits < 8) {
    for (std::size_t i = 0; i < width * held; ++i) {
      to[i / held * samples + i % held + plane] = smallSample(from, i, bits);
    }
  } else if (held == samples) {
    std::memcpy(to, from, width * samples * size);
  } else {
    for (std::size_t x = 0; x < width; ++x) std::memcpy(to + (x * samples + plane) * size, from + x * size, size);
  }
}

void finishSamples(const std::uint8_t* from, std::size_t width, const TiffLayout& layout, std::uint8_t* to) {
  if (!layout.palette.empty()) return lookUp(from, width, layout, to);
  const std::size_t count = width * static_cast<std::size_t>(layout.samples);
  std::memcpy(to, from, count * sizeOf(layout.type));
  if (layout.bits < 8) {
    const auto factor = static_cast<std::uint8_t>(255 / ((1 << layout.bits) - 1));
    for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<std::uint8_t>(to[i] * factor);
  }
  if (layout.isWhiteZero) turnRound(to, count, layout.type);
}

}  // namespace BP::tool
