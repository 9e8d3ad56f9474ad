#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <span>
#include <string>

#include "fuzz/target.h"

namespace BP::fuzz {

/// A file in memory, which can be opened by its name.
class MemoryFile {
 public:
  explicit MemoryFile(std::span<const std::uint8_t> bytes) : descriptor(memfd_create("orvane", MFD_CLOEXEC)) {
    require(descriptor >= 0 && write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "no memory file");
  }
  ~MemoryFile() { close(descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

 private:
  int descriptor;
};

}  // namespace BP::fuzz
