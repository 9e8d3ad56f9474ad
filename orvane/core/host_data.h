#pragma once

#include <type_traits>

#include "orvane/core/clever_ptr.h"

/// How fronts hold the data that a host passes: the host keeps its plain arrays, and the front takes over `Fixpt`
/// objects.
namespace BP {

/// Points `handle` at `data`. The handle takes over a `Fixpt` and destroys the one that it owned before.
template <class T>
void adoptData(CleverPtr<T>& handle, T* data) {
  if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
    if (handle.owned && handle.ptr != data) delete handle.ptr;
    handle.owned = true;
  }
  handle.ptr = data;
}

/// Points `handle` at other values between runs. A `Fixpt` object stays and uses `data` as its storage. Nothing changes
/// if `data` is null, or if a `Fixpt` handle has no object: before the start, or for a result that was not requested.
template <class T>
void rebindData(CleverPtr<T>& handle, void* data) {
  if (data == nullptr) return;
  if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
    if (handle.ptr != nullptr) handle.ptr->setValPtr(data);
  } else {
    handle.ptr = static_cast<T*>(data);
  }
}

/// Stores a pad value. For input elements `Fixpt` it is an object that the front takes over, and the old one is
/// destroyed.
template <class UT>
void replacePadValue(const void*& padValue, const void* value) {
  if constexpr (std::is_same_v<UT, KarnDSPFixpt::Fixpt>) {
    if (padValue != value) delete static_cast<const KarnDSPFixpt::Fixpt*>(padValue);
  }
  padValue = value;
}

}  // namespace BP
