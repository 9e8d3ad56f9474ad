#include "tool/shown_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include "tool/elements.h"
#include "tool/picture_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// The samples of the first page as `double`.
std::vector<double> firstPage(RowReader& reader) {
  const PictureHeader& header = reader.header();
  std::vector<std::uint8_t> bytes(header.rowBytes());
  std::vector<double> samples;
  for (std::int64_t row = 0; row < header.height; ++row) {
    reader.read(bytes.data(), 1);
    visitType(header.type, [&](auto zero) {
      using Sample = decltype(zero);
      if constexpr (!IsComplex<Sample>::value) {
        const auto* const from = reinterpret_cast<const Sample*>(bytes.data());
        samples.insert(samples.end(), from, from + header.rowSamples());
      }
    });
  }
  return samples;
}

/// Spreads the samples from the least to the greatest one over the range of the image.
std::string spread(const std::vector<double>& samples, Image& image) {
  double least = std::numeric_limits<double>::infinity(), greatest = -least;
  for (const double sample : samples) {
    if (!std::isfinite(sample)) continue;
    least = std::min(least, sample);
    greatest = std::max(greatest, sample);
  }
  if (least > greatest) least = greatest = 0;
  const double range = greatest - least;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double part = range > 0 ? (samples[i] - least) / range : 0;
    image.samples[i] = static_cast<std::uint16_t>(std::lround(image.maximum() * (part > 0 ? std::min(part, 1.0) : 0)));
  }
  return "Samples from " + numberText(least) + " to " + numberText(greatest) + " are shown as 0 to " +
         std::to_string(image.maximum()) + ".";
}

}  // namespace

ShownPicture readShown(const std::string& path) {
  const std::unique_ptr<RowReader> reader = openPicture(path);
  const PictureHeader& header = reader->header();
  const bool isPlane =
      header.isArray() ? header.arrayExtents.size() == 2 : header.colours() == 1 || header.colours() == 3;
  constexpr std::int64_t maxPixels = std::int64_t{1} << 28;
  const bool isSmall = header.width > 0 && header.height > 0 && header.width <= maxPixels / header.height;
  if (isImage(header) || isComplex(header.type) || !isPlane || !isSmall) return {readImage(*reader, path).image, {}};
  Image image = makeImage(static_cast<int>(header.width), static_cast<int>(header.height), header.channels,
                          header.type == ElementType::uint8 ? 8 : 16);
  const std::vector<double> samples = firstPage(*reader);
  std::string note = header.pages > 1 ? "The first of " + std::to_string(header.pages) + " pages." : std::string();
  if (header.type == ElementType::uint8 || header.type == ElementType::uint16) {
    std::ranges::transform(samples, image.samples.begin(),
                           [](double sample) { return static_cast<std::uint16_t>(sample); });
  } else {
    note += (note.empty() ? "" : " ") + spread(samples, image);
  }
  return {std::move(image), std::move(note)};
}

}  // namespace BP::tool
