#include "tool/option_values.h"

#include <cstddef>
#include <limits>
#include <stdexcept>

#include "tool/names.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

constexpr int maxInt = std::numeric_limits<int>::max();

/// Errors begin with `what`.
std::vector<int> extentsIn(std::string_view text, const std::string& what) {
  std::vector<int> extents;
  for (const std::string_view extent : split(text, 'x')) extents.push_back(parseWhole(extent, 1, maxInt, what));
  return extents;
}

/// The names of the pads; only `constant` takes a value.
std::vector<std::string> padForms() {
  std::vector<std::string> forms = namesOf(padTable);
  forms.front() += ":V";
  return forms;
}

}  // namespace

Option numberOption(const std::string& name, const std::string& meaning, const std::string& defaultValue) {
  return {.name = name, .meaning = meaning, .form = "NUMBER", .defaultValue = defaultValue};
}

double numberOf(const Values& values, const std::string& name) { return parseNumber(values[name], name); }

Option modeOption(const std::string& meaning, const std::string& defaultValue) {
  return {.name = "--mode",
          .meaning = meaning,
          .defaultValue = defaultValue,
          .allowed = namesOf(modeTable),
          .shortName = 'm'};
}

const ModeRow& modeOf(const Values& values) { return rowNamed(modeTable, values["--mode"], "--mode"); }

Option padOption(const std::string& meaning, const std::string& defaultValue) {
  return {.name = "--pad", .meaning = meaning, .defaultValue = defaultValue, .allowed = padForms(), .shortName = 'p'};
}

PadValue padOf(const Values& values) {
  const std::string_view text = values["--pad"];
  std::string allowed;
  for (const std::string& form : padForms()) allowed += (allowed.empty() ? "" : ", ") + form;
  const std::size_t colon = text.find(':');
  PadValue pad{&rowNamed(padTable, text.substr(0, colon), "--pad", allowed), 0};
  if (colon == std::string_view::npos) return pad;
  const auto parts = split(text.substr(colon + 1), ',');
  const std::string what = "--pad " + inQuotes(text);
  if (pad.row->pad != filters::PadRule::constant || parts.size() > 2) {
    throw std::runtime_error(what + ": allowed are " + allowed + "; V is a number, or RE,IM");
  }
  pad.value = {parseNumber(parts[0], what), parts.size() == 2 ? parseNumber(parts[1], what) : 0};
  return pad;
}

Option jsonOption() { return {.name = "--json", .meaning = "Prints all results as JSON", .shortName = 'j'}; }

Option threadsOption() {
  return {.name = "--threads",
          .meaning = "Threads at work, 0 for all cores; results do not depend on it",
          .form = "N",
          .defaultValue = "0",
          .shortName = 't'};
}

int threadsOf(const Values& values) {
  constexpr int maxThreads = 1024;
  return parseWhole(values["--threads"], 0, maxThreads, "--threads");
}

std::vector<int> parseExtents(std::string_view text, const std::string& option) {
  return extentsIn(text, option + " " + inQuotes(text));
}

std::string extentsText(const std::vector<int>& extents) {
  std::string text;
  for (const int extent : extents) text += (text.empty() ? "" : "x") + std::to_string(extent);
  return text;
}

PositionBox parseBox(std::string_view text, const std::string& option) {
  const std::string what = option + " " + inQuotes(text);
  const auto parts = split(text, ',');
  PositionBox rectangle;
  rectangle.extents = extentsIn(parts.back(), what);
  if (parts.size() != rectangle.extents.size() + 1) {
    throw std::runtime_error(what + ": allowed is X,Y,WIDTHxHEIGHT, such as 2,3,20x10");
  }
  for (std::size_t d = 0; d + 1 < parts.size(); ++d) {
    rectangle.first.push_back(parseWhole(parts[d], std::numeric_limits<int>::min(), maxInt, what));
  }
  return rectangle;
}

}  // namespace BP::tool
