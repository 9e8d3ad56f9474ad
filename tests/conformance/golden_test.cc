// Hashes of outputs that must be the same on every processor, for every compiler and in every release of a version of
// the numerical contract. They were computed once; a change of one is a change of the contract.
#include <gtest/gtest.h>

#include <bit>
#include <complex>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "orvane/lanes/target.h"
#include "orvane/orvane.h"

namespace BP::test {

namespace {

using namespace filters;

/// The generator splitmix64: numbers that depend on no library.
class Numbers {
 public:
  explicit Numbers(std::uint64_t seed) : state(seed) {}
  std::uint64_t next() {
    std::uint64_t z = (state += 0x9e3779b97f4a7c15U);
    z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31U);
  }
  template <class T>
  T value() {
    const std::uint64_t bits = next();
    if constexpr (std::is_integral_v<T>) {
      return static_cast<T>(bits >> 7U);
    } else if constexpr (std::is_floating_point_v<T>) {
      // All bits of a significand, over 8 binades.
      constexpr int digits = std::numeric_limits<T>::digits;
      const auto whole = static_cast<T>(bits >> static_cast<unsigned>(64 - digits));
      const T scaled = whole * static_cast<T>(1U << (bits & 7U)) /
                       static_cast<T>(std::uint64_t{1} << static_cast<unsigned>(digits - 1));
      return (bits & 8U) != 0 ? -scaled : scaled;
    } else {
      const auto real = value<typename T::value_type>();
      return {real, value<typename T::value_type>()};
    }
  }
  template <class T>
  Array<T> array(const Extents& extents) {
    Array<T> result(extents);
    for (T& element : result) element = value<T>();
    return result;
  }

 private:
  std::uint64_t state;
};

/// FNV-1a over the elements, the least significant byte first.
class Hash {
 public:
  template <class T>
  void add(const T& value) {
    if constexpr (requires { typename T::value_type; }) {
      add(value.real());
      add(value.imag());
    } else if constexpr (sizeof(T) == 8) {
      addBits(std::bit_cast<std::uint64_t>(value), 8);
    } else if constexpr (sizeof(T) == 4) {
      addBits(std::bit_cast<std::uint32_t>(value), 4);
    } else {
      addBits(static_cast<std::uint64_t>(value), static_cast<int>(sizeof(T)));
    }
  }
  template <class T>
  void addAll(const Array<T>& values) {
    for (const T& value : values) add(value);
  }
  std::uint64_t value() const { return state; }

