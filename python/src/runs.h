#pragma once

#include <pybind11/pybind11.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "orvane/orvane.h"

/// The runs of one object: one at a time, without the interpreter lock, and with word to Python while they go on.
namespace BP::python {

namespace py = pybind11;

class Runs {
 public:
  /// What a job tells its progress to. It looks for signals when the thread that started the run is called, and calls
  /// `callback` unless that is None. The run ends if the callback returns False, and at what it raises. The
  /// last copy of what is returned must not be destroyed without the interpreter lock.
  filters::Progress progress(const py::object& callback);

  /// Calls `run` without the interpreter lock, after the runs of other threads. Throws `std::runtime_error` in a
  /// callback of such a run, which would wait for itself.
  template <class Run>
  auto operator()(Run&& run) {
    if (reporter.load() == std::this_thread::get_id()) refuseNested();
    const py::gil_scoped_release release;
    const std::lock_guard lock(mutex);
    runner = std::this_thread::get_id();
    return run();
  }

 private:
  [[noreturn]] static void refuseNested();
  bool report(py::handle callback, double fraction);

  std::mutex mutex;
  std::thread::id runner;                     // guarded by `mutex`
  std::atomic<std::thread::id> reporter{{}};  // the thread in a callback
};

/// How often this process was forked from another one since `countForks`. Threads do not come along, so jobs that may
/// have some must be made again.
unsigned forkCount();
void countForks();

/// A job that belongs to the process that made it. In a forked one it is left alone, as its destructor would wait for
/// threads that are not there.
template <class Job>
class OfProcess {
 public:
  OfProcess() = default;
  OfProcess(const OfProcess&) = delete;
  OfProcess& operator=(const OfProcess&) = delete;
  ~OfProcess() { leaveIfForeign(); }

  void set(std::unique_ptr<Job> newJob) {
    leaveIfForeign();
    job = std::move(newJob);
    forks = forkCount();
  }
  bool isForeign() const { return forks != forkCount(); }
  Job& operator*() const { return *job; }
  Job* operator->() const { return job.get(); }

 private:
  void leaveIfForeign() {
    if (isForeign()) [[maybe_unused]]
      const Job* const left = job.release();
  }

  std::unique_ptr<Job> job;
  unsigned forks = forkCount();
};

}  // namespace BP::python
