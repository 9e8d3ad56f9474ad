#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/image.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/picture_file.h"
#include "tool/scramble.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

Image cut(const Image& image, const PositionBox& box, const std::string& what) {
  const bool fits = box.extents.size() == 2 && box.first[0] >= 0 && box.first[1] >= 0 &&
                    box.extents[0] <= image.width - box.first[0] && box.extents[1] <= image.height - box.first[1];
  if (!fits) {
    throw std::runtime_error(what + ": allowed is X,Y,WIDTHxHEIGHT within 0,0," + std::to_string(image.width) + "x" +
                             std::to_string(image.height));
  }
  Image patch = makeImage(box.extents[0], box.extents[1], image.channels, image.bitDepth);
  for (int y = 0; y < patch.height; ++y) {
    std::copy_n(&image.samples[image.at(box.first[0], box.first[1] + y)], patch.rowSamples(),
                &patch.samples[patch.at(0, y)]);
  }
  return patch;
}

/// Adds a whole number of -maxNoise to maxNoise to each sample that is not alpha, and clips the sum. All of these
/// numbers are equally likely.
void addNoise(Image& image, int maxNoise) {
  const auto channels = static_cast<std::size_t>(image.channels);
  for (std::size_t i = 0; i < image.samples.size(); ++i) {
    if (image.hasAlpha() && i % channels == channels - 1) continue;
    const auto noise = static_cast<int>(scramble(i) % static_cast<std::uint64_t>(2 * maxNoise + 1)) - maxNoise;
    image.samples[i] = static_cast<std::uint16_t>(std::clamp(image.samples[i] + noise, 0, image.maximum()));
  }
}

int run(const Values& values) {
  const PositionBox box = parseBox(values["--box"], "--box");
  const WriteSettings settings = writeSettings(values);
  formatFor(values["OUT"], settings);
  const TaggedImage picture = readImage(values["IN"]);
  const Image& image = picture.image;
  const int maxNoise = parseWhole(values["--noise"], 0, image.maximum(), "--noise");
  Image patch = cut(image, box, "--box " + inQuotes(values["--box"]));
  addNoise(patch, maxNoise);
  writeImage(values["OUT"], {patch, picture.tags, picture.isPacked}, settings);
  return 0;
}

std::vector<Option> options() {
  std::vector<Option> all = {
      {.name = "IN", .meaning = "Picture of 8 or 16 bits", .isRequired = true},
      {.name = "OUT", .meaning = "Picture to write, may be IN", .isRequired = true},
      {.name = "--box", .meaning = "Upper left corner and size of the patch", .form = "X,Y,WxH", .isRequired = true},
      {.name = "--noise",
       .meaning = "Adds a number of -N to N to each sample, and clips",
       .form = "N",
       .defaultValue = "0"}};
  for (Option& option : writeOptions()) all.push_back(std::move(option));
  return all;
}

}  // namespace

Operation patchOperation() {
  return {.name = "patch",
          .summary = "Cuts a patch out of a picture, to be found again by match",
          .options = options(),
          .details = "The noise is the same on every machine and in every run. Alpha stays as it is.\n",
          .example = "patch photo.png patch.png --box 400,180,80x60 --noise 40",
          .run = run};
}

}  // namespace BP::tool
