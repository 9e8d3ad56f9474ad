#include "tool/compare.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "tool/elements.h"
#include "tool/heat.h"
#include "tool/json.h"
#include "tool/levels.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

template <class T>
Element exact(T value) {
  return static_cast<long double>(value);
}
template <class T>
Element exact(const std::complex<T>& value) {
  return value;
}

Element elementAt(const Array& array, std::size_t index) {
  Element element;
  visitElements(array, [&](const auto* elements) { element = exact(elements[index]); });
  return element;
}

bool isNan(const Element& element) { return std::isnan(element.real()) || std::isnan(element.imag()); }

bool isEqual(const Element& a, const Element& b) { return a == b || (isNan(a) && isNan(b)); }

/// b - a; 0 for equal elements, also for infinities and NaN.
Element differenceOf(const Element& a, const Element& b) { return isEqual(a, b) ? Element{} : b - a; }

/// |b - a|, infinite if it is no number.
long double errorOf(const Element& difference) {
  const long double error = std::hypot(difference.real(), difference.imag());
  return std::isnan(error) ? std::numeric_limits<long double>::infinity() : error;
}

std::vector<std::int64_t> positionOf(std::size_t index, const std::vector<std::int64_t>& extents) {
  std::vector<std::int64_t> position;
  auto rest = static_cast<std::int64_t>(index);
  for (const std::int64_t extent : extents) {
    position.push_back(rest % extent);
    rest /= extent;
  }
  return position;
}

std::uint64_t differentBitsOf(const Array& first, const Array& second) {
  if (first.type != second.type) return 0;
  const std::size_t size = sizeOf(first.type);
  std::uint64_t count = 0;
  for (std::size_t at = 0; at < first.bytes.size(); at += size) {
    if (std::memcmp(&first.bytes[at], &second.bytes[at], size) != 0) ++count;
  }
  return count;
}

/// Sets mean and rms. Errors are divided by `scale`, the largest finite one, before they are squared; otherwise the
/// squares of tiny errors would be 0.
void setMeans(Comparison& result, const Array& first, const Array& second, long double scale) {
  const std::uint64_t count = result.elements - result.infiniteErrors;
  if (count == 0 || scale == 0) return;
  Element sum;
  long double squares = 0;
  for (std::size_t i = 0; i < result.elements; ++i) {
    const Element difference = differenceOf(elementAt(first, i), elementAt(second, i));
    const long double error = errorOf(difference);
    if (!std::isfinite(error)) continue;
    sum += difference;
    squares += error / scale * (error / scale);
  }
  result.mean = sum / static_cast<long double>(count);
  result.rms = scale * std::sqrt(squares / static_cast<long double>(count));
}

std::string elementText(const Element& element, ElementType type) {
  std::string text = roundedText(element.real(), 4);
  if (!isComplex(type)) return text;
  const std::string imaginary = roundedText(element.imag(), 4);
  return text + (imaginary[0] == '-' ? "" : "+") + imaginary + "i";
}

std::string typeText(const Comparison& comparison) {
  const std::string first(nameOf(comparison.firstType));
  return first + (comparison.hasSameTypes() ? "" : " and " + std::string(nameOf(comparison.secondType)));
}

std::string bitsText(const Comparison& comparison) {
  if (!comparison.hasSameTypes()) return "not compared, as the types differ";
  if (comparison.differentBits == 0) return "the same";
  return std::to_string(comparison.differentBits) + " of " + std::to_string(comparison.elements) + " different";
}

std::string ratioText(long double rms, double peak) {
  if (rms == 0) return "infinite";
  char text[48];
  std::snprintf(text, sizeof text, "%.2Lf dB", 20 * std::log10(peak / rms));
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
  Comparison result;
  result.extents = first.extents;
  result.firstType = first.type;
  result.secondType = second.type;
  result.elements = first.elements();
  result.differentBits = differentBitsOf(first, second);
  long double maxFinite = 0;
  std::size_t worst = 0;
  for (std::size_t i = 0; i < result.elements; ++i) {
    const Element a = elementAt(first, i), b = elementAt(second, i);
    if (isEqual(a, b)) continue;
    const long double error = errorOf(b - a);
    ++result.differentValues;
    if (std::isfinite(error)) {
      maxFinite = std::max(maxFinite, error);
    } else {
      ++result.infiniteErrors;
    }
    if (error <= result.maxError) continue;
    result.maxError = error;
    worst = i;
  }
  setMeans(result, first, second, maxFinite);
  result.position = positionOf(worst, first.extents);
  result.before = elementAt(first, worst);
  result.after = elementAt(second, worst);
  return result;
}

