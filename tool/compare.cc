#include "tool/compare.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <stdexcept>
#include <type_traits>

#include "tool/text.h"

namespace BP::tool {

namespace {

/// Up to here `double` has every whole number.
constexpr long double greatestExact = 9007199254740992.0L;  // 2^53

double exact(const std::string& name, double value) {
  if (!std::isfinite(value)) throw std::runtime_error("the " + name + " array holds a value that is not finite");
  return value;
}

std::vector<double> valuesOf(const Array& array, const std::string& name) {
  std::vector<double> values;
  values.reserve(array.elements());
  visitElements(array, [&](const auto* elements) {
    using T = std::remove_cvref_t<decltype(*elements)>;
    for (std::size_t i = 0; i < array.elements(); ++i) {
      if constexpr (std::is_arithmetic_v<T>) {
        if (std::is_integral_v<T> && std::fabs(static_cast<long double>(elements[i])) > greatestExact) {
          throw std::runtime_error("the " + name + " array holds " + std::to_string(elements[i]) +
                                   "; allowed are whole numbers of -2^53 to 2^53");
        }
        values.push_back(exact(name, static_cast<double>(elements[i])));
      } else {
        throw std::runtime_error("the " + name + " array has elements of type " + std::string(nameOf(array.type)) +
                                 "; allowed are real ones");
      }
    }
  });
  return values;
}

std::vector<std::int64_t> placeOf(std::size_t index, const std::vector<std::int64_t>& extents) {
  std::vector<std::int64_t> place;
  auto rest = static_cast<std::int64_t>(index);
  for (const std::int64_t extent : extents) {
    place.push_back(rest % extent);
    rest /= extent;
  }
  return place;
}

std::string ratioText(double rms, double peak) {
  if (rms == 0) return "infinite";
  char text[48];
  std::snprintf(text, sizeof text, "%.2f dB", 20 * std::log10(peak / rms));
  return text;
}

}  // namespace

Comparison compare(const Array& first, const Array& second) {
  if (first.extents != second.extents) {
    throw std::runtime_error("the extents are " + joined(first.extents, "x") + " and " + joined(second.extents, "x") +
                             "; they must be the same");
  }
  if (first.extents.empty() || first.elements() == 0) {
    throw std::runtime_error("the arrays have no dimensions or are empty; extents must be 1 or more");
  }
  const std::vector<double> a = valuesOf(first, "first"), b = valuesOf(second, "second");
  Comparison result;
  result.extents = first.extents;
  result.elements = a.size();
  double sum = 0;
  std::size_t worst = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double difference = b[i] - a[i];
    sum += difference;
    result.different += difference != 0 ? 1 : 0;
    if (std::fabs(difference) <= result.greatest) continue;
    result.greatest = std::fabs(difference);
    worst = i;
  }
  if (!std::isfinite(sum)) throw std::runtime_error("the values are too far apart: differences sum to beyond 1.8e308");
  if (result.different == 0) return result;
  double squares = 0;  // of shares of the greatest difference, lest those of tiny ones vanish
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double share = (b[i] - a[i]) / result.greatest;
    squares += share * share;
  }
  const auto count = static_cast<double>(a.size());
  result.mean = sum / count;
  result.rms = result.greatest * std::sqrt(squares / count);
  result.place = placeOf(worst, first.extents);
  result.before = a[worst];
  result.after = b[worst];
  return result;
}

std::string comparisonText(const Comparison& comparison, const std::optional<double>& peak) {
  std::string text = "values     " + joined(comparison.extents, "x") + ", " + std::to_string(comparison.different) +
                     " of " + std::to_string(comparison.elements) + " different\n";
  if (comparison.different > 0) {
    text += "greatest   " + roundedText(comparison.greatest, 4) + " at " + joined(comparison.place, ",") + ", from " +
            roundedText(comparison.before, 4) + " to " + roundedText(comparison.after, 4) + "\n";
  }
  text += "mean       " + roundedText(comparison.mean, 4) + "\nrms        " + roundedText(comparison.rms, 4) + "\n";
  if (peak) text += "psnr       " + ratioText(comparison.rms, *peak) + ", of a peak of " + numberText(*peak) + "\n";
  return text;
}

}  // namespace BP::tool
