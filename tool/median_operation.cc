#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tool/file_arguments.h"
#include "tool/fixed_types.h"
#include "tool/kernel.h"
#include "tool/median.h"
#include "tool/npy_file.h"
#include "tool/operations.h"
#include "tool/png_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

struct Arguments : FileArguments {
  std::string window;
  EdgeTexts edges;
  std::optional<std::string> fixed;
};

std::vector<std::int64_t> parseWindow(const std::string& text) {
  const std::string what = "--window " + inQuotes(text);
  const auto sides = split(text, 'x');
  if (sides.size() > 2) throw std::runtime_error(what + ": allowed is WIDTHxHEIGHT, such as 5x5; for lines WIDTH");
  std::vector<std::int64_t> window;
  for (const std::string_view side : sides) window.push_back(parseWhole(side, 1, longestKernelSide, what));
  return window;
}

MedianSettings settingsOf(const Arguments& arguments) {
  MedianSettings settings{parseWindow(arguments.window), parseEdges(arguments.edges), std::nullopt};
  if (!arguments.fixed) return settings;
  const FixedEntries entries = parseFixedEntries(*arguments.fixed, {{"input"}, {"accumulator", "output"}});
  settings.fixed = {entries.at("input"), entries.find("accumulator"), entries.find("output"), entries.modes};
  return settings;
}

void runOnPicture(const Arguments& arguments, const MedianSettings& settings) {
  checkPngName(arguments.out);
  const FilteredImage result = medianImage(readPng(arguments.in), settings);
  const Image& image = result.image;
  writePng(arguments.out, image);
  if (arguments.quiet) return;
  tellCount(arguments.out, result.clipped, std::uint64_t{image.pixels()} * static_cast<std::uint64_t>(image.colours()),
            "clipped to 0.." + std::to_string(image.maximum()));
  tellFixed(arguments.out, result.fixedTable);
}

void runOnArray(const Arguments& arguments, const MedianSettings& settings) {
  checkNpyName(arguments.out);
  const FilteredArray result = medianArray(readNpy(arguments.in), settings);
  writeNpy(arguments.out, result.array);
  if (arguments.quiet) return;
  tellCount(arguments.out, result.rounded, result.array.elements(),
            settings.fixed ? "rounded to float64 before they were filtered"
                           : "means of two that ended in .5, rounded to even");
  tellFixed(arguments.out, result.fixedTable);
}

void run(const Arguments& arguments) {
  (isArrayName(arguments.in) ? runOnArray : runOnPicture)(arguments, settingsOf(arguments));
}

}  // namespace

void addMedian(CLI::App& command) {
  CLI::App* operation = command.add_subcommand(
      "median", "Median: the middle one of the values under a window; takes specks, keeps edges");
  const auto arguments = std::make_shared<Arguments>();
  addFiles(*operation, *arguments);
  operation->add_option("--window", arguments->window, "Extents of the window, such as 5x5; of lines one, such as 5")
      ->required()
      ->type_name("WxH");
  addEdgeOptions(*operation, arguments->edges);
  operation->add_option("--fixed", arguments->fixed, "Medians are cast in fixed point, see below")->type_name("TYPES");
  operation->add_flag("--quiet", arguments->quiet, "Does not say how many values were rounded, nor of fixed point");
  operation->footer(
      "Each side of the window is 1 to " + std::to_string(longestKernelSide) + ".\n" + edgeFooter("window") +
      "Even windows: the mean of the two values in the middle.\n"
      "Pictures keep their bit depth. Grey of 1 bit is filtered as true and false: a tie gives white, V of the pad is "
      "0 "
      "or 1,\nand the output has 1 bit too (8 with alpha). Samples of 8 and 16 bits go through float, which holds them "
      "and the mean\nof two exactly; a mean that ends in .5 is rounded once, to the even neighbour. Alpha is not "
      "filtered: outputs have\nthat of the pixel under the window's middle, beyond the edge by the rule of the pad, 0 "
      "with a constant one.\n"
      "Arrays have one dimension or two, the last axis going across, and keep their type: float32, float64, bool as "
      "they "
      "are;\nwhole numbers through float (8 and 16 bits) or double (32 and 64 bits, those from -2^52 to 2^52), rounded "
      "as in\npictures. Complex elements have no order and no median.\n" +
      fixedFooter("input=s16.14,accumulator=s18.15,output=u8.0,rounding=nearest,overflow=saturate",
                  "Medians go through the\naccumulator, where the mean of two is taken; without one it is exact. "
                  "Without output that is as input") +
      "Values are cast into the input's type, medians into the output's; what happened to them is told at the end, "
      "but not if\nthe sum of two overflows. Pictures get the values of the output rounded and clipped to the range of "
      "their samples, which\nare 0 and 255 for 1 bit; arrays become float64.\n"
      "Example: orvane median photo.png clean.png --window 3x3 --mode same --pad replicate\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
