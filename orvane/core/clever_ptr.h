#pragma once

#include <string>
#include <type_traits>

#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// Handle of an array that it owns or borrows, with a name that connects it with a work vector of the host.
///
/// Code reads `ptr` directly and rebinds it by assignment, which does not change `owned` and `name`. Handles are never
/// copied: objects that share an array share the handle, so all of them see a rebinding. There is no reference count
/// and no bounds check. An owned array of plain elements is released by `delete[]`; an owned `Fixpt` is one object that
/// carries a whole array of values, and is destroyed as such.
template <class T>
class CleverPtr {
 public:
  CleverPtr() = default;
  CleverPtr(const CleverPtr&) = delete;
  CleverPtr& operator=(const CleverPtr&) = delete;
  ~CleverPtr() { release(); }

  /// Destroys an owned array and forgets a borrowed one. Afterwards the handle is null and owns nothing.
  void release();

  /// The debug name; "unnamed" unless the array was registered as a work vector.
  std::string getName() const { return name; }

  T* ptr = nullptr;              ///< first element, or null
  bool owned = false;            ///< whether the handle destroys the array
  std::string name = "unnamed";  ///< name of the work vector behind `ptr`
};

template <class T>
void CleverPtr<T>::release() {
  if (owned) {
    if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
      delete ptr;
    } else {
      static_assert(std::is_trivially_destructible_v<T>, "plain elements have nothing to end");
      delete[] ptr;
    }
  }
  ptr = nullptr;
  owned = false;
}

}  // namespace BP
