#pragma once

#include <string>
#include <vector>

#include "tool/operation.h"

namespace BP::tool {

/// A filter for pictures: a matrix of finite numbers.
///
/// Element (x, y) stands at y * width + x, so rows of the matrix are rows of the picture. A correlation lays it over
/// the pixel that is x to the right of and y below the window's first pixel.
struct FilterKernel {
  int width = 0;
  int height = 0;
  std::vector<double> elements;
};

/// The largest side of a kernel.
constexpr int maxKernelSide = 1023;

/// The kernel that `text` describes, each element multiplied by `scale`.
///
/// The text is a name with its settings, such as `gaussian:5:1.2`; the name of a CSV file; or a matrix such as
/// `1,2,1;2,4,2;1,2,1`. Throws `std::runtime_error` that says what was given and what is allowed.
FilterKernel parseKernel(const std::string& text, double scale);

/// The line of numbers that `text` describes, as a kernel of one row: `box:N`, `gaussian:N:SIGMA`, or a matrix or CSV
/// file of one row or one column. `option` appears in the `std::runtime_error` for anything else.
FilterKernel parseLine(const std::string& text, const std::string& option);

/// The option `--scale`, which multiplies each element of a kernel.
Option kernelScaleOption();

/// The forms that `parseKernel` takes, one a line, for usage texts.
std::string kernelForms();
/// The forms that `parseLine` takes.
std::string lineForms();

}  // namespace BP::tool
