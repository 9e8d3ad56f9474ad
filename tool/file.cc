#include "tool/file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "tool/text.h"

namespace BP::tool {

namespace {

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// Refuses a link that leads to no file. `statError` is the error number of `stat`, which follows links.
void checkLink(const std::string& path, int statError) {
  std::error_code ignored;
  if (!std::filesystem::is_symlink(path, ignored)) return;
  if (statError != ENOENT) failFile("write", path, statError);
  throw std::runtime_error("cannot write " + inQuotes(path) + ": it is a link to " +
                           inQuotes(std::filesystem::read_symlink(path).string()) + ", which does not exist");
}

}  // namespace

void failFile(const char* action, const std::string& path, int error) {
  throw std::runtime_error(std::string("cannot ") + action + " " + inQuotes(path) + ": " + std::strerror(error));
}

File openForReading(const std::string& path) {
  File file(path == "-" ? ::fdopen(::dup(STDIN_FILENO), "rb") : std::fopen(path.c_str(), "rbe"));
  if (!file) failFile("read", path, errno);
  struct stat status {};
  if (::fstat(::fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode)) failFile("read", path, EISDIR);
  return file;
}

std::int64_t sizeOf(const File& file) {
  struct stat status {};
  if (::fstat(::fileno(file.get()), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return status.st_size;
}

std::size_t appendBytes(std::vector<std::uint8_t>& bytes, std::FILE* file, std::size_t count) {
  constexpr std::size_t blockSize = std::size_t{1} << 20;
  const std::size_t before = bytes.size();
  while (bytes.size() - before < count) {
    const std::size_t at = bytes.size();
    const std::size_t wanted = std::min(blockSize, count - (at - before));
    bytes.resize(at + wanted);
    const std::size_t got = std::fread(bytes.data() + at, 1, wanted, file);
    bytes.resize(at + got);
    if (got < wanted) break;
  }
  return bytes.size() - before;
}

std::string readText(const std::string& path, std::size_t maxSize) {
  const File file = openForReading(path);
  std::vector<std::uint8_t> bytes;
  appendBytes(bytes, file.get(), maxSize + 1);
  if (std::ferror(file.get()) != 0) failFile("read", path, errno);
  if (bytes.size() > maxSize) {
    throw std::runtime_error(inQuotes(path) + " is longer than the " + std::to_string(maxSize) + " bytes allowed");
  }
  return {bytes.begin(), bytes.end()};
}

void checkWritable(const std::string& path) {
  if (isStandardOutput(path)) return;
  const auto status = statusOf(path);
  if (!status) checkLink(path, errno);
  if (status && S_ISDIR(status->st_mode)) failFile("write", path, EISDIR);
  if (status && ::access(path.c_str(), W_OK) != 0) failFile("write", path, errno);
  if (isStream(path)) return;
  const std::filesystem::path target = status ? std::filesystem::canonical(path) : std::filesystem::path(path);
  const std::filesystem::path folder =
      target.parent_path() / ".";  // `access` fails for it unless the parent is a folder
  if (::access(folder.c_str(), W_OK | X_OK) != 0) failFile("write", path, errno);
}

void printOut(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw std::runtime_error(std::string("cannot write to the standard output: ") + std::strerror(errno));
  }
}

bool isStandardOutput(const std::string& path) {
  constexpr std::string_view names[] = {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"};
  return std::ranges::find(names, path) != std::end(names);
}

bool isStream(const std::string& path) {
  if (isStandardOutput(path)) return true;
  const auto status = statusOf(path);
  return status && !S_ISREG(status->st_mode) && !S_ISDIR(status->st_mode);
}

bool isSameFile(const std::string& first, const std::string& second) {
  if (isStandardOutput(first) || isStandardOutput(second)) {
    return isStandardOutput(first) && isStandardOutput(second);
  }
  if (isStream(first) || isStream(second)) return false;
  const auto resolved = [](const std::string& path) {
    std::error_code ignored;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
  };
  return resolved(first) == resolved(second);
}

void checkFileName(const std::string& path, const std::string& ending) {
  if (!lowered(path).ends_with(ending) && !isStream(path)) {
    throw std::runtime_error("cannot write " + inQuotes(path) + ": the name must end in " + ending);
  }
}

}  // namespace BP::tool
