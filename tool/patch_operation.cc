#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "tool/image.h"
#include "tool/operations.h"
#include "tool/options.h"
#include "tool/png_file.h"
#include "tool/scramble.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

struct Arguments {
  std::string in;
  std::string out;
  std::string box;
  std::string noise = "0";
};

Image cut(const Image& image, const Rectangle& box, const std::string& what) {
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

/// Adds a whole number of -most..most, all as likely, to each sample that is not alpha, and clips the sum.
void disturb(Image& image, int most) {
  const auto channels = static_cast<std::size_t>(image.channels);
  for (std::size_t i = 0; i < image.samples.size(); ++i) {
    if (image.hasAlpha() && i % channels == channels - 1) continue;
    const auto noise = static_cast<int>(scramble(i) % static_cast<std::uint64_t>(2 * most + 1)) - most;
    image.samples[i] = static_cast<std::uint16_t>(std::clamp(image.samples[i] + noise, 0, image.maximum()));
  }
}

void run(const Arguments& arguments) {
  const Rectangle box = parseRectangle(arguments.box, "--box");
  checkPngName(arguments.out);
  const Image image = readPng(arguments.in);
  const int most = parseWhole(arguments.noise, 0, image.maximum(), "--noise");
  Image patch = cut(image, box, "--box " + inQuotes(arguments.box));
  disturb(patch, most);
  writePng(arguments.out, patch);
}

}  // namespace

void addPatch(CLI::App& command) {
  CLI::App* operation = command.add_subcommand("patch", "Cuts a patch out of a picture, to be found again by match");
  const auto arguments = std::make_shared<Arguments>();
  operation->add_option("IN", arguments->in, "PNG picture")->required()->type_name("");
  operation->add_option("OUT", arguments->out, "PNG picture to write, may be IN")->required()->type_name("");
  operation->add_option("--box", arguments->box, "Upper left corner and size of the patch")
      ->required()
      ->type_name("X,Y,WxH");
  operation->add_option("--noise", arguments->noise, "Adds a number of -N to N to each sample, and clips")
      ->type_name("N")
      ->capture_default_str();
  operation->footer(
      "The noise is the same on every machine and in every run. Alpha stays as it is.\n"
      "Example: orvane patch photo.png patch.png --box 400,180,80x60 --noise 40\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
