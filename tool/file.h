#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

/// Files by name. Failures throw `std::runtime_error` with the name and the system's reason.
namespace BP::tool {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a file, or a pipe or device, for reading; a folder is refused.
File openForReading(const std::string& path);

/// Size in bytes of a regular file, -1 of anything else.
std::int64_t sizeOf(const File& file);

/// All of a file; refused if it is longer than `limit` bytes.
std::string readText(const std::string& path, std::size_t limit);

/// Refuses a name to write to that is a folder's, is write-protected, or lies where no file can be made.
void checkWritable(const std::string& path);

/// Puts `bytes`, and behind them `more`, under the name `path`, whole or not at all.
///
/// They go to a temporary file in the same folder, which then takes the name; a file of that name stays as it is until
/// this moment, keeps its access rights, and is refused if it is write-protected. On failure the temporary file is
/// removed; signals that ask to end wait meanwhile. A link is followed; a pipe or device is written straight.
void replaceFile(const std::string& path, std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> more = {});

/// Writes `text` to the standard output.
void printOut(const std::string& text);

/// True if `path` is there but neither a regular file nor a folder: a pipe or a device.
bool isStream(const std::string& path);

/// Refuses a name to write to that does not end in `ending`, in any case of letters, and is no pipe or device.
void checkFileName(const std::string& path, const std::string& ending);

}  // namespace BP::tool
