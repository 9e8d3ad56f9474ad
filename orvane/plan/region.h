#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/plan/block.h"
#include "orvane/platform/export.h"

/// Where outputs may be produced.
///
/// A scope pairs two regions, and the plan asks the first to fit its output together with the second. Two hops of
/// virtual dispatch then end in the one operation of the plan that serves the two kinds:
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

  /// Second hop, behind an unrestricted first region; `second` is this region.
  virtual void restrictAfterUnrestricted(AnyPlan& plan, const Region& second) const;
  /// Second hop, behind a first region that is `firstBlock`.
  virtual void restrictAfterRestricted(AnyPlan& plan, const Block& firstBlock) const;
  /// First hop: fits the output of `plan` to this region and `second`.
  virtual void restrict(AnyPlan& plan, const Region& second) const;
  /// Whether all of `block` lies in this region.
  virtual bool containsBlock(const Block& block) const = 0;
  /// Whether all of this region lies in `block`.
  virtual bool isWithinBlock(const Block& block) const = 0;
  virtual bool isRestricted() const = 0;
  /// Whether all of this region lies in `other`.
  virtual bool isWithinRegion(const Region& other) const = 0;
};

/// One rectangle: extents `dims` at place `loc`, tables of the maker's that may be rewritten at any time.
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
