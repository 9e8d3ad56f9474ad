#pragma once

#include <string>

namespace BP::tool {

/// A script with which bash completes the operations, their options and the values that options allow.
std::string bashCompletion();

}  // namespace BP::tool
