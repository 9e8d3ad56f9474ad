#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/file.h"
#include "tool/filter_settings.h"
#include "tool/frequency_response.h"
#include "tool/heat.h"
#include "tool/kernel.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/output_files.h"
#include "tool/plane_filter.h"
#include "tool/plane_store.h"
#include "tool/sheet.h"
#include "tool/shown_picture.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// Numbers from `least` to `greatest`, row by row, as a heat map.
Image heatMap(const std::vector<double>& values, int width, double least, double greatest) {
  Image image = makeImage(width, static_cast<int>(values.size()) / width, 3, 8);
  const double span = greatest - least;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto x = static_cast<std::int64_t>(i) % width, y = static_cast<std::int64_t>(i) / width;
    putColour(image, x, y, heatColour(span > 0 ? (values[i] - least) / span : 0.5));
  }
  return image;
}

/// The picture in 8 bits, reduced by a whole number to at most so many pixels a side: means of squares of pixels.
Image reduced(const Image& image) {
  constexpr int maxSide = 800;
  const int step = (std::max(image.width, image.height) + maxSide - 1) / maxSide;
  Image small = makeImage((image.width + step - 1) / step, (image.height + step - 1) / step, image.channels, 8);
  for (int y = 0; y < small.height; ++y) {
    for (int x = 0; x < small.width; ++x) {
      for (int c = 0; c < image.channels; ++c) {
        std::int64_t sum = 0, count = 0;
        for (int v = y * step; v < std::min((y + 1) * step, image.height); ++v) {
          for (int u = x * step; u < std::min((x + 1) * step, image.width); ++u, ++count) {
            sum += image.samples[image.at(u, v, c)];
          }
        }
        small.samples[small.at(x, y, c)] =
            static_cast<std::uint16_t>((sum * 255 + count * image.maximum() / 2) / (count * image.maximum()));
      }
    }
  }
  return small;
}

/// Each colour channel, filtered; outputs keep the place of their inputs.
Image filtered(const Image& image, const FilterSettings& settings, const SampleScaling& scaling) {
  Image result = image;
  result.isBilevel = false;
  const filters::Extents extents{image.width, image.height};
  const PlaneRun<double> run =
      makePlaneFilter<double>(settings, {extents, {0, 0, image.width, image.height}, 0, image.height});
  filters::Array<double> in(extents), out(extents);
  SampleCounts counts;
  const auto channels = static_cast<std::size_t>(image.channels);
  const ElementType type = image.bitDepth == 8 ? ElementType::uint8 : ElementType::uint16;
  std::vector<std::uint8_t> samples(out.size() * sizeOf(type));
  const PlaneStore<double> store = makeStore<double>(type, 1, scaling);
  for (std::size_t c = 0; c < static_cast<std::size_t>(image.colours()); ++c) {
    loadSamples(image.samples.data() + c, channels, in.size(), in.data(), counts);
    run(in, out);
    store(out.data(), out.size(), samples.data(), counts);
    const auto* const wide = reinterpret_cast<const std::uint16_t*>(samples.data());
    for (std::size_t i = 0; i < out.size(); ++i) {
      result.samples[i * channels + c] = type == ElementType::uint8 ? samples[i] : wide[i];
    }
  }
  return result;
}

/// Differences of the samples that are not alpha, in up to 61 bins with 0 in the middle one.
Histogram histogramOf(const Image& before, const Image& after) {
  constexpr std::int64_t half = 30, bins = 2 * half + 1;
  const auto channels = static_cast<std::size_t>(before.channels);
  const auto isColour = [&](std::size_t i) { return i % channels < static_cast<std::size_t>(before.colours()); };
  std::int64_t greatest = 0;
  for (std::size_t i = 0; i < before.samples.size(); ++i) {
    if (isColour(i)) greatest = std::max<std::int64_t>(greatest, std::abs(after.samples[i] - before.samples[i]));
  }
  Histogram histogram;
  const std::int64_t width = (2 * greatest + bins) / bins;  // bins that hold 2 * greatest + 1 differences
  histogram.width = width + (width % 2 == 0 ? 1 : 0);       // odd, so that 0 lies in the middle of its bin
  histogram.counts.resize(static_cast<std::size_t>(bins));
  histogram.least = -half * histogram.width - histogram.width / 2;
  for (std::size_t i = 0; i < before.samples.size(); ++i) {
    if (!isColour(i)) continue;
    const std::int64_t difference = after.samples[i] - before.samples[i];
    ++histogram.counts[static_cast<std::size_t>((difference - histogram.least) / histogram.width)];
  }
  return histogram;
}

