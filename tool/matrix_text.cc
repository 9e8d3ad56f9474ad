#include "tool/matrix_text.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tool/file.h"
#include "tool/file_kind.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

void checkSide(std::size_t side, const std::string& noun, const std::string& what) {
  if (side > maxKernelSide) {
    throw std::runtime_error(what + " has " + counted(static_cast<std::int64_t>(side), noun) + "; at most " +
                             std::to_string(maxKernelSide) + " are allowed");
  }
}

/// Adds row `number` (from 1) of the matrix to `kernel`; `noun` is what a row is called.
void appendRow(FilterKernel& kernel, std::string_view row, const std::string& noun, std::size_t number) {
  const std::string place = noun + " " + std::to_string(number);
  if (trimmed(row).empty()) throw std::runtime_error(place + " is empty; each needs the same count of numbers");
  const std::vector<std::string_view> elements = split(row, ',');
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

FilterKernel readMatrix(const std::string& path) {
  constexpr std::size_t maxFileSize = std::size_t{1} << 26;
  constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
  std::string text = readText(path, maxFileSize);
  if (const std::string kind = otherKind(text); !kind.empty()) {
    throw std::runtime_error("kernel file " + inQuotes(path) + " is not CSV text" + kind);
  }
  if (text.starts_with(byteOrderMark)) text.erase(0, byteOrderMark.size());
  std::erase(text, '\r');
  text.erase(text.find_last_not_of(" \t\n") + 1);
  return parseMatrix(text, '\n', "kernel file " + inQuotes(path), "line");
}

}  // namespace BP::tool
