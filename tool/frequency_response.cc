#include "tool/frequency_response.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "tool/portable_math.h"

namespace BP::tool {

namespace {

constexpr int period = 128;  // frequencies in a turn a pixel
constexpr int highest = period / 2;

struct Wave {
  double real = 0;
  double imaginary = 0;
};

/// exp(-2 pi i n / 128) for n from 0 on.
std::array<Wave, period> makeWaves() {
  std::array<Wave, period> waves;
  for (int n = 0; n < period; ++n) {
    const double turns = static_cast<double>(n) / period;
    waves[static_cast<std::size_t>(n)] = {cosineOfTurns(turns), -cosineOfTurns(turns - 0.25)};
  }
  return waves;
}

}  // namespace

FrequencyResponse frequencyResponse(const FilterKernel& kernel) {
  static const std::array<Wave, period> waves = makeWaves();
  const auto waveAt = [&](int frequency, int place) {
    return waves[static_cast<std::size_t>(((frequency * place) % period + period) % period)];
  };
  FrequencyResponse response{2 * highest + 1, {}, 0};
  const auto side = static_cast<std::size_t>(response.side);
  response.values.resize(side * side);
  std::vector<Wave> rows(static_cast<std::size_t>(kernel.height));  // each row's transform at one frequency
  for (int across = -highest; across <= highest; ++across) {
    for (int y = 0; y < kernel.height; ++y) {
      Wave sum;
      for (int x = 0; x < kernel.width; ++x) {
        const double element = kernel.elements[static_cast<std::size_t>(y * kernel.width + x)];
        const Wave wave = waveAt(across, x);
        sum.real += element * wave.real;
        sum.imaginary += element * wave.imaginary;
      }
      rows[static_cast<std::size_t>(y)] = sum;
    }
    for (int down = -highest; down <= highest; ++down) {
      Wave sum;
      for (int y = 0; y < kernel.height; ++y) {
        const Wave& row = rows[static_cast<std::size_t>(y)];
        const Wave wave = waveAt(down, y);
        sum.real += row.real * wave.real - row.imaginary * wave.imaginary;
        sum.imaginary += row.real * wave.imaginary + row.imaginary * wave.real;
      }
      const double magnitude = std::sqrt(sum.real * sum.real + sum.imaginary * sum.imaginary);
      response.values[static_cast<std::size_t>(down + highest) * side + static_cast<std::size_t>(across + highest)] =
          magnitude;
      response.greatest = std::max(response.greatest, magnitude);
    }
  }
  return response;
}

}  // namespace BP::tool
