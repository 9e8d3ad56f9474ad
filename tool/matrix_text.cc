#include "tool/matrix_text.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tool/file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void checkSide(std::size_t side, const std::string& noun, const std::string& what) {
  if (side > longestKernelSide) {
    throw std::runtime_error(what + " has " + counted(side, noun) + "; at most " + std::to_string(longestKernelSide) +
                             " are allowed");
  }
}

}  // namespace

Kernel parseMatrix(const std::string& text, char rowSeparator, const std::string& what, const std::string& rowName) {
  if (trimmed(text).empty()) throw std::runtime_error(what + " is empty; a kernel needs at least one number");
  const std::vector<std::string_view> rows = split(text, rowSeparator);
  checkSide(rows.size(), rowName, what);
  Kernel kernel;
  kernel.height = static_cast<int>(rows.size());
  for (std::size_t y = 0; y < rows.size(); ++y) {
    const std::string place = what + ", " + rowName + " " + std::to_string(y + 1);
    if (trimmed(rows[y]).empty()) throw std::runtime_error(place + " is empty; each needs the same count of numbers");
    const std::vector<std::string_view> elements = split(rows[y], ',');
    checkSide(elements.size(), "column", what);
    if (y == 0) kernel.width = static_cast<int>(elements.size());
    if (elements.size() != static_cast<std::size_t>(kernel.width)) {
      throw std::runtime_error(place + " has " + counted(elements.size(), "number") + ", but " + rowName + " 1 has " +
                               std::to_string(kernel.width) + "; all must have the same count");
    }
    for (std::string_view element : elements) kernel.elements.push_back(parseNumber(element, place));
  }
  return kernel;
}

Kernel readMatrix(const std::string& path) {
  constexpr std::size_t longestFile = std::size_t{1} << 26;
  constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
  std::string text = readText(path, longestFile);
  if (text.starts_with(byteOrderMark)) text.erase(0, byteOrderMark.size());
  std::erase(text, '\r');
  text.erase(text.find_last_not_of(" \t\n") + 1);
  return parseMatrix(text, '\n', "kernel file " + inQuotes(path), "line");
}

}  // namespace BP::tool
