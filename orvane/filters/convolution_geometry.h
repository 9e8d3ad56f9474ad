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

/// The library's enumerator for a choice. Throws `std::invalid_argument` for an unknown number.
OutputModeEnum modeOf(OutputMode mode);
PadTypeEnum padOf(PadRule pad);

/// The extents of the output of one filter over an input, both of rank 1 to `maxRank`. Throws `std::invalid_argument`
/// for bad extents, for more than `maxElements` elements, and for coordinates beyond 32 bits. Messages call the filter
/// `filterName`.
Extents checkedOutputExtents(const Extents& input, const Extents& filter, OutputModeEnum mode, PadTypeEnum pad,
                             std::size_t maxRank, std::int64_t maxElements = maxIndex,
                             std::string_view filterName = "filter");

/// A convolution in the terms of the library below, after all checks that do not depend on element types.
///
/// A front keeps pointers to the tables of extents, so the object must not move while its front lives.
struct ConvolutionGeometry {
  /// For one filter, which messages call `filterName`. Each array may have at most `maxElements` elements. Throws
  /// `std::invalid_argument`.
  ConvolutionGeometry(const Extents& input, const Extents& filter, const ConvolutionOptions& options,
                      std::int64_t maxElements = maxIndex, std::string_view filterName = "filter");
  /// For a separable filter.
  ConvolutionGeometry(const Extents& input, const Extents& first, const Extents& second,
                      const ConvolutionOptions& options, std::int64_t maxElements = maxIndex);

  bool isSeparable() const { return secondExtents.rank() != 0; }
  /// Whether the filter ever reads the pad value.
  bool usesPadValue() const { return pad == PadTypeConstant && mode != OutputModeValid; }

  Extents inputExtents;
  Extents filterExtents;  ///< those of the first filter if it is separable
  Extents secondExtents;  ///< of rank 0 without a second filter
  Extents outputExtents;
  int rank;
  std::array<int, 2> inputDims;
  std::array<int, 2> filterDims;
  std::array<int, 2> secondDims;
  OutputModeEnum mode;
  PadTypeEnum pad;
  AlgorithmModeEnum algorithm;
  NormEnum norm;

 private:
  void setChoices(const ConvolutionOptions& options);
};

/// The value as text, as in "0.5 + 2i".
std::string textOf(std::complex<double> value);

/// Throws `std::invalid_argument` for a pad value with an imaginary part if the input is real.
void checkPadValue(std::complex<double> value, bool inputIsComplex);

}  // namespace BP::filters::detail
