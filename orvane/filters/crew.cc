#include "orvane/filters/crew.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "orvane/filters/checks.h"

namespace BP::filters {

Cancelled::~Cancelled() = default;

namespace detail {

namespace {

constexpr int maxThreads = 1024;
/// Calls between the first and the last of a run are so far apart that, with the last one, there are 50 a second.
constexpr auto reportInterval = std::chrono::milliseconds(25);

int coreCount() { return std::max(1, static_cast<int>(std::thread::hardware_concurrency())); }

/// The threads of this process that are at work in runs.
std::atomic<int> threadsAtWork{0};

/// Counts the threads of one run.
class Share {
 public:
  /// The caller's thread, and up to `wanted` helpers while no more than `most` threads are at work.
  Share(int wanted, int most) {
    int before = threadsAtWork.load();
    do {
      count = 1 + std::clamp(most - before - 1, 0, wanted);
    } while (!threadsAtWork.compare_exchange_weak(before, before + count));
  }
  Share(const Share&) = delete;
  Share& operator=(const Share&) = delete;
  ~Share() { threadsAtWork -= count; }
  int getHelpers() const { return count - 1; }

 private:
  int count;
};

int checkedThreads(int threads) {
  if (threads < 0 || threads > maxThreads) {
    refuse("threads", std::to_string(threads), "allowed are 0 (all cores) to " + std::to_string(maxThreads));
  }
  return threads == 0 ? coreCount() : threads;
}

}  // namespace

Crew::Crew(int newThreads, Progress callback) : threads(checkedThreads(newThreads)), progress(std::move(callback)) {}

Crew::~Crew() {
  {
    const std::lock_guard lock(mutex);
    ends = true;
  }
  hasWork.notify_all();
  for (std::thread& helper : helpers) helper.join();
}

void Crew::begin(std::int64_t chunks) {
  total = chunks;
  done = 0;
  lastReport = Clock::now();
}

void Crew::run(int chunks, const Work& newWork) {
  if (chunks < 1) return;
  const Share share(std::min(threads, chunks) - 1, std::max(threads, coreCount()));
  addHelpers(share.getHelpers());
  int active = 0;
  work = &newWork;
  count = chunks;
  next = 0;
  stops = false;
  {
    const std::lock_guard lock(mutex);
    error = nullptr;
    active = std::min(share.getHelpers(), static_cast<int>(helpers.size()));
    helpersWanted = active;
    helpersAtWork = active;
    ++runNumber;
  }
  if (active > 0) hasWork.notify_all();
  takeChunks(0);
  std::unique_lock lock(mutex);
  isIdle.wait(lock, [&] { return helpersAtWork == 0; });
  if (error) std::rethrow_exception(std::exchange(error, nullptr));
}

void Crew::end() {
  if (progress) callBack(1);
}

/// A machine that gives no more threads is left with those that there are.
void Crew::addHelpers(int wanted) {
  helpers.reserve(static_cast<std::size_t>(std::max(wanted, 0)));
  try {
    while (static_cast<int>(helpers.size()) < wanted) {
      helpers.emplace_back([this, worker = static_cast<int>(helpers.size()) + 1] { help(worker); });
    }
  } catch (const std::system_error&) {
  }
}

/// The life of a helper.
void Crew::help(int worker) {
  std::uint64_t lastRun = 0;
  for (;;) {
    {
      std::unique_lock lock(mutex);
      hasWork.wait(lock, [&] { return ends || (runNumber != lastRun && worker <= helpersWanted); });
      if (ends) return;
      lastRun = runNumber;
    }
    takeChunks(worker);
    {
      const std::lock_guard lock(mutex);
      --helpersAtWork;
    }
    isIdle.notify_one();
  }
}

void Crew::takeChunks(int worker) {
  try {
    while (!stops) {
      const int chunk = next++;
      if (chunk >= count) return;
      (*work)(worker, chunk);
      ++done;
      if (progress && !stops) report();
    }
  } catch (...) {
    fail(std::current_exception());
  }
}

/// The first error of a run counts.
void Crew::fail(std::exception_ptr newError) {
  stops = true;
  const std::lock_guard lock(mutex);
  if (!error) error = std::move(newError);
}

/// A thread that finds another one at it, or that comes too soon, leaves it.
void Crew::report() {
  const std::unique_lock lock(reporting, std::try_to_lock);
  if (!lock || Clock::now() - lastReport < reportInterval || done >= total) return;
  lastReport = Clock::now();
  callBack(static_cast<double>(done) / static_cast<double>(total));
}

void Crew::callBack(double fraction) {
  if (!progress(fraction)) throw Cancelled();
}

}  // namespace detail

}  // namespace BP::filters
