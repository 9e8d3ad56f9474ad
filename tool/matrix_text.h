#pragma once

#include <string>

#include "tool/kernel.h"

namespace BP::tool {

/// The matrix in `text`: rows are separated by `rowSeparator`, elements by commas, or in a row without commas by spaces
/// and tabs; each is a number or a fraction.
///
/// Throws `std::runtime_error` for an empty or ragged matrix, for more than `maxKernelSide` rows or columns, and for an
/// element that is no finite number. `what` and `rowName` ("row", "line") appear in the error.
FilterKernel parseMatrix(const std::string& text, char rowSeparator, const std::string& what,
                         const std::string& rowName);

/// The matrix in a file: an NPY array of one or two dimensions and real elements, or text, a line for each row. A
/// byte-order mark, carriage returns and empty lines at the end are
/// ignored. Throws `std::runtime_error` as above, and for a file of another kind, which it names.
FilterKernel readMatrix(const std::string& path);

}  // namespace BP::tool
