#pragma once

#include <complex>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "orvane/core/enums.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/options.h"
#include "tool/array.h"
#include "tool/kernel.h"

namespace BP::tool {

/// The fixed-point types of a filter, as `--fixed` gives them.
struct FixedSettings {
  filters::FixedTypes types;
  filters::FixedType filter;
};

/// The types that a kernel is designed for.
struct KernelTypes {
  filters::FixedType input;
  filters::FixedType filter;
  filters::FixedModes modes;
};

/// Which positions have an output, and what is read beyond the edge.
struct EdgeSettings {
  filters::OutputMode mode = filters::OutputMode::valid;
  filters::Pad pad = filters::Pad::constant;
  std::complex<double> padValue;  ///< of a constant pad
};

/// What the operations `convolve`, `correlate` and `separable` do to each plane of their input.
struct FilterSettings {
  std::vector<Kernel> kernels;  ///< one, or of a separable filter a row of numbers and a column of them
  filters::ConvolutionOptions options;
  std::optional<ElementType> sumType;  ///< float32 or float64
  std::optional<FixedSettings> fixed;

  bool isSeparable() const { return kernels.size() == 2; }
  /// Extents of the window, width first.
  int windowWidth() const { return kernels.front().width; }
  int windowHeight() const { return kernels.back().height; }
};

/// The options about edges as they were typed, each with its default.
struct EdgeTexts {
  std::string mode = "valid";
  std::string pad = "constant:0";
};

/// The options about edges and numbers.
struct FilterTexts : EdgeTexts {
  std::string normalise = "none";
  std::optional<std::string> type;
  std::optional<std::string> fixed;
};

/// What the filters call an output mode.
filters::OutputMode filterModeOf(OutputModeEnum mode);

/// Adds `--mode` and `--pad` to an operation.
void addEdgeOptions(CLI::App& operation, EdgeTexts& texts);

/// What `addEdgeOptions` says at the end of a usage text; `window` is what the operation calls what it moves.
std::string edgeFooter(const std::string& window);

/// Throws `std::runtime_error` that names the option and what it allows.
EdgeSettings parseEdges(const EdgeTexts& texts);

/// Adds the options to an operation, those about edges too; `--normalise` only on demand.
void addFilterOptions(CLI::App& operation, FilterTexts& texts, bool canNormalise);

/// What `addFilterOptions` says at the end of a usage text.
std::string filterFooter(bool canNormalise);

/// Settings without kernels. Throws `std::runtime_error` that names the option and what it allows.
FilterSettings parseFilterTexts(const FilterTexts& texts, filters::Direction direction);

/// The types in a text such as "input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0,rounding=nearest".
FixedSettings parseFixed(const std::string& text);

/// The types in a text such as "input=u8.0,filter=s16.14,rounding=nearest".
KernelTypes parseKernelTypes(const std::string& text);

}  // namespace BP::tool
