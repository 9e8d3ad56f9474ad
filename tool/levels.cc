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
/// The magnitude. A square root gives the same bits on every machine; the ratio keeps squares of large numbers in
/// range.
template <class T>
double levelOf(const std::complex<T>& value) {
  const double re = std::fabs(static_cast<double>(value.real())), im = std::fabs(static_cast<double>(value.imag()));
  const double larger = std::max(re, im), smaller = std::min(re, im);
  if (larger == 0 || !std::isfinite(re + im)) return re + im;
  const double ratio = smaller / larger;
  return larger * std::sqrt(1 + ratio * ratio);
}

std::vector<double> valuesOf(const Array& array) {
  std::vector<double> values(array.elements());
  visitElements(array, [&](const auto* elements) {
    std::transform(elements, elements + values.size(), values.begin(), [](const auto& v) { return levelOf(v); });
  });
  return values;
}

}  // namespace

double Levels::fraction(double value) const {
  if (!std::isfinite(value)) return 1;
  // The difference of two finite numbers can be infinite; that of their halves cannot.
  const double halfSpan = max / 2 - min / 2;
  return halfSpan > 0 ? (value / 2 - min / 2) / halfSpan : 0;
}

Levels levelsOf(const Array& array) {
  Levels levels{valuesOf(array)};
  bool any = false;
  for (const double value : levels.values) {
    if (!std::isfinite(value)) {
      ++levels.notFinite;
      continue;
    }
    levels.min = any ? std::min(levels.min, value) : value;
    levels.max = any ? std::max(levels.max, value) : value;
    any = true;
  }
  return levels;
}

}  // namespace BP::tool
