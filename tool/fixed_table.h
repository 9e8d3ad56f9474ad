#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/filters/fixed_array.h"

/// The table that operations print about values in fixed point.
namespace BP::tool {

/// Labels and the types of their values, as texts, in the order in which values pass through a filter.
using FixedRows = std::vector<std::pair<std::string, std::string>>;

/// A heading, and a line for each of `rows` that has casts: type, casts, overflows, lossy roundings, least and greatest
/// value. Empty without such a line.
std::string fixedTable(const FixedRows& rows, const std::vector<filters::FixedStatistics>& all);

/// Adds the counts to those of the same label in `all`.
void addStatistics(std::vector<filters::FixedStatistics>& all, const filters::FixedStatistics& more);

/// The type as it is written, or "exact" without one.
std::string textOrExact(const std::optional<filters::FixedType>& type);

}  // namespace BP::tool
