// How jobs run: regions, threads, progress, cancelling, and what tiles need.
#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "orvane/filters/bands.h"
#include "orvane/orvane.h"
#include "tests/support/refusal.h"

namespace BP::filters {
namespace {

/// Any work is enough for bands and threads.
struct RunningTest : testing::Test {
  RunningTest() : leastWork(detail::setLeastWorkOfThreads(0)) {}
  ~RunningTest() override { detail::setLeastWorkOfThreads(leastWork); }

  const std::int64_t leastWork;
  const Array<float> filter{{3, 3}, {1, 2, 3, 4, 5, 6, 7, 8, 9}};
  Array<float> picture{Extents{60, 400}};
};

TEST_F(RunningTest, RegionsCountPositions) {
  for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = static_cast<float>(i % 17);
  const Convolution<float> whole(filter, picture.extents(), {.mode = OutputMode::full});
  EXPECT_EQ(whole.positions(), (Rectangle{-1, -1, 62, 402}));
  Convolution<float> corner(filter, picture.extents(), {.mode = OutputMode::full, .region = Rectangle{-5, -5, 7, 6}});
  EXPECT_EQ(corner.positions(), (Rectangle{-1, -1, 3, 2}));
  EXPECT_EQ(corner.outputExtents(), (Extents{3, 2}));
  Median<float> missing({3, 3}, picture.extents(), {.region = Rectangle{60, 0, 5, 5}});
  EXPECT_EQ(missing.outputExtents(), (Extents{0, 0}));
  EXPECT_EQ(missing.run(picture).size(), 0U);
  missing.run(picture, ArrayView<float>(nullptr, {0, 0}));
  EXPECT_REFUSAL("region: extent -1 in dimension 1; allowed are 0 or more",
                 median(picture, {3, 3}, {.region = Rectangle{0, 0, 5, -1}}));
  EXPECT_REFUSAL("region: start 0, extents 1; both need rank 2",
                 correlateND(picture, filter, {.region = Box{{0}, {1}}}));
  EXPECT_REFUSAL("threads: -1; allowed are 0 (all cores) to 1024", median(picture, {3, 3}, {.threads = -1}));
}

TEST_F(RunningTest, ProgressRisesToOneFromOneThreadAtATime) {
  for (const int threads : {1, 3}) {
    std::atomic<int> inside{0};
    std::vector<double> told;
    std::vector<std::chrono::steady_clock::time_point> times;
    const auto progress = [&](double fraction) {
      EXPECT_EQ(inside++, 0);
      told.push_back(fraction);
      times.push_back(std::chrono::steady_clock::now());
      --inside;
      return true;
    };
    Convolution<float> job(filter, picture.extents(), {.threads = threads, .progress = progress});
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(200)) {
      told.clear();
      times.clear();
      job.run(picture);
      ASSERT_TRUE(std::ranges::is_sorted(told));
      ASSERT_EQ(told.back(), 1);
      for (std::size_t i = 1; i + 1 < times.size(); ++i) {
        ASSERT_GE(times[i] - times[i - 1], std::chrono::milliseconds(20));
      }
    }
  }
}

/// Cancels a run of bands that each take long enough for a report.
TEST_F(RunningTest, ACancelledRunThrowsAndTheJobGoesOn) {
  Array<float> large(Extents{600, 600});
  large.fill(1);
  bool goesOn = false;
  int calls = 0;
  const auto progress = [&](double) {
    ++calls;
    return goesOn;
  };
  for (const int threads : {1, 2}) {
    Median<float> job({15, 15}, large.extents(), {.threads = threads, .progress = progress});
    goesOn = false;
    calls = 0;
    EXPECT_THROW(job.run(large), Cancelled);
    EXPECT_EQ(calls, 1);
    goesOn = true;
    const Array<float> result = job.run(large);
    EXPECT_THAT(result, testing::Each(1.0F));
  }
  const auto throwing = [](double) -> bool { throw std::out_of_range("from the callback"); };
  EXPECT_THROW(median(large, {3, 3}, {.threads = 2, .progress = throwing}), std::out_of_range);
}

/// Objects in threads of their own, each with helpers.
TEST_F(RunningTest, ObjectsRunSideBySide) {
  picture.fill(2);
  const Array<float> wanted = convolve(picture, filter);
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      Convolution<float> job(filter, picture.extents(), {.threads = 2});
      for (int run = 0; run < 20; ++run) wrong += job.run(picture) == wanted ? 0 : 1;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST(TileTest, PartsAndHalos) {
  EXPECT_EQ(haloOf(Extents{4, 1}), (Halo{{1, 0}, {2, 0}}));
  EXPECT_EQ(
      haloOf(SeparableConvolution<float>(Array<float>({3}, {1, 2, 3}), Array<float>({5}, {1, 2, 3, 4, 5}), {9, 9})),
      (Halo{{1, 2}, {1, 2}}));
  const auto partOf = [](PadRule pad, const Rectangle& tile) {
    const TileInput needed = tileInput({100, 50}, {5, 5}, OutputMode::same, pad, boxOf(tile));
    return std::pair(rectangleOf(needed.part), rectangleOf(needed.region));
  };
  const Rectangle middle{20, 20, 8, 8}, corner{0, 0, 8, 8}, thin{0, 0, 1, 1};
  EXPECT_EQ(partOf(PadRule::mirror, middle), std::pair(Rectangle{18, 18, 12, 12}, Rectangle{2, 2, 8, 8}));
  EXPECT_EQ(partOf(PadRule::constant, corner), std::pair(Rectangle{0, 0, 10, 10}, corner));
  EXPECT_EQ(partOf(PadRule::mirror, thin), std::pair(Rectangle{0, 0, 3, 3}, thin));
  EXPECT_EQ(partOf(PadRule::circular, corner), std::pair(Rectangle{0, 0, 100, 50}, corner));
  EXPECT_EQ(partOf(PadRule::circular, {20, 0, 8, 8}), std::pair(Rectangle{18, 0, 12, 50}, Rectangle{2, 0, 8, 8}));
  EXPECT_TRUE(partOf(PadRule::mirror, {-9, 0, 8, 8}).first.isEmpty());
}

}  // namespace
}  // namespace BP::filters
