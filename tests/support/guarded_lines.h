#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <new>
#include <vector>

namespace BP::test {

/// Stretches of memory between pages that nobody may touch: one value read or written beyond an end stops the test.
class GuardedLines {
 public:
  /// `count` stretches of `pages` pages.
  explicit GuardedLines(std::size_t count, std::size_t pages = 2)
      : page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))), bytes(pages * page) {
    for (std::size_t i = 0; i < count; ++i) {
      void* const map = mmap(nullptr, bytes + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (map == MAP_FAILED) throw std::bad_alloc();
      stretches.push_back(static_cast<char*>(map) + page);
      mprotect(stretches.back(), bytes, PROT_READ | PROT_WRITE);
    }
  }
  ~GuardedLines() {
    for (char* stretch : stretches) munmap(stretch - page, bytes + 2 * page);
  }
  GuardedLines(const GuardedLines&) = delete;
  GuardedLines& operator=(const GuardedLines&) = delete;

  /// `count` values of stretch i, up to its last byte or from its first one on.
  template <class T>
  T* get(std::size_t i, std::size_t count, bool atEnd) {
    if (count * sizeof(T) > bytes) throw std::bad_alloc();
    return reinterpret_cast<T*>(stretches.at(i) + (atEnd ? bytes - count * sizeof(T) : 0));
  }

 private:
  std::size_t page, bytes;
  std::vector<char*> stretches;
};

}  // namespace BP::test
