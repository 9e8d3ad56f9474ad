#include "tool/plan_text.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tool/edge_names.h"
#include "tool/json.h"
#include "tool/option_values.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

/// A table whose columns are as wide as their widest cell.
class TextTable {
 public:
  using Row = std::vector<std::string>;

  /// `numbers` is true for each column that is flush right.
  TextTable(Row head, std::vector<bool> numbers) : flushRight(std::move(numbers)) { add(std::move(head)); }

  void add(Row row) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
    rows.push_back(std::move(row));
  }

  std::string text() const {
    std::string result;
    for (const Row& row : rows) {
      std::string line;
      for (std::size_t c = 0; c < row.size(); ++c) {
        const std::string fill(widths[c] - row[c].size(), ' ');
        line += (c == 0 ? "" : "  ") + (flushRight[c] ? fill + row[c] : row[c] + fill);
      }
      result += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return result;
  }

 private:
  std::vector<bool> flushRight;
  std::vector<std::size_t> widths;
  std::vector<Row> rows;
};

std::string listText(const std::vector<int>& values) {
  std::string text;
  for (const int value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
  return text;
}

std::string sectionsText(const PlanDescription& plan) {
  TextTable table({"dimension", "section", "", "outputs", "positions"}, {false, true, false, true, false});
  for (std::size_t d = 0; d < plan.dimensions.size(); ++d) {
    std::string dimension = std::to_string(d);
    for (const PlanSection& section : plan.dimensions[d].sections) {
      std::string name(nameOf(section.code));
      if (section.code == SectionCentre && plan.dimensions[d].overlap) name += ", crosses both edges";
      table.add({dimension, std::to_string(section.code), name, std::to_string(section.count),
                 rangeText(section.first, section.first + section.count - 1)});
      dimension.clear();
    }
  }
  return table.text();
}

std::string sectorsText(const PlanDescription& plan) {
  TextTable table({"sector", "kind", "outputs", "positions", "preEdge", "postEdge"},
                  {true, false, true, false, false, false});
  for (std::size_t i = 0; i < plan.sectors.size(); ++i) {
    const PlanSector& sector = plan.sectors[i];
    std::string positions;
    for (std::size_t d = 0; d < sector.first.size(); ++d) {
      positions += (d == 0 ? "" : " x ") + rangeText(sector.first[d], sector.last[d]);
    }
    table.add({std::to_string(i + 1), std::string(nameOf(sector.kind)), std::to_string(outputsOf(sector)), positions,
               listText(sector.preEdge), listText(sector.postEdge)});
  }
  return table.text();
}

std::string geometryText(const PlanRequest& request, const PlanDescription& plan, const std::string& pad) {
  const std::int64_t outputs = outputsOf(plan);
  std::string text = "input   " + extentsText(request.input) + "\nwindow  " + extentsText(request.window) +
                     ", centre " + listText(plan.centre) + "\nmode    " + std::string(modeName(request, plan)) +
                     ", pad " + pad + ", reach " + std::to_string(plan.reach) + "\n";
  if (request.region) {
    text += "region  " + listText(request.region->first) + "," + extentsText(request.region->extents) + "\n";
  }
  text += "output  ";
  return text +
         (outputs == 0 ? "none\n" : extentsText(plan.output.extents) + " at " + listText(plan.output.first) + "\n");
}

}  // namespace

std::string_view nameOf(SectionCode code) {
  constexpr std::string_view names[sectionCount] = {"centre", "low boundary", "high boundary", "low outside",
                                                    "high outside"};
  return names[code];
}

std::string_view nameOf(SectorKind kind) {
  constexpr std::string_view names[] = {"inside", "boundary", "outside"};
  return names[static_cast<std::size_t>(kind)];
}

std::string rangeText(int first, int last) {
  if (last < first) return {};
  return std::to_string(first) + (last > first ? ".." + std::to_string(last) : "");
}

std::int64_t outputsOf(const PlanSector& sector) {
  std::int64_t count = 1;
  for (std::size_t d = 0; d < sector.first.size(); ++d) count *= sector.last[d] - sector.first[d] + 1;
  return count;
}

std::int64_t outputsOf(const PlanDescription& plan) {
  std::int64_t count = 1;
  for (const int extent : plan.output.extents) count *= std::max(extent, 0);
  return count;
}

std::string_view modeName(const PlanRequest& request, const PlanDescription& plan) {
  if (request.region && plan.reach == 2) return "any";
  return std::ranges::find(modeTable, request.mode, &ModeRow::number)->name;
}

std::string planText(const PlanRequest& request, const PlanDescription& plan, const std::string& pad) {
  std::int64_t reached = 0;
  for (const PlanSector& sector : plan.sectors) reached += outputsOf(sector);
  return geometryText(request, plan, pad) + "\n" + sectionsText(plan) + "\n" + sectorsText(plan) + "\n" +
         counted(static_cast<std::int64_t>(plan.sectors.size()), "sector") + " with " + std::to_string(reached) +
         " of " + counted(outputsOf(plan), "output") + "\n";
}

std::string planJson(const PlanRequest& request, const PlanDescription& plan, const std::string& pad) {
  std::vector<JsonObject> dimensions, sectors;
  for (const PlanDimension& dimension : plan.dimensions) {
    std::vector<JsonObject> sections;
    for (const PlanSection& section : dimension.sections) {
      sections.push_back(
          JsonObject().add("name", nameOf(section.code)).add("first", section.first).add("count", section.count));
    }
    dimensions.push_back(JsonObject().add("overlap", dimension.overlap).add("sections", sections));
  }
  for (const PlanSector& sector : plan.sectors) {
    sectors.push_back(JsonObject()
                          .add("kind", nameOf(sector.kind))
                          .add("first", sector.first)
                          .add("last", sector.last)
                          .add("preEdge", sector.preEdge)
                          .add("postEdge", sector.postEdge));
  }
  JsonObject json;
  json.add("input", request.input).add("window", request.window).add("centre", plan.centre);
  json.add("mode", modeName(request, plan)).add("pad", pad).add("reach", plan.reach);
  if (request.region) {
    json.add("region", JsonObject().add("first", request.region->first).add("extents", request.region->extents));
  }
  json.add("output", JsonObject().add("first", plan.output.first).add("extents", plan.output.extents));
  return json.add("dimensions", dimensions).add("sectors", sectors).text() + "\n";
}

}  // namespace BP::tool
