#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace BP::filters::detail {

/// Owns the job that an object of this API runs. A move leaves it empty until another handle is assigned to it.
///
/// Job may be an incomplete type wherever no job is handed over, so public headers need not show it.
template <class Job>
class JobHandle {
 public:
  /// Takes over `newJob`. `newOwner` is what error messages call the object, and must be a literal.
  JobHandle(std::unique_ptr<Job> newJob, const char* newOwner)
      : job(newJob.release(), [](Job* ended) { delete ended; }), owner(newOwner) {}

  /// The job. Throws `std::logic_error` if the handle was moved from.
  Job& operator*() const {
    if (!job) throw std::logic_error(std::string(owner) + movedFrom);
    return *job;
  }
  Job* operator->() const { return &**this; }

 private:
  static constexpr const char* movedFrom = ": the object was moved from; only assignment and destruction are left";

  std::unique_ptr<Job, void (*)(Job*)> job;
  const char* owner;
};

}  // namespace BP::filters::detail
