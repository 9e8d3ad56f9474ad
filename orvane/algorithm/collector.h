#pragma once

#include <algorithm>
#include <complex>
#include <limits>
#include <type_traits>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"

/// Collectors remember the extreme of a stream of values. `setHasValue(false)` empties a collector, and leaves value
/// and index in place.
namespace BP {

/// The value that is kept, and whether there is one.
template <class AllocT, class T>
class StatisticsCollector {
 public:
  explicit StatisticsCollector(AllocT* alloc) : allocator(alloc) { allocator->allocateArray(value, 1, "accumulator"); }
  StatisticsCollector(const StatisticsCollector&) = delete;
  StatisticsCollector& operator=(const StatisticsCollector&) = delete;
  virtual ~StatisticsCollector() = default;

  bool getHasValue() const { return hasValue; }
  void setHasValue(bool has) { hasValue = has; }
  CleverPtr<T>& getValue() { return value; }

 protected:
  AllocT* allocator;

 private:
  bool hasValue = false;
  CleverPtr<T> value;
};

/// Keeps the least value.
template <class AllocT, class T>
class MinCollector : public StatisticsCollector<AllocT, T> {
 public:
  using StatisticsCollector<AllocT, T>::StatisticsCollector;
};

/// Keeps the least value and where it occurred, as (dimension 0, dimension 1).
template <class AllocT, class T>
class MinIdxCollector : public MinCollector<AllocT, T> {
 public:
  explicit MinIdxCollector(AllocT* alloc) : MinCollector<AllocT, T>(alloc) { alloc->allocateArray(index, 2, "int32"); }

  CleverPtr<int>& getIndex() { return index; }

 private:
  CleverPtr<int> index;
};

/// Keeps the greatest value.
template <class AllocT, class T>
class MaxCollector : public StatisticsCollector<AllocT, T> {
 public:
  using StatisticsCollector<AllocT, T>::StatisticsCollector;
};

/// Feeds `collector` the value `v` found at (x, y). A strictly lesser value replaces the one that is kept. So the first
/// of equal values stays, and a NaN that came first stays for good. Complex values compare by squared magnitude.
template <class AllocT, class T>
inline void feed(MinIdxCollector<AllocT, T>& collector, T& v, int x, int y) {
  T& kept = elementAt(collector.getValue().ptr, 0);
  if (collector.getHasValue() && !isGreater(kept, v)) return;
  assign(kept, v);
  collector.getIndex().ptr[0] = x;
  collector.getIndex().ptr[1] = y;
  collector.setHasValue(true);
}

/// Prepares `collector` for values that come after others, which are collected elsewhere: NaN is never kept. The index
/// stays below 0 until there is a value.
template <class AllocT, class T>
inline void expectLaterValues(MinIdxCollector<AllocT, T>& collector) {
  collector.getIndex().ptr[0] = -1;
  if constexpr (!std::is_same_v<T, Fixpt>) {
    elementAt(collector.getValue().ptr, 0) = std::numeric_limits<decltype(std::real(T()))>::infinity();
    collector.setHasValue(true);
  }
}

/// Feeds `collector` the best of `other`. Of equals the one at the earlier position stays, row by row.
template <class AllocT, class T>
inline void feedBest(MinIdxCollector<AllocT, T>& collector, MinIdxCollector<AllocT, T>& other) {
  const auto isEmpty = [](auto& c) { return !c.getHasValue() || c.getIndex().ptr[0] < 0; };
  if (isEmpty(other)) return;
  if (!isEmpty(collector)) {
    const int *const a = collector.getIndex().ptr, *const b = other.getIndex().ptr;
    const bool isEarlier = a[1] < b[1] || (a[1] == b[1] && a[0] < b[0]);
    T &kept = elementAt(collector.getValue().ptr, 0), &found = elementAt(other.getValue().ptr, 0);
    if (isEarlier ? !isGreater(kept, found) : isGreater(found, kept)) return;
  }
  assign(elementAt(collector.getValue().ptr, 0), elementAt(other.getValue().ptr, 0));
  std::copy_n(other.getIndex().ptr, 2, collector.getIndex().ptr);
  collector.setHasValue(true);
}

/// Feeds `collector` the value `v`; a strictly greater one replaces what was kept.
template <class AllocT, class T>
inline void feed(MaxCollector<AllocT, T>& collector, T& v) {
  T& kept = elementAt(collector.getValue().ptr, 0);
  if (collector.getHasValue() && !isGreater(v, kept)) return;
  assign(kept, v);
  collector.setHasValue(true);
}

}  // namespace BP
