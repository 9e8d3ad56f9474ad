#pragma once

#include <string_view>
#include <vector>

#include "orvane/platform/export.h"

/// Vector kernels over plain pointers. A *target* is an instruction set that they are compiled for; the results are the
/// same bits on each, only the time differs.
namespace BP::lanes {

/// Names of the targets that were compiled in and that this machine can run, the fastest first. "scalar" is always the
/// last; the others are "avx512dl" (AVX-512 with dot products and population counts in vectors), "avx512", "avx2",
/// "sse4" and "neon".
ORVANE_API std::vector<std::string_view> getTargets();

/// Name of the target in use: the fastest one, unless another was forced.
ORVANE_API std::string_view getTarget();

/// Whether there is a target in use, and not `plain`.
bool areInUse();

/// The name of no target: filters then leave the lanes alone and run their plain loops, the yardstick of all targets.
inline constexpr std::string_view plain = "plain";

/// Makes the named target, or `plain`, the one in use, for the whole process; an empty name returns to the fastest.
/// False, and nothing changes, if `getTargets` has no such name. Any thread may call it: a run that has begun ends as
/// it began.
ORVANE_API bool forceTarget(std::string_view name);

}  // namespace BP::lanes
