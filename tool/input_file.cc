#include "tool/input_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "tool/text.h"

namespace BP::tool {

InputFile::InputFile(const std::string& fileName)
    : path(fileName), shown(inQuotes(fileName)), file(openForReading(fileName)) {
  constexpr std::size_t bufferSize = std::size_t{1} << 18;
  std::setvbuf(file.get(), nullptr, _IOFBF, bufferSize);
  startSize = lookAhead(16);
}

std::size_t InputFile::lookAhead(std::size_t count) {
  const std::size_t known = ahead.size() - used;
  if (known < count) appendBytes(ahead, file.get(), count - known);
  if (std::ferror(file.get()) != 0) failFile("read", path, errno);
  return ahead.size() - used;
}

std::size_t InputFile::read(void* to, std::size_t count) {
  const std::size_t known = std::min(count, ahead.size() - used);
  std::copy_n(ahead.begin() + static_cast<std::ptrdiff_t>(used), known, static_cast<std::uint8_t*>(to));
  used += known;
  const std::size_t got = std::fread(static_cast<std::uint8_t*>(to) + known, 1, count - known, file.get());
  if (std::ferror(file.get()) != 0) failFile("read", path, errno);
  return known + got;
}

std::size_t InputFile::append(std::vector<std::uint8_t>& bytes, std::size_t count) {
  const std::size_t known = std::min(count, ahead.size() - used);
  const auto first = ahead.begin() + static_cast<std::ptrdiff_t>(used);
  bytes.insert(bytes.end(), first, first + static_cast<std::ptrdiff_t>(known));
  used += known;
  const std::size_t got = appendBytes(bytes, file.get(), count - known);
  if (std::ferror(file.get()) != 0) failFile("read", path, errno);
  return known + got;
}

int InputFile::seekable() {
  if (size() >= 0) return ::dup(::fileno(file.get()));
  const File copy(std::tmpfile());
  if (!copy) failFile("write", "a temporary file", errno);
  std::vector<std::uint8_t> block(std::size_t{1} << 18);
  for (std::size_t count = read(block.data(), block.size()); count > 0; count = read(block.data(), block.size())) {
    if (std::fwrite(block.data(), 1, count, copy.get()) != count) failFile("write", "a temporary file", errno);
  }
  if (std::fflush(copy.get()) != 0) failFile("write", "a temporary file", errno);
  return ::dup(::fileno(copy.get()));
}

void InputFile::damaged(const std::string& reason) const {
  throw std::runtime_error(shown + " is damaged or truncated: " + reason);
}

}  // namespace BP::tool
