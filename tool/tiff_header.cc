#include "tool/tiff_header.h"

#include <algorithm>
#include <stdexcept>

#include "tool/text.h"

namespace BP::tool {

namespace {

struct SampleKind {
  int format;
  int bits;
  ElementType type;
};
constexpr SampleKind kinds[] = {{SAMPLEFORMAT_UINT, 1, ElementType::uint8},
                                {SAMPLEFORMAT_UINT, 2, ElementType::uint8},
                                {SAMPLEFORMAT_UINT, 4, ElementType::uint8},
                                {SAMPLEFORMAT_UINT, 8, ElementType::uint8},
                                {SAMPLEFORMAT_UINT, 16, ElementType::uint16},
                                {SAMPLEFORMAT_UINT, 32, ElementType::uint32},
                                {SAMPLEFORMAT_UINT, 64, ElementType::uint64},
                                {SAMPLEFORMAT_INT, 8, ElementType::int8},
                                {SAMPLEFORMAT_INT, 16, ElementType::int16},
                                {SAMPLEFORMAT_INT, 32, ElementType::int32},
                                {SAMPLEFORMAT_INT, 64, ElementType::int64},
                                {SAMPLEFORMAT_IEEEFP, 32, ElementType::float32},
                                {SAMPLEFORMAT_IEEEFP, 64, ElementType::float64},
                                {SAMPLEFORMAT_COMPLEXIEEEFP, 64, ElementType::complex64},
                                {SAMPLEFORMAT_COMPLEXIEEEFP, 128, ElementType::complex128}};

constexpr struct {
  ttag_t tag;
  const char* name;
} dropped[] = {{TIFFTAG_EXIFIFD, "EXIF"},
               {TIFFTAG_GPSIFD, "GPS"},
               {TIFFTAG_XMLPACKET, "XMP"},
               {TIFFTAG_RICHTIFFIPTC, "IPTC"},
               {TIFFTAG_SUBIFD, "subpictures"}};
constexpr ttag_t textTags[] = {TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_DOCUMENTNAME, TIFFTAG_ARTIST, TIFFTAG_COPYRIGHT};

bool hasField(const TiffFile& file, ttag_t tag) {
  void* first = nullptr;
  void* second = nullptr;
  return TIFFGetField(file.get(), tag, &first, &second) == 1;
}

[[noreturn]] void unsupported(const std::string& name, const std::string& what, const std::string& allowed) {
  throw std::runtime_error(name + ": " + what + " are not supported; allowed are " + allowed);
}

void readPalette(TiffFile& file, TiffLayout& layout, const std::string& name) {
  std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
  if (layout.bits > 8 || TIFFGetField(file.get(), TIFFTAG_COLORMAP, &red, &green, &blue) != 1) {
    unsupported(name, "palettes of " + std::to_string(layout.bits) + " bits", "1 to 8 bits");
  }
  const auto count = std::size_t{1} << layout.bits;
  for (std::size_t i = 0; i < count; ++i) layout.palette.push_back({red[i], green[i], blue[i]});
  const auto isByte = [](const auto& colour) { return *std::ranges::max_element(colour) < 256; };
  if (!std::ranges::all_of(layout.palette, isByte)) return;
  for (auto& colour : layout.palette) {  // some writers store colours of 8 bits as they are
    for (std::uint16_t& value : colour) value = static_cast<std::uint16_t>(257 * value);
  }
}

void readResolution(TiffFile& file, PictureTags& tags) {
  const auto x = file.field<float>(TIFFTAG_XRESOLUTION, 0), y = file.field<float>(TIFFTAG_YRESOLUTION, 0);
  const auto unit = file.field<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (!(x > 0 && y > 0)) return;
  const double perMetre = unit == RESUNIT_INCH ? 1 / 0.0254 : unit == RESUNIT_CENTIMETER ? 100 : 1;
  tags.xResolution = static_cast<double>(x) * perMetre;
  tags.yResolution = static_cast<double>(y) * perMetre;
  tags.isAspect = unit == RESUNIT_NONE;
}

PictureTags readTags(TiffFile& file) {
  PictureTags tags;
  readResolution(file, tags);
  tags.orientation = file.field<std::uint16_t>(TIFFTAG_ORIENTATION, 1);
  std::uint32_t size = 0;
  const std::uint8_t* profile = nullptr;
  if (TIFFGetField(file.get(), TIFFTAG_ICCPROFILE, &size, &profile) == 1) tags.profile.assign(profile, profile + size);
  if (std::ranges::any_of(textTags, [&](ttag_t tag) { return hasField(file, tag); })) tags.others.emplace_back("texts");
  for (const auto& entry : dropped) {
    if (hasField(file, entry.tag)) tags.others.emplace_back(entry.name);
  }
  return tags;
}

}  // namespace

void prepareTiff(TiffFile& file) {
  if (file.field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) != COMPRESSION_JPEG) return;
  if (file.field<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) != PLANARCONFIG_CONTIG) return;
  TIFFSetField(file.get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
}

