#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

/// Files by name. Failures throw `std::runtime_error` with the name and the system's reason.
namespace BP::tool {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens a file, a pipe or a device, or for "-" the standard input; a folder is refused.
File openForReading(const std::string& path);

/// Size in bytes of a regular file, -1 of anything else.
std::int64_t sizeOf(const File& file);

/// Appends up to `count` bytes of `file` to `bytes`, block by block, so that memory grows with what is there, not with
/// what a header promises. Returns the number of bytes read.
std::size_t appendBytes(std::vector<std::uint8_t>& bytes, std::FILE* file, std::size_t count);

/// All of a file; a file longer than `maxSize` bytes is refused.
std::string readText(const std::string& path, std::size_t maxSize);

/// Throws the error of a failed action, as in "cannot write 'x.png': No space left on device".
[[noreturn]] void failFile(const char* action, const std::string& path, int error);

/// Refuses a name to write to that is a folder's, is write-protected, lies where no file can be made, or is a link that
/// leads to no file.
void checkWritable(const std::string& path);

/// Writes `text` to the standard output.
void printOut(const std::string& text);

/// True for "-" and for the names under which the system knows the standard output.
bool isStandardOutput(const std::string& path);

/// True if `path` is the standard output, or exists and is neither a regular file nor a folder: a pipe or a device.
bool isStream(const std::string& path);

/// True if both names lead to the same regular file, whether it exists or not, or both to the standard output.
bool isSameFile(const std::string& first, const std::string& second);

/// Refuses a name to write to that does not end in `ending`, in upper or lower case, unless it is a pipe or a device.
void checkFileName(const std::string& path, const std::string& ending);

}  // namespace BP::tool
