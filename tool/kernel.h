#pragma once

#include <string>
#include <vector>

namespace BP::tool {

/// A filter for pictures, of one finite number for each position under its window.
///
/// Element (x, y) is at index y * width + x. A correlation multiplies it by the pixel that lies x to the right of and y
/// below the window's first one, so rows of the matrix are rows of the picture.
struct Kernel {
  int width = 0;
  int height = 0;
  std::vector<double> elements;
};

/// The longest side that a kernel may have.
constexpr int longestKernelSide = 1023;

/// The kernel that `text` describes, each element multiplied by `scale`.
///
/// It is a name with its settings, such as `gaussian:5:1.2`; the name of a CSV file; or a matrix such as
/// `1,2,1;2,4,2;1,2,1`. Throws `std::runtime_error` that says what was given and what is allowed.
Kernel parseKernel(const std::string& text, double scale);

/// The line of numbers that `text` describes, as a kernel of one row: `box:N`, `gaussian:N:SIGMA`, or a matrix or CSV
/// file of one row or one column. `option` appears in the `std::runtime_error` for anything else.
Kernel parseLine(const std::string& text, const std::string& option);

/// What `parseKernel` takes, one form a line, for usage texts.
std::string kernelForms();
/// The same for `parseLine`.
std::string lineForms();

}  // namespace BP::tool
