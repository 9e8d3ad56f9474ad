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

/// What the fronts call a choice; throws `std::invalid_argument` for a number that is none.
OutputModeEnum modeOf(OutputMode mode);
PadTypeEnum padOf(Pad pad);

/// What comes out for one filter over an input, both of ranks up to `maxRank`, after all checks of extents: their
/// element counts are held to `maxElements`, and coordinates to 32 bits; messages call the filter `filterName`. Throws
/// `std::invalid_argument`.
Extents checkedOutputExtents(const Extents& input, const Extents& filter, OutputModeEnum mode, PadTypeEnum pad,
                             std::size_t maxRank, std::int64_t maxElements = maxIndex,
                             std::string_view filterName = "filter");

/// A convolution in the terms of the fronts, after all checks that do not depend on element types.
///
/// A front keeps pointers to the tables of extents, so an object stays where it is while its front lives.
struct ConvolutionGeometry {
  /// For one filter, which messages call `filterName`. Element counts of all arrays are held to `maxElements`. Throws
  /// `std::invalid_argument`.
  ConvolutionGeometry(const Extents& input, const Extents& filter, const ConvolutionOptions& options,
                      std::int64_t maxElements = maxIndex, std::string_view filterName = "filter");
  /// For a separable filter.
  ConvolutionGeometry(const Extents& input, const Extents& first, const Extents& second,
                      const ConvolutionOptions& options, std::int64_t maxElements = maxIndex);

  bool isSeparable() const { return secondExtents.rank() != 0; }
  /// Whether a pad value can be read at all.
  bool usesPadValue() const { return pad == PadTypeConstant && mode != OutputModeValid; }

  Extents inputExtents;
  Extents filterExtents;  ///< of a separable filter the first one's
  Extents secondExtents;  ///< of rank 0 without one
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

/// As in "0.5 + 2i".
std::string textOf(std::complex<double> value);

/// The message for a pad value with an imaginary part, which a real input cannot take. Throws `std::invalid_argument`.
void checkPadValue(std::complex<double> value, bool inputIsComplex);

}  // namespace BP::filters::detail
