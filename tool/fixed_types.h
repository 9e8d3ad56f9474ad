#pragma once

#include <complex>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/filters/fixed_array.h"
#include "orvane/filters/options.h"

/// The option `--fixed`, with which an operation computes in fixed point.
namespace BP::tool {

/// The value of the option: types by the names of their roles, and modes.
struct FixedEntries {
  std::map<std::string, filters::FixedType, std::less<>> types;
  filters::FixedModes modes;

  /// The type of a required role.
  const filters::FixedType& at(std::string_view role) const { return types.find(role)->second; }
  /// The type of an optional role, if it was given.
  std::optional<filters::FixedType> find(std::string_view role) const;
};

/// The roles that an operation knows.
struct FixedRoleNames {
  std::vector<std::string_view> required;
  std::vector<std::string_view> optional;
};

/// The entries of a text such as "input=u8.0,filter=s16.14,rounding=nearest". Throws `std::runtime_error` for an entry
/// that is unknown, missing, given twice or not valid.
FixedEntries parseFixedEntries(const std::string& text, const FixedRoleNames& roles);

/// Refuses a pad value that the input's type cannot represent, unless the mode never reads it.
void checkFixedPad(filters::OutputMode mode, const filters::PadOption& pad, const filters::FixedType& input);

/// The names of the modes, a line of a usage text.
std::string fixedModeNames();

/// The part of a usage text about the option: an example of its value, remarks on the roles, and the modes.
std::string fixedDetails(const std::string& example, const std::string& remarks);

}  // namespace BP::tool
