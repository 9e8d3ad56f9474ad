// Runs random jobs for a long time: soak [RUNS [SEED]]. Objects are made, run again and again between each other, in
// threads and without, and destroyed. Each run must give the bits of the object's first one, and memory must stay as it
// was after the first tenth.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <vector>

#include "orvane/filters/bands.h"
#include "orvane/lanes/target.h"
#include "tests/support/random_job.h"

namespace {

using namespace BP;
using namespace BP::test;

/// Memory that the process has, and what of it is in use, in KiB.
struct MemoryUse {
  long resident = 0;
  long inUse = 0;

  static MemoryUse now() {
    MemoryUse use;
    long all = 0, pages = 0;
    std::ifstream("/proc/self/statm") >> all >> pages;
    use.resident = pages * (sysconf(_SC_PAGESIZE) / 1024);
    const struct mallinfo2 heap = mallinfo2();
    use.inUse = static_cast<long>((heap.uordblks + heap.hblkhd) / 1024);
    return use;
  }
};

/// An object with the bits of its first run.
class Object {
 public:
  explicit Object(std::mt19937& random) : job(randomJob(random)) {
    lanes::forceTarget(pick(random, 0, 9) == 0 ? lanes::plain : "");
    run = job.open({.pitched = pick(random, 0, 2) == 0, .threads = pick(random, 0, 3) == 0 ? 3 : 1});
    wanted = run(0);
  }
  void runAgain(std::mt19937& random) const {
    lanes::forceTarget("");
    const JobResult found = run(static_cast<std::size_t>(pick(random, 0, 1)));
    if (found.bytes == wanted.bytes && found.clipped == wanted.clipped && found.othersAreUntouched) return;
    std::printf("a run differs from the first one of its object: %s\n", job.text.c_str());
    std::exit(1);
  }

 private:
  RandomJob job;
  OpenJob run;
  JobResult wanted;
};

/// So many runs over a few objects, of which one gives way to a new one now and then.
void soak(std::mt19937& random, long runs) {
  constexpr std::size_t most = 24;
  std::vector<Object> objects;
  for (long n = 0; n < runs; ++n) {
    if (objects.size() < most || pick(random, 0, 9) == 0) {
      if (objects.size() == most) objects.erase(objects.begin() + pick(random, 0, static_cast<int>(most) - 1));
      objects.emplace_back(random);
    } else {
      objects[static_cast<std::size_t>(pick(random, 0, static_cast<int>(most) - 1))].runAgain(random);
    }
  }
}

}  // namespace

int main(int count, char** arguments) {
  const long runs = count > 1 ? std::atol(arguments[1]) : 10000;
  std::mt19937 random(count > 2 ? static_cast<unsigned>(std::atol(arguments[2])) : 1);
  filters::detail::setLeastWorkOfThreads(0);
  // One arena, so that what is free can be counted and given back whatever the threads were.
  mallopt(M_ARENA_MAX, 1);

  constexpr int parts = 10;
  constexpr long slack = 256;  // KiB
  const auto begin = std::chrono::steady_clock::now();
  MemoryUse first;
  bool isFlat = true;
  for (int part = 1; part <= parts; ++part) {
    soak(random, runs / parts);
    malloc_trim(0);
    const MemoryUse use = MemoryUse::now();
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::printf("%9ld runs %7.0f s  %7ld KiB resident %7ld KiB in use\n", runs / parts * part, seconds, use.resident,
                use.inUse);
    std::fflush(stdout);
    if (part == 1) first = use;
    isFlat = isFlat && use.inUse <= first.inUse + slack;
  }
  if (!isFlat) std::printf("memory in use has grown by more than %ld KiB\n", slack);
  return isFlat ? 0 : 1;
}
