#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <ranges>
#include <span>
#include <type_traits>
#include <utility>

#include "orvane/filters/extents.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
/// Throws `std::invalid_argument` unless `given` is the element count of `extents`.
ORVANE_API void checkElementCount(std::size_t given, const Extents& extents);
/// The element count. Throws `std::invalid_argument` for a negative extent.
ORVANE_API std::size_t sizeOf(const Extents& extents);
}  // namespace detail

/// A view of an array that it does not own: a pointer to the first element, and extents. T may be const.
///
/// Elements are dense, dimension 0 first (see `Extents`). A view is cheap to copy, and valid as long as the array.
template <class T>
class ArrayView {
 public:
  using element_type = T;

  /// `data` must point to as many elements as the extents have. This cannot be checked.
  ArrayView(T* data, const Extents& extents) : first(data), size(extents) {}
  /// A view of a whole vector, span or array. Throws `std::invalid_argument` if its length is not the element count of
  /// the extents.
  ArrayView(std::span<T> data, const Extents& extents) : first(data.data()), size(extents) {
    detail::checkElementCount(data.size(), extents);
  }
  /// A read-only view of the same array.
  template <class U>
  requires std::same_as<const U, T> ArrayView(const ArrayView<U>& view) : first(view.data()), size(view.extents()) {}

  T* data() const { return first; }
  const Extents& extents() const { return size; }
  ArrayView view() const { return *this; }

 private:
  T* first;
  Extents size;
};

template <std::ranges::contiguous_range Range>
ArrayView(Range&&, const Extents&) -> ArrayView<std::remove_reference_t<std::ranges::range_reference_t<Range>>>;

/// An array that owns its elements: dense, dimension 0 first (see `Extents`).
template <class T>
class Array {
 public:
  using element_type = T;

  Array() : Array(Extents{0}) {}
  /// All elements are 0. Throws `std::invalid_argument` for a negative extent.
  explicit Array(const Extents& extents)
      : dims(extents), count(detail::sizeOf(extents)), values(std::make_unique<T[]>(count)) {}
  Array(const Array& other) : Array(other.dims) { std::copy_n(other.data(), count, data()); }
  Array& operator=(const Array& other) { return *this = Array(other); }
  Array(Array&& other) noexcept { swap(other); }
  Array& operator=(Array&& other) noexcept {
    Array(std::move(other)).swap(*this);
    return *this;
  }
  ~Array() = default;

  const Extents& extents() const { return dims; }
  std::size_t size() const { return count; }
  T* data() { return values.get(); }
  const T* data() const { return values.get(); }
  T* begin() { return data(); }
  T* end() { return data() + count; }
  const T* begin() const { return data(); }
  const T* end() const { return data() + count; }
  /// Element `i` in the order of memory.
  T& operator[](std::size_t i) { return values[i]; }
  const T& operator[](std::size_t i) const { return values[i]; }

  ArrayView<T> view() { return {data(), dims}; }
  ArrayView<const T> view() const { return {data(), dims}; }
  operator ArrayView<T>() { return view(); }
  operator ArrayView<const T>() const { return view(); }

 private:
  void swap(Array& other) noexcept {
    std::swap(dims, other.dims);
    std::swap(count, other.count);
    values.swap(other.values);
  }

  Extents dims{0};
  std::size_t count = 0;
  std::unique_ptr<T[]> values;
};

}  // namespace BP::filters
