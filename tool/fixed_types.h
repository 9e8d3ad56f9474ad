#pragma once

#include <complex>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/filters/fixed_array.h"
#include "orvane/filters/options.h"

/// The option `--fixed`, which makes an operation compute in fixed point.
namespace BP::tool {

/// What the option gives: types by the names of their roles, and modes.
struct FixedEntries {
  std::map<std::string, filters::FixedType, std::less<>> types;
  filters::FixedModes modes;

  /// The type of a role that was needed.
  const filters::FixedType& at(std::string_view role) const { return types.find(role)->second; }
  /// The type of another role, if there is one.
  std::optional<filters::FixedType> find(std::string_view role) const;
};

/// The roles that an operation knows.
struct FixedRoleNames {
  std::vector<std::string_view> needed;
  std::vector<std::string_view> optional;
};

/// The entries of a text such as "input=u8.0,filter=s16.14,rounding=nearest". Throws `std::runtime_error` for one that
/// is unknown, missing, given twice or without a meaning.
FixedEntries parseFixedEntries(const std::string& text, const FixedRoleNames& roles);

/// Refuses a pad value that is read and that the input's type does not have.
void checkFixedPad(filters::OutputMode mode, filters::Pad pad, std::complex<double> value,
                   const filters::FixedType& input);

/// The modes of fixed point, a line for usage texts.
std::string modeNames();

/// What a usage text says about the option: an example, what there is to say about roles, modes.
std::string fixedFooter(const std::string& example, const std::string& remarks);

}  // namespace BP::tool
