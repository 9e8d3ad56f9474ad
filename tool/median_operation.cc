#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tool/filtered_files.h"
#include "tool/fixed_types.h"
#include "tool/kernel.h"
#include "tool/median.h"
#include "tool/npy_file.h"
#include "tool/operations.h"
#include "tool/png_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

std::vector<std::int64_t> parseWindow(const std::string& text) {
  const std::string what = "--window " + inQuotes(text);
  const auto sides = split(text, 'x');
  if (sides.size() > 2) throw std::runtime_error(what + ": allowed is WIDTHxHEIGHT, such as 5x5; for lines WIDTH");
  std::vector<std::int64_t> window;
  for (const std::string_view side : sides) window.push_back(parseWhole(side, 1, maxKernelSide, what));
  return window;
}

MedianSettings settingsOf(const Values& values) {
  MedianSettings settings{parseWindow(values["--window"]), edgeSettings(values), std::nullopt};
  if (!values.has("--fixed")) return settings;
  const FixedEntries entries = parseFixedEntries(values["--fixed"], {{"input"}, {"accumulator", "output"}});
  settings.fixed = {entries.at("input"), entries.find("accumulator"), entries.find("output"), entries.modes};
  return settings;
}

void runOnPicture(const Values& values, const MedianSettings& settings) {
  const std::string& out = values["OUT"];
  checkPngName(out);
  const FilteredImage result = medianImage(readPng(values["IN"]), settings);
  const Image& image = result.image;
  writePng(out, image);
  if (values.has("--quiet")) return;
  tellCount(out, result.clipped, std::uint64_t{image.pixels()} * static_cast<std::uint64_t>(image.colours()),
            "clipped to 0.." + std::to_string(image.maximum()));
  tellFixed(out, result.fixedTable);
}

void runOnArray(const Values& values, const MedianSettings& settings) {
  const std::string& out = values["OUT"];
  checkNpyName(out);
  const FilteredArray result = medianArray(readNpy(values["IN"]), settings);
  writeNpy(out, result.array);
  if (values.has("--quiet")) return;
  tellCount(out, result.rounded, result.array.elements(),
            settings.fixed ? "rounded to float64 before they were filtered"
                           : "means of two that ended in .5, rounded to even");
  tellFixed(out, result.fixedTable);
}

int run(const Values& values) {
  (isArrayName(values["IN"]) ? runOnArray : runOnPicture)(values, settingsOf(values));
  return 0;
}

std::vector<Option> options() {
  std::vector<Option> all = fileOptions("Picture or array to write, of the kind of IN; may be IN");
  all.push_back({.name = "--window",
                 .meaning = "Extents of the window, such as 5x5; of lines one, such as 5",
                 .form = "WxH",
                 .isRequired = true});
  for (Option& option : edgeOptions()) all.push_back(std::move(option));
  all.push_back({.name = "--fixed", .meaning = "Medians are cast in fixed point, see below", .form = "TYPES"});
  all.push_back({.name = "--quiet", .meaning = "Does not say how many values were rounded, nor of fixed point"});
  return all;
}

std::string details() {
  return "Each side of the window is 1 to " + std::to_string(maxKernelSide) + ".\n" + edgeDetails("window") +
         "Even windows: the mean of the two values in the middle.\n"
         "Pictures keep their bit depth. Grey of 1 bit is filtered as true and false: a tie gives white, V of the pad "
         "is 0 or 1,\nand the output has 1 bit too (8 with alpha). Samples of 8 and 16 bits go through float, which "
         "holds them and the mean\nof two exactly; a mean that ends in .5 is rounded once, to the even neighbour. "
         "Alpha is not filtered: outputs have\nthat of the pixel under the window's middle, beyond the edge by the "
         "rule of the pad, 0 with a constant one.\n"
         "Arrays have one dimension or two, the last axis going across, and keep their type: float32, float64, bool as "
         "they are;\nwhole numbers through float (8 and 16 bits) or double (32 and 64 bits, those from -2^52 to 2^52), "
         "rounded as in\npictures. Complex elements have no order and no median.\n" +
         fixedDetails("input=s16.14,accumulator=s18.15,output=u8.0,rounding=nearest,overflow=saturate",
                      "Medians go through the\naccumulator, where the mean of two is taken; without one it is exact. "
                      "Without output that is as input") +
         "Values are cast into the input's type, medians into the output's; what happened to them is told at the end, "
         "but not if\nthe sum of two overflows. Pictures get the values of the output rounded and clipped to the range "
         "of their samples, which\nare 0 and 255 for 1 bit; arrays become float64.\n";
}

}  // namespace

Operation medianOperation() {
  return {.name = "median",
          .summary = "Median: the middle one of the values under a window; takes specks, keeps edges",
          .options = options(),
          .details = details(),
          .example = "median photo.png clean.png --window 3x3 --mode same --pad replicate",
          .run = run};
}

}  // namespace BP::tool
