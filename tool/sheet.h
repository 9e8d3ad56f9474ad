#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/image.h"

namespace BP::tool {

/// A picture on a contact sheet, with its title and a sentence about it.
struct SheetPicture {
  std::string title;
  std::string text;
  Image image;              ///< of 8 bits
  bool isEnlarged = false;  ///< shown with large square pixels
};

/// How often differences of samples occur.
struct Histogram {
  std::int64_t least = 0;             ///< the least difference in the first bin
  std::int64_t width = 1;             ///< differences in a bin
  std::vector<std::uint64_t> counts;  ///< of the bins
};

/// A contact sheet as one HTML page that needs no other file: pictures, and a histogram as bars.
std::string sheetPage(const std::string& title, const std::string& subtitle, const std::vector<SheetPicture>& pictures,
                      const Histogram& histogram, const std::string& histogramText);

}  // namespace BP::tool
