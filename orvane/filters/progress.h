#pragma once

#include <functional>
#include <stdexcept>

#include "orvane/platform/export.h"

namespace BP::filters {

/// Receives the fraction of a run that is done, above 0 and up to 1. False cancels the run.
///
/// It is called at most 50 times a second while a job runs, and once at the end, with 1. It is called from one thread
/// at a time, which can be any thread of the job. What it throws ends the run as well, and reaches the caller.
using Progress = std::function<bool(double)>;

/// Thrown by a run that its progress callback has cancelled. The elements of the output are then unspecified. The
/// object can be run again.
class ORVANE_API Cancelled : public std::runtime_error {
 public:
  Cancelled() : std::runtime_error("run: cancelled by the progress callback") {}
  Cancelled(const Cancelled&) = default;
  Cancelled& operator=(const Cancelled&) = default;
  ~Cancelled() override;
};

}  // namespace BP::filters
