#include "tool/levels.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace BP::tool {

namespace {

template <class T>
double levelOf(T value) {
  return static_cast<double>(value);
}
/// By a root, which is the same on every machine; halves keep the squares of great numbers in range.
template <class T>
double levelOf(const std::complex<T>& value) {
  const double re = std::fabs(static_cast<double>(value.real())), im = std::fabs(static_cast<double>(value.imag()));
  const double great = std::max(re, im), small = std::min(re, im);
  if (great == 0 || !std::isfinite(re + im)) return re + im;
  const double ratio = small / great;
  return great * std::sqrt(1 + ratio * ratio);
}

template <class T>
std::vector<double> valuesOf(const Array& array) {
  std::vector<double> values(array.elements());
  std::transform(array.as<T>(), array.as<T>() + values.size(), values.begin(), [](const T& v) { return levelOf(v); });
  return values;
}

std::vector<double> valuesOf(const Array& array) {
  switch (array.type) {
    case ElementType::boolean: return valuesOf<std::uint8_t>(array);
    case ElementType::int32: return valuesOf<std::int32_t>(array);
    case ElementType::float32: return valuesOf<float>(array);
    case ElementType::float64: return valuesOf<double>(array);
    case ElementType::complex64: return valuesOf<std::complex<float>>(array);
    case ElementType::complex128: return valuesOf<std::complex<double>>(array);
    default: throw std::invalid_argument("levels of an array of type " + std::string(nameOf(array.type)));
  }
}

}  // namespace

double Levels::place(double value) const {
  if (!std::isfinite(value)) return 1;
  // Halves, because the span of two finite numbers may be none.
  const double span = greatest / 2 - least / 2;
  return span > 0 ? (value / 2 - least / 2) / span : 0;
}

Levels levelsOf(const Array& array) {
  Levels levels{valuesOf(array)};
  bool any = false;
  for (const double value : levels.values) {
    if (!std::isfinite(value)) {
      ++levels.notFinite;
      continue;
    }
    levels.least = any ? std::min(levels.least, value) : value;
    levels.greatest = any ? std::max(levels.greatest, value) : value;
    any = true;
  }
  return levels;
}

}  // namespace BP::tool
