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
  explicit GuardedLines(std::size_t count) : page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    for (std::size_t i = 0; i < count; ++i) {
      void* const map = mmap(nullptr, 4 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (map == MAP_FAILED) throw std::bad_alloc();
      stretches.push_back(static_cast<char*>(map) + page);
      mprotect(stretches.back(), 2 * page, PROT_READ | PROT_WRITE);
    }
  }
  ~GuardedLines() {
    for (char* stretch : stretches) munmap(stretch - page, 4 * page);
  }
  GuardedLines(const GuardedLines&) = delete;
  GuardedLines& operator=(const GuardedLines&) = delete;

  /// `count` values of stretch i, up to its last byte or from its first one on.
  template <class T>
  T* get(std::size_t i, std::size_t count, bool atEnd) {
    if (count * sizeof(T) > 2 * page) throw std::bad_alloc();
    return reinterpret_cast<T*>(stretches.at(i) + (atEnd ? 2 * page - count * sizeof(T) : 0));
  }

 private:
  std::size_t page;
  std::vector<char*> stretches;
};

}  // namespace BP::test
