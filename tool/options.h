#pragma once

#include <complex>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/enums.h"
#include "tool/array.h"
#include "tool/text.h"

/// Values of the options that several operations share. Errors are `std::runtime_error` with one line that names the
/// option, what it was given and what it allows.
namespace BP::tool {

/// A value that goes by a name.
template <class T>
using Choice = Named<T>;

using BP::normalisations;
using BP::outputModes;
using BP::padTypes;
inline constexpr Choice<ElementType> sumTypes[] = {{"float", ElementType::float32}, {"double", ElementType::float64}};

/// All names, as in "valid|same|full", for usage texts.
template <class Table>
std::string namesOf(const Table& choices, std::string_view separator = "|") {
  std::string names;
  for (const auto& choice : choices) names.append(names.empty() ? "" : separator).append(choice.name);
  return names;
}

/// The name of `value`; empty if it has none.
template <class Table, class T>
std::string_view nameOf(const Table& choices, T value) {
  for (const auto& choice : choices) {
    if (choice.value == value) return choice.name;
  }
  return {};
}

/// The value that goes by the name `text`; `option` and `allowed` (all names if empty) appear in the error.
template <class Table>
auto choose(const Table& choices, std::string_view text, const std::string& option, const std::string& allowed = {}) {
  for (const auto& choice : choices) {
    if (choice.name == text) return choice.value;
  }
  throw std::runtime_error(option + " " + inQuotes(text) + ": allowed are " +
                           (allowed.empty() ? namesOf(choices, ", ") : allowed));
}

/// What is read beyond the edge.
struct Pad {
  PadTypeEnum type = PadTypeConstant;
  std::complex<double> value;  ///< of a constant pad
};

/// `--mode valid|same|full`.
OutputModeEnum parseMode(std::string_view text);
/// `--normalise none|energy`.
NormEnum parseNormalise(std::string_view text);
/// `--type float|double`: the type in which sums run.
ElementType parseSumType(std::string_view text);

/// `--pad constant:V|replicate|symmetric|circular|mirror`; V is a number, or RE,IM for complex elements, or left out
/// for 0.
Pad parsePad(std::string_view text);
inline constexpr std::string_view padForms = "constant:V|replicate|symmetric|circular|mirror";

/// Extents such as 640x480, dimension 0 first: one or more whole numbers of 1 to 2^31 - 1.
std::vector<int> parseExtents(std::string_view text, const std::string& option);

/// The same written again.
std::string extentsText(const std::vector<int>& extents);

/// A rectangle of positions.
struct Rectangle {
  std::vector<int> first;
  std::vector<int> extents;
};

/// A rectangle such as -1,5,20x10: the first position in each dimension, then the extents.
Rectangle parseRectangle(std::string_view text, const std::string& option);

}  // namespace BP::tool
