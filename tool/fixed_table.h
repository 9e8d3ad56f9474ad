#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/filters/fixed_array.h"

/// What operations print of the statistics of fixed point.
namespace BP::tool {

/// Labels and what to say of the types of their values, in the order in which these pass through a filter.
using FixedRows = std::vector<std::pair<std::string, std::string>>;

/// A line for each of `rows` that has a cast: its type, casts, overflows, lossy roundings, least and greatest value; a
/// head above.
std::string fixedTable(const FixedRows& rows, const std::vector<filters::FixedStatistics>& all);

/// The type as it is written, or "exact" without one.
std::string textOrExact(const std::optional<filters::FixedType>& type);

}  // namespace BP::tool
