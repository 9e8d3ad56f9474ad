#include "tool/match_input.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <stdexcept>

#include "tool/levels.h"
#include "tool/picture_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// The grey of a picture: its samples as they are, or the luma of its colours.
Array greyOf(const Image& image) {
  const auto channels = static_cast<std::size_t>(image.channels);
  const ElementType whole = image.bitDepth == 8 ? ElementType::uint8 : ElementType::uint16;
  Array plane{image.colours() == 1 ? whole : ElementType::float64, {image.width, image.height}, {}};
  plane.bytes.resize(bytesOf(plane.type, plane.extents));
  for (std::size_t i = 0; i < image.pixels(); ++i) {
    const std::uint16_t* const sample = &image.samples[i * channels];
    if (plane.type == ElementType::float64) {
      plane.as<double>()[i] = 0.2126 * sample[0] + 0.7152 * sample[1] + 0.0722 * sample[2];
    } else if (plane.type == ElementType::uint16) {
      plane.as<std::uint16_t>()[i] = sample[0];
    } else {
      plane.bytes[i] = static_cast<std::uint8_t>(sample[0]);
    }
  }
  return plane;
}

Image pictureOf(const Image& image) {
  Image picture = makeImage(image.width, image.height, 3, 8);
  const int step = image.colours() == 1 ? 0 : 1;
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      for (int c = 0; c < 3; ++c) {
        const int sample = image.samples[image.at(x, y, c * step)];
        picture.samples[picture.at(x, y, c)] =
            static_cast<std::uint16_t>((sample * 255 + image.maximum() / 2) / image.maximum());
      }
    }
  }
  return picture;
}

Image pictureOf(const Array& array) {
  const Levels levels = levelsOf(array);
  Image picture = makeImage(static_cast<int>(array.extents[0]), static_cast<int>(array.extents[1]), 3, 8);
  for (std::size_t i = 0; i < levels.values.size(); ++i) {
    const auto sample = static_cast<std::uint16_t>(std::nearbyint(255 * levels.fraction(levels.values[i])));
    std::fill_n(&picture.samples[3 * i], 3, sample);
  }
  return picture;
}

void checkType(const Array& array, const std::string& what) {
  const ElementType allowed[] = {ElementType::boolean, ElementType::float32, ElementType::float64,
                                 ElementType::complex64, ElementType::complex128};
  if (std::find(std::begin(allowed), std::end(allowed), array.type) != std::end(allowed)) return;
  std::string names;
  for (const ElementType type : allowed) names.append(names.empty() ? "" : ", ").append(nameOf(type));
  throw std::runtime_error(what + " has elements of type " + std::string(nameOf(array.type)) + "; allowed are " +
                           names + ", and with --fixed all types");
}

void checkExtents(const Array& array, const std::string& what) {
  const std::string extents = joined(array.extents, "x");
  if (array.extents.size() != 2) {
    throw std::runtime_error(what + " has " + std::to_string(array.extents.size()) + " dimensions (" + extents +
                             "); it must have 2");
  }
  if (array.bytes.empty()) throw std::runtime_error(what + " is empty (" + extents + "); extents must be 1 or more");
}

}  // namespace

MatchInput readMatchInput(const std::string& path, bool allowsWhole, bool wantsPicture) {
  const std::unique_ptr<RowReader> reader = openPicture(path);
  if (isImage(reader->header())) {
    const Image image = readImage(*reader, path).image;
    return {greyOf(image), wantsPicture ? pictureOf(image) : Image(), image.bitDepth};
  }
  Array array = readArray(*reader);
  checkExtents(array, inQuotes(path));
  if (!allowsWhole) checkType(array, inQuotes(path));
  Image picture = wantsPicture ? pictureOf(array) : Image();
  return {std::move(array), std::move(picture), 0};
}

}  // namespace BP::tool
