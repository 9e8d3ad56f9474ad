#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/plan/block.h"
#include "orvane/platform/export.h"

/// Regions: sets of positions at which outputs may be produced.
///
/// A scope has two regions, and the plan asks the first one to fit the output to both. Two virtual calls, one of each
/// region, then select the plan's operation for the two kinds:
///
///     first         second        plan operation
///     unrestricted  unrestricted  restrictNone
///     unrestricted  restricted    restrictByBlock(second)
///     restricted    unrestricted  restrictByBlock(first)
///     restricted    restricted    restrictByBlocks(first, second)
namespace BP {

class AnyPlan;

/// A set of positions.
class ORVANE_API Region {
 public:
  Region() = default;
  Region(const Region&) = delete;
  Region& operator=(const Region&) = delete;
  virtual ~Region();

  /// The second call, after an unrestricted first region. `second` is this region.
  virtual void restrictAfterUnrestricted(AnyPlan& plan, const Region& second) const;
  /// The second call, after a first region with the block `firstBlock`.
  virtual void restrictAfterRestricted(AnyPlan& plan, const Block& firstBlock) const;
  /// The first call: fits the output of `plan` to this region and `second`.
  virtual void restrict(AnyPlan& plan, const Region& second) const;
  /// Whether all of `block` lies in this region.
  virtual bool containsBlock(const Block& block) const = 0;
  /// Whether all of this region lies in `block`.
  virtual bool isWithinBlock(const Block& block) const = 0;
  virtual bool isRestricted() const = 0;
  /// Whether all of this region lies in `other`.
  virtual bool isWithinRegion(const Region& other) const = 0;
};

/// One rectangle, with extents `dims` at place `loc`. The maker owns both tables and may rewrite them at any time.
class ORVANE_API RestrictedRegion : public Region {
 public:
  RestrictedRegion(int numDims, CleverPtr<int>& dims, CleverPtr<int>& loc);
  ~RestrictedRegion() override;

  void restrictAfterUnrestricted(AnyPlan& plan, const Region& second) const override;
  void restrictAfterRestricted(AnyPlan& plan, const Block& firstBlock) const override;
  void restrict(AnyPlan& plan, const Region& second) const override;
  bool containsBlock(const Block& other) const override;
  bool isWithinBlock(const Block& other) const override;
  bool isRestricted() const override;
  bool isWithinRegion(const Region& other) const override;

 private:
  Block block;
};

/// Every position.
class ORVANE_API UnrestrictedRegion : public Region {
 public:
  ~UnrestrictedRegion() override;

  bool containsBlock(const Block& block) const override;
  bool isWithinBlock(const Block& block) const override;
  bool isRestricted() const override;
  bool isWithinRegion(const Region& other) const override;
};

}  // namespace BP
