#pragma once

#include <memory>

#include "orvane/core/allocator_tolk.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// Abstract root of the front classes: what a host holds for one block.
///
/// Order of calls: constructor, the pointer-taking `setup` of the class, `computeOutputs` per step with `tune` and
/// pointer updates between steps, `setup(setupFinish)`, destructor. One thread at a time uses a front; two fronts share
/// nothing. Arguments are not checked here.
class ORVANE_API BlockProcTolkCache {
 public:
  BlockProcTolkCache(const BlockProcTolkCache&) = delete;
  BlockProcTolkCache& operator=(const BlockProcTolkCache&) = delete;
  virtual ~BlockProcTolkCache();

  /// Swaps tunable data between runs; null leaves a datum as it is.
  virtual void tune(void* first, void* second, void* third);
  /// Swaps input arrays between runs.
  virtual void updateInputPointers(void* first, void* second);
  /// Swaps output arrays between runs.
  virtual void updateOutputPointers(void* a, void* b, void* c, void* d, void* e);
  /// One run.
  virtual void computeOutputs() = 0;
  /// Sets the `FixptLogMap` into which fixed-point statistics are merged at `setup(setupFinish)` and once more by the
  /// destructor; null switches that off. The caller owns the map. It must outlive this object, or a call with null must
  /// remove it first.
  virtual void setFixptLogMap(void* map);

 protected:
  explicit BlockProcTolkCache(brekk::BrekkAdaptorTolk* adaptor);

  std::unique_ptr<AllocatorTolk> allocator;
};

}  // namespace BP
