#pragma once

#include <type_traits>

#include "orvane/core/stored.h"
#include "orvane/filters/array.h"

namespace BP::filters::detail {

/// An array of elements that are computed in another type than the one in which they lie in memory, or in the same.
struct StoredArray {
  const void* data;
  const Layout& layout;
  Stored type;
};

template <class T>
StoredArray storedArray(const ArrayView<T>& view) {
  return {view.data(), view.layout(), storedOf<std::remove_const_t<T>>()};
}

}  // namespace BP::filters::detail
