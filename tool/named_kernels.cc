#include "tool/named_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tool/portable_math.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

using Settings = std::vector<std::string_view>;

/// A kernel that is known by name.
struct NamedKernel {
  std::string_view form;  ///< the name, and what stands for its settings
  std::string_view meaning;
  FilterKernel (*make)(const Settings& settings);
  /// Makes the line whose outer product with itself is the kernel; null if there is no such line.
  FilterKernel (*makeLine)(const Settings& settings) = nullptr;

  std::string_view name() const { return form.substr(0, form.find(':')); }
  std::size_t settings() const { return static_cast<std::size_t>(std::ranges::count(form, ':')); }
};

int parseSide(std::string_view text) { return parseWhole(text, 1, maxKernelSide, "kernel: N"); }

/// The value of a setting called `name`.
double parseSetting(std::string_view text, double least, double greatest, const std::string& name) {
  const double value = parseNumber(text, "kernel: " + name);
  if (value >= least && value <= greatest) return value;
  throw std::runtime_error("kernel: " + name + ": " + inQuotes(text) + " is not a number of " + numberText(least) +
                           " to " + numberText(greatest));
}

double parseSigma(std::string_view text, const std::string& name = "SIGMA") {
  constexpr double least = 0.01, greatest = 10000;
  return parseSetting(text, least, greatest, name);
}

FilterKernel square(int side, std::vector<double> elements) { return {side, side, std::move(elements)}; }

double sumOf(const std::vector<double>& elements) { return std::accumulate(elements.begin(), elements.end(), 0.0); }

/// value(x, y) at the distances of each element from the middle of a kernel, row by row.
template <class Value>
std::vector<double> sampled(int width, int height, const Value& value) {
  std::vector<double> elements;
  for (int row = 0; row < height; ++row) {
    for (int column = 0; column < width; ++column) {
      elements.push_back(value(column - 0.5 * (width - 1), row - 0.5 * (height - 1)));
    }
  }
  return elements;
}

/// The odd side of a kernel that reaches `reach` pixels from its middle. `setting` appears in the error.
int sideFor(double reach, std::string_view setting) {
  const double side = 2 * std::ceil(reach) + 1;
  if (side <= maxKernelSide) return static_cast<int>(side);
  throw std::runtime_error("kernel: " + inQuotes(setting) + " makes a kernel of " + numberText(side) +
                           " pixels; at most " + std::to_string(maxKernelSide) + " are allowed");
}

FilterKernel makeBox(const Settings& settings) {
  const int side = parseSide(settings[0]);
  const int count = side * side;
  return square(side, std::vector<double>(static_cast<std::size_t>(count), 1.0 / count));
}

FilterKernel makeBoxLine(const Settings& settings) {
  const int side = parseSide(settings[0]);
  return {side, 1, std::vector<double>(static_cast<std::size_t>(side), 1.0 / side)};
}

/// Side and sigma of a Gaussian: N and SIGMA, or SIGMA alone, for which the kernel reaches three of them.
struct Gaussian {
  explicit Gaussian(const Settings& settings)
      : sigma(parseSigma(settings.back())),
        side(settings.size() == 2 ? parseSide(settings[0]) : sideFor(3 * sigma, settings[0])) {}
  double sigma;
  int side;
};

/// exp(-x^2 / (2 sigma^2)) at the distances x from the middle of a line.
std::vector<double> gaussianProfile(int side, double sigma) {
  return sampled(side, 1, [sigma](double x, double) {
    const double distance = x / sigma;
    return exponential(-0.5 * distance * distance);
  });
}

/// Divides elements by their sum.
std::vector<double> ofSumOne(std::vector<double> elements, const Settings& settings) {
  const double sum = sumOf(elements);
  if (sum == 0) {
    throw std::runtime_error("kernel: SIGMA: " + inQuotes(settings.back()) + " is too small for N " +
                             std::string(settings[0]) + ": all elements would be 0");
  }
  for (double& element : elements) element /= sum;
  return elements;
}

