#pragma once

#include <string>

#include "orvane/filters/plan_description.h"

namespace BP::tool {

/// A picture of a plan of one or two dimensions as an SVG document, with a light and a dark colour scheme.
///
/// Each output is a cell in the colour of its sector's kind, and the number of a sector stands in its middle. The input
/// is a thick frame. One window of each kind is drawn around its output. Dimension 0 runs to the right and dimension 1
/// downwards; long runs of like positions are shortened. The same plan gives the same bytes everywhere. `pad` is the
/// pad as it was typed.
///
/// Throws `std::runtime_error` for more than two dimensions.
std::string planPicture(const PlanRequest& request, const PlanDescription& plan, const std::string& pad);

}  // namespace BP::tool
