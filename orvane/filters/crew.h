#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "orvane/filters/progress.h"

namespace BP::filters::detail {

/// The threads of a job: the caller's, and helpers that wait between runs.
///
/// The work of a run is cut into chunks. They are given out in ascending order, each to the thread that is free next.
/// Helpers are made when a run first needs them. A run takes no more of them than there are cores free of other runs of
/// this process, or, if it was given a number of threads, of that number.
class Crew {
 public:
  /// Computes chunk `chunk` as worker `worker`, of which no two run at once. Worker 0 is the caller's thread.
  using Work = std::function<void(int worker, int chunk)>;

  /// `threads` 0 stands for as many as there are cores. Throws `std::invalid_argument` for a number out of range.
  Crew(int threads, Progress callback);
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;
  ~Crew();

  /// The most threads of a run.
  int getThreads() const { return threads; }
  bool reports() const { return progress != nullptr; }

  /// Begins a run of so many chunks in all, for the fractions that are reported.
  void begin(std::int64_t chunks);
  /// Calls `work` for chunks 0 to `count` - 1. Throws what a call throws, or `Cancelled`; some chunks are then left
  /// out.
  void run(int count, const Work& work);
  /// Ends a run: reports that all is done.
  void end();

 private:
  using Clock = std::chrono::steady_clock;

  void help(int worker);
  void takeChunks(int worker);
  void addHelpers(int count);
  void report();
  void fail(std::exception_ptr newError);
  void callBack(double fraction);

  int threads;
  Progress progress;
  std::int64_t total = 0;
  std::atomic<std::int64_t> done{0};
  std::mutex reporting;
  Clock::time_point lastReport;  // guarded by `reporting`

  std::vector<std::thread> helpers;
  std::mutex mutex;
  std::condition_variable hasWork, isIdle;
  std::uint64_t runNumber = 0;  // these five are guarded by `mutex`
  int helpersWanted = 0;
  int helpersAtWork = 0;
  bool ends = false;
  std::exception_ptr error;

  const Work* work = nullptr;
  int count = 0;
  std::atomic<int> next{0};
  std::atomic<bool> stops{false};
};

}  // namespace BP::filters::detail
