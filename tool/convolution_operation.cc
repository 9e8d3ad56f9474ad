#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "tool/file_arguments.h"
#include "tool/filter_array.h"
#include "tool/filter_image.h"
#include "tool/filter_settings.h"
#include "tool/kernel.h"
#include "tool/npy_file.h"
#include "tool/operations.h"
#include "tool/png_file.h"
#include "tool/samples.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// What the operations have in common.
struct Arguments : FileArguments {
  std::string scaleOutput = "1";
  std::string offset = "0";
  FilterTexts filter;
};

struct MatrixArguments : Arguments {
  std::string kernel;
  std::string scale = "1";
  bool isVolume = false;
};

struct SeparableArguments : Arguments {
  std::string row;
  std::string column;
  bool correlates = false;
};

void runOnPicture(const Arguments& arguments, const FilterSettings& settings, const SampleScaling& scaling) {
  checkPngName(arguments.out);
  const FilteredImage result = filterImage(readPng(arguments.in), settings, scaling);
  const Image& image = result.image;
  writePng(arguments.out, image);
  if (arguments.quiet) return;
  tellCount(arguments.out, result.clipped, std::uint64_t{image.pixels()} * static_cast<std::uint64_t>(image.colours()),
            "clipped to 0.." + std::to_string(image.maximum()) + " (see --scale-output and --offset)");
  tellFixed(arguments.out, result.fixedTable);
}

void tellArray(const Arguments& arguments, const Array& input, const FilteredArray& result) {
  if (arguments.quiet) return;
  tellCount(arguments.out, result.rounded, input.elements(),
            "rounded to " + std::string(nameOf(result.array.type)) + " before they were filtered");
  tellFixed(arguments.out, result.fixedTable);
}

/// The elements of an array, or the samples of a grey picture whose sums are wanted as they are.
Array readPlane(const std::string& path) {
  if (isArrayName(path)) return readNpy(path);
  const Image image = readPng(path);
  if (image.channels == 1) return samplesOf(image);
  throw std::runtime_error(inQuotes(path) + " has " + std::to_string(image.channels) +
                           " channels; into an array go pictures of one, grey without alpha, or write a name that ends "
                           "in .png");
}

void runOnArray(const Arguments& arguments, const FilterSettings& settings, const SampleScaling& scaling) {
  checkNpyName(arguments.out);
  const Array input = readPlane(arguments.in);
  const FilteredArray result = filterArray(input, settings, scaling);
  writeNpy(arguments.out, result.array);
  tellArray(arguments, input, result);
}

SampleScaling scalingOf(const Arguments& arguments) {
  return {parseNumber(arguments.scaleOutput, "--scale-output"), parseNumber(arguments.offset, "--offset")};
}

/// Arrays of any rank, the kernel another one.
void runOnVolume(const MatrixArguments& arguments, const FilterSettings& settings) {
  checkNpyName(arguments.out);
  if (parseNumber(arguments.scale, "--scale") != 1)
    throw std::runtime_error("--scale: with --nd the kernel's elements stand as they are");
  const SampleScaling scaling = scalingOf(arguments);
  const Array input = readNpy(arguments.in);
  const FilteredArray result = correlateVolume(input, readNpy(arguments.kernel), settings, scaling);
  writeNpy(arguments.out, result.array);
  tellArray(arguments, input, result);
}

void run(const Arguments& arguments, const FilterSettings& settings) {
  const SampleScaling scaling = scalingOf(arguments);
  const bool isArray = isArrayName(arguments.in) || isArrayName(arguments.out);
  (isArray ? runOnArray : runOnPicture)(arguments, settings, scaling);
}

void addNumber(CLI::App& operation, const std::string& option, std::string& text, const std::string& meaning) {
  operation.add_option(option, text, meaning)->type_name("NUMBER")->capture_default_str();
}

