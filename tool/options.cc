#include "tool/options.h"

#include <limits>

namespace BP::tool {

namespace {

constexpr int greatest = std::numeric_limits<int>::max();

/// `what` is how errors begin.
std::vector<int> extentsIn(std::string_view text, const std::string& what) {
  std::vector<int> extents;
  for (const std::string_view extent : split(text, 'x')) extents.push_back(parseWhole(extent, 1, greatest, what));
  return extents;
}

}  // namespace

OutputModeEnum parseMode(std::string_view text) { return choose(outputModes, text, "--mode"); }

NormEnum parseNormalise(std::string_view text) { return choose(normalisations, text, "--normalise"); }

ElementType parseSumType(std::string_view text) { return choose(sumTypes, text, "--type"); }

Pad parsePad(std::string_view text) {
  const std::string allowed = "constant:V, replicate, symmetric, circular, mirror";
  const std::size_t colon = text.find(':');
  Pad pad;
  pad.type = choose(padTypes, text.substr(0, colon), "--pad", allowed);
  if (colon == std::string_view::npos) return pad;
  const auto parts = split(text.substr(colon + 1), ',');
  if (pad.type != PadTypeConstant || parts.size() > 2) {
    throw std::runtime_error("--pad " + inQuotes(text) + ": allowed are " + allowed + "; V is a number, or RE,IM");
  }
  const std::string what = "--pad " + inQuotes(text);
  pad.value = {parseNumber(parts[0], what), parts.size() == 2 ? parseNumber(parts[1], what) : 0};
  return pad;
}

std::vector<int> parseExtents(std::string_view text, const std::string& option) {
  return extentsIn(text, option + " " + inQuotes(text));
}

std::string extentsText(const std::vector<int>& extents) {
  std::string text;
  for (const int extent : extents) text += (text.empty() ? "" : "x") + std::to_string(extent);
  return text;
}

Rectangle parseRectangle(std::string_view text, const std::string& option) {
  const std::string what = option + " " + inQuotes(text);
  const auto parts = split(text, ',');
  Rectangle rectangle;
  rectangle.extents = extentsIn(parts.back(), what);
  if (parts.size() != rectangle.extents.size() + 1) {
    throw std::runtime_error(what + ": allowed is X,Y,WIDTHxHEIGHT, such as 2,3,20x10");
  }
  for (std::size_t d = 0; d + 1 < parts.size(); ++d) {
    rectangle.first.push_back(parseWhole(parts[d], std::numeric_limits<int>::min(), greatest, what));
  }
  return rectangle;
}

}  // namespace BP::tool
