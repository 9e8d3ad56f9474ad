#include "tool/levels.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace BP::tool {

namespace {

template <class T>
double levelOf(T value) {
  return static_cast<double>(value);
}
/// The magnitude, as great * sqrt(1 + (small / great)^2): a square root is the same on every machine, and no square
/// overflows.
template <class T>
double levelOf(const std::complex<T>& value) {
  const double re = std::fabs(static_cast<double>(value.real())), im = std::fabs(static_cast<double>(value.imag()));
  const double great = std::max(re, im), small = std::min(re, im);
  if (great == 0 || !std::isfinite(re + im)) return re + im;
  const double ratio = small / great;
  return great * std::sqrt(1 + ratio * ratio);
}

std::vector<double> valuesOf(const Array& array) {
  std::vector<double> values(array.elements());
  visitElements(array, [&](const auto* elements) {
    std::transform(elements, elements + values.size(), values.begin(), [](const auto& v) { return levelOf(v); });
  });
  return values;
}

}  // namespace

double Levels::place(double value) const {
  if (!std::isfinite(value)) return 1;
  // Halves, because the difference of two finite numbers can overflow.
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