std::vector<double> productOf(const std::vector<double>& profile) {
  std::vector<double> elements;
  for (double down : profile) {
    for (double across : profile) elements.push_back(across * down);
  }
  return elements;
}

FilterKernel makeGaussian(const Settings& settings) {
  const Gaussian shape(settings);
  return square(shape.side, ofSumOne(productOf(gaussianProfile(shape.side, shape.sigma)), settings));
}

FilterKernel makeGaussianLine(const Settings& settings) {
  const Gaussian shape(settings);
  return {shape.side, 1, ofSumOne(gaussianProfile(shape.side, shape.sigma), settings)};
}

/// Takes the mean away from each element, so that their sum is 0 but for rounding.
std::vector<double> ofSumZero(std::vector<double> elements) {
  const double mean = sumOf(elements) / static_cast<double>(elements.size());
  for (double& element : elements) element -= mean;
  return elements;
}

/// (x^2 + y^2 - 2 sigma^2) / sigma^4 times a Gaussian of sum 1; it reaches four sigma.
FilterKernel makeLog(const Settings& settings) {
  const double sigma = parseSigma(settings[0]);
  const int side = sideFor(4 * sigma, settings[0]);
  const std::vector<double> gaussian = ofSumOne(productOf(gaussianProfile(side, sigma)), settings);
  const double variance = sigma * sigma;
  std::size_t i = 0;
  return square(side, ofSumZero(sampled(side, side, [&](double x, double y) {
                  return (x * x + y * y - 2 * variance) / (variance * variance) * gaussian[i++];
                })));
}

/// A Gaussian of the first sigma less one of the second; it reaches three of the greater one.
FilterKernel makeDog(const Settings& settings) {
  const double first = parseSigma(settings[0], "S1"), second = parseSigma(settings[1], "S2");
  const int side = sideFor(3 * std::max(first, second), first > second ? settings[0] : settings[1]);
  std::vector<double> elements = ofSumOne(productOf(gaussianProfile(side, first)), settings);
  const std::vector<double> other = ofSumOne(productOf(gaussianProfile(side, second)), settings);
  std::ranges::transform(elements, other, elements.begin(), std::minus());
  return square(side, std::move(elements));
}

/// The mean of the pixels whose middle lies within a circle.
FilterKernel makeDisk(const Settings& settings) {
  const double radius = parseSetting(settings[0], 0, maxKernelSide / 2, "RADIUS");
  const int side = 2 * static_cast<int>(std::floor(radius)) + 1;
  std::vector<double> elements =
      sampled(side, side, [=](double x, double y) { return x * x + y * y <= radius * radius ? 1.0 : 0.0; });
  return square(side, ofSumOne(std::move(elements), settings));
}

/// The mean along a line of some length through the middle: a pixel counts by 1 less the distance of its middle from
/// the line, if that is positive. The angle counts from the right towards the top.
FilterKernel makeMotion(const Settings& settings) {
  const double length = parseSetting(settings[0], 1, maxKernelSide - 2, "LENGTH");
  const double turns = parseSetting(settings[1], -360, 360, "ANGLE") / 360;
  const double across = cosineOfTurns(turns), down = -cosineOfTurns(turns - 0.25);
  const double half = 0.5 * (length - 1);
  constexpr double tiny = 1e-9;  // what remains of a cosine that should be 0 makes no row of its own
  const int width = 2 * static_cast<int>(std::ceil(half * std::fabs(across) - tiny)) + 1;
  const int height = 2 * static_cast<int>(std::ceil(half * std::fabs(down) - tiny)) + 1;
  std::vector<double> elements = sampled(width, height, [=](double x, double y) {
    const double along = std::clamp(x * across + y * down, -half, half);
    const double aside = x - along * across, below = y - along * down;
    return std::max(0.0, 1 - std::sqrt(aside * aside + below * below));
  });
  return {width, height, ofSumOne(std::move(elements), settings)};
}

/// Makes a kernel of three rows of three elements.
template <int... element>
FilterKernel makeFixed(const Settings& /*settings*/) {
  return square(3, {static_cast<double>(element)...});
}

