#pragma once

#include <string>
#include <type_traits>

#include "orvane/platform/karn_fixpt_3.h"

namespace BP {

/// Owning-or-borrowing handle of an array, with a name that ties it to a work vector of the host.
///
/// Code reads `ptr` directly and rebinds it by assignment; that leaves `owned` and `name` alone. Handles are never
/// copied: objects that share an array share the handle, and so all see a rebinding. There is no reference count
/// and no bounds check. An owned array of plain elements is released by `delete[]`; an owned `Fixpt` is one object
/// that carries a whole array of values, and is destroyed as such.
template <class T>
class CleverPtr {
 public:
  CleverPtr() = default;
  CleverPtr(const CleverPtr&) = delete;
  CleverPtr& operator=(const CleverPtr&) = delete;
  ~CleverPtr() { release(); }

  /// Ends an owned array and lets go of a borrowed one; the handle is null and owns nothing afterwards.
  void release();

  /// The debug name; "unnamed" unless the array was registered as a work vector.
  std::string getName() const { return name; }

  T* ptr = nullptr;              ///< first element, or null
  bool owned = false;            ///< whether the handle ends the array
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
