// A library to preload: the allocation of number ORVANE_FAIL_AT fails, counted from the start of `main`. At the end it
// writes the number of all allocations to the file ORVANE_COUNT_TO, if there is such a variable.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

extern "C" {
// The C library's own functions, under the names by which those who replace them call them.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

std::atomic<long> calls{0};
std::atomic<bool> counts{false};
long failAt = 0;

bool fails() {
  if (!counts || ++calls != failAt) return false;
  errno = ENOMEM;
  return true;
}

using Main = int (*)(int, char**, char**);
Main realMain;

int countingMain(int count, char** arguments, char** environment) {
  if (const char* const number = std::getenv("ORVANE_FAIL_AT")) failAt = std::atol(number);
  counts = true;
  return realMain(count, arguments, environment);
}

struct Report {
  ~Report() {
    counts = false;
    const char* const path = std::getenv("ORVANE_COUNT_TO");
    if (path == nullptr) return;
    std::FILE* const file = std::fopen(path, "w");
    if (file == nullptr) return;
    std::fprintf(file, "%ld", calls.load());
    std::fclose(file);
  }
} report;

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return fails() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) { return fails() ? nullptr : __libc_calloc(count, size); }
void* realloc(void* block, std::size_t size) { return fails() ? nullptr : __libc_realloc(block, size); }
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return fails() ? nullptr : __libc_memalign(alignment, size);
}
void* memalign(std::size_t alignment, std::size_t size) { return aligned_alloc(alignment, size); }
int posix_memalign(void** out, std::size_t alignment, std::size_t size) {
  *out = aligned_alloc(alignment, size);
  return *out == nullptr ? ENOMEM : 0;
}

/// What the C library calls to run a program.
int __libc_start_main(Main main, int count, char** arguments, void (*begin)(), void (*end)(), void (*endLoader)(),
                      void* stackEnd) {
  using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
  realMain = main;
  const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(countingMain, count, arguments, begin, end, endLoader, stackEnd);
}
}
