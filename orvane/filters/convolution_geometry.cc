#include "orvane/filters/convolution_geometry.h"

#include <cmath>
#include <span>
#include <string>

#include "orvane/core/centre.h"
#include "orvane/filters/convolution.h"
#include "orvane/input/pad_redirector.h"

namespace BP::filters {

namespace {

using detail::maxIndex;
using detail::refuse;

std::string extentText(std::int64_t extent, std::size_t dimension) {
  return "extent " + std::to_string(extent) + " in dimension " + std::to_string(dimension);
}

std::int64_t outputExtent(std::int64_t u, std::int64_t h, OutputModeEnum mode) {
  return mode == OutputModeValid ? u - h + 1 : mode == OutputModeSame ? u : u + h - 1;
}

/// The extents of the output. `filter` has the input's rank, and messages call it `argument`.
Extents checkedOutput(std::string_view argument, const Extents& input, const Extents& filter, OutputModeEnum mode) {
  std::array<std::int64_t, Extents::maxRank> output{};
  for (std::size_t d = 0; d < input.rank(); ++d) {
    if (mode == OutputModeValid && filter[d] > input[d]) {
      refuse(argument, extentText(filter[d], d),
             "with mode valid and an input of " + toText(input) + ", allowed are 1 to " + std::to_string(input[d]));
    }
    output[d] = outputExtent(input[d], filter[d], mode);
  }
  return Extents(std::span(output.data(), input.rank()));
}

/// Checks that coordinates of a pass stay in 32 bits. The window exceeds each edge by up to the filter's extent, and
/// some edge rules use twice the input's extent.
void checkReach(std::string_view argument, const Extents& input, const Extents& filter, PadTypeEnum pad,
                OutputModeEnum mode) {
  for (std::size_t d = 0; d < input.rank(); ++d) {
    if (input[d] + 2 * filter[d] > maxIndex) {
      refuse(argument, extentText(filter[d], d),
             "for an input extent of " + std::to_string(input[d]) + ", at most " +
                 std::to_string((maxIndex - input[d]) / 2) + " is allowed");
    }
    if (doublesExtent(pad) && mode != OutputModeValid && 2 * input[d] > maxIndex) {
      refuse("input", extentText(input[d], d), "with this pad at most " + std::to_string(maxIndex / 2) + " is allowed");
    }
  }
}

std::array<int, 2> dimsOf(const Extents& extents) {
  const auto dim = [&](std::size_t d) { return d < extents.rank() ? static_cast<int>(extents[d]) : 1; };
  return {dim(0), dim(1)};
}

void checkLine(std::string_view argument, const Extents& extents) {
  detail::checkExtents(argument, extents);
  if (extents.rank() != 1) refuse(argument, "rank " + std::to_string(extents.rank()), "it must be 1");
}

void checkSameRank(std::string_view argument, const Extents& input, const Extents& filter) {
  if (filter.rank() == input.rank()) return;
  refuse(argument, "rank " + std::to_string(filter.rank()),
         "it must be that of the input, " + std::to_string(input.rank()));
}

}  // namespace

Extents outputExtents(const Extents& input, const Extents& filter, OutputMode mode) {
  detail::checkExtents("input", input);
  detail::checkExtents("filter", filter);
  checkSameRank("filter", input, filter);
  return checkedOutput("filter", input, filter, detail::chosen("mode", mode, outputModes));
}

namespace detail {

ConvolutionOptions correlating(ConvolutionOptions options) {
  if (options.direction.value_or(FilterDirection::correlation) == FilterDirection::convolution) {
    refuse("direction", "0 (convolution)", "correlate allows only 1 (correlation); convolve convolves");
  }
  options.direction = FilterDirection::correlation;
  return options;
}

OutputModeEnum modeOf(OutputMode mode) { return chosen("mode", mode, outputModes); }

PadTypeEnum padOf(const PadOption& pad) { return chosen("pad", pad.rule, padTypes); }

Extents checkedOutputExtents(const Extents& input, const Extents& filter, OutputModeEnum mode, PadTypeEnum pad,
                             std::size_t maxRank, std::int64_t maxElements, std::string_view filterName) {
  checkExtents("input", input, maxElements, maxRank);
  checkExtents(filterName, filter, maxElements, maxRank);
  checkSameRank(filterName, input, filter);
  const Extents output = checkedOutput(filterName, input, filter, mode);
  checkReach(filterName, input, filter, pad, mode);
  checkExtents("output", output, maxElements, maxRank);
  return output;
}

Box positionsOf(const Extents& input, const Extents& window, OutputModeEnum mode) {
  std::array<std::int64_t, Extents::maxRank> start{}, extents{};
  for (std::size_t d = 0; d < input.rank(); ++d) {
    const std::int64_t centre = centreOf(window[d]);
    start[d] = mode == OutputModeValid ? centre : mode == OutputModeSame ? 0 : centre - window[d] + 1;
    extents[d] = outputExtent(input[d], window[d], mode);
  }
  return {Extents(std::span<const std::int64_t>(start.data(), input.rank())),
          Extents(std::span<const std::int64_t>(extents.data(), input.rank()))};
}

void ConvolutionGeometry::setPositions(const Extents& window, const ConvolutionOptions& options) {
  windowExtents = window;
  rank = static_cast<int>(inputExtents.rank());
  std::optional<Box> wanted;
  if (options.region) wanted = boxOf(*options.region, inputExtents.rank());
  positions = positionsIn(positionsOf(inputExtents, window, mode), wanted);
  outputExtents = positions.extents;
  region = BoxTables(positions);
  hasRegion = wanted.has_value();
}

void ConvolutionGeometry::setChoices(const ConvolutionOptions& options) {
  mode = modeOf(options.mode);
  pad = padOf(options.pad);
  algorithm = chosen("direction", options.direction.value_or(FilterDirection::convolution), directions);
  norm = chosen("normalise", options.normalise, normalisations);
}

ConvolutionGeometry::ConvolutionGeometry(const Extents& input, const Extents& filter, const ConvolutionOptions& options,
                                         std::int64_t maxElements, std::string_view filterName)
    : inputExtents(input), filterExtents(filter) {
  setChoices(options);
  checkedOutputExtents(input, filter, mode, pad, 2, maxElements, filterName);
  setPositions(filter, options);
  taps = elementCount(filter);
  inputDims = dimsOf(input);
  filterDims = dimsOf(filter);
  secondDims = {1, 1};
}

ConvolutionGeometry::ConvolutionGeometry(const Extents& input, const Extents& first, const Extents& second,
                                         const ConvolutionOptions& options, std::int64_t maxElements)
    : inputExtents(input), filterExtents(first), secondExtents(second) {
  setChoices(options);
  if (norm != NormNone) refuse("normalise", "1 (energy)", "a separable convolution allows only 0 (none)");
  checkExtents("input", input, maxElements);
  if (input.rank() != 2) refuse("input", "rank 1", "a separable convolution needs 2");
  checkLine("first filter", first);
  checkLine("second filter", second);
  const Extents along0{first[0], 1}, along1{1, second[0]};
  const Extents intermediate = checkedOutput("first filter", input, along0, mode);
  checkReach("first filter", input, along0, pad, mode);
  checkExtents("intermediate array", intermediate, maxElements);
  const Extents output = checkedOutput("second filter", intermediate, along1, mode);
  checkReach("second filter", intermediate, along1, pad, mode);
  checkExtents("output", output, maxElements);
  setPositions({first[0], second[0]}, options);
  taps = first[0] + second[0];
  inputDims = dimsOf(input);
  filterDims = dimsOf(along0);
  secondDims = dimsOf(along1);
}

std::string textOf(std::complex<double> value) {
  if (value.imag() == 0) return textOf(value.real());
  return textOf(value.real()) + (value.imag() < 0 ? " - " : " + ") + textOf(std::abs(value.imag())) + "i";
}

void checkPadValue(std::complex<double> value, bool inputIsComplex) {
  if (inputIsComplex || value.imag() == 0) return;
  refuse("pad value", textOf(value), "the input is real, so it must be real");
}

}  // namespace detail

}  // namespace BP::filters
