#pragma once

#include <stdexcept>
#include <string>

#include "orvane/host/reference_host.h"
#include "orvane/vendor/zd_filter_loader.h"

/// Helpers of jobs. A job is a front of the library with the memory that the front uses.
namespace BP::filters::detail {

/// Throws `std::runtime_error` if `text` is not empty or the host has messages. The error has `text` and all messages.
/// The host's list is then empty.
inline void throwMessages(ReferenceHost& host, std::string text = {}) {
  for (const std::string& message : host.getMessages()) text += (text.empty() ? "" : "; ") + message;
  host.getAdaptor()->clearMessages();
  if (!text.empty()) throw std::runtime_error(text);
}

/// Runs `front` of `host`. Throws `std::runtime_error` if the host received a message or a vendor's function failed. An
/// error status from an earlier run on this thread is ignored.
template <class Front>
void runFront(Front& front, ReferenceHost& host) {
  ZdLoader::takeBadStatus(ZdFilterLoader::clientTag);
  front.computeOutputs();
  const IppStatus status = ZdLoader::takeBadStatus(ZdFilterLoader::clientTag);
  throwMessages(host, status == 0 ? ""
                                  : "vendor filter function: error status " + std::to_string(status) +
                                        "; the output is not valid");
}

}  // namespace BP::filters::detail
