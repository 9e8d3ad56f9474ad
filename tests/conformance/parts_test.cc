// Arrays with gaps, regions, tiles and threads give the bits and the counts of one run over dense arrays, whatever the
// job.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "orvane/filters/bands.h"
#include "orvane/lanes/target.h"
#include "tests/support/random_job.h"

namespace BP::test {
namespace {

using filters::Box;

/// The number of random jobs; the environment can ask for more.
int jobCount(int least) {
  const char* const wanted = std::getenv("ORVANE_RANDOM_JOBS");
  return wanted == nullptr ? least : std::atoi(wanted);
}

/// Calls `check(job, random)` for random jobs, by plain loops and by lanes. Any work is enough for threads.
template <class Check>
void forEachJob(unsigned seed, int count, Check&& check) {
  const std::int64_t leastWork = filters::detail::setLeastWorkOfThreads(0);
  std::mt19937 random(seed);
  for (int round = 0; round < count && !testing::Test::HasFailure(); ++round) {
    ASSERT_TRUE(lanes::forceTarget(round % 4 == 0 ? lanes::plain : ""));
    const RandomJob job = randomJob(random);
    SCOPED_TRACE("job " + std::to_string(round) + ", " + job.text);
    check(job, random);
  }
  lanes::forceTarget("");
  filters::detail::setLeastWorkOfThreads(leastWork);
}

TEST(PartsTest, GapsAndThreadsChangeNothing) {
  forEachJob(21, jobCount(400), [](const RandomJob& job, std::mt19937& random) {
    const JobResult whole = job.run({});
    EXPECT_TRUE(job.run({.pitched = true}) == whole) << "gaps";
    for (const int threads : {2, 3, 5}) {
      EXPECT_TRUE(job.run({.pitched = pick(random, 0, 3) == 0, .threads = threads}) == whole) << threads << " threads";
    }
  });
}

/// Large regions, and small tiles, most of them smaller than the window.
TEST(PartsTest, RegionsAndTilesArePartsOfTheWhole) {
  forEachJob(22, jobCount(400), [](const RandomJob& job, std::mt19937& random) {
    if (!job.isFilter) return;
    const JobResult whole = job.run({});
    for (int k = 0; k < 8; ++k) {
      const bool isTile = k % 2 == 1;
      const Box box = randomBox(random, job.positions, k < 4 ? 50 : 4);
      const JobResult part = job.run({.threads = pick(random, 1, 3), .region = box, .asTile = isTile});
      const Box wanted = filters::detail::positionsIn(job.positions, box);
      ASSERT_EQ(part.positions.extents, wanted.extents);
      ASSERT_TRUE(part.bytes == cropped(whole.bytes, job.positions, wanted, whole.elementBytes))
          << (isTile ? "tile " : "region ") << toText(box.start) << ", " << toText(box.extents);
    }
  });
}

}  // namespace
}  // namespace BP::test
