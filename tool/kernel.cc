#include "tool/kernel.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "tool/matrix_text.h"
#include "tool/named_kernels.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// True for a name that ends as those of kernel files do, and for the name of a file even if its commas make it look
/// like a matrix.
bool isFileName(const std::string& text) {
  constexpr std::string_view endings[] = {".csv", ".npy", ".txt", ".tsv"};
  const std::string name = lowered(text);
  std::error_code ignored;
  return std::ranges::any_of(endings, [&](std::string_view ending) { return name.ends_with(ending); }) ||
         std::filesystem::exists(text, ignored);
}

bool looksLikeMatrix(std::string_view text) {
  return text.find_first_of(",;") != std::string_view::npos || text.find_first_of("0123456789+-.") == 0;
}

[[noreturn]] void unknown(const std::string& text) {
  throw std::runtime_error("unknown kernel " + inQuotes(text) + "; allowed are " + namedKernelList() +
                           ", a matrix such as 1,2,1;2,4,2;1,2,1, or the name of a CSV or NPY file");
}

FilterKernel parseUnscaled(const std::string& text) {
  if (trimmed(text).empty()) throw std::runtime_error("the kernel is empty; it needs at least one number");
  if (isKernelName(text)) return namedKernel(text);
  if (isFileName(text)) return readMatrix(text);
  if (looksLikeMatrix(trimmed(text))) return parseMatrix(text, ';', "kernel " + inQuotes(text), "row");
  unknown(text);
}

std::string fileForms() { return "Numbers in a file are separated by commas, or by spaces and tabs.\n"; }

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
  std::optional<FilterKernel> line;
  if (isKernelName(text)) {
    line = namedLine(text);
  } else if (FilterKernel kernel = parseUnscaled(text); kernel.width == 1 || kernel.height == 1) {
    kernel.width *= std::exchange(kernel.height, 1);
    line = std::move(kernel);
  }
  if (line) return *line;
  throw std::runtime_error(
      option + " " + inQuotes(text) +
      ": allowed are box:N, gaussian:SIGMA, gaussian:N:SIGMA, or one line of numbers such as 1,2,1");
}

Option kernelScaleOption() {
  return {.name = "--scale",
          .meaning = "Multiplies each element of the kernel; such as 0.1 or 1/16",
          .form = "NUMBER",
          .defaultValue = "1"};
}

std::string lineForms() {
  return namedLineForms() +
         "  1,2,1                 any line of numbers; such as -0.5 or 1/16\n"
         "  FILE                  numbers as text, see below, or NPY, of one line\n" +
         fileForms() + "Lengths of 1 to " + std::to_string(maxKernelSide) + ".\n";
}

std::string kernelForms() {
  return namedKernelForms() +
         "  1,2,1;2,4,2;1,2,1     any matrix, row by row; numbers such as -0.5 or 1/16\n"
         "  FILE                  numbers as text, a line for each row, or NPY\n" +
         fileForms() + "Sides of 1 to " + std::to_string(maxKernelSide) + ".\n";
}

}  // namespace BP::tool
