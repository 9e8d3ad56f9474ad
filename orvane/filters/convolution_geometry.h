#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "orvane/core/enums.h"
#include "orvane/filters/bands.h"
#include "orvane/filters/box.h"
#include "orvane/filters/checks.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/options.h"

namespace BP::filters::detail {

/// The library's enumerator for a choice. Throws `std::invalid_argument` for an unknown number.
OutputModeEnum modeOf(OutputMode mode);
PadTypeEnum padOf(const PadOption& pad);

/// The extents of the output of one filter over an input, both of rank 1 to `maxRank`. Throws `std::invalid_argument`
/// for bad extents, for more than `maxElements` elements, and for coordinates beyond 32 bits. Messages call the filter
/// `filterName`.
Extents checkedOutputExtents(const Extents& input, const Extents& filter, OutputModeEnum mode, PadTypeEnum pad,
                             std::size_t maxRank, std::int64_t maxElements = maxIndex,
                             std::string_view filterName = "filter");

/// The options of another job that a convolution has as well.
template <class Options>
ConvolutionOptions convolutionOptions(const Options& options) {
  return {.mode = options.mode,
          .pad = options.pad,
          .region = options.region,
          .threads = options.threads,
          .progress = options.progress};
}

/// The positions of all outputs of a mode: where the window's centre lies, counted from the input's first element.
Box positionsOf(const Extents& input, const Extents& window, OutputModeEnum mode);

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
  Extents windowExtents;  ///< of the filter, or of both filters together
  Box positions;          ///< of the outputs, in the region of interest
  Extents outputExtents;  ///< those of the positions
  BoxTables region;       ///< the positions again
  bool hasRegion;
  std::int64_t taps;  ///< products of an output
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
  void setPositions(const Extents& window, const ConvolutionOptions& options);
};

/// The value as text, as in "0.5 + 2i".
std::string textOf(std::complex<double> value);

/// Throws `std::invalid_argument` for a pad value with an imaginary part if the input is real.
void checkPadValue(std::complex<double> value, bool inputIsComplex);

/// A pad value as an element of the input's type T: floating-point parts are rounded to nearest, and a finite part must
/// not become infinite; a `bool` must be 0 or 1. Throws `std::invalid_argument`.
template <class T>
T padElement(std::complex<double> value) {
  constexpr bool isComplex = !std::is_arithmetic_v<T>;
  checkPadValue(value, isComplex);
  if constexpr (isComplex) {
    using Real = typename T::value_type;
    return {padPart<Real>(value.real()), padPart<Real>(value.imag())};
  } else {
    return padPart<T>(value.real());
  }
}

}  // namespace BP::filters::detail
