#include "tool/fixed_table.h"

#include <algorithm>
#include <cstdio>

#include "tool/text.h"

namespace BP::tool {

namespace {

/// One line in columns of fixed width, as in "  accumulator     s40.14           120           0 ...".
std::string tableLine(const std::string& label, const std::string& type, const std::string& casts,
                      const std::string& overflows, const std::string& lossy, const std::string& min,
                      const std::string& max) {
  std::string line(200, '\0');
  const int length =
      std::snprintf(line.data(), line.size(), "  %-15s %-7s %12s %12s %12s %14s %14s\n", label.c_str(), type.c_str(),
                    casts.c_str(), overflows.c_str(), lossy.c_str(), min.c_str(), max.c_str());
  line.resize(static_cast<std::size_t>(length));
  return line;
}

}  // namespace

void addStatistics(std::vector<filters::FixedStatistics>& all, const filters::FixedStatistics& more) {
  const auto sum = std::ranges::find(all, more.label, &filters::FixedStatistics::label);
  if (sum == all.end()) {
    all.push_back(more);
    return;
  }
  sum->casts += more.casts;
  sum->overflows += more.overflows;
  sum->lossy += more.lossy;
  sum->minimum = std::min(sum->minimum, more.minimum);
  sum->maximum = std::max(sum->maximum, more.maximum);
}

std::string textOrExact(const std::optional<filters::FixedType>& type) {
  return type ? filters::toText(*type) : "exact";
}

std::string fixedTable(const FixedRows& rows, const std::vector<filters::FixedStatistics>& all) {
  std::string table;
  for (const auto& [label, type] : rows) {
    const auto line = std::ranges::find(all, label, &filters::FixedStatistics::label);
    if (line == all.end() || line->casts == 0) continue;
    const bool isKnown = line->minimum <= line->maximum;
    table += tableLine(label, type, std::to_string(line->casts), std::to_string(line->overflows),
                       std::to_string(line->lossy), isKnown ? numberText(line->minimum) : "-",
                       isKnown ? numberText(line->maximum) : "-");
  }
  if (table.empty()) return table;
  return tableLine("label", "type", "casts", "overflows", "lossy", "least", "greatest") + table;
}

}  // namespace BP::tool
