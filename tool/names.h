#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/named.h"
#include "tool/text.h"

/// Tables of values that people choose by a name. A table is an array of rows that have a member `name`, as `Named`
/// has.
namespace BP::tool {

/// All names of a table.
template <class Table>
std::vector<std::string> namesOf(const Table& table) {
  std::vector<std::string> names;
  for (const auto& row : table) names.emplace_back(row.name);
  return names;
}

/// All names of a table, as in "valid, same, full".
template <class Table>
std::string nameList(const Table& table) {
  std::string list;
  for (const auto& row : table) list.append(list.empty() ? "" : ", ").append(row.name);
  return list;
}

/// The row with the name `text`. The `std::runtime_error` for other texts begins with `option` and lists `allowed`,
/// which is all names if it is empty.
template <class Table>
const auto& rowNamed(const Table& table, std::string_view text, const std::string& option,
                     const std::string& allowed = {}) {
  for (const auto& row : table) {
    if (row.name == text) return row;
  }
  throw std::runtime_error(option + " " + inQuotes(text) + ": allowed are " +
                           (allowed.empty() ? nameList(table) : allowed));
}

}  // namespace BP::tool
