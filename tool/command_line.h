#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/operation.h"

/// Arguments of the command. The argument parser's library is used behind this header alone.
namespace BP::tool {

/// The values in `arguments`, which follow the operation's name; nothing if they ask for the usage text.
///
/// Throws `std::runtime_error` for an unknown option, with the nearest known one, and for a missing, a repeated or an
/// unexpected argument.
std::optional<Values> parseArguments(const Operation& operation, const std::vector<std::string>& arguments);

}  // namespace BP::tool