std::string comparisonText(const Comparison& comparison, const std::optional<double>& peak) {
  const ElementType widest = isComplex(comparison.firstType) ? comparison.firstType : comparison.secondType;
  std::string text = "type       " + typeText(comparison) + "\nbits       " + bitsText(comparison) + "\nvalues     " +
                     joined(comparison.extents, "x") + ", " + std::to_string(comparison.differentValues) + " of " +
                     std::to_string(comparison.elements) + " different\n";
  if (comparison.differentValues > 0) {
    text += "greatest   " + roundedText(comparison.maxError, 4) + " at " + joined(comparison.position, ",") +
            ", from " + elementText(comparison.before, comparison.firstType) + " to " +
            elementText(comparison.after, comparison.secondType) + "\n";
  }
  if (comparison.infiniteErrors > 0) {
    text += "infinite   " + std::to_string(comparison.infiniteErrors) +
            " of the differences; mean, rms and psnr leave them out\n";
  }
  text +=
      "mean       " + elementText(comparison.mean, widest) + "\nrms        " + roundedText(comparison.rms, 4) + "\n";
  if (peak) text += "psnr       " + ratioText(comparison.rms, *peak) + ", of a peak of " + numberText(*peak) + "\n";
  return text;
}

Image comparisonPicture(const Array& first, const Array& second) {
  const std::size_t rank = first.extents.size();
  const std::int64_t pixels = rank >= 2 ? first.extents[rank - 2] * first.extents[rank - 1] : 0;
  if (rank < 2 || rank > 3 || pixels > std::numeric_limits<int>::max()) {
    throw std::runtime_error("--overlay: the extents are " + joined(first.extents, "x") +
                             "; allowed are width and height, or channels, width and height, of up to 2^31 - 1 pixels");
  }
  const std::size_t channels = rank == 3 ? static_cast<std::size_t>(first.extents[0]) : 1;
  std::vector<double> errors(static_cast<std::size_t>(pixels));
  double greatest = 0;
  for (std::size_t i = 0; i < first.elements(); ++i) {
    const Element a = elementAt(first, i), b = elementAt(second, i);
    double& error = errors[i / channels];
    if (!isEqual(a, b)) error = std::max(error, static_cast<double>(errorOf(b - a)));
    if (std::isfinite(error)) greatest = std::max(greatest, error);
  }
  const Levels levels = levelsOf(first);
  constexpr double groundPart = 0.35, leastHeat = 0.3;  // the least difference stands out from the ground
  Image picture = makeImage(static_cast<int>(first.extents[rank - 2]), static_cast<int>(first.extents[rank - 1]), 3, 8);
  for (std::size_t i = 0; i < errors.size(); ++i) {
    const auto grey = static_cast<int>(255 * groundPart * levels.fraction(levels.values[i * channels]));
    const double part = std::isfinite(errors[i]) && greatest > 0 ? errors[i] / greatest : 1;
    const auto x = static_cast<std::int64_t>(i) % picture.width, y = static_cast<std::int64_t>(i) / picture.width;
    putColour(picture, x, y, errors[i] > 0 ? heatColour(leastHeat + (1 - leastHeat) * part) : Colour{grey, grey, grey});
  }
  return picture;
}

std::string comparisonJson(const Comparison& comparison, const std::optional<double>& peak) {
  const auto element = [](const Element& value, ElementType type) {
    return std::complex<double>(static_cast<double>(value.real()),
                                isComplex(type) ? static_cast<double>(value.imag()) : 0);
  };
  const auto rms = static_cast<double>(comparison.rms);
  const bool hasComplex = isComplex(comparison.firstType) || isComplex(comparison.secondType);
  JsonObject json;
  json.add("firstType", nameOf(comparison.firstType)).add("secondType", nameOf(comparison.secondType));
  json.add("extents", comparison.extents).add("elements", comparison.elements);
  json.add("differentBits", comparison.differentBits).add("differentValues", comparison.differentValues);
  json.add("infiniteErrors", comparison.infiniteErrors);
  json.add("maxError", static_cast<double>(comparison.maxError)).add("position", comparison.position);
  json.addText("first", jsonOf(element(comparison.before, comparison.firstType), isComplex(comparison.firstType)));
  json.addText("second", jsonOf(element(comparison.after, comparison.secondType), isComplex(comparison.secondType)));
  json.addText(
      "mean",
      jsonOf({static_cast<double>(comparison.mean.real()), static_cast<double>(comparison.mean.imag())}, hasComplex));
  json.add("rms", rms);
  if (peak) json.add("peak", *peak).add("psnr", 20 * std::log10(*peak / rms));
  return json.text() + "\n";
}

}  // namespace BP::tool
