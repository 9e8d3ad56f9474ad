#pragma once

#include <cstddef>
#include <string>

#include "orvane/core/clever_ptr.h"
#include "orvane/platform/export.h"

namespace BP {

/// Makes `out` the owner of a new array of `count` plain elements: complex elements are zero, others are not
/// cleared. A count that no memory can hold, a negative one included, ends in `std::bad_alloc`.
template <class T>
void allocatePlain(CleverPtr<T>& out, int count) {
  out.ptr = new T[static_cast<std::size_t>(count)];
  out.owned = true;
}

/// The allocator of classes that live without a host: plain arrays, no state, no messages.
///
/// It takes the same calls as `AllocatorTolk`, so that one class template serves both. Role names are dropped.
class ORVANE_API Allocator {
 public:
  /// Makes `out` the owner of a new array of `count` elements.
  template <class T>
  void allocateArray(CleverPtr<T>& out, int count, const std::string& /*roleName*/,
                     const std::string& /*arrayName*/ = {}) {
    allocatePlain(out, count);
  }

  /// Without a host a work vector is an array like any other: makes `out` the owner of `width` elements.
  template <class T>
  void registerWorkVector(CleverPtr<T>& out, int width, const std::string& /*name*/, const std::string& /*roleName*/,
                          int /*count*/) {
    allocatePlain(out, width);
  }

  /// There is no host whose vector could be attached: `out` loses its array, unreleased. Stand-alone classes never
  /// issue the stage that calls this.
  template <class T>
  void attachWorkVector(CleverPtr<T>& out) {
    out.ptr = nullptr;
  }
};

}  // namespace BP
