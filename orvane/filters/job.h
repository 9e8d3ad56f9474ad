#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "orvane/host/reference_host.h"

/// What the objects of this API share: each holds one job, made of a front of the library and what that borrows.
namespace BP::filters::detail {

/// Throws what the host was told, if it was told anything, as one `std::runtime_error`, and forgets it.
inline void throwMessages(ReferenceHost& host) {
  if (host.getMessages().empty()) return;
  std::string text;
  for (const std::string& message : host.getMessages()) text += (text.empty() ? "" : "; ") + message;
  host.getAdaptor()->clearMessages();
  throw std::runtime_error(text);
}

/// The object behind `job`; throws `std::logic_error`, which calls it `what`, if it was moved from.
template <class Job>
Job& used(const std::unique_ptr<Job>& job, const std::string& what = "convolution") {
  if (!job) throw std::logic_error(what + ": the object was moved from; only assignment and destruction are left");
  return *job;
}

}  // namespace BP::filters::detail