constexpr NamedKernel namedKernels[] = {
    {"box:N", "mean of N x N pixels", makeBox, makeBoxLine},
    {"gaussian:SIGMA", "Gaussian of sum 1, SIGMA in pixels, that reaches 3 SIGMA", makeGaussian, makeGaussianLine},
    {"gaussian:N:SIGMA", "N x N elements of it", makeGaussian, makeGaussianLine},
    {"log:SIGMA", "Laplacian of a Gaussian, of sum 0", makeLog},
    {"dog:S1:S2", "Gaussian of S1 less one of S2", makeDog},
    {"disk:RADIUS", "mean of the pixels within a circle", makeDisk},
    {"motion:LENGTH:ANGLE", "mean along a line; ANGLE in degrees, 90 upwards", makeMotion},
    {"sharpen", "0,-1,0;-1,5,-1;0,-1,0", makeFixed<0, -1, 0, -1, 5, -1, 0, -1, 0>},
    {"laplacian", "0,1,0;1,-4,1;0,1,0", makeFixed<0, 1, 0, 1, -4, 1, 0, 1, 0>},
    {"sobel-x", "-1,0,1;-2,0,2;-1,0,1", makeFixed<-1, 0, 1, -2, 0, 2, -1, 0, 1>},
    {"sobel-y", "-1,-2,-1;0,0,0;1,2,1", makeFixed<-1, -2, -1, 0, 0, 0, 1, 2, 1>},
    {"prewitt-x", "-1,0,1;-1,0,1;-1,0,1", makeFixed<-1, 0, 1, -1, 0, 1, -1, 0, 1>},
    {"prewitt-y", "-1,-1,-1;0,0,0;1,1,1", makeFixed<-1, -1, -1, 0, 0, 0, 1, 1, 1>},
    {"scharr-x", "-3,0,3;-10,0,10;-3,0,3", makeFixed<-3, 0, 3, -10, 0, 10, -3, 0, 3>},
    {"scharr-y", "-3,-10,-3;0,0,0;3,10,3", makeFixed<-3, -10, -3, 0, 0, 0, 3, 10, 3>},
};

std::string_view nameIn(std::string_view text) { return text.substr(0, text.find(':')); }

Settings settingsOf(std::string_view text) {
  Settings settings = split(text, ':');
  settings.erase(settings.begin());
  return settings;
}

/// The kernel that `text` names, whose settings it has.
const NamedKernel& findKernel(const std::string& text) {
  std::string forms;
  for (const NamedKernel& named : namedKernels) {
    if (named.name() != nameIn(text)) continue;
    if (named.settings() == settingsOf(text).size()) return named;
    forms.append(forms.empty() ? "" : " or ").append(named.form);
  }
  throw std::runtime_error("kernel " + inQuotes(text) + ": allowed is " + forms);
}

std::string formLine(const NamedKernel& named) {
  constexpr std::size_t width = 22;
  return "  " + std::string(named.form) + std::string(width - named.form.size(), ' ') + std::string(named.meaning) +
         "\n";
}

}  // namespace

bool isKernelName(std::string_view text) {
  return std::ranges::any_of(namedKernels, [&](const NamedKernel& named) { return named.name() == nameIn(text); });
}

FilterKernel namedKernel(const std::string& text) { return findKernel(text).make(settingsOf(text)); }

std::optional<FilterKernel> namedLine(const std::string& text) {
  const NamedKernel& named = findKernel(text);
  if (named.makeLine == nullptr) return std::nullopt;
  return named.makeLine(settingsOf(text));
}

std::string namedKernelForms() {
  std::string forms;
  for (const NamedKernel& named : namedKernels) forms += formLine(named);
  return forms;
}

std::string namedLineForms() {
  std::string forms;
  for (const NamedKernel& named : namedKernels) {
    if (named.makeLine != nullptr) forms += formLine(named);
  }
  return forms;
}

std::string namedKernelList() {
  std::string list;
  for (const NamedKernel& named : namedKernels) list.append(list.empty() ? "" : ", ").append(named.form);
  return list;
}

}  // namespace BP::tool
