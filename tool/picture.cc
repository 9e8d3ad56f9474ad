#include "tool/picture.h"

#include <algorithm>
#include <stdexcept>

#include "tool/text.h"

namespace BP::tool {

std::vector<std::int64_t> PictureHeader::extents() const {
  if (isArray()) return arrayExtents;
  std::vector<std::int64_t> all;
  if (channels > 1) all.push_back(channels);
  all.insert(all.end(), {width, height});
  if (pages > 1) all.push_back(pages);
  return all;
}

PictureHeader inFormat(PictureHeader header, FileFormat format) {
  if (format == FileFormat::npy) {
    if (!header.isArray() && header.channels > 1) header.xAxis = 1;
    header.arrayExtents = header.extents();
  } else {
    header.arrayExtents.clear();
  }
  header.format = format;
  return header;
}

void nameAxes(PictureHeader& header, const std::string& axes) {
  const std::string what = "--axes " + inQuotes(axes);
  const std::size_t rank = header.arrayExtents.size();
  if (!header.isArray()) throw std::runtime_error(what + ": only arrays have axes to be named");
  const std::size_t plane = axes.find("YX");
  const bool hasChannels = axes.ends_with('C');
  const bool isKnown = plane != std::string::npos && plane + (hasChannels ? 3 : 2) == axes.size() &&
                       std::ranges::all_of(axes, [](char c) { return c >= 'A' && c <= 'Z'; });
  if (!isKnown || axes.size() != rank) {
    throw std::runtime_error(what + ": allowed are " + counted(static_cast<std::int64_t>(rank), "letter") +
                             " of which the last are YX or YXC, such as ZYX, TZYX or YXC");
  }
  header.xAxis = hasChannels ? 1 : 0;
  header.channels = hasChannels ? static_cast<int>(header.arrayExtents[0]) : 1;
  header.width = header.arrayExtents[header.xAxis];
  header.height = header.arrayExtents[header.xAxis + 1];
  header.pages = 1;
  for (std::size_t d = header.xAxis + 2; d < rank; ++d) header.pages *= header.arrayExtents[d];
}

}  // namespace BP::tool
