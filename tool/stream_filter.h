#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "tool/band_filter.h"
#include "tool/checksum.h"
#include "tool/workers.h"

namespace BP::tool {

/// What the filtering of a picture may use.
struct StreamMeans {
  std::size_t memory;  ///< in bytes
  Workers& workers;
  Checksum* checksum = nullptr;  ///< gets all output rows, if it is there
  /// Opens the picture once more; empty for what can be read only once.
  std::function<std::unique_ptr<RowReader>()> reopen = {};
};

/// Reads a picture, filters it and writes the result, band by band: while one band is filtered, the next ones are read
/// and those before it are written. Bands are as high as the memory allows; results do not depend on their height
/// nor on the number of workers. With a circular pad a page is filtered in one piece, or read twice if it is too large
/// for that.
///
/// Throws `std::runtime_error` if the memory does not suffice for the smallest band, and what reader, writer and filter
/// throw.
SampleCounts streamFilter(RowReader& reader, RowWriter& writer, BandFilter& filter, const BandShape& shape,
                          const StreamMeans& means);

}  // namespace BP::tool
