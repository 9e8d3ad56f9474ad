#include "tool/output_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <utility>

#include "tool/file.h"
#include "tool/temporary_file.h"

namespace BP::tool {

namespace {

/// An open descriptor to write to, closed at the end; errors name `path`, which need not be the real name.
class Writer {
 public:
  Writer(int openDescriptor, const std::string& shownPath) : descriptor(openDescriptor), path(shownPath) {
    if (descriptor < 0) failFile("write", path, errno);
  }
  ~Writer() {
    if (descriptor >= 0) ::close(descriptor);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
      const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
      if (count < 0 && errno != EINTR) failFile("write", path, errno);
      if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
  }

  /// Sets owner, group and access rights to those of the file that is replaced. Only root can set another owner; other
  /// users can set a group that they belong to. Where owner or group differ, set-user-ID and set-group-ID are dropped.
  void setRights(const struct stat& old) {
    struct stat current {};
    if (::fstat(descriptor, &current) != 0) failFile("write", path, errno);
    bool isKept = current.st_uid == old.st_uid && current.st_gid == old.st_gid;
    if (!isKept) isKept = ::fchown(descriptor, old.st_uid, old.st_gid) == 0;
    if (!isKept) isKept = ::fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) == 0 && current.st_uid == old.st_uid;
    setMode(old.st_mode & (isKept ? 07777 : 0777));
  }

  void setMode(mode_t mode) {
    if (::fchmod(descriptor, mode) != 0) failFile("write", path, errno);
  }

  /// Waits for the disk, which may report only now that it is full, and closes.
  void finish() {
    const bool unsynced = ::fsync(descriptor) != 0 && errno != EINVAL && errno != EROFS;
    const int error = errno;
    const bool unclosed = ::close(std::exchange(descriptor, -1)) != 0;
    if (unsynced || unclosed) failFile("write", path, unsynced ? error : errno);
  }

 private:
  int descriptor;
  const std::string& path;
};

mode_t modeOfNewFiles() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

/// One file: its temporary file, and its final name.
class OutputFiles::Entry {
 public:
  explicit Entry(const std::string& path)
      : shownPath(path),
        exists(::stat(path.c_str(), &old) == 0),
        target(exists ? std::filesystem::canonical(path) : std::filesystem::path(path)),
        temporary(target.parent_path()) {}
  ~Entry() {
    if (hasBackup) ::unlink(backup().c_str());
  }
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

  void write(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> more) {
    Writer writer(temporary.descriptor(), shownPath);
    writer.write(bytes);
    writer.write(more);
    if (exists) {
      writer.setRights(old);
    } else {
      writer.setMode(modeOfNewFiles());
    }
    writer.finish();
  }

  /// Gives the file its name. With `mustKeepOld` the file that had the name keeps another one, so that `undo` can put
  /// it back.
  void rename(bool mustKeepOld) {
    if (exists && mustKeepOld) {
      isExchanged = exchange();
      if (isExchanged) return;
      const bool isUnknown = errno == EINVAL || errno == ENOSYS;  // not every file system can exchange two names
      hasBackup = isUnknown && ::rename(target.c_str(), backup().c_str()) == 0;
      if (!hasBackup) failFile("write", shownPath, errno);
    }
    if (!temporary.rename(target)) failFile("write", shownPath, errno);
    isNamed = true;
  }

  void undo() {
    if (isExchanged) {
      exchange();
    } else if (hasBackup) {
      hasBackup = false;
      ::rename(backup().c_str(), target.c_str());
    } else if (isNamed) {
      ::unlink(target.c_str());
    }
  }

 private:
  bool exchange() const {
    return ::renameat2(AT_FDCWD, temporary.name().c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0;
  }
  std::string backup() const { return temporary.name() + "~"; }

  std::string shownPath;
  struct stat old {};
  bool exists;
  std::filesystem::path target;  ///< the file itself, where the path is a link to it
  TemporaryFile temporary;
  bool isExchanged = false;
  bool hasBackup = false;
  bool isNamed = false;
};

OutputFiles::OutputFiles() = default;
OutputFiles::~OutputFiles() = default;

void OutputFiles::add(const std::string& path, std::span<const std::uint8_t> bytes,
                      std::span<const std::uint8_t> more) {
  checkWritable(path);
  if (isStream(path)) {
    Writer stream(::open(path.c_str(), O_WRONLY | O_CLOEXEC), path);
    stream.write(bytes);
    stream.write(more);
    return;
  }
  entries.push_back(std::make_unique<Entry>(path));
  entries.back()->write(bytes, more);
}

void OutputFiles::commit() {
  const SignalHold hold;  // a signal takes effect before all names or after them
  try {
    for (const auto& entry : entries) entry->rename(entries.size() > 1);
  } catch (const std::exception&) {
    for (const auto& entry : entries) entry->undo();
    throw;
  }
  entries.clear();
}

}  // namespace BP::tool
