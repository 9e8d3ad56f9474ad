#pragma once

#include "orvane/core/enums.h"
#include "orvane/platform/export.h"

namespace BP {

class Block;
class Region;

/// A plan as regions know it: they fit its output.
class ORVANE_API AnyPlan {
 public:
  AnyPlan() = default;
  AnyPlan(const AnyPlan&) = delete;
  AnyPlan& operator=(const AnyPlan&) = delete;
  virtual ~AnyPlan();

  /// Runs one stage of set-up.
  virtual void setup(setupModeT stage) = 0;
  /// Leaves the output as it is: neither region restricts it.
  virtual void restrictNone(AnyPlan& plan, const Region& second) = 0;
  /// Gives the output the extent and the place of `block`.
  virtual void restrictByBlock(const Block& block, const void* unused) = 0;
  /// Gives the output the extent and the place of the intersection of two blocks.
  virtual void restrictByBlocks(const Block& firstBlock, const Block& secondBlock) = 0;
};

}  // namespace BP
