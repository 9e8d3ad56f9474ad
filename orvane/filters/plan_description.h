#pragma once

#include <array>
#include <optional>
#include <vector>

#include "orvane/core/enums.h"
#include "orvane/plan/margins.h"
#include "orvane/platform/export.h"

/// A plan as data, for people to look at: what `MovingROIPlan` makes of a geometry, without any array to filter.
///
/// Vectors have an entry per dimension, dimension 0 first. Positions count from the input's first element.
namespace BP {

/// A rectangle of positions.
struct PlanRegion {
  std::vector<int> first;
  std::vector<int> extents;
};

/// The geometry to plan for.
struct PlanRequest {
  std::vector<int> input = {};   ///< extents of the input
  std::vector<int> window = {};  ///< extents of the window; its centre is the middle element, the lower of two
  OutputModeEnum mode = OutputModeValid;
  PadTypeEnum pad = PadTypeConstant;
  std::optional<int> reach = {};          ///< 0 to 2 (see `Scope`); else that of the mode
  std::optional<PlanRegion> region = {};  ///< where outputs are wanted; else everywhere that the mode has them
};

/// A section of a dimension: the outputs from `first` on.
struct PlanSection {
  SectionCode code;
  int first;
  int count;
};

/// A dimension of a plan.
struct PlanDimension {
  std::array<PlanSection, sectionCount> sections;  ///< in the order in which they lie, some of them empty
  bool overlap;  ///< the window is wider than the input: the centre crosses both edges
};

enum class SectorKind { inside, boundary, outside };

/// A sector as a kernel receives it; `last` is inclusive.
struct PlanSector {
  SectorKind kind;
  std::vector<int> first, last;
  std::vector<int> preEdge, postEdge;  ///< dimensions in which its windows can fall below and pass the input
  bool operator==(const PlanSector&) const = default;
};

struct PlanDescription {
  std::vector<int> centre;  ///< the window's element that lies on the output's position
  int reach;
  PlanRegion output;  ///< all outputs; extents below 1 where there is none
  std::vector<PlanDimension> dimensions;
  std::vector<PlanSector> sectors;  ///< in the order in which they run
};

/// The greatest extent that a plan can be described for, and the greatest distance of a region from the input.
inline constexpr int longestPlanExtent = 1 << 28;
/// The most dimensions of such a plan.
inline constexpr int highestPlanRank = 4;

/// Plans for `request` and records the sections and the sectors.
///
/// The outputs are the region of support of the mode, met with the region of interest if there is one. With a region
/// of interest and reach 2 the mode does not restrict it: outputs lie wherever the region does, as around the best
/// match of a template. The pad type decides whether outputs whose window misses the input in one dimension and
/// crosses an edge in the others lie in boundary sectors (values come from the input) or in outside sectors (constant).
///
/// Throws `std::invalid_argument`, which names the member and what it allows, for members that do not fit each other
/// and for more elements than a signed 32-bit index reaches.
ORVANE_API PlanDescription describePlan(const PlanRequest& request);

}  // namespace BP
