#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <string_view>

#include "orvane/core/enums.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/options.h"

namespace BP::filters::detail {

/// A convolution in the terms of the fronts, after all checks that do not depend on element types.
///
/// A front keeps pointers to the tables of extents, so an object stays where it is while its front lives.
struct ConvolutionGeometry {
  /// For one filter, which messages call `filterName`. Element counts of all arrays are held to `mostElements`. Throws
  /// `std::invalid_argument`.
  ConvolutionGeometry(const Extents& input, const Extents& filter, const ConvolutionOptions& options,
                      std::int64_t mostElements = greatestIndex, std::string_view filterName = "filter");
  /// For a separable filter.
  ConvolutionGeometry(const Extents& input, const Extents& column, const Extents& row,
                      const ConvolutionOptions& options, std::int64_t mostElements = greatestIndex);

  bool isSeparable() const { return rowExtents.rank() != 0; }
  /// Whether a pad value can be read at all.
  bool usesPadValue() const { return pad == PadTypeConstant && mode != OutputModeValid; }

  Extents inputExtents;
  Extents filterExtents;  ///< of a separable filter the column's
  Extents rowExtents;     ///< of rank 0 without one
  Extents outputExtents;
  int rank;
  std::array<int, 2> inputDims;
  std::array<int, 2> filterDims;
  std::array<int, 2> rowDims;
  OutputModeEnum mode;
  PadTypeEnum pad;
  AlgorithmModeEnum algorithm;
  NormEnum norm;

 private:
  void setChoices(const ConvolutionOptions& options);
};

/// As in "0.5 + 2i".
std::string textOf(std::complex<double> value);

/// The message for a pad value with an imaginary part, which a real input cannot take. Throws `std::invalid_argument`.
void checkPadValue(std::complex<double> value, bool inputIsComplex);

}  // namespace BP::filters::detail
