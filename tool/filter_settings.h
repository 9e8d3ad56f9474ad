#pragma once

#include <optional>
#include <string>
#include <vector>

#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/options.h"
#include "tool/array.h"
#include "tool/kernel.h"
#include "tool/operation.h"

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
  filters::OutputMode mode = filters::OutputMode::same;
  filters::PadOption pad;
};

/// What the operations `convolve`, `correlate` and `separable` do to each plane of their input.
struct FilterSettings {
  std::vector<FilterKernel> kernels;  ///< one kernel, or a row of numbers and a column of them for a separable filter
  filters::ConvolutionOptions options;
  std::optional<ElementType> sumType;  ///< float32 or float64
  std::optional<FixedSettings> fixed;
  bool explains = false;  ///< whether it is told how fixed-point sums run

  bool isSeparable() const { return kernels.size() == 2; }
  int windowWidth() const { return kernels.front().width; }
  int windowHeight() const { return kernels.back().height; }
};

/// `--mode` and `--pad`.
std::vector<Option> edgeOptions();

/// The part of a usage text that explains the modes and the pads; `window` is what the operation moves.
std::string edgeDetails(const std::string& window);

/// The values of `--mode` and `--pad`. Throws `std::runtime_error` that names the option and what it allows.
EdgeSettings edgeSettings(const Values& values);

/// The options about edges and numbers; `--normalise` is left out unless the operation can do it.
std::vector<Option> filterOptions(bool canNormalise);

/// The part of a usage text that explains `filterOptions`.
std::string filterDetails(bool canNormalise);

/// Settings without kernels. Throws `std::runtime_error` that names the option and what it allows.
FilterSettings filterSettings(const Values& values, filters::FilterDirection direction);

/// The types in a text such as "input=u8.0,filter=s16.14,rounding=nearest".
KernelTypes parseKernelTypes(const std::string& text);

}  // namespace BP::tool
