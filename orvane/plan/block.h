#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "orvane/core/clever_ptr.h"
#include "orvane/core/element.h"
#include "orvane/core/stored.h"
#include "orvane/platform/export.h"

/// Shapes and where they lie.
///
/// All blocks of a processor share one frame of reference, whose zero is the input's first element. In each
/// dimension, element i of a block lies at position
///
///     origin + loc + i
///
/// of that frame. Tables of extents and places are arrays of 32-bit integers with an entry per dimension. The maker of
/// a block owns them, and the block refers to the maker's handles. A table that is rewritten or rebound therefore moves
/// every block that refers to it. Nothing is checked. Dimension 0 is contiguous in memory.
namespace BP {

/// An extent and a place in each dimension.
class ORVANE_API Block {
 public:
  /// `rank` entries in each table.
  Block(int rank, CleverPtr<int>& extents, CleverPtr<int>& originTable, CleverPtr<int>& locTable)
      : numDims(rank), dims(extents), origin(originTable), loc(locTable) {}
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  virtual ~Block();

  int getNumDims() const { return numDims; }
  CleverPtr<int>& getDims() const { return dims; }
  CleverPtr<int>& getOrigin() const { return origin; }
  CleverPtr<int>& getLoc() const { return loc; }

 private:
  int numDims;
  CleverPtr<int>& dims;
  CleverPtr<int>& origin;
  CleverPtr<int>& loc;
};

/// An index range to be walked: from `start` to `end`, both inclusive.
class ORVANE_API Traversable {
 public:
  Traversable(CleverPtr<int>& first, CleverPtr<int>& last) : start(first), end(last) {}
  virtual ~Traversable();

  CleverPtr<int>& getStart() const { return start; }
  CleverPtr<int>& getEnd() const { return end; }

 private:
  CleverPtr<int>& start;
  CleverPtr<int>& end;
};

/// A block with an index range.
class ORVANE_API TraversableBlock : public Block, public Traversable {
 public:
  TraversableBlock(int rank, CleverPtr<int>& extents, CleverPtr<int>& originTable, CleverPtr<int>& locTable,
                   CleverPtr<int>& first, CleverPtr<int>& last)
      : Block(rank, extents, originTable, locTable), Traversable(first, last) {}
  ~TraversableBlock() override;

  /// Sets the range to the whole block: from `loc` to `loc` + extent - 1.
  void traverseWhole();
};

/// strides[0] = 1, strides[d] = strides[d-1] * dims[d-1]; returns the product of all extents, 0 without dimensions.
/// Products beyond 32 bits wrap around; extents of which a plan takes nothing can give such products.
ORVANE_API int computeStrides(int numDims, const int* dims, int* strides);

/// The number of elements from the first one of an array to the last, also those that lie between its lines; 0 if an
/// extent is below 1.
ORVANE_API std::int64_t spanOf(int numDims, const int* dims, const int* strides);

/// Product of the extents; 0 if an extent is below 1 or there is none. The result is at most 2^31, more than any array
/// has.
ORVANE_API std::int64_t elementCount(int numDims, const int* dims);

/// The elements of a block, of type T, and their strides in memory.
template <class T, class Alloc>
class ElementStore {
 public:
  ElementStore(Alloc* alloc, int rank, CleverPtr<T>& elements) : allocator(alloc), data(elements) {
    allocator->allocateArray(strides, rank, "ignore");
  }

  Alloc* getAllocator() const { return allocator; }
  /// The number of elements from the first one to the last, also those between lines (see `spanOf`).
  int getNumElements() const { return numElements; }
  const CleverPtr<int>& getStrides() const { return strides; }
  CleverPtr<T>& getData() const { return data; }

  /// Sets the strides of an array whose lines do not follow each other directly: an entry per dimension, the first of
  /// them 1. The table stays the caller's. Null, as at the beginning, means dense elements. It counts from the next
  /// `layOut` on.
  void setStrides(const int* table) { givenStrides = table; }

  /// Sets the type in which the elements lie in memory (see `Stored`); `getData` then points to elements of that type.
  void setStored(Stored type) { stored = type; }
  Stored getStored() const { return stored; }
  /// The element of index `i` in memory. If it is stored in another type, it is converted into a cell of this store,
  /// which the next call overwrites.
  T& at(int i) const {
    if constexpr (std::is_floating_point_v<T>) {
      if (stored != Stored::asComputed) return cell = loadStored(stored, data.ptr, i);
    }
    return elementAt(data.ptr, i);
  }
  /// Sets the element of index `i` in memory, rounded and clipped if it is stored in another type.
  void put(int i, T& value) const {
    if constexpr (std::is_floating_point_v<T>) {
      if (stored != Stored::asComputed) return putStored(stored, data.ptr, i, value, clipped);
    }
    assign(elementAt(data.ptr, i), value);
  }
  /// The number of values that were clipped since the last `takeClipped`.
  std::int64_t& countClipped() const { return clipped; }
  std::int64_t takeClipped() const { return std::exchange(clipped, 0); }

  /// Works out strides and element count from the extents of `block`.
  void layOut(const Block& block) {
    const int rank = block.getNumDims();
    if (givenStrides == nullptr) {
      numElements = computeStrides(rank, block.getDims().ptr, strides.ptr);
    } else {
      std::copy_n(givenStrides, rank, strides.ptr);
      numElements = static_cast<int>(spanOf(rank, block.getDims().ptr, strides.ptr));
    }
  }

 private:
  Alloc* allocator;
  int numElements = 0;
  Stored stored = Stored::asComputed;
  // A converted element and the count of clipped ones are no parts of the array that is described.
  mutable std::conditional_t<std::is_floating_point_v<T>, T, char> cell{};
  mutable std::int64_t clipped = 0;
  const int* givenStrides = nullptr;
  CleverPtr<int> strides;
  CleverPtr<T>& data;
};

/// A block with elements.
template <class T, class Alloc>
class DataBlock : public Block, public ElementStore<T, Alloc> {
 public:
  DataBlock(Alloc* alloc, int rank, CleverPtr<int>& extents, CleverPtr<int>& originTable, CleverPtr<int>& locTable,
            CleverPtr<T>& elements)
      : Block(rank, extents, originTable, locTable), ElementStore<T, Alloc>(alloc, rank, elements) {}

  void computeStrides() { this->layOut(*this); }
};

/// A block with elements and an index range.
template <class T, class Alloc>
class TraversableDataBlock : public TraversableBlock, public ElementStore<T, Alloc> {
 public:
  TraversableDataBlock(Alloc* alloc, int rank, CleverPtr<int>& extents, CleverPtr<int>& originTable,
                       CleverPtr<int>& locTable, CleverPtr<int>& first, CleverPtr<int>& last, CleverPtr<T>& elements)
      : TraversableBlock(rank, extents, originTable, locTable, first, last),
        ElementStore<T, Alloc>(alloc, rank, elements) {}

  void computeStrides() { this->layOut(*this); }
};

/// Linear index of the element with index vector `index`, of which the first `numDims` entries are used.
inline int linearIndex(const int* strides, int numDims, const int* index) {
  int linear = 0;
  for (int d = 0; d < numDims; ++d) linear += strides[d] * index[d];
  return linear;
}

/// Linear index of the element of `block` with index vector `index`; 0 for a block without dimensions.
template <class DataBlockT>
int linearIndex(const DataBlockT& block, const CleverPtr<int>& index) {
  return linearIndex(block.getStrides().ptr, block.getNumDims(), index.ptr);
}

}  // namespace BP
