#include "tool/output_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "tool/file.h"

namespace BP::tool {

OutputStream::OutputStream(int openDescriptor, const std::string& shownName)
    : descriptor(openDescriptor), shown(shownName) {
  if (descriptor < 0) failFile("write", shown, errno);
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return;
  start = ::lseek(descriptor, 0, SEEK_CUR);
  isFresh = start == 0 && status.st_size == 0 && (::fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDWR;
}

OutputStream::~OutputStream() {
  if (descriptor < 0) return;
  // Nothing can be done about a failure here: the error that brought the writing to its end is on its way.
  if (start >= 0) static_cast<void>(!::ftruncate(descriptor, start));
  ::close(descriptor);
}

void OutputStream::write(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t done = ::write(descriptor, bytes.data(), bytes.size());
    if (done < 0 && errno != EINTR) failFile("write", shown, errno);
    if (done <= 0) continue;
    bytes = bytes.subspan(static_cast<std::size_t>(done));
  }
}

void OutputStream::finish() {
  const bool unsynced = ::fsync(descriptor) != 0 && errno != EINVAL && errno != EROFS;
  const int error = errno;
  const bool unclosed = ::close(std::exchange(descriptor, -1)) != 0;
  if (unsynced || unclosed) failFile("write", shown, unsynced ? error : errno);
}

}  // namespace BP::tool
