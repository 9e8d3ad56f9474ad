#pragma once

#include <string>

#include "tool/kernel.h"

namespace BP::tool {

/// The matrix in `text`: rows between `rowSeparator`, elements between commas, each a number or a fraction.
///
/// `what` and `rowName` ("row", "line") appear in the `std::runtime_error` for an empty or ragged matrix, for one with
/// more than `longestKernelSide` rows or columns, and for an element that is no finite number.
Kernel parseMatrix(const std::string& text, char rowSeparator, const std::string& what, const std::string& rowName);

/// The matrix in a CSV file: a line is a row; a byte-order mark, carriage returns and empty lines at the end are fine.
Kernel readMatrix(const std::string& path);

}  // namespace BP::tool
