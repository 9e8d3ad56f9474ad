#include <cstdio>
#include <memory>
#include <string>

#include "tool/filter_image.h"
#include "tool/kernel.h"
#include "tool/operations.h"
#include "tool/png_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

struct Arguments {
  std::string in;
  std::string out;
  std::string kernel;
  std::string scale = "1";
  std::string scaleOutput = "1";
  std::string offset = "0";
  bool quiet = false;
};

void tellClipped(const FilteredImage& result, const std::string& out) {
  const Image& image = result.image;
  const std::uint64_t all = std::uint64_t{image.pixels()} * static_cast<std::uint64_t>(image.colours());
  std::fprintf(stderr, "orvane: %s: %llu of %llu values were clipped to 0..%d (see --scale-output and --offset)\n",
               out.c_str(), static_cast<unsigned long long>(result.clipped), static_cast<unsigned long long>(all),
               image.maximum());
}

void run(const Arguments& arguments, AlgorithmModeEnum mode) {
  const Kernel kernel = parseKernel(arguments.kernel, parseNumber(arguments.scale, "--scale"));
  const SampleScaling scaling{parseNumber(arguments.scaleOutput, "--scale-output"),
                              parseNumber(arguments.offset, "--offset")};
  checkPngName(arguments.out);
  const FilteredImage result = filterImage(readPng(arguments.in), kernel, mode, scaling);
  writePng(arguments.out, result.image);
  if (result.clipped > 0 && !arguments.quiet) tellClipped(result, arguments.out);
}

void addOperation(CLI::App& command, const std::string& name, AlgorithmModeEnum mode, const std::string& description) {
  CLI::App* operation = command.add_subcommand(name, description);
  const auto arguments = std::make_shared<Arguments>();
  operation->add_option("IN", arguments->in, "PNG picture of 1 to 16 bits; each colour channel is filtered")
      ->required()
      ->type_name("");
  operation->add_option("OUT", arguments->out, "PNG picture to write, may be IN; smaller by the kernel's sides less 1")
      ->required()
      ->type_name("");
  operation->add_option("--kernel", arguments->kernel, "The filter, see below")->required()->type_name("KERNEL");
  const auto addNumber = [&](const std::string& option, std::string& text, const std::string& meaning) {
    operation->add_option(option, text, meaning)->type_name("NUMBER")->capture_default_str();
  };
  addNumber("--scale", arguments->scale, "Multiplies each element of the kernel; such as 0.1 or 1/16");
  addNumber("--scale-output", arguments->scaleOutput, "Multiplies each sum; such as 1/2 for signed results");
  addNumber("--offset", arguments->offset, "Added to each scaled sum; such as 128 for signed results");
  operation->add_flag("--quiet", arguments->quiet, "Does not say how many values were clipped");
  operation->footer("Kernels:\n" + kernelForms() +
                    "\nOutput samples are round(sum * scale-output + offset), ties to even, clipped to the range of "
                    "IN's bit depth.\nAlpha is cropped, not filtered; gamma, colour profile and texts are "
                    "dropped.\nExample: orvane " +
                    name + " photo.png filtered.png --kernel gaussian:9:2\n");
  operation->callback([arguments, mode] { run(*arguments, mode); });
}

}  // namespace

void addConvolution(CLI::App& command) {
  addOperation(command, "convolve", AlgorithmModeConvolution,
               "Convolution: the kernel, turned by 180 degrees, is laid over each position and the products summed");
  addOperation(command, "correlate", AlgorithmModeCorrelation,
               "Correlation: the kernel is laid over each position as it is and the products summed");
}

}  // namespace BP::tool
