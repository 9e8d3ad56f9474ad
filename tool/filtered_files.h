#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/band_filter.h"
#include "tool/operation.h"
#include "tool/picture_file.h"

/// What the operations that filter a file have in common.
namespace BP::tool {

/// The positional arguments IN and OUT.
std::vector<Option> fileOptions();

/// How files are read and written: `--axes`, `--format`, `--compression`, `--memory`, `--threads` and `--quiet`.
std::vector<Option> streamOptions();

/// The part of a usage text about bands.
std::string memoryDetails();

/// The values of these options.
struct StreamSettings {
  std::string in;
  std::string out;
  std::string axes;  ///< names of the axes of an array, or empty
  WriteSettings write;
  std::size_t memory = 0;  ///< in bytes
  unsigned threads = 0;    ///< 0 for as many as there are cores
  bool isQuiet = false;
};
StreamSettings streamSettings(const Values& values);

/// Opens IN; takes the axes of an array as the settings name them.
std::unique_ptr<RowReader> openInput(const StreamSettings& settings);

/// The shape of what comes out when `window` moves over planes of a picture; samples are of the type `type`. Throws
/// `std::runtime_error` for an array that is no plane, and for a window that does not fit; `name` is what the error
/// calls it.
BandShape bandShape(const PictureHeader& in, FileFormat format, ElementType type, const Window& window,
                    const std::string& name);

/// Reads, filters and writes a file, and tells what of its tags was dropped. `reader` has IN.
SampleCounts filterFile(RowReader& reader, BandFilter& filter, const BandShape& shape, const StreamSettings& settings);

/// Tells that `count` of the values of the file `out` changed, unless the count is 0. `what` says how, as in "clipped".
void tellCount(const std::string& out, std::uint64_t count, std::uint64_t all, const std::string& what);

/// The number of a picture's samples without alpha.
std::uint64_t valuesOf(const PictureHeader& header);

/// Tells what happened to the fixed-point values of the file, unless the table is empty.
void tellFixed(const std::string& file, const std::string& table);

}  // namespace BP::tool
