#include <stdexcept>
#include <string>
#include <utility>

#include "tool/filter_array.h"
#include "tool/filter_image.h"
#include "tool/filter_settings.h"
#include "tool/filtered_files.h"
#include "tool/kernel.h"
#include "tool/npy_file.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/png_file.h"
#include "tool/samples.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

void runOnPicture(const Values& values, const FilterSettings& settings, const SampleScaling& scaling) {
  const std::string& out = values["OUT"];
  checkPngName(out);
  const FilteredImage result = filterImage(readPng(values["IN"]), settings, scaling);
  const Image& image = result.image;
  writePng(out, image);
  if (values.has("--quiet")) return;
  tellCount(out, result.clipped, std::uint64_t{image.pixels()} * static_cast<std::uint64_t>(image.colours()),
            "clipped to 0.." + std::to_string(image.maximum()) + " (see --scale-output and --offset)");
  tellFixed(out, result.fixedTable);
}

void tellArray(const Values& values, const Array& input, const FilteredArray& result) {
  if (values.has("--quiet")) return;
  tellCount(values["OUT"], result.rounded, input.elements(),
            "rounded to " + std::string(nameOf(result.array.type)) + " before they were filtered");
  tellFixed(values["OUT"], result.fixedTable);
}

/// The elements of an array, or the samples of a grey picture.
Array readPlane(const std::string& path) {
  if (isArrayName(path)) return readNpy(path);
  const Image image = readPng(path);
  if (image.channels == 1) return samplesOf(image);
  throw std::runtime_error(inQuotes(path) + " has " + std::to_string(image.channels) +
                           " channels; into an array go pictures of one, grey without alpha, or write a name that ends "
                           "in .png");
}

void runOnArray(const Values& values, const FilterSettings& settings, const SampleScaling& scaling) {
  checkNpyName(values["OUT"]);
  const Array input = readPlane(values["IN"]);
  const FilteredArray result = filterArray(input, settings, scaling);
  writeNpy(values["OUT"], result.array);
  tellArray(values, input, result);
}

SampleScaling scalingOf(const Values& values) {
  return {numberOf(values, "--scale-output"), numberOf(values, "--offset")};
}

/// Correlates an array of any rank with a kernel that is an array, too.
int runOnVolume(const Values& values, const FilterSettings& settings) {
  checkNpyName(values["OUT"]);
  if (numberOf(values, "--scale") != 1) {
    throw std::runtime_error("--scale: with --nd the kernel's elements stand as they are");
  }
  const SampleScaling scaling = scalingOf(values);
  const Array input = readNpy(values["IN"]);
  const FilteredArray result = correlateVolume(input, readNpy(values["--kernel"]), settings, scaling);
  writeNpy(values["OUT"], result.array);
  tellArray(values, input, result);
  return 0;
}

int runOnPlanes(const Values& values, const FilterSettings& settings) {
  const SampleScaling scaling = scalingOf(values);
  const bool isArray = isArrayName(values["IN"]) || isArrayName(values["OUT"]);
  (isArray ? runOnArray : runOnPicture)(values, settings, scaling);
  return 0;
}

template <filters::FilterDirection direction>
int runMatrix(const Values& values) {
  FilterSettings settings = filterSettings(values, direction);
  if (values.has("--nd")) return runOnVolume(values, settings);
  settings.kernels = {parseKernel(values["--kernel"], numberOf(values, "--scale"))};
  return runOnPlanes(values, settings);
}

int runSeparable(const Values& values) {
  FilterSettings settings = filterSettings(values, values.has("--correlate") ? filters::FilterDirection::correlation
                                                                             : filters::FilterDirection::convolution);
  settings.kernels = {parseLine(values["--row"], "--row"), parseLine(values["--column"], "--column")};
  std::swap(settings.kernels[1].width, settings.kernels[1].height);
  return runOnPlanes(values, settings);
}

/// The options of an operation: `kernelOptions`, and those that all three operations share.
std::vector<Option> optionsWith(const std::vector<Option>& kernelOptions, bool canNormalise) {
  std::vector<Option> all =
      fileOptions("Picture or array to write, of the kind of IN, which it may be; or .npy of a grey picture");
  all.insert(all.end(), kernelOptions.begin(), kernelOptions.end());
  for (Option& option : filterOptions(canNormalise)) all.push_back(std::move(option));
  all.push_back(numberOption("--scale-output", "Multiplies each sum; such as 1/2 for signed results", "1"));
  all.push_back(numberOption("--offset", "Added to each scaled sum; such as 128 for signed results", "0"));
  all.push_back({.name = "--quiet", .meaning = "Does not say how many values were clipped, nor of fixed point"});
  return all;
}

std::string detailsWith(const std::string& kernels, bool canNormalise) {
  return "Kernels:\n" + kernels + "\n" + filterDetails(canNormalise) +
         "\nOutput samples are round(sum * scale-output + offset), ties to even, clipped to the range of "
         "IN's bit depth.\nAlpha is not filtered: outputs have that of the pixel under the kernel's middle, "
         "beyond the edge by the\nrule of the pad, 0 with a constant one. Gamma, colour profile and texts are "
         "dropped.\nArrays have one dimension or two, the last axis going across. Floating-point and complex elements "
         "are summed in their\nprecision or in that of --type, which other elements need, and so are results: sum "
         "* scale-output + offset.\nFixed point gives float64 or complex128. Of a grey picture, an array has the sums "
         "before they are rounded to samples.\n";
}

std::vector<Option> matrixOptions() {
  return {{.name = "--kernel", .meaning = "The filter, see below", .form = "KERNEL", .isRequired = true},
          kernelScaleOption()};
}

Operation matrixOperation(const std::string& name, const std::string& summary, const std::vector<Option>& kernelOptions,
                          int (*run)(const Values&)) {
  return {.name = name,
          .summary = summary,
          .options = optionsWith(kernelOptions, true),
          .details = detailsWith(kernelForms(), true),
          .example = name + " photo.png filtered.png --kernel gaussian:9:2 --mode same --pad replicate",
          .run = run};
}

}  // namespace

Operation convolveOperation() {
  return matrixOperation(
      "convolve", "Convolution: the kernel, turned by 180 degrees, is laid over each position and the products summed",
      matrixOptions(), runMatrix<filters::FilterDirection::convolution>);
}

Operation correlateOperation() {
  std::vector<Option> options = matrixOptions();
  options.push_back(
      {.name = "--nd", .meaning = "Over all dimensions, 1 to 8, of an NPY array: KERNEL is an NPY file of that rank"});
  return matrixOperation("correlate",
                         "Correlation: the kernel is laid over each position as it is and the products summed", options,
                         runMatrix<filters::FilterDirection::correlation>);
}

Operation separableOperation() {
  const std::vector<Option> lines = {
      {.name = "--column",
       .meaning = "Numbers that run down the picture, see below",
       .form = "LINE",
       .isRequired = true},
      {.name = "--row",
       .meaning = "Numbers that run across the picture, from left to right",
       .form = "LINE",
       .isRequired = true},
      {.name = "--correlate", .meaning = "Lays row and column as they are, not turned round"}};
  return {
      .name = "separable",
      .summary = "Convolution with a row of numbers, then with a column: faster than with their product",
      .options = optionsWith(lines, false),
      .details = detailsWith(lineForms(), false),
      .example = "separable photo.png soft.png --column gaussian:25:6 --row gaussian:25:6 --mode same --pad symmetric",
      .run = runSeparable};
}

}  // namespace BP::tool
