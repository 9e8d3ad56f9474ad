#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "orvane/filters/plan_description.h"

/// A plan in words and numbers.
namespace BP::tool {

/// "low outside", "low boundary", "centre", "high boundary" or "high outside".
std::string_view nameOf(SectionCode code);

/// "inside", "boundary" or "outside".
std::string_view nameOf(SectorKind kind);

/// Positions from `first` to `last`, as in "3" or "1..8"; nothing if there is none.
std::string rangeText(int first, int last);

/// Number of outputs of a sector.
std::int64_t outputsOf(const PlanSector& sector);

/// Number of outputs of a plan, whether a sector reaches them or not.
std::int64_t outputsOf(const PlanDescription& plan);

/// The mode that says where outputs lie: its name, or "any" if the region of interest alone does.
std::string_view modeName(const PlanRequest& request, const PlanDescription& plan);

/// Tables of the sections of each dimension and of the sectors, behind a line or two on the geometry.
std::string planText(const PlanRequest& request, const PlanDescription& plan);

}  // namespace BP::tool
