#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "tool/compare.h"
#include "tool/file.h"
#include "tool/file_arguments.h"
#include "tool/npy_file.h"
#include "tool/operations.h"
#include "tool/png_file.h"
#include "tool/samples.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

struct Arguments {
  std::string first;
  std::string second;
  std::optional<std::string> peak;
};

struct Values {
  Array array;
  int bitDepth = 0;  ///< of a picture
};

Values readValues(const std::string& path) {
  if (isArrayName(path)) return {readNpy(path)};
  const Image image = readPng(path);
  return {samplesOf(image), image.bitDepth};
}

std::optional<double> peakFor(const Arguments& arguments, const Values& first, const Values& second) {
  if (arguments.peak) {
    const double peak = parseNumber(*arguments.peak, "--peak");
    if (peak <= 0) throw std::runtime_error("--peak " + inQuotes(*arguments.peak) + " must be greater than 0");
    return peak;
  }
  const int depth = first.bitDepth != 0 ? first.bitDepth : second.bitDepth;
  if (depth == 0) return std::nullopt;
  return (1 << depth) - 1;
}

void run(const Arguments& arguments) {
  const Values first = readValues(arguments.first), second = readValues(arguments.second);
  if (first.bitDepth != second.bitDepth && first.bitDepth != 0 && second.bitDepth != 0) {
    throw std::runtime_error("the pictures have " + std::to_string(first.bitDepth) + " and " +
                             std::to_string(second.bitDepth) + " bits; they must have the same");
  }
  const std::optional<double> peak = peakFor(arguments, first, second);
  printOut(comparisonText(compare(first.array, second.array), peak));
}

}  // namespace

void addCompare(CLI::App& command) {
  CLI::App* operation = command.add_subcommand("compare", "Tells how far one picture or array is from another");
  const auto arguments = std::make_shared<Arguments>();
  operation->add_option("FIRST", arguments->first, "PNG picture or NPY array of real elements, the reference")
      ->required()
      ->type_name("");
  operation->add_option("SECOND", arguments->second, "Picture or array of the same extents")->required()->type_name("");
  operation->add_option("--peak", arguments->peak, "Peak value of psnr; default: the greatest sample of a picture")
      ->type_name("NUMBER");
  operation->footer(
      "values    extents, and how many values are different\n"
      "greatest  the greatest distance and where it lies first, dimension 0 first: X,Y, of colours CHANNEL,X,Y\n"
      "mean      of the second value minus the first: the bias\n"
      "rms       root of the mean of the squared differences\n"
      "psnr      20 log10(peak / rms); left out for two arrays without --peak\n"
      "Samples of pictures are whole numbers from 0; a grey picture can be compared with an array of two dimensions.\n"
      "Example: orvane compare reference.npy result.png\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
