#pragma once

#include <type_traits>

#include "orvane/core/clever_ptr.h"

/// How front classes hold what a host hands over: plain arrays stay the host's, `Fixpt` objects become the front's.
namespace BP {

/// Points `handle` at `data`. A `Fixpt` is owned from here on, and one that was owned before is destroyed.
template <class T>
void adoptData(CleverPtr<T>& handle, T* data) {
  if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
    if (handle.owned && handle.ptr != data) delete handle.ptr;
    handle.owned = true;
  }
  handle.ptr = data;
}

/// Points `handle` at other values between runs; a `Fixpt` stays and takes them for its storage. Null changes nothing,
/// nor does a `Fixpt` handle without an object, as before the start or of a result that was not asked for.
template <class T>
void rebindData(CleverPtr<T>& handle, void* data) {
  if (data == nullptr) return;
  if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
    if (handle.ptr != nullptr) handle.ptr->setValPtr(data);
  } else {
    handle.ptr = static_cast<T*>(data);
  }
}

/// Stores a pad value; of input elements `Fixpt` it is an object that the front owns, and the old one is destroyed.
template <class UT>
void replacePadValue(const void*& padValue, const void* value) {
  if constexpr (std::is_same_v<UT, KarnDSPFixpt::Fixpt>) {
    if (padValue != value) delete static_cast<const KarnDSPFixpt::Fixpt*>(padValue);
  }
  padValue = value;
}

}  // namespace BP
