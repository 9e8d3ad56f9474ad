#pragma once

#include <complex>
#include <string>
#include <string_view>
#include <vector>

#include "tool/edge_names.h"
#include "tool/operation.h"

/// Options that several operations share, and their values. Errors are `std::runtime_error` with one line that names
/// the option, its value and what it allows.
namespace BP::tool {

/// An option with a number as its value.
Option numberOption(const std::string& name, const std::string& meaning, const std::string& defaultValue);

/// The value of an option that takes a number.
double numberOf(const Values& values, const std::string& name);

/// `--mode valid|same|full`.
Option modeOption(const std::string& meaning, const std::string& defaultValue);
const ModeRow& modeOf(const Values& values);

/// `--pad constant:V`, or the name of another pad type. V is a number, or RE,IM for complex elements, or left out for
/// 0.
Option padOption(const std::string& meaning, const std::string& defaultValue);

/// What is read beyond the edge.
struct PadValue {
  const PadRow* row;
  std::complex<double> value;  ///< of a constant pad
};
PadValue padOf(const Values& values);

/// Extents such as 640x480, dimension 0 first: one or more whole numbers of 1 to 2^31 - 1. `option` appears in errors.
std::vector<int> parseExtents(std::string_view text, const std::string& option);

/// Extents as they are typed.
std::string extentsText(const std::vector<int>& extents);

/// `--json`, which prints results as one JSON object on the standard output.
Option jsonOption();

/// `--threads`, 0 for as many as there are cores.
Option threadsOption();
int threadsOf(const Values& values);

/// A rectangle of positions.
struct PositionBox {
  std::vector<int> first;
  std::vector<int> extents;
};

/// A rectangle such as -1,5,20x10: the first position in each dimension, then the extents.
PositionBox parseBox(std::string_view text, const std::string& option);

}  // namespace BP::tool
