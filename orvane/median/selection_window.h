#pragma once

#include <memory>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"

namespace BP {

/// The values of one window, and selection by rank among them: partitioning in place, with the median of three for the
/// pivot (C. A. R. Hoare's Find, with R. C. Singleton's choice of pivot). O(n) steps on average, no allocation.
///
/// Elements are of type T, fixed point of the role "input". The order of comparisons and swaps is fixed, since it
/// decides which of several equal values, such as zeros of both signs, ends where.
///
/// The scans of a partition need no bound. The pivot, at hi - 1, stops the upward scan. a[lo] stops the downward scan,
/// because the median of three never leaves a[lo] > pivot. This also holds with NaN, which is neither greater nor less
/// than anything. After the first step, a[lo] > a[mid] is false. The second step can only lower a[lo], and after it
/// a[lo] > a[hi] is false. The third step can only move that a[hi] to the middle. So scans stay within the values even
/// with NaN, and each partition leaves fewer values. Only the rank of the result is then meaningless.
template <class T>
class SelectionWindow {
 public:
  /// Makes room for `size` values.
  template <class AllocT>
  SelectionWindow(AllocT* allocator, int size) : capacity(size) {
    allocator->allocateArray(values, capacity, "input");
    allocator->allocateArray(swapPair, 2, "input");
    allocator->allocateArray(pivot, 1, "input");
  }

  int getCapacity() const { return capacity; }
  const T* getStore() const { return values.ptr; }
  /// Value `i`. For fixed point the reference is valid until the next access.
  T& at(int i) { return elementAt(values.ptr, i); }

  /// Moves to place `k` of the first `n` values the one that a sort would put there; n >= 1, 0 <= k < n.
  void select(int k, int n) {
    int lo = 0, hi = n - 1;
    if (hi >= 2) {
      do {
        medianOfThree(lo, hi);
        const int p = partition(lo, hi);
        if (k <= p) hi = p - 1;
        if (k >= p) lo = p + 1;
      } while (hi > lo + 1);
    }
    if (hi - lo == 1) orderPair(lo, hi);
  }

 private:
  void swap(int i, int j) { swapElements(values.ptr, i, j, swapPair.ptr); }
  void orderPair(int i, int j) {
    if (isGreaterElement(values.ptr, i, j, swapPair.ptr)) swap(i, j);
  }

  /// Orders a[lo], a[mid] and a[hi], and puts the middle one at hi - 1 as the pivot.
  void medianOfThree(int lo, int hi) {
    const int mid = (lo + hi) >> 1;
    orderPair(lo, mid);
    orderPair(lo, hi);
    orderPair(mid, hi);
    swap(mid, hi - 1);
    assign(elementAt(pivot.ptr, 0), at(hi - 1));
  }

  /// Moves values below the pivot to its left and those above to its right. Returns its place. Equal values stop both
  /// scans, which keeps the two sides balanced where many values are equal.
  int partition(int lo, int hi) {
    const T& middle = elementAt(pivot.ptr, 0);
    int i = lo, j = hi - 1;
    for (;;) {
      do ++i;
      while (isGreater(middle, at(i)));
      do --j;
      while (isGreater(at(j), middle));
      if (i >= j) break;
      swap(i, j);
    }
    swap(i, hi - 1);
    return i;
  }

  int capacity;
  CleverPtr<T> values;
  CleverPtr<T> swapPair;
  CleverPtr<T> pivot;
};

/// The median of the values of one window, by selection. UT and YT are the element types of values and median.
template <class UT, class YT>
class MedianSelection {
 public:
  template <class AllocT>
  explicit MedianSelection(AllocT* allocator) {
    allocator->allocateArray(lowerMiddle, 1, "accumulator");
  }

  /// Makes the store for up to `size` values. There is none before.
  template <class AllocT>
  void makeStore(AllocT* allocator, int size) {
    values = std::make_unique<SelectionWindow<UT>>(allocator, size);
  }
  int getCapacity() const { return values == nullptr ? 0 : values->getCapacity(); }
  /// The store as fixed point, whose type is that of the values; null before there is one.
  const UT* getSample() const { return values == nullptr ? nullptr : values->getStore(); }
  /// The element in which the two middle values are added.
  const YT* getAccumulator() const { return lowerMiddle.ptr; }

  /// The first value of the store, of plain elements.
  UT* getValues() { return &values->at(0); }
  void put(int n, const UT& value) { assign(values->at(n), value); }

  /// result := the median of the first n values, the mean of the two in the middle if n is even.
  void select(int n, YT& result) {
    const int k = (n - 1) / 2;
    values->select(k, n);
    if (n % 2 != 0) return assign(result, values->at(k));
    YT& mean = elementAt(lowerMiddle.ptr, 0);
    assign(mean, values->at(k));
    values->select(k + 1, n);
    averageInto(mean, values->at(k + 1));
    assign(result, mean);
  }

 private:
  CleverPtr<YT> lowerMiddle;
  std::unique_ptr<SelectionWindow<UT>> values;
};

}  // namespace BP
