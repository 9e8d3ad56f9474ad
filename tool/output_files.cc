#include "tool/output_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>

#include "tool/file.h"
#include "tool/output_stream.h"
#include "tool/temporary_file.h"

namespace BP::tool {

namespace {

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
        temporary(target.parent_path()),
        stream(temporary.descriptor(), path) {}
  ~Entry() {
    if (hasBackup) ::unlink(backup().c_str());
  }
  Entry(const Entry&) = delete;
  Entry& operator=(const Entry&) = delete;

  OutputStream& bytes() { return stream; }

  /// Ends the writing of the temporary file.
  void finish() {
    if (exists) {
      setRights();
    } else {
      setMode(modeOfNewFiles());
    }
    stream.finish();
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
  /// Sets owner, group and access rights to those of the file that is replaced. Only root can set another owner; other
  /// users can set a group that they belong to. Where owner or group differ, set-user-ID and set-group-ID are dropped.
  void setRights() {
    const int descriptor = temporary.descriptor();
    struct stat current {};
    if (::fstat(descriptor, &current) != 0) failFile("write", shownPath, errno);
    bool isKept = current.st_uid == old.st_uid && current.st_gid == old.st_gid;
    if (!isKept) isKept = ::fchown(descriptor, old.st_uid, old.st_gid) == 0;
    if (!isKept) isKept = ::fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) == 0 && current.st_uid == old.st_uid;
    setMode(old.st_mode & (isKept ? 07777 : 0777));
  }

  void setMode(mode_t mode) {
    if (::fchmod(temporary.descriptor(), mode) != 0) failFile("write", shownPath, errno);
  }

  bool exchange() const {
    return ::renameat2(AT_FDCWD, temporary.name().c_str(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0;
  }
  std::string backup() const { return temporary.name() + "~"; }

  std::string shownPath;
  struct stat old {};
  bool exists;
  std::filesystem::path target;  ///< the file itself, where the path is a link to it
  TemporaryFile temporary;
  OutputStream stream;
  bool isExchanged = false;
  bool hasBackup = false;
  bool isNamed = false;
};

OutputFiles::OutputFiles() = default;
OutputFiles::~OutputFiles() = default;

OutputStream& OutputFiles::open(const std::string& path) {
  if (isStandardOutput(path)) {
    streams.push_back(std::make_unique<OutputStream>(::dup(STDOUT_FILENO), "the standard output"));
    return *streams.back();
  }
  checkWritable(path);
  if (isStream(path)) {
    streams.push_back(std::make_unique<OutputStream>(::open(path.c_str(), O_WRONLY | O_CLOEXEC), path));
    return *streams.back();
  }
  entries.push_back(std::make_unique<Entry>(path));
  return entries.back()->bytes();
}

void OutputFiles::add(const std::string& path, std::span<const std::uint8_t> bytes) { open(path).write(bytes); }

void OutputFiles::commit() {
  for (const auto& entry : entries) entry->finish();
  for (const auto& stream : streams) stream->finish();
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
