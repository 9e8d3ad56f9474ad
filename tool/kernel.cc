#include "tool/kernel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "tool/matrix_text.h"
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

FilterKernel square(int side, std::vector<double> elements) { return {side, side, std::move(elements)}; }

FilterKernel makeBox(const Settings& settings) {
  const int side = parseSide(settings[0]);
  const int count = side * side;
  return square(side, std::vector<double>(static_cast<std::size_t>(count), 1.0 / count));
}

FilterKernel makeBoxLine(const Settings& settings) {
  const int side = parseSide(settings[0]);
  return {side, 1, std::vector<double>(static_cast<std::size_t>(side), 1.0 / side)};
}

/// exp(-x^2 / (2 sigma^2)) at the distances x from the middle of a line.
std::vector<double> gaussianProfile(const Settings& settings) {
  const int side = parseSide(settings[0]);
  const double sigma = parseNumber(settings[1], "kernel: SIGMA");
  if (sigma < 0.01 || sigma > 10000) {
    throw std::runtime_error("kernel: SIGMA: " + inQuotes(settings[1]) + " is not a number of 0.01 to 10000");
  }
  std::vector<double> profile;
  for (int i = 0; i < side; ++i) {
    const double distance = (i - 0.5 * (side - 1)) / sigma;
    profile.push_back(exponential(-0.5 * distance * distance));
  }
  return profile;
}

/// Divides elements by their sum.
std::vector<double> ofSumOne(std::vector<double> elements, const Settings& settings) {
  double sum = 0;
  for (double element : elements) sum += element;
  if (sum == 0) {
    throw std::runtime_error("kernel: SIGMA: " + inQuotes(settings[1]) + " is too small for N " +
                             std::string(settings[0]) + ": all elements would be 0");
  }
  for (double& element : elements) element /= sum;
  return elements;
}

FilterKernel makeGaussian(const Settings& settings) {
  const std::vector<double> profile = gaussianProfile(settings);
  std::vector<double> elements;
  for (double down : profile) {
    for (double across : profile) elements.push_back(across * down);
  }
  return square(static_cast<int>(profile.size()), ofSumOne(std::move(elements), settings));
}

FilterKernel makeGaussianLine(const Settings& settings) {
  std::vector<double> profile = gaussianProfile(settings);
  const int side = static_cast<int>(profile.size());
  return {side, 1, ofSumOne(std::move(profile), settings)};
}

constexpr std::array<NamedKernel, 6> namedKernels{{
    {"box:N", "mean of N x N pixels", makeBox, makeBoxLine},
    {"gaussian:N:SIGMA", "N x N Gaussian of sum 1, SIGMA in pixels", makeGaussian, makeGaussianLine},
    {"sharpen", "0,-1,0;-1,5,-1;0,-1,0",
     [](const Settings&) {
       return square(3, {0, -1, 0, -1, 5, -1, 0, -1, 0});
     }},
    {"laplacian", "0,1,0;1,-4,1;0,1,0",
     [](const Settings&) {
       return square(3, {0, 1, 0, 1, -4, 1, 0, 1, 0});
     }},
    {"sobel-x", "-1,0,1;-2,0,2;-1,0,1",
     [](const Settings&) {
       return square(3, {-1, 0, 1, -2, 0, 2, -1, 0, 1});
     }},
    {"sobel-y", "-1,-2,-1;0,0,0;1,2,1",
     [](const Settings&) {
       return square(3, {-1, -2, -1, 0, 0, 0, 1, 2, 1});
     }},
}};

/// The settings in `text` after the name.
Settings settingsOf(const NamedKernel& named, const std::string& text) {
  Settings settings = split(text, ':');
  settings.erase(settings.begin());
  if (settings.size() != named.settings()) {
    throw std::runtime_error("kernel " + inQuotes(text) + ": allowed is " + std::string(named.form));
  }
  return settings;
}

/// The kernel whose name `text` starts with, or null.
const NamedKernel* findNamed(const std::string& text) {
  const std::string_view name = std::string_view(text).substr(0, text.find(':'));
  const auto named = std::ranges::find_if(namedKernels, [&](const NamedKernel& k) { return k.name() == name; });
  return named == namedKernels.end() ? nullptr : &*named;
}

/// True for a name that ends in .csv, and for the name of a file even if its commas make it look like a matrix.
bool isFileName(const std::string& text) {
  std::error_code ignored;
  return lowered(text).ends_with(".csv") || std::filesystem::exists(text, ignored);
}

bool looksLikeMatrix(std::string_view text) {
  return text.find_first_of(",;") != std::string_view::npos || text.find_first_of("0123456789+-.") == 0;
}

[[noreturn]] void unknown(const std::string& text) {
  std::string allowed;
  for (const NamedKernel& named : namedKernels) allowed += std::string(named.form) + ", ";
  throw std::runtime_error("unknown kernel " + inQuotes(text) + "; allowed are " + allowed +
                           "a matrix such as 1,2,1;2,4,2;1,2,1, or the name of a CSV file");
}

FilterKernel parseUnscaled(const std::string& text) {
  if (trimmed(text).empty()) throw std::runtime_error("the kernel is empty; it needs at least one number");
  if (const NamedKernel* named = findNamed(text)) return named->make(settingsOf(*named, text));
  if (isFileName(text)) return readMatrix(text);
  if (looksLikeMatrix(trimmed(text))) return parseMatrix(text, ';', "kernel " + inQuotes(text), "row");
  unknown(text);
}

}  // namespace

FilterKernel parseKernel(const std::string& text, double scale) {
  FilterKernel kernel = parseUnscaled(text);
  for (double& element : kernel.elements) {
    element *= scale;
    if (!std::isfinite(element)) {
      throw std::runtime_error("--scale " + numberText(scale) + " makes an element of the kernel infinite");
    }
  }
  return kernel;
}

FilterKernel parseLine(const std::string& text, const std::string& option) {
  const NamedKernel* named = findNamed(text);
  if (named != nullptr && named->makeLine != nullptr) return named->makeLine(settingsOf(*named, text));
  FilterKernel line = parseUnscaled(text);
  if (named != nullptr || (line.width > 1 && line.height > 1)) {
    throw std::runtime_error(option + " " + inQuotes(text) +
                             ": allowed are box:N, gaussian:N:SIGMA, or one line of numbers such as 1,2,1");
  }
  line.width *= std::exchange(line.height, 1);
  return line;
}

Option kernelScaleOption() {
  return {.name = "--scale",
          .meaning = "Multiplies each element of the kernel; such as 0.1 or 1/16",
          .form = "NUMBER",
          .defaultValue = "1"};
}

std::string lineForms() {
  return "  box:N               mean of N pixels\n"
         "  gaussian:N:SIGMA    N elements of a Gaussian of sum 1, SIGMA in pixels\n"
         "  1,2,1               any line of numbers; such as -0.5 or 1/16\n"
         "  FILE                CSV file of one line\n"
         "Lengths of 1 to " +
         std::to_string(maxKernelSide) + ".\n";
}

std::string kernelForms() {
  std::string forms;
  for (const NamedKernel& named : namedKernels) {
    forms +=
        "  " + std::string(named.form) + std::string(20 - named.form.size(), ' ') + std::string(named.meaning) + "\n";
  }
  return forms +
         "  1,2,1;2,4,2;1,2,1   any matrix, row by row; numbers such as -0.5 or 1/16\n"
         "  FILE                CSV file, a line for each row\n"
         "Sides of 1 to " +
         std::to_string(maxKernelSide) + ".\n";
}

}  // namespace BP::tool