std::string meanText(const Image& before, const Image& after) {
  double sum = 0, squares = 0;
  for (std::size_t i = 0; i < before.samples.size(); ++i) {
    const double difference = after.samples[i] - before.samples[i];
    sum += difference;
    squares += difference * difference;
  }
  const auto count = static_cast<double>(before.samples.size());
  return "Filtered sample less sample: mean " + roundedText(sum / count, 4) + ", root of the mean square " +
         roundedText(std::sqrt(squares / count), 4) + ". Red has 0.";
}

std::vector<SheetPicture> kernelPictures(const FilterKernel& kernel) {
  const auto [least, greatest] = std::ranges::minmax(kernel.elements);
  double sum = 0;
  for (const double element : kernel.elements) sum += element;
  const FrequencyResponse response = frequencyResponse(kernel);
  return {
      {"Kernel",
       std::to_string(kernel.width) + " x " + std::to_string(kernel.height) + " elements of " + roundedText(least, 4) +
           " (dark) to " + roundedText(greatest, 4) + " (bright); their sum is " + roundedText(sum, 4) + ".",
       heatMap(kernel.elements, kernel.width, least, greatest), true},
      {"Frequency response",
       "What remains of waves: constant brightness in the middle, half a turn a pixel at the edges; from 0 (dark) to " +
           roundedText(response.greatest, 4) + " (bright).",
       heatMap(response.values, response.side, 0, response.greatest), true}};
}

int run(const Values& values) {
  const std::string& out = values["OUT"];
  checkFileName(out, ".html");
  const PadValue pad = padOf(values);
  if (pad.value.imag() != 0) throw std::runtime_error("--pad: samples take a real value, constant:V");
  FilterSettings settings;
  settings.kernels = {parseKernel(values["--kernel"], numberOf(values, "--scale"))};
  settings.options = {.direction = filters::FilterDirection::convolution,
                      .mode = filters::OutputMode::same,
                      .pad = {pad.row->pad, pad.value.real()}};
  const SampleScaling scaling{numberOf(values, "--scale-output"), numberOf(values, "--offset")};
  const auto [before, note] = readShown(values["IN"]);
  const Image after = filtered(before, settings, scaling);
  std::vector<SheetPicture> pictures = kernelPictures(settings.kernels.front());
  const std::string size = std::to_string(before.width) + " x " + std::to_string(before.height) + " pixels. " + note;
  pictures.push_back({"Before", size, reduced(before)});
  pictures.push_back({"After", "Convolved; beyond the edge: " + values["--pad"] + ".", reduced(after)});
  const std::string page = sheetPage("What " + values["--kernel"] + " does to " + legible(values["IN"]),
                                     "orvane convolve --kernel " + values["--kernel"], pictures,
                                     histogramOf(before, after), meanText(before, after));
  OutputFiles files;
  files.add(out, {reinterpret_cast<const std::uint8_t*>(page.data()), page.size()});
  files.commit();
  return 0;
}

}  // namespace

Operation showOperation() {
  return {
      .name = "show",
      .summary = "Shows what a kernel does to a picture, on a page for the browser",
      .options = {{.name = "IN", .meaning = "Picture; of a stack the first page is shown", .isRequired = true},
                  {.name = "OUT", .meaning = "HTML page to write", .isRequired = true},
                  {.name = "--kernel",
                   .meaning = "The filter, see below",
                   .form = "KERNEL",
                   .defaultValue = "gaussian:2",
                   .shortName = 'k'},
                  kernelScaleOption(),
                  padOption("What is read beyond the edge", "replicate"),
                  numberOption("--scale-output", "Multiplies each sum", "1"),
                  numberOption("--offset", "Added to each scaled sum", "0")},
      .details =
          "The page has the kernel as a heat map, its frequency response, the picture before and after, and a "
          "histogram of the difference. It needs no other file. Samples that are no whole numbers of 8 or 16 bits are "
          "spread over 16 bits first.\nKernels:\n" +
          kernelForms(),
      .example = "show photo.png sheet.html --kernel log:2 --offset 128",
      .run = run};
}

}  // namespace BP::tool
