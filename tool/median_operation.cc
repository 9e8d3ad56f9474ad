#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/file.h"
#include "tool/filtered_files.h"
#include "tool/fixed_types.h"
#include "tool/kernel.h"
#include "tool/median.h"
#include "tool/operations.h"
#include "tool/picture_file.h"
#include "tool/plane_store.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

MedianSettings settingsOf(const Values& values) {
  const std::string& text = values["--window"];
  const std::string what = "--window " + inQuotes(text);
  const auto sides = split(text, 'x');
  if (sides.size() > 2) throw std::runtime_error(what + ": allowed is WIDTHxHEIGHT, such as 5x5; for lines WIDTH");
  MedianSettings settings{.width = parseWhole(sides[0], 1, maxKernelSide, what), .edges = edgeSettings(values)};
  if (sides.size() == 2) settings.height = parseWhole(sides[1], 1, maxKernelSide, what);
  if (!values.has("--fixed")) return settings;
  const FixedEntries entries = parseFixedEntries(values["--fixed"], {{"input"}, {"accumulator", "output"}});
  settings.fixed = {entries.at("input"), entries.find("accumulator"), entries.find("output"), entries.modes};
  return settings;
}

/// Refuses a window of another number of dimensions than the planes have.
void checkWindow(const PictureHeader& in, const std::string& window) {
  const bool isLine = in.isArray() && in.arrayExtents.size() == 1;
  if (isLine != (split(window, 'x').size() == 2)) return;
  throw std::runtime_error("--window " + inQuotes(window) + ": allowed is " +
                           (isLine ? "WIDTH, such as 5, for an array of one dimension"
                                   : "WIDTHxHEIGHT, such as 5x5, for pictures and arrays of two dimensions"));
}

/// Filters the file in fixed point; returns the table of values.
std::string runFixed(RowReader& reader, const BandShape& shape, const MedianSettings& settings,
                     const StreamSettings& files, SampleCounts& counts) {
  FixedPlaneFilters fixed(fixedMedianMaker(shape.in, settings));
  const auto filter = makeBandFilter<double>(
      shape, fixed.maker<double>(), makeStore<double>(shape.out.type, shape.out.channels, {}), fixedBytes<double>);
  counts = filterFile(reader, *filter, shape, files);
  return fixed.table();
}

void tellCounts(const BandShape& shape, bool isFixed, const SampleCounts& counts, const StreamSettings& files) {
  if (files.isQuiet) return;
  if (isWhole(shape.out.type)) {
    const auto [least, greatest] = rangeOf(shape.out.type);
    tellCount(files.out, counts.clipped, valuesOf(shape.out),
              "clipped to " + numberText(least) + ".." + numberText(greatest));
  }
  if (!shape.in.isArray()) return;
  tellCount(
      files.out, counts.rounded, valuesOf(isFixed ? shape.in : shape.out),
      isFixed ? "rounded to float64 before they were filtered" : "means of two that ended in .5, rounded to even");
}

int run(const Values& values) {
  const MedianSettings settings = settingsOf(values);
  const StreamSettings files = streamSettings(values);
  const std::unique_ptr<RowReader> reader = openInput(files);
  checkWritable(files.out);
  const PictureHeader& in = reader->header();
  const FileFormat format = formatFor(files.out, files.write, in.format);
  const bool becomesArray = settings.fixed && (format == FileFormat::npy || !isWhole(in.type));
  BandShape shape =
      bandShape(in, format, becomesArray ? ElementType::float64 : in.type,
                {settings.width, settings.height, settings.edges.mode, settings.edges.pad.rule}, "window");
  checkWindow(in, values["--window"]);
  SampleCounts counts;
  std::string table;
  if (settings.fixed) {
    table = runFixed(*reader, shape, settings, files, counts);
  } else {
    shape.out.isBilevel = in.isBilevel;
    counts = filterFile(*reader, *makeMedianFilter(shape, settings), shape, files);
  }
  tellCounts(shape, settings.fixed.has_value(), counts, files);
  if (!files.isQuiet) tellFixed(files.out, table);
  return 0;
}

std::vector<Option> options() {
  std::vector<Option> all = fileOptions();
  all.push_back({.name = "--window",
                 .meaning = "Extents of the window, such as 5x5; of lines one, such as 5",
                 .form = "WxH",
                 .isRequired = true,
                 .shortName = 'w'});
  for (Option& option : edgeOptions()) all.push_back(std::move(option));
  all.push_back({.name = "--fixed", .meaning = "Medians are cast in fixed point, see below", .form = "TYPES"});
  for (Option& option : streamOptions()) all.push_back(std::move(option));
  return all;
}

std::string details() {
  return "Each side of the window is 1 to " + std::to_string(maxKernelSide) + ".\n" + edgeDetails("window") +
         "Even windows: the mean of the two values in the middle.\n"
         "\nThe type of the samples stays. Grey of 1 bit is filtered as true and false: a tie gives white, V of the "
         "pad is "
         "0 or 1, and the output has 1 bit too (8 with alpha). Other whole numbers have exact medians, those of 64 "
         "bits "
         "from -2^52 to 2^52; a mean of two that ends in .5 is rounded once, to the even neighbour. Complex elements "
         "have no order and no median.\n"
         "\nAlpha is not filtered: outputs have that of the pixel under the window's middle, beyond the edge by the "
         "rule "
         "of the pad, 0 with a constant one. The pages of a stack are filtered one by one. Arrays have one dimension "
         "or "
         "two, the last axis going across, or axes that --axes names.\n" +
         memoryDetails() + "\n\n" +
         fixedDetails("input=s16.14,accumulator=s18.15,output=u8.0,rounding=nearest,overflow=saturate",
                      "Medians go through the\naccumulator, where the mean of two is taken; without one it is exact. "
                      "Without output that is as input") +
         "Values are cast into the input's type, medians into the output's; what happened to them is told at the end, "
         "but not if\nthe sum of two overflows. Pictures get the values of the output rounded and clipped to the range "
         "of their samples, which\nare 0 and 255 for 1 bit; arrays become float64.\n\n" +
         formatDetails();
}

}  // namespace

Operation medianOperation() {
  return {.name = "median",
          .summary = "Median: the middle one of the values under a window; takes specks, keeps edges",
          .options = options(),
          .details = details(),
          .example = "median photo.png clean.png --window 3x3",
          .run = run};
}

}  // namespace BP::tool
