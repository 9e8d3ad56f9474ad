// Memory that runs out: for n = 1, 2, 3 ... the n-th allocation fails, in every kind of job. `std::bad_alloc` comes
// out, nothing leaks, and an object that was running is as good as before.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>
#include <random>
#include <vector>

#include "orvane/filters/bands.h"
#include "orvane/filters/peaks.h"
#include "orvane/filters/plan_description.h"
#include "orvane/lanes/target.h"
#include "tests/support/random_job.h"

namespace {

std::atomic<std::int64_t> blocksInUse{0};
std::atomic<int> untilFailure{0};  ///< allocations up to the one that fails; 0 and less if none will

void* allocated(std::size_t size, std::size_t alignment) {
  if (--untilFailure == 0) return nullptr;
  void* const block = alignment == 0 ? std::malloc(size)
                                     : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
  if (block != nullptr) ++blocksInUse;
  return block;
}
void* orThrow(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void freed(void* block) noexcept {
  if (block != nullptr) --blocksInUse;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return orThrow(allocated(size, 0)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocated(size, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orThrow(allocated(size, static_cast<std::size_t>(alignment)));
}
void operator delete(void* block) noexcept { freed(block); }
void operator delete(void* block, std::size_t) noexcept { freed(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { freed(block); }
void operator delete(void* block, std::align_val_t) noexcept { freed(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { freed(block); }

namespace BP::test {
namespace {

using namespace filters;

/// Calls `act` again and again. In each call another allocation fails, the first one at first, until there is none left
/// that could; `after` follows each call. Returns the number of failures.
template <class Act, class After>
int forEachFailure(Act&& act, After&& after) {
  for (int n = 1;; ++n) {
    untilFailure = n;
    try {
      act();
    } catch (const std::bad_alloc&) {
    }
    const bool hasFailed = untilFailure.exchange(0) <= 0;
    after();
    if (!hasFailed || testing::Test::HasFailure()) return n - 1;
  }
}

/// `act` must leave no memory behind, whichever of its allocations fails.
template <class Act>
void expectNoLeaks(Act&& act) {
  act();  // what is made once and kept
  const std::int64_t before = blocksInUse;
  const int failures = forEachFailure(act, [&] { EXPECT_EQ(blocksInUse, before); });
  EXPECT_GT(failures, 0);
}

/// A kind of job, and the most threads.
using Case = std::tuple<int, int>;
struct Memory : testing::TestWithParam<Case> {
  Memory() { lanes::forceTarget(std::get<0>(GetParam()) % 3 == 0 ? lanes::plain : ""); }
  ~Memory() override {
    lanes::forceTarget("");
    filters::detail::setLeastWorkOfThreads(leastWork);
  }

  std::int64_t leastWork = filters::detail::setLeastWorkOfThreads(0);
  std::mt19937 random{static_cast<unsigned>(std::get<0>(GetParam()) + 31)};
  RandomJob job = randomJob(random, std::get<0>(GetParam()));
  Variation how{.threads = std::get<1>(GetParam())};
};

TEST_P(Memory, RunsOutWhileAnObjectIsMade) {
  SCOPED_TRACE(job.text);
  expectNoLeaks([&] { job.open(how); });
  expectNoLeaks([&] { job.open(how)(0); });
}

/// The run that fails is over other arrays than the last one, which then must be found again.
TEST_P(Memory, RunsOutInARunAndTheObjectIsAsGoodAsBefore) {
  SCOPED_TRACE(job.text);
  const OpenJob run = job.open(how);
  const JobResult wanted = run(0);
  run(1);
  const std::int64_t before = blocksInUse;
  forEachFailure(
      [&] { run(1); },
      [&] {
        for (const std::size_t place : {0U, 1U, 0U}) {
          const JobResult found = run(place);
          EXPECT_TRUE(found.bytes == wanted.bytes && found.clipped == wanted.clipped && found.othersAreUntouched);
        }
      });
  if (how.threads == 1) {  // further threads get their memory when they are first needed
    EXPECT_EQ(blocksInUse, before);
  }
}

INSTANTIATE_TEST_SUITE_P(Jobs, Memory, testing::Combine(testing::Range(0, jobKinds), testing::Values(1, 3)));

TEST(MemoryTest, RunsOutInFunctionsThatMakeArrays) {
  const FixedType type = fixedType("s12.4");
  Array<double> picture({7, 5});
  picture.fill(0.5);
  const Array<double> part({2, 2}, {1, 2, 3, 4}), line({2}, {1, 2});
  const FixedArray fixed = quantise(picture, type);
  const std::function<void()> calls[] = {
      [&] { convolve(picture, part, {.mode = OutputMode::full, .normalise = Normalisation::energy}); },
      [&] { convolveSeparable(picture, line, line); },
      [&] { quantise(picture, type); },
      [&] { toDouble(fixed); },
      [&] { matches(picture, part, {.count = 3, .refine = true}); },
      [&] {
        describePlan({.input = {9, 9, 9}, .window = {3, 3, 3}, .mode = OutputModeFull});
      }};
  for (const auto& call : calls) {
    SCOPED_TRACE(&call - std::begin(calls));
    expectNoLeaks(call);
  }
}

}  // namespace
}  // namespace BP::test