 private:
  void addBits(std::uint64_t bits, int bytes) {
    for (int i = 0; i < bytes; ++i) state = (state ^ (bits >> static_cast<unsigned>(8 * i) & 255U)) * 0x100000001b3U;
  }
  std::uint64_t state = 0xcbf29ce484222325U;
};

template <class Take>
void forEachEdge(Take&& take) {
  for (const OutputMode mode : {OutputMode::valid, OutputMode::same, OutputMode::full}) {
    for (const PadRule pad :
         {PadRule::constant, PadRule::replicate, PadRule::symmetric, PadRule::circular, PadRule::mirror}) {
      take(mode, PadOption{pad, pad == PadRule::constant ? 3.0 : 0.0});
    }
  }
}

template <class UT, class HT>
std::uint64_t convolutions() {
  Numbers numbers(1);
  Hash hash;
  forEachEdge([&](OutputMode mode, PadOption pad) {
    const Array<UT> image = numbers.array<UT>({71, 23});
    const Array<HT> filter = numbers.array<HT>({6, 5}), row = numbers.array<HT>({7}), column = numbers.array<HT>({4});
    hash.addAll(convolve(image, filter, {.mode = mode, .pad = pad}));
    hash.addAll(correlate(image, filter, {.mode = mode, .pad = pad, .normalise = Normalisation::energy}));
    hash.addAll(convolveSeparable(image, row, column, {.mode = mode, .pad = pad}));
  });
  return hash.value();
}

template <class T>
std::uint64_t volumes() {
  Numbers numbers(2);
  Hash hash;
  forEachEdge([&](OutputMode mode, PadOption pad) {
    const Array<T> volume = numbers.array<T>({19, 7, 5}), filter = numbers.array<T>({3, 4, 2});
    hash.addAll(correlateND(volume, filter, {.mode = mode, .pad = pad}));
  });
  return hash.value();
}

template <class T>
std::uint64_t medians() {
  Numbers numbers(3);
  Hash hash;
  forEachEdge([&](OutputMode mode, PadOption pad) {
    const Array<T> image = numbers.array<T>({53, 21});
    for (const Extents& window : {Extents{3, 3}, Extents{4, 5}, Extents{7, 7}, Extents{17, 2}}) {
      hash.addAll(median(image, window, {.mode = mode, .pad = pad}));
    }
  });
  return hash.value();
}

template <class T>
std::uint64_t scores() {
  Numbers numbers(4);
  Hash hash;
  for (const Metric metric :
       {Metric::sad, Metric::ssd, Metric::maxad, Metric::product, Metric::cosine, Metric::correlationCoefficient}) {
    if (!std::is_floating_point_v<T> && greatestIsBest(metric)) continue;
    const Array<T> image = numbers.array<T>({61, 31}), pattern = numbers.array<T>({9, 8});
    const auto match = matchTemplate(image, pattern, {.metric = metric, .map = true});
    hash.addAll(match.map);
    hash.add(match.location[0]);
    hash.add(match.location[1]);
  }
  return hash.value();
}

/// Sums that are exact, rounded and cut, and what was counted of them.
std::uint64_t fixedSums() {
  Numbers numbers(5);
  Hash hash;
  const Array<double> values = numbers.array<double>({47, 19}), weights = numbers.array<double>({5, 3});
  for (const char* accumulator : {"s40.8", "s20.6", "s13.4", "s70.20"}) {
    for (const Overflow overflow : {Overflow::wrap, Overflow::saturate, Overflow::zero}) {
      const FixedModes modes{Rounding::floor, overflow};
      const FixedTypes types{.input = fixedType("s12.4"),
                             .accumulator = fixedType(accumulator),
                             .output = fixedType("s16.2"),
                             .product = fixedType("s22.9"),
                             .modes = modes};
      FixedConvolution filter(quantise(weights, fixedType("s9.5"), modes), {47, 19}, types);
      hash.addAll(toDouble(filter.run(quantise(values, types.input, modes))));
      for (const FixedStatistics& counts : filter.statistics()) {
        hash.add(counts.casts);
        hash.add(counts.overflows);
        hash.add(counts.lossy);
        hash.add(counts.minimum);
        hash.add(counts.maximum);
      }
    }
  }
  return hash.value();
}

struct Golden {
  const char* name;
  std::uint64_t (*compute)();
  std::uint64_t expected;
};

const Golden goldens[] = {
    {"convolutions of float", convolutions<float, float>, 0xc721d39d511d253fU},
    {"convolutions of double", convolutions<double, double>, 0x5d0a5aa310201754U},
    {"convolutions of complex float", convolutions<std::complex<float>, std::complex<float>>, 0x4f58fa3991df3c20U},
    {"convolutions of complex double", convolutions<std::complex<double>, std::complex<double>>, 0x752a21a35b055c92U},
    {"convolutions of double with complex double", convolutions<double, std::complex<double>>, 0x2b2c6fb1850968faU},
    {"convolutions of bytes with float", convolutions<std::uint8_t, float>, 0x3a169a7bc4568845U},
    {"convolutions of 32-bit integers with double", convolutions<std::int32_t, double>, 0xb806a115527b1026U},
    {"volumes of float", volumes<float>, 0x3d82562fc59624bbU},
    {"volumes of double", volumes<double>, 0x0d300d8a6a7695a5U},
    {"medians of float", medians<float>, 0xcb81f1ec6f397faaU},
    {"medians of double", medians<double>, 0x2f328703442feebbU},
    {"medians of bytes", medians<std::uint8_t>, 0x721b3c18b6ed76c3U},
    {"medians of 16-bit integers", medians<std::int16_t>, 0xf2350a3773f7a370U},
    {"scores of float", scores<float>, 0xc368e2e4f4d201a2U},
    {"scores of double", scores<double>, 0x4fbfbfaab5e09f98U},
    {"scores of complex double", scores<std::complex<double>>, 0x465c559f2dab60adU},
    {"fixed-point sums", fixedSums, 0xa9959aef00561ab3U},
};

TEST(Golden, SameBitsOnEveryMachineAndTarget) {
  std::vector<std::string_view> targets = lanes::getTargets();
  targets.push_back(lanes::plain);
  for (const std::string_view target : targets) {
    ASSERT_TRUE(lanes::forceTarget(target));
    for (const Golden& golden : goldens) {
      EXPECT_EQ(golden.compute(), golden.expected) << golden.name << " on " << target;
    }
  }
  lanes::forceTarget("");
}

}  // namespace

}  // namespace BP::test
