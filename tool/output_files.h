#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tool/output_stream.h"

namespace BP::tool {

/// The files that one run writes: all of them appear under their names, or none does.
///
/// Each goes to a temporary file in its folder first. `commit` gives these files their names and puts back what was
/// there if it cannot name them all. A file that is replaced stays as it is until then; its owner, as far as the system
/// allows, and its access rights stay. A link is followed. Pipes, devices and the standard output are written straight.
/// Failures throw `std::runtime_error` with the name and the system's reason.
class OutputFiles {
 public:
  OutputFiles();
  ~OutputFiles();
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;

  /// Opens the temporary file for `path`, or a pipe or a device, or for "-" and "/dev/stdout" the standard output. The
  /// stream lives as long as this object.
  OutputStream& open(const std::string& path);

  /// Writes a whole file.
  void add(const std::string& path, std::span<const std::uint8_t> bytes);

  /// Gives all files their names.
  void commit();

 private:
  class Entry;
  std::vector<std::unique_ptr<Entry>> entries;
  std::vector<std::unique_ptr<OutputStream>> streams;
};

}  // namespace BP::tool
