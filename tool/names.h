#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tool/text.h"

/// Tables of values that people choose by a name. A table is an array of rows that have a member `name`.
namespace BP::tool {

/// A row with nothing but its name and its value.
template <class T>
struct Named {
  std::string_view name;
  T value;
};

/// All names of a table.
template <class Row, std::size_t count>
std::vector<std::string> namesOf(const Row (&table)[count]) {
  std::vector<std::string> names;
  for (const Row& row : table) names.emplace_back(row.name);
  return names;
}

/// All names of a table, as in "valid, same, full".
template <class Row, std::size_t count>
std::string nameList(const Row (&table)[count]) {
  std::string list;
  for (const Row& row : table) list.append(list.empty() ? "" : ", ").append(row.name);
  return list;
}

/// The row with the name `text`. The `std::runtime_error` for other texts begins with `option` and lists `allowed`,
/// which is all names if it is empty.
template <class Row, std::size_t count>
const Row& rowNamed(const Row (&table)[count], std::string_view text, const std::string& option,
                    const std::string& allowed = {}) {
  const auto row = std::ranges::find(table, text, &Row::name);
  if (row != std::end(table)) return *row;
  throw std::runtime_error(option + " " + inQuotes(text) + ": allowed are " +
                           (allowed.empty() ? nameList(table) : allowed));
}

}  // namespace BP::tool
