#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <ranges>
#include <span>
#include <type_traits>
#include <utility>

#include "orvane/filters/extents.h"
#include "orvane/filters/layout.h"
#include "orvane/platform/export.h"

namespace BP::filters {

namespace detail {
/// Throws `std::invalid_argument` unless `given` is the element count of `extents`.
ORVANE_API void checkElementCount(std::size_t given, const Extents& extents);
/// Throws `std::invalid_argument` if `given` elements are fewer than the layout reaches over.
ORVANE_API void checkSpan(std::size_t given, const Layout& layout);
/// The element count. Throws `std::invalid_argument` for a negative extent.
ORVANE_API std::size_t sizeOf(const Extents& extents);
/// The layout of a multidimensional span with these extents and strides, which are in the order of its indices. Throws
/// `std::invalid_argument` unless the stride of the index that runs fastest is 1.
ORVANE_API Layout layoutOf(std::span<const std::int64_t> extents, std::span<const std::int64_t> strides,
                           bool lastIsFastest);

/// The pointer to the elements of a multidimensional span.
template <class M>
auto elementsOf(const M& m) requires requires {
  m.data_handle();
}
{ return m.data_handle(); }
template <class M>
auto elementsOf(const M& m) requires(
    !requires { m.data_handle(); } && requires { m.data(); }) {
  return m.data();
}
}  // namespace detail

/// Which index of a multidimensional span is dimension 0, whose neighbours are neighbours in memory.
enum class IndexOrder {
  lastIsFastest,   ///< the last one, as in m[plane, line, element]: that of `std::layout_right`
  firstIsFastest,  ///< the first one, as in m[element, line, plane]: that of `std::layout_left`
};

/// A multidimensional span, such as `std::mdspan`, over elements T.
template <class M, class T>
concept MultidimensionalSpan = requires(const M& m) {
  { M::rank() } -> std::convertible_to<std::size_t>;
  { m.extent(0) } -> std::convertible_to<std::int64_t>;
  { m.stride(0) } -> std::convertible_to<std::int64_t>;
  { detail::elementsOf(m) } -> std::convertible_to<T*>;
};

/// A view of an array that it does not own: a pointer to the first element, and a layout. T may be const.
///
/// Dimension 0 is contiguous (see `Extents`). Lines, planes and so on can have a pitch (see `Layout`), as in frames
/// with padded rows and in parts of pictures. A view is cheap to copy, and valid as long as the array.
///
///     ArrayView<float> frame(data, {640, 480}, 704);         // each row has 64 more elements
///     ArrayView<float> part = frame.subview({100, 50}, {32, 16});
///     part(3, 2) = 1;                                        // element (103, 52) of the frame
template <class T>
class ArrayView {
 public:
  using element_type = T;

  /// `data` must point to as many elements as the layout reaches over. This cannot be checked.
  ArrayView(T* data, const Extents& extents) : ArrayView(data, Layout(extents)) {}
  ArrayView(T* data, const Extents& extents, const Pitch& pitch) : ArrayView(data, Layout(extents, pitch)) {}
  ArrayView(T* data, const Layout& layout) : first(data), lines(layout) {}
  /// A view of a whole vector, span or array. Throws `std::invalid_argument` if its length is not the element count of
  /// the extents.
  ArrayView(std::span<T> data, const Extents& extents) : ArrayView(data.data(), extents) {
    detail::checkElementCount(data.size(), extents);
  }
  /// The same with a pitch. Throws `std::invalid_argument` for fewer elements than the layout reaches over.
  ArrayView(std::span<T> data, const Extents& extents, const Pitch& pitch) : ArrayView(data.data(), extents, pitch) {
    detail::checkSpan(data.size(), lines);
  }
  /// A view of a multidimensional span, whose strides become the pitches. Dimension 0 is the index that `order` says,
  /// the last one by default; the next one to it is dimension 1, and so on. Throws `std::invalid_argument` if its
  /// stride is not 1.
  template <MultidimensionalSpan<T> M>
  ArrayView(const M& span, IndexOrder order = IndexOrder::lastIsFastest)
      : ArrayView(detail::elementsOf(span), layoutOf(span, order)) {}
  /// A read-only view of the same array.
  template <class U>
  requires std::same_as<const U, T> ArrayView(const ArrayView<U>& view) : first(view.data()), lines(view.layout()) {}

