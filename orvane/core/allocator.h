#pragma once

#include <cstddef>
#include <string>

#include "orvane/core/clever_ptr.h"
#include "orvane/platform/export.h"

namespace BP {

/// Makes `out` the owner of a new array of `count` plain elements. Complex elements are zero; others are not
/// initialised. Throws `std::bad_alloc` if memory cannot hold that many or if `count` is negative.
template <class T>
void allocatePlain(CleverPtr<T>& out, int count) {
  out.ptr = new T[static_cast<std::size_t>(count)];
  out.owned = true;
}

/// The allocator of classes that work without a host. It makes plain arrays; it has no state and no messages.
///
/// It has the functions of `AllocatorTolk`, so a class template works with either. It ignores role names.
class ORVANE_API Allocator {
 public:
  /// Makes `out` the owner of a new array of `count` elements.
  template <class T>
  void allocateArray(CleverPtr<T>& out, int count, const std::string& /*roleName*/,
                     const std::string& /*arrayName*/ = {}) {
    allocatePlain(out, count);
  }

  /// Makes `out` the owner of `width` elements: without a host a work vector is an ordinary array.
  template <class T>
  void registerWorkVector(CleverPtr<T>& out, int width, const std::string& /*name*/, const std::string& /*roleName*/,
                          int /*count*/) {
    allocatePlain(out, width);
  }

  /// Sets `out` to null, because there is no host's vector to attach, and does not release its array. Stand-alone
  /// classes never issue the stage that calls this.
  template <class T>
  void attachWorkVector(CleverPtr<T>& out) {
    out.ptr = nullptr;
  }
};

}  // namespace BP
