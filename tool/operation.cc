#include "tool/operation.h"

#include <stdexcept>

namespace BP::tool {

std::string Option::shownForm() const {
  if (!form.empty()) return form;
  std::string names;
  for (const std::string& value : allowed) names.append(names.empty() ? "" : "|").append(value);
  return names;
}

const std::string& Values::operator[](std::string_view name) const {
  const auto entry = texts.find(name);
  if (entry == texts.end()) throw std::logic_error("no value of " + std::string(name));
  return entry->second;
}

std::optional<std::string> Values::find(std::string_view name) const {
  const auto entry = texts.find(name);
  if (entry == texts.end()) return std::nullopt;
  return entry->second;
}

}  // namespace BP::tool
