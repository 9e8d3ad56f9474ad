#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/operation.h"

/// What the operations that filter a file have in common.
namespace BP::tool {

/// The positional arguments IN and OUT.
std::vector<Option> fileOptions(const std::string& outMeaning);

/// True if `path` names an array, false if it names a picture.
bool isArrayName(const std::string& path);

/// Tells that `count` of `all` values of the file `out` changed, unless the count is 0. `what` says how, as in
/// "clipped".
void tellCount(const std::string& out, std::uint64_t count, std::uint64_t all, const std::string& what);

/// Tells what happened to the fixed-point values of the file, unless the table is empty.
void tellFixed(const std::string& file, const std::string& table);

}  // namespace BP::tool
