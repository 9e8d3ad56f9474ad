#include "tool/matrix_text.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tool/elements.h"
#include "tool/file.h"
#include "tool/file_kind.h"
#include "tool/npy_header.h"
#include "tool/picture_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

void checkSide(std::size_t side, const std::string& noun, const std::string& what) {
  if (side > maxKernelSide) {
    throw std::runtime_error(what + " has " + counted(static_cast<std::int64_t>(side), noun) + "; at most " +
                             std::to_string(maxKernelSide) + " are allowed");
  }
}

/// The parts of `text` between spaces and tabs.
std::vector<std::string_view> words(std::string_view text) {
  constexpr std::string_view spaces = " \t";
  std::vector<std::string_view> parts;
  for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
    const std::size_t length = std::min(text.find_first_of(spaces), text.size());
    parts.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return parts;
}

/// Adds row `number` (from 1) of the matrix to `kernel`; `noun` is what a row is called.
void appendRow(FilterKernel& kernel, std::string_view row, const std::string& noun, std::size_t number) {
  const std::string place = noun + " " + std::to_string(number);
  if (trimmed(row).empty()) throw std::runtime_error(place + " is empty; each needs the same count of numbers");
  const bool hasCommas = row.find(',') != std::string_view::npos;
  const std::vector<std::string_view> elements = hasCommas ? split(row, ',') : words(row);
  checkSide(elements.size(), "column", place);
  if (number == 1) kernel.width = static_cast<int>(elements.size());
  if (elements.size() != static_cast<std::size_t>(kernel.width)) {
    throw std::runtime_error(place + " has " + counted(static_cast<std::int64_t>(elements.size()), "number") +
                             ", but the first has " + std::to_string(kernel.width) + "; all must have the same count");
  }
  for (std::string_view element : elements) kernel.elements.push_back(parseNumber(element, place));
}

}  // namespace

FilterKernel parseMatrix(const std::string& text, char rowSeparator, const std::string& what,
                         const std::string& rowName) {
  if (trimmed(text).empty()) throw std::runtime_error(what + " is empty; a kernel needs at least one number");
  const std::vector<std::string_view> rows = split(text, rowSeparator);
  checkSide(rows.size(), rowName, what);
  FilterKernel kernel;
  kernel.height = static_cast<int>(rows.size());
  const std::string noun = what + ", " + rowName;
  for (std::size_t y = 0; y < rows.size(); ++y) appendRow(kernel, rows[y], noun, y + 1);
  return kernel;
}

namespace {

/// The matrix in an NPY array of one or two dimensions.
FilterKernel matrixOf(const Array& array, const std::string& what) {
  if (array.extents.empty() || array.extents.size() > 2 || array.bytes.empty()) {
    throw std::runtime_error(what + " has the extents (" + joined(array.extents, "x") +
                             "); it must have one or two dimensions and an element at least");
  }
  if (isComplex(array.type)) throw std::runtime_error(what + " has complex elements; they must be real");
  const std::int64_t height = array.extents.size() > 1 ? array.extents[1] : 1;
  checkSide(static_cast<std::size_t>(array.extents[0]), "column", what);
  checkSide(static_cast<std::size_t>(height), "row", what);
  FilterKernel kernel{static_cast<int>(array.extents[0]), static_cast<int>(height), {}};
  std::uint64_t rounded = 0;
  const auto elements = elementsAs<double>(array, filters::Extents{array.extents[0], height}, rounded);
  kernel.elements.assign(elements.begin(), elements.end());
  if (std::ranges::all_of(kernel.elements, [](double element) { return std::isfinite(element); })) return kernel;
  throw std::runtime_error(what + " has elements that are not finite");
}

}  // namespace

FilterKernel readMatrix(const std::string& path) {
  constexpr std::size_t maxFileSize = std::size_t{1} << 26;
  constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
  std::string text = readText(path, maxFileSize);
  if (text.starts_with(npyMagic)) return matrixOf(readArray(path), "kernel file " + inQuotes(path));
  if (const std::string kind = otherKind(text); !kind.empty()) {
    throw std::runtime_error("kernel file " + inQuotes(path) + " is neither text nor NPY" + kind);
  }
  if (text.starts_with(byteOrderMark)) text.erase(0, byteOrderMark.size());
  std::erase(text, '\r');
  text.erase(text.find_last_not_of(" \t\n") + 1);
  return parseMatrix(text, '\n', "kernel file " + inQuotes(path), "line");
}

}  // namespace BP::tool