  T* data() const { return first; }
  const Extents& extents() const { return lines.extents(); }
  const Layout& layout() const { return lines; }
  /// Elements from one neighbour to the next in a dimension; 1 in dimension 0.
  std::int64_t pitch(std::size_t dimension = 1) const { return lines.pitch(dimension); }
  ArrayView view() const { return *this; }

  /// The element at an index in each dimension, dimension 0 first. Indices must lie within the extents.
  template <std::integral... I>
  T& operator()(I... index) const {
    return first[lines.indexOf(index...)];
  }
  /// A view of the part that begins at `start`. Throws `std::invalid_argument` if it does not lie within the view.
  ArrayView subview(const Extents& start, const Extents& extents) const {
    const Layout part = lines.part(start, extents);
    return {elementCount(extents) == 0 ? first : first + lines.offsetOf(start), part};
  }

 private:
  template <class M>
  static Layout layoutOf(const M& span, IndexOrder order) {
    std::array<std::int64_t, M::rank()> extents{}, strides{};
    for (std::size_t d = 0; d < M::rank(); ++d) {
      extents[d] = Extent(span.extent(d)).value();
      strides[d] = Extent(span.stride(d)).value();
    }
    return detail::layoutOf(extents, strides, order == IndexOrder::lastIsFastest);
  }

  T* first;
  Layout lines;
};

template <std::ranges::contiguous_range Range>
ArrayView(Range&&, const Extents&) -> ArrayView<std::remove_reference_t<std::ranges::range_reference_t<Range>>>;
template <std::ranges::contiguous_range Range>
ArrayView(Range&&, const Extents&, const Pitch&)
    -> ArrayView<std::remove_reference_t<std::ranges::range_reference_t<Range>>>;
template <class M>
requires requires(const M& m) { detail::elementsOf(m), m.stride(0); }
ArrayView(const M&, IndexOrder = {})->ArrayView<std::remove_pointer_t<decltype(detail::elementsOf(std::declval<M>()))>>;

namespace detail {
/// Copies the elements of a view, one line after the other, into dense memory.
template <class T>
void copyDense(const ArrayView<const T>& from, T* to) {
  const std::int64_t width = from.extents().rank() > 0 ? from.extents()[0] : 1;
  from.layout().forEachLine([&](std::ptrdiff_t first, std::ptrdiff_t number) {
    std::copy_n(from.data() + first, width, to + number * width);
  });
}
}  // namespace detail

/// An array that owns its elements: dense, dimension 0 first (see `Extents`).
template <class T>
class Array {
 public:
  using element_type = T;
  using value_type = T;
  using iterator = T*;
  using const_iterator = const T*;

  Array() : Array(Extents{0}) {}
  /// All elements are 0. Throws `std::invalid_argument` for a negative extent.
  explicit Array(const Extents& extents)
      : dims(extents), count(detail::sizeOf(extents)), values(std::make_unique<T[]>(count)) {}
  /// The elements in the order of memory, as in `Array<float>({3, 2}, {1, 2, 3, 4, 5, 6})`. Throws
  /// `std::invalid_argument` if there are more or fewer than the extents have.
  Array(const Extents& extents, std::initializer_list<T> elements) : Array(extents) {
    detail::checkElementCount(elements.size(), extents);
    std::ranges::copy(elements, data());
  }
  /// A copy of the elements of a view.
  explicit Array(const ArrayView<const T>& view) : Array(view.extents()) { detail::copyDense(view, data()); }
  explicit Array(const ArrayView<T>& view) : Array(ArrayView<const T>(view)) {}
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
  /// The element at an index in each dimension, dimension 0 first. Indices must lie within the extents.
  template <std::integral... I>
  T& operator()(I... index) {
    return view()(index...);
  }
  template <std::integral... I>
  const T& operator()(I... index) const {
    return view()(index...);
  }

  /// Sets all elements.
  void fill(const T& value) { std::fill_n(data(), count, value); }
  /// Whether extents and all elements are equal, as the elements' `==` says: 0 equals -0, NaN equals nothing.
  friend bool operator==(const Array& a, const Array& b) {
    return a.dims == b.dims && std::equal(a.begin(), a.end(), b.begin());
  }

  ArrayView<T> view() { return {data(), dims}; }
  ArrayView<const T> view() const { return {data(), dims}; }
  /// A view of the part that begins at `start`. Throws `std::invalid_argument` if it does not lie within the array.
  ArrayView<T> subview(const Extents& start, const Extents& extents) { return view().subview(start, extents); }
  ArrayView<const T> subview(const Extents& start, const Extents& extents) const {
    return view().subview(start, extents);
  }
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
