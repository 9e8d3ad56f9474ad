#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "orvane/filters/plan_description.h"

/// A plan as text.
namespace BP::tool {

/// "low outside", "low boundary", "centre", "high boundary" or "high outside".
std::string_view nameOf(SectionCode code);

/// "inside", "boundary" or "outside".
std::string_view nameOf(SectorKind kind);

/// Positions from `first` to `last`, as in "3" or "1..8"; empty if `last` is less than `first`.
std::string rangeText(int first, int last);

/// The number of outputs of a sector.
std::int64_t outputsOf(const PlanSector& sector);

/// The number of outputs of a plan, with those that no sector reaches.
std::int64_t outputsOf(const PlanDescription& plan);

/// The name of the mode, or "any" if the region of interest alone says where outputs lie.
std::string_view modeName(const PlanRequest& request, const PlanDescription& plan);

/// The geometry, a table of the sections of each dimension, and a table of the sectors. `pad` is the pad as it was
/// typed.
std::string planText(const PlanRequest& request, const PlanDescription& plan, const std::string& pad);

/// The same as a JSON object.
std::string planJson(const PlanRequest& request, const PlanDescription& plan, const std::string& pad);

}  // namespace BP::tool
