#pragma once

#include <stdexcept>
#include <string>

#include "orvane/host/reference_host.h"
#include "orvane/vendor/zd_filter_loader.h"

/// Helpers of jobs. A job is a front of the library with the memory that the front uses.
namespace BP::filters::detail {

/// Throws `std::runtime_error` with the messages of the host, if there are any. Its list is then empty.
inline void throwMessages(ReferenceHost& host) {
  std::string text;
  for (const std::string& message : host.getMessages()) text += (text.empty() ? "" : "; ") + message;
  host.getAdaptor()->clearMessages();
  if (!text.empty()) throw std::runtime_error(text);
}

/// Calls `compute`. Throws `std::runtime_error` if a vendor's function failed in it. An error status from before on
/// this thread is ignored.
template <class Compute>
void checkVendor(Compute&& compute) {
  ZdLoader::takeBadStatus(ZdFilterLoader::clientTag);
  compute();
  const IppStatus status = ZdLoader::takeBadStatus(ZdFilterLoader::clientTag);
  if (status == 0) return;
  throw std::runtime_error("vendor filter function: error status " + std::to_string(status) +
                           "; the output is not valid");
}

}  // namespace BP::filters::detail
