#pragma once

#include "orvane/core/any_bp.h"

namespace BP {

/// Gives a plan a band for as long as this object lives. The caller's tables then need not outlive the band, even if an
/// exception ends its run.
template <class PlanT>
class BandInUse {
 public:
  BandInUse(PlanT& bandedPlan, const PositionBox& band) : plan(bandedPlan) { plan.setBand(band); }
  ~BandInUse() { plan.setBand({}); }
  BandInUse(const BandInUse&) = delete;
  BandInUse& operator=(const BandInUse&) = delete;

 private:
  PlanT& plan;
};

}  // namespace BP