/// The options that come last, and the text below them.
void addOutputOptions(CLI::App& operation, Arguments& arguments, const std::string& kernels, bool canNormalise,
                      const std::string& example) {
  operation.get_option("OUT")->description(
      "Picture or array to write, of the kind of IN, which it may be; or .npy of a grey picture");
  addFilterOptions(operation, arguments.filter, canNormalise);
  addNumber(operation, "--scale-output", arguments.scaleOutput, "Multiplies each sum; such as 1/2 for signed results");
  addNumber(operation, "--offset", arguments.offset, "Added to each scaled sum; such as 128 for signed results");
  operation.add_flag("--quiet", arguments.quiet, "Does not say how many values were clipped, nor of fixed point");
  operation.footer(
      "Kernels:\n" + kernels + "\n" + filterFooter(canNormalise) +
      "\nOutput samples are round(sum * scale-output + offset), ties to even, clipped to the range of "
      "IN's bit depth.\nAlpha is not filtered: outputs have that of the pixel under the kernel's middle, "
      "beyond the edge by the\nrule of the pad, 0 with a constant one. Gamma, colour profile and texts are "
      "dropped.\nArrays have one dimension or two, the last axis going across. Floating-point and complex elements are "
      "summed in their\nprecision or in that of --type, which other elements need, and so are results: sum "
      "* scale-output + offset.\nFixed point gives float64 or complex128. Of a grey picture, an array has the sums "
      "before they "
      "are rounded to samples.\nExample: orvane " +
      example + "\n");
}

void addMatrix(CLI::App& command, const std::string& name, filters::Direction direction,
               const std::string& description) {
  CLI::App* operation = command.add_subcommand(name, description);
  const auto arguments = std::make_shared<MatrixArguments>();
  addFiles(*operation, *arguments);
  operation->add_option("--kernel", arguments->kernel, "The filter, see below")->required()->type_name("KERNEL");
  addNumber(*operation, "--scale", arguments->scale, "Multiplies each element of the kernel; such as 0.1 or 1/16");
  if (direction == filters::Direction::correlation) {
    operation->add_flag("--nd", arguments->isVolume,
                        "Over all dimensions, 1 to 8, of an NPY array: KERNEL is an NPY file of that rank");
  }
  addOutputOptions(*operation, *arguments, kernelForms(), true,
                   name + " photo.png filtered.png --kernel gaussian:9:2 --mode same --pad replicate");
  operation->callback([arguments, direction] {
    FilterSettings settings = parseFilterTexts(arguments->filter, direction);
    if (arguments->isVolume) return runOnVolume(*arguments, settings);
    settings.kernels = {parseKernel(arguments->kernel, parseNumber(arguments->scale, "--scale"))};
    run(*arguments, settings);
  });
}

void addSeparable(CLI::App& command) {
  CLI::App* operation = command.add_subcommand(
      "separable", "Convolution with a row of numbers, then with a column: faster than with their product");
  const auto arguments = std::make_shared<SeparableArguments>();
  addFiles(*operation, *arguments);
  operation->add_option("--column", arguments->column, "Numbers that run down the picture, see below")
      ->required()
      ->type_name("LINE");
  operation->add_option("--row", arguments->row, "Numbers that run across the picture, from left to right")
      ->required()
      ->type_name("LINE");
  operation->add_flag("--correlate", arguments->correlates, "Lays row and column as they are, not turned round");
  addOutputOptions(
      *operation, *arguments, lineForms(), false,
      "separable photo.png soft.png --column gaussian:25:6 --row gaussian:25:6 --mode same --pad symmetric");
  operation->callback([arguments] {
    FilterSettings settings = parseFilterTexts(
        arguments->filter, arguments->correlates ? filters::Direction::correlation : filters::Direction::convolution);
    settings.kernels = {parseLine(arguments->row, "--row"), parseLine(arguments->column, "--column")};
    std::swap(settings.kernels[1].width, settings.kernels[1].height);
    run(*arguments, settings);
  });
}

}  // namespace

void addConvolution(CLI::App& command) {
  addMatrix(command, "convolve", filters::Direction::convolution,
            "Convolution: the kernel, turned by 180 degrees, is laid over each position and the products summed");
  addMatrix(command, "correlate", filters::Direction::correlation,
            "Correlation: the kernel is laid over each position as it is and the products summed");
  addSeparable(command);
}

}  // namespace BP::tool
