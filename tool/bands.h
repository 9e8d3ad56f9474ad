#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/filters/options.h"
#include "tool/picture.h"

/// A picture is filtered in bands of output rows. Each band is made from the rows of the input that its windows meet.
namespace BP::tool {

/// A window that moves over a picture.
struct Window {
  int width = 0;
  int height = 0;
  filters::OutputMode mode = filters::OutputMode::same;
  filters::PadRule pad = filters::PadRule::replicate;
};

/// Rows of the output, and the rows of the input that they are made from. Where the input's rows are filtered as if
/// they were the whole picture, row `firstOut - firstIn + i` of the result is row `firstOut + i` of the output. With a
/// wrapped page, rows before the first one and after the last one are those of the other end.
struct Band {
  std::int64_t firstOut = 0;
  std::int64_t outRows = 0;
  std::int64_t firstIn = 0;
  std::int64_t inRows = 0;
};

/// The extents of the output along one dimension; 0 if the window does not fit.
std::int64_t outputExtent(std::int64_t extent, int window, filters::OutputMode mode);

/// How far a window reaches beyond the row of the input that has the number of its output row.
struct Reach {
  std::int64_t above;
  std::int64_t below;
};
Reach reachOf(const Window& window);

/// Whether windows at one end of a page read rows of the other end: a page is then filtered as a whole, or wrapped.
bool needsBothEnds(const Window& window);

/// Bands of up to `rows` output rows of a picture of `height` rows. Windows beyond an edge read what the edge rule
/// takes from other rows; so bands at the edges have some rows more.
std::vector<Band> bandsOf(std::int64_t height, const Window& window, std::int64_t rows, bool isWrapped);

/// The number of output rows in a band for which filtering needs about half of `memory` bytes: `rowBytes` for each row
/// of a band and of its surroundings. Throws `std::runtime_error` if even the smallest band needs more.
std::int64_t bandRows(std::int64_t height, const Window& window, std::size_t rowBytes, std::size_t memory);

/// Throws `std::runtime_error` if `rows` rows need more than about half of `memory`; `what` says why there are so many.
void checkMemory(std::int64_t rows, std::size_t rowBytes, std::size_t memory, const std::string& what);

/// The row or column that stands for `position`, from 0 to `extent` - 1 as it is, beyond that by the rule of the pad;
/// -1 for a constant one.
std::int64_t padIndex(std::int64_t position, std::int64_t extent, filters::PadRule pad);

}  // namespace BP::tool
