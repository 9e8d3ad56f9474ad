#include "tool/file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tool/text.h"

namespace BP::tool {

namespace {

[[noreturn]] void fail(const char* action, const std::string& path, int error) {
  throw std::runtime_error(std::string("cannot ") + action + " " + inQuotes(path) + ": " + std::strerror(error));
}

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// Holds back the signals that end a program from outside, so that clean-up runs first.
class SignalHold {
 public:
  SignalHold() {
    sigset_t ends;
    sigemptyset(&ends);
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&ends, signal);
    sigprocmask(SIG_BLOCK, &ends, &before);
  }
  ~SignalHold() { sigprocmask(SIG_SETMASK, &before, nullptr); }
  SignalHold(const SignalHold&) = delete;
  SignalHold& operator=(const SignalHold&) = delete;

 private:
  sigset_t before{};
};

/// An open descriptor to write to, closed at the end; errors speak of `path`, whatever the real name.
class Writer {
 public:
  Writer(int openDescriptor, const std::string& shownPath) : descriptor(openDescriptor), path(shownPath) {
    if (descriptor < 0) fail("write", path, errno);
  }
  ~Writer() {
    if (descriptor >= 0) ::close(descriptor);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
      const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
      if (count < 0 && errno != EINTR) fail("write", path, errno);
      if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
  }

  void setMode(mode_t mode) {
    if (::fchmod(descriptor, mode) != 0) fail("write", path, errno);
  }

  /// Waits for the disk, which may report only now that it is full, and closes.
  void finish() {
    const bool unsynced = ::fsync(descriptor) != 0 && errno != EINVAL && errno != EROFS;
    const int error = errno;
    const bool unclosed = ::close(std::exchange(descriptor, -1)) != 0;
    if (unsynced || unclosed) fail("write", path, unsynced ? error : errno);
  }

 private:
  int descriptor;
  const std::string& path;
};

/// A new, empty file in `folder`, removed at the end unless it was given its final name.
class TemporaryName {
 public:
  explicit TemporaryName(const std::filesystem::path& folder) : name((folder / ".orvane-XXXXXX").string()) {}
  ~TemporaryName() {
    if (made) ::unlink(name.c_str());
  }
  TemporaryName(const TemporaryName&) = delete;
  TemporaryName& operator=(const TemporaryName&) = delete;

  /// Makes and opens it; -1 on failure.
  int open() {
    const int descriptor = ::mkostemp(name.data(), O_CLOEXEC);
    made = descriptor >= 0;
    return descriptor;
  }

  bool rename(const std::filesystem::path& target) {
    if (::rename(name.c_str(), target.c_str()) != 0) return false;
    made = false;
    return true;
  }

 private:
  std::string name;
  bool made = false;
};

/// The file itself, where `path` is a link to it.
std::filesystem::path targetOf(const std::string& path) {
  return statusOf(path) ? std::filesystem::canonical(path) : std::filesystem::path(path);
}

mode_t modeOfNewFiles() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

File openForReading(const std::string& path) {
  File file(std::fopen(path.c_str(), "rbe"));
  if (!file) fail("read", path, errno);
  struct stat status {};
  if (::fstat(::fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode)) fail("read", path, EISDIR);
  return file;
}

std::int64_t sizeOf(const File& file) {
  struct stat status {};
  if (::fstat(::fileno(file.get()), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return status.st_size;
}

std::string readText(const std::string& path, std::size_t limit) {
  const File file = openForReading(path);
  std::string text;
  std::array<char, 4096> block{};
  while (const std::size_t count = std::fread(block.data(), 1, block.size(), file.get())) {
    text.append(block.data(), count);
    if (text.size() > limit) {
      throw std::runtime_error(inQuotes(path) + " is longer than the " + std::to_string(limit) + " bytes allowed");
    }
  }
  if (std::ferror(file.get()) != 0) fail("read", path, errno);
  return text;
}

void checkWritable(const std::string& path) {
  const auto status = statusOf(path);
  if (status && S_ISDIR(status->st_mode)) fail("write", path, EISDIR);
  if (status && ::access(path.c_str(), W_OK) != 0) fail("write", path, errno);
  if (isStream(path)) return;
  const std::filesystem::path folder = targetOf(path).parent_path() / ".";  // fails for what is no folder
  if (::access(folder.c_str(), W_OK | X_OK) != 0) fail("write", path, errno);
}

void replaceFile(const std::string& path, std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> more) {
  checkWritable(path);
  const auto status = statusOf(path);
  if (isStream(path)) {
    Writer stream(::open(path.c_str(), O_WRONLY | O_CLOEXEC), path);
    stream.write(bytes);
    stream.write(more);
    return;
  }
  const std::filesystem::path target = targetOf(path);
  const SignalHold hold;
  TemporaryName temporary(target.parent_path());
  Writer writer(temporary.open(), path);
  writer.write(bytes);
  writer.write(more);
  writer.setMode(status ? status->st_mode & 07777 : modeOfNewFiles());
  writer.finish();
  if (!temporary.rename(target)) fail("write", path, errno);
}

void printOut(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) {
    throw std::runtime_error(std::string("cannot write to the standard output: ") + std::strerror(errno));
  }
}

bool isStream(const std::string& path) {
  const auto status = statusOf(path);
  return status && !S_ISREG(status->st_mode) && !S_ISDIR(status->st_mode);
}

void checkFileName(const std::string& path, const std::string& ending) {
  if (!lowered(path).ends_with(ending) && !isStream(path)) {
    throw std::runtime_error("cannot write " + inQuotes(path) + ": the name must end in " + ending);
  }
}

}  // namespace BP::tool
