#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <new>

#include "orvane/core/clever_ptr.h"

namespace BP {

/// All sectors of one kind. SectorT is `BoundarySector` or `OutsideSector`.
///
/// Each of the four tables is one array for the whole list, owned by the first sector's handle. Sector k has the N
/// entries from k * N on. `link` points the other sectors at their entries.
template <class SectorT>
class SectorList {
 public:
  /// Names of the work vectors that hold the tables.
  struct Names {
    const char* start;
    const char* end;
    const char* preEdge;
    const char* postEdge;
  };

  /// Makes room for `count` sectors of `rank` dimensions; 0 makes none. Throws `std::bad_alloc` if no array can hold
  /// them.
  template <class Alloc>
  SectorList(Alloc* allocator, int rank, int count, const Names& names) : numDims(rank) {
    if (count < 1) return;
    const std::int64_t width = static_cast<std::int64_t>(rank) * count;
    if (width > std::numeric_limits<int>::max()) throw std::bad_alloc();
    Entry& first = entries.emplace_back(rank);
    const auto make = [&](CleverPtr<int>& table, const char* name) {
      allocator->registerWorkVector(table, static_cast<int>(width), name, "ignore", 1);
    };
    make(first.start, names.start);
    make(first.end, names.end);
    make(first.preEdge, names.preEdge);
    make(first.postEdge, names.postEdge);
    for (int k = 1; k < count; ++k) entries.emplace_back(rank);
  }

  /// Rebinds the arrays to the allocator's work vectors.
  template <class Alloc>
  void attach(Alloc* allocator) {
    if (entries.empty()) return;
    Entry& first = entries.front();
    for (CleverPtr<int>* table : {&first.start, &first.end, &first.preEdge, &first.postEdge}) {
      allocator->attachWorkVector(*table);
    }
  }

  /// Points the tables of each further sector at their slices.
  void link() {
    int offset = 0;
    for (Entry& entry : entries) {
      const Entry& first = entries.front();
      entry.start.ptr = first.start.ptr + offset;
      entry.end.ptr = first.end.ptr + offset;
      entry.preEdge.ptr = first.preEdge.ptr + offset;
      entry.postEdge.ptr = first.postEdge.ptr + offset;
      offset += numDims;
    }
  }

  SectorT& operator[](int k) { return entries[static_cast<std::size_t>(k)].sector; }
  int size() const { return static_cast<int>(entries.size()); }

 private:
  struct Entry {
    explicit Entry(int rank) : sector(rank, start, end, preEdge, postEdge) {}
    CleverPtr<int> start, end, preEdge, postEdge;
    SectorT sector;
  };

  int numDims;
  std::deque<Entry> entries;  // a deque, because sectors refer to their entry's tables, which must not move
};

}  // namespace BP
