#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "orvane/host/reference_host.h"
#include "orvane/vendor/zd_filter_loader.h"

/// What the objects of this API share: each holds one job, made of a front of the library and what that borrows.
namespace BP::filters::detail {

/// Throws what the host was told, behind `text`, as one `std::runtime_error`, if there is anything; the host forgets
/// it.
inline void throwMessages(ReferenceHost& host, std::string text = {}) {
  for (const std::string& message : host.getMessages()) text += (text.empty() ? "" : "; ") + message;
  host.getAdaptor()->clearMessages();
  if (!text.empty()) throw std::runtime_error(text);
}

/// Runs `front`, of `host`; throws `std::runtime_error` if the host was told anything or a vendor's function failed. A
/// bad status that somebody else's run left on this thread is dropped.
template <class Front>
void runFront(Front& front, ReferenceHost& host) {
  ZdLoader::takeBadStatus(ZdFilterLoader::clientTag);
  front.computeOutputs();
  const IppStatus status = ZdLoader::takeBadStatus(ZdFilterLoader::clientTag);
  throwMessages(host, status == 0 ? ""
                                  : "vendor filter function: error status " + std::to_string(status) +
                                        "; the output is not valid");
}

/// The object behind `job`; throws `std::logic_error`, which calls it `what`, if it was moved from.
template <class Job>
Job& used(const std::unique_ptr<Job>& job, const std::string& what = "convolution") {
  if (!job) throw std::logic_error(what + ": the object was moved from; only assignment and destruction are left");
  return *job;
}

}  // namespace BP::filters::detail
