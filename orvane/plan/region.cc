#include "orvane/plan/region.h"

#include "orvane/plan/any_plan.h"

namespace BP {

namespace {

/// Whether `inner` lies within `outer`, edges included. The place of a region's block is `loc` alone, without the
/// origin.
bool liesWithin(const Block& inner, const Block& outer) {
  bool within = true;
  for (int d = 0; d < inner.getNumDims(); ++d) {
    const int innerLoc = inner.getLoc().ptr[d], outerLoc = outer.getLoc().ptr[d];
    within = within && innerLoc >= outerLoc && innerLoc + inner.getDims().ptr[d] <= outerLoc + outer.getDims().ptr[d];
  }
  return within;
}

}  // namespace

AnyPlan::~AnyPlan() = default;

Region::~Region() = default;

void Region::restrictAfterUnrestricted(AnyPlan& plan, const Region& second) const { plan.restrictNone(plan, second); }

void Region::restrictAfterRestricted(AnyPlan& plan, const Block& firstBlock) const {
  plan.restrictByBlock(firstBlock, &firstBlock);
}

void Region::restrict(AnyPlan& plan, const Region& second) const { second.restrictAfterUnrestricted(plan, second); }

RestrictedRegion::RestrictedRegion(int numDims, CleverPtr<int>& dims, CleverPtr<int>& loc)
    : block(numDims, dims, loc, loc) {}

RestrictedRegion::~RestrictedRegion() = default;

void RestrictedRegion::restrictAfterUnrestricted(AnyPlan& plan, const Region& /*second*/) const {
  plan.restrictByBlock(block, &plan);
}

void RestrictedRegion::restrictAfterRestricted(AnyPlan& plan, const Block& firstBlock) const {
  plan.restrictByBlocks(firstBlock, block);
}

void RestrictedRegion::restrict(AnyPlan& plan, const Region& second) const {
  second.restrictAfterRestricted(plan, block);
}

bool RestrictedRegion::containsBlock(const Block& other) const { return liesWithin(other, block); }

bool RestrictedRegion::isWithinBlock(const Block& other) const { return liesWithin(block, other); }

bool RestrictedRegion::isRestricted() const { return true; }

bool RestrictedRegion::isWithinRegion(const Region& other) const { return other.containsBlock(block); }

UnrestrictedRegion::~UnrestrictedRegion() = default;

bool UnrestrictedRegion::containsBlock(const Block& /*block*/) const { return true; }

bool UnrestrictedRegion::isWithinBlock(const Block& /*block*/) const { return false; }

bool UnrestrictedRegion::isRestricted() const { return false; }

bool UnrestrictedRegion::isWithinRegion(const Region& other) const { return !other.isRestricted(); }

}  // namespace BP
