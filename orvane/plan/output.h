#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/plan/block.h"
#include "orvane/platform/export.h"

namespace BP {

/// Abstract base of the outputs.
class ORVANE_API AnyOutput {
 public:
  AnyOutput() = default;
  AnyOutput(const AnyOutput&) = delete;
  AnyOutput& operator=(const AnyOutput&) = delete;
  virtual ~AnyOutput() = default;
};

/// View of the array that is written; elements YT.
///
/// Every run sets its range of indices and its strides, because the plan may move the output and change its extents.
/// The maker owns data and tables.
template <class YT, class AllocT>
class ORVANE_API Output final : public AnyOutput {
 public:
  Output(AllocT* alloc, int numDims, CleverPtr<int>& dims, CleverPtr<int>& origin, CleverPtr<int>& loc,
         CleverPtr<YT>& data)
      : allocator(alloc),
        block((allocator->allocateArray(end, numDims, "ignore"), allocator->allocateArray(start, numDims, "ignore"),
               allocator),
              numDims, dims, origin, loc, start, end, data) {}

  void setup(setupModeT mode) {
    if (mode != setupResize && mode != setupStart && mode != setupInvoke) return;
    block.traverseWhole();
    block.computeStrides();
  }

  TraversableDataBlock<YT, AllocT>& getBlock() { return block; }
  const TraversableDataBlock<YT, AllocT>& getBlock() const { return block; }

 private:
  AllocT* allocator;
  CleverPtr<int> start;
  CleverPtr<int> end;
  TraversableDataBlock<YT, AllocT> block;
};

}  // namespace BP