TiffLayout readTiffLayout(TiffFile& file, const std::string& name) {
  TiffLayout layout;
  layout.bits = file.field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
  layout.samples = file.field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
  layout.isSeparate = layout.samples > 1 &&
                      file.field<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  int format = file.field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  if (format == SAMPLEFORMAT_VOID) format = SAMPLEFORMAT_UINT;
  const auto kind =
      std::ranges::find_if(kinds, [&](const SampleKind& k) { return k.format == format && k.bits == layout.bits; });
  if (kind == std::end(kinds)) {
    unsupported(name, "samples of " + std::to_string(layout.bits) + " bits of sample format " + std::to_string(format),
                "whole numbers of 1, 2, 4, 8, 16, 32 and 64 bits, float, double and complex ones");
  }
  layout.type = kind->type;
  const auto photometric = file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  const bool isJpeg = file.field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) == COMPRESSION_JPEG;
  const bool isKnown = photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE ||
                       photometric == PHOTOMETRIC_RGB || photometric == PHOTOMETRIC_PALETTE ||
                       (photometric == PHOTOMETRIC_YCBCR && isJpeg && !layout.isSeparate);
  if (!isKnown) {
    unsupported(name, "colours of photometric interpretation " + std::to_string(photometric),
                "grey, red, green and blue, and palettes");
  }
  if (photometric == PHOTOMETRIC_PALETTE) readPalette(file, layout, name);
  layout.isWhiteZero = photometric == PHOTOMETRIC_MINISWHITE && format == SAMPLEFORMAT_UINT;
  return layout;
}

PictureHeader tiffHeader(TiffFile& file, const TiffLayout& layout, const std::string& name) {
  PictureHeader header;
  header.format = FileFormat::tiff;
  header.width = file.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
  header.height = file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
  if (header.width == 0 || header.height == 0) {
    throw std::runtime_error(name + " is damaged or truncated: its extents are " + std::to_string(header.width) + "x" +
                             std::to_string(header.height));
  }
  header.type = layout.type;
  header.isPacked = file.field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE) != COMPRESSION_NONE;
  header.channels = layout.palette.empty() ? layout.samples : 3 * layout.samples;
  if (!layout.palette.empty() && layout.samples != 1) unsupported(name, "palettes with further channels", "palettes");
  std::uint16_t count = 0;
  std::uint16_t* kindsOfExtra = nullptr;
  if (TIFFGetField(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kindsOfExtra) == 1 && count > 0) {
    const std::uint16_t last = kindsOfExtra[count - 1];
    header.isAssociated = last == EXTRASAMPLE_ASSOCALPHA;
    header.hasAlpha = header.isAssociated || last == EXTRASAMPLE_UNASSALPHA;
  }
  const bool isWide = std::ranges::any_of(
      layout.palette, [](const auto& c) { return std::ranges::any_of(c, [](auto v) { return v % 257 != 0; }); });
  if (!layout.palette.empty() && isWide) header.type = ElementType::uint16;
  header.isBilevel = layout.bits == 1 && layout.samples == 1 && layout.palette.empty();
  header.tags = readTags(file);
  return header;
}

TiffPages countPages(TiffFile& file, const TiffLayout& layout) {
  const auto width = file.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
  const auto height = file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
  const auto format = file.field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  const auto photometric = file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  TiffPages pages;
  do {
    const bool isAlike = file.field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0) == width &&
                         file.field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0) == height &&
                         file.field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT) == format &&
                         file.field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK) == photometric &&
                         file.field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1) == layout.bits &&
                         file.field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1) == layout.samples &&
                         layout.palette.empty();
    ++pages.all;
    if (isAlike || pages.all == 1) ++pages.alike;
  } while (TIFFReadDirectory(file.get()) == 1);
  file.takeError();
  return pages;
}

}  // namespace BP::tool
