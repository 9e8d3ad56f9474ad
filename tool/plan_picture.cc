#include "tool/plan_picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tool/option_values.h"
#include "tool/plan_axis.h"
#include "tool/plan_text.h"
#include "tool/svg.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

constexpr std::string_view style =
    ".page{fill:#fff}.input{fill:#e4e8ee}.inside{fill:#7fcbaa}.boundary{fill:#f5bb62}.outside{fill:#bcabea}"
    ".unreached{fill:#eef0f4;stroke:#8a93a0;stroke-dasharray:2 3}.grid{fill:none;stroke:#fff;stroke-opacity:.55}"
    ".sector{fill:none;stroke:#fff;stroke-width:3}.frame{fill:none;stroke:#1d2430;stroke-width:3}"
    ".window{fill:none;stroke:#1d2430;stroke-width:1.6;stroke-dasharray:5 3}"
    ".pill{fill:none;stroke:#8a93a0}.ring{fill:none;stroke:#1d2430;stroke-width:1.6}"
    "text{fill:#1d2430;font:12px system-ui,'DejaVu Sans',sans-serif}.title{font-size:15px;font-weight:600}"
    ".small{font-size:11px}.number{paint-order:stroke;stroke:#fff;stroke-width:4;stroke-opacity:.6}.quiet{fill:#566070}"
    "@media (prefers-color-scheme:dark){.page{fill:#14181d}.input{fill:#303844}.inside{fill:#23795a}"
    ".boundary{fill:#94600f}.outside{fill:#6653a8}.unreached{fill:#20262e}.grid{stroke:#14181d}"
    ".sector,.number{stroke:#14181d}.frame,.window,.ring{stroke:#eef1f5}text{fill:#eef1f5}.quiet{fill:#a9b2bf}}";

constexpr int left = 120;  // coordinates of the first cell
constexpr int top = 112;
constexpr int legendWidth = 400;

/// A rectangle of positions; `last` is inclusive.
struct Area {
  std::array<int, 2> first;
  std::array<int, 2> last;
};

/// Entry `d` of a vector, or `otherwise` for a dimension that the vector lacks.
int entry(const std::vector<int>& values, std::size_t d, int otherwise) {
  return d < values.size() ? values[d] : otherwise;
}

Area areaOf(const std::vector<int>& first, const std::vector<int>& last) {
  return {{entry(first, 0, 0), entry(first, 1, 0)}, {entry(last, 0, 0), entry(last, 1, 0)}};
}

Area areaOf(const PlanRegion& region) {
  Area area = areaOf(region.first, region.first);
  for (std::size_t d = 0; d < region.extents.size(); ++d) area.last[d] += region.extents[d] - 1;
  return area;
}

/// An output whose window the picture shows.
struct Sample {
  SectorKind kind;
  std::array<int, 2> at;
};

/// One output for each kind of sector: the last one of the first inside sector, the first one of the boundary sector
/// that crosses the most edges, and the last one of the first outside sector. Their windows lie apart unless the plan
/// is small.
std::vector<Sample> samplesOf(const PlanDescription& plan) {
  std::vector<Sample> samples;
  const PlanSector* boundary = nullptr;
  const auto edges = [](const PlanSector& sector) { return sector.preEdge.size() + sector.postEdge.size(); };
  for (const PlanSector& sector : plan.sectors) {
    const bool isNew = samples.empty() || samples.back().kind != sector.kind;
    if (sector.kind == SectorKind::boundary) {
      if (boundary == nullptr || edges(sector) > edges(*boundary)) boundary = &sector;
    } else if (isNew) {
      samples.push_back({sector.kind, areaOf(sector.first, sector.last).last});
    }
  }
  if (boundary != nullptr) samples.push_back({SectorKind::boundary, areaOf(boundary->first, boundary->last).first});
  return samples;
}

class Picture {
 public:
  Picture(const PlanRequest& planRequest, const PlanDescription& description, const std::string& padText)
      : request(planRequest),
        plan(description),
        pad(padText),
        input(areaOf({std::vector<int>(request.input.size(), 0), request.input})),
        samples(samplesOf(plan)),
        axes{makeAxis(0), makeAxis(1)} {
    const int cells = std::max(axes[0].cells(), axes[1].cells());
    const int cell = std::clamp(560 / cells, 16, 30);
    for (PlanAxis& axis : axes) axis.setCell(cell);
    ring = cell / 2 - 2;
  }

  std::string draw() {
    drawTitle();
    drawCells();
    for (const Sample& sample : samples) drawSample(sample);
    drawNumbers();
    for (std::size_t d = 0; d < plan.dimensions.size(); ++d) drawSections(d);
    drawLegend();
    const int height = std::max(top + axes[1].length() + 24, legendEnd);
    return svg.document(left + axes[0].length() + legendWidth, height, style, title());
  }

 private:
  bool hasOutputs() const { return outputsOf(plan) > 0; }

  std::string title() const {
    const std::string mode(modeName(request, plan));
    return "A window of " + extentsText(request.window) + " on an input of " + extentsText(request.input) + ": mode " +
           mode + ", reach " + std::to_string(plan.reach);
  }

  Area windowOf(const Sample& sample) const {
    Area window{sample.at, sample.at};
    for (std::size_t d = 0; d < 2; ++d) {
      window.first[d] -= entry(plan.centre, d, 0);
      window.last[d] = window.first[d] + entry(request.window, d, 1) - 1;
    }
    return window;
  }

  PlanAxis makeAxis(std::size_t d) const {
    std::set<int> breaks;
    const auto add = [&](const Area& area) { breaks.insert({area.first[d], area.last[d] + 1}); };
    add(input);
    for (const Sample& sample : samples) add(windowOf(sample));
    if (hasOutputs()) {
      add(areaOf(plan.output));
      for (const PlanSector& sector : plan.sectors) add(areaOf(sector.first, sector.last));
    }
    return PlanAxis(breaks);
  }

  Box boxOf(const Area& area) const {
    const int x = axes[0].at(area.first[0]), y = axes[1].at(area.first[1]);
    return {left + x, top + y, axes[0].at(area.last[0] + 1) - x, axes[1].at(area.last[1] + 1) - y};
  }

  void drawTitle() {
    svg.text("title", Svg::start, 16, 26, title());
    const std::string edge = "Beyond the edge: " + (request.pad != PadTypeConstant ? "elements of the input, " + pad
                                                    : pad == "constant"            ? "one constant value"
                                                                                   : "one value, " + pad);
    svg.text("quiet", Svg::start, 16, 46, edge);
  }

  void drawCells() {
    svg.box("input", boxOf(input));
    drawGrid(input);
    if (hasOutputs()) {
      const Area outputs = areaOf(plan.output);
      if (hasUnreached()) svg.box("unreached", boxOf(outputs));
      for (const PlanSector& sector : plan.sectors)
        svg.box(nameOf(sector.kind), boxOf(areaOf(sector.first, sector.last)));
      drawGrid(outputs);
      for (const PlanSector& sector : plan.sectors) svg.box("sector", boxOf(areaOf(sector.first, sector.last)));
    }
    svg.box("frame", boxOf(input));
  }

  void drawGrid(const Area& area) {
    const Box box = boxOf(area);
    std::string path;
    const auto number = [](int value) { return std::to_string(value); };
    for (const int p : axes[0].wholeCells(area.first[0], area.last[0])) {
      path += "M" + number(left + axes[0].at(p)) + " " + number(box.y) + "v" + number(box.height);
    }
    for (const int p : axes[1].wholeCells(area.first[1], area.last[1])) {
      path += "M" + number(box.x) + " " + number(top + axes[1].at(p)) + "h" + number(box.width);
    }
    svg.path("grid", path);
  }

  void drawSample(const Sample& sample) {
    svg.box("window", boxOf(windowOf(sample)));
    const Box output = boxOf({sample.at, sample.at});
    svg.circle("ring", output.x + output.width / 2, output.y + output.height / 2, ring);
  }

  void drawNumbers() {
    for (std::size_t i = 0; i < plan.sectors.size(); ++i) {
      const PlanSector& sector = plan.sectors[i];
      const bool isRepeated = std::find(plan.sectors.begin(), plan.sectors.begin() + static_cast<std::ptrdiff_t>(i),
                                        sector) != plan.sectors.begin() + static_cast<std::ptrdiff_t>(i);
      if (isRepeated) continue;
      const Box box = boxOf(areaOf(sector.first, sector.last));
      svg.text("number", Svg::middle, box.x + box.width / 2, box.y + box.height / 2 + 4, std::to_string(i + 1));
    }
  }

  /// Draws codes and positions of the sections of dimension `d` along the upper or the left side of the cells.
  void drawSections(std::size_t d) {
    const bool across = d == 0;
    svg.text("quiet", Svg::end, left - 5, across ? top - 28 : top - 8,
             across ? "dimension 0 \u2192" : "dimension 1 \u2193");
    for (const PlanSection& section : plan.dimensions[d].sections) {
      if (section.count < 1 || !hasOutputs()) continue;
      const int begin = axes[d].at(section.first), end = axes[d].at(section.first + section.count);
      const int middle = (begin + end) / 2;
      const int x = across ? left + middle : left - 14;
      const int y = across ? top - 14 : top + middle;
      svg.circle("pill", x, y, 8);
      svg.text("small", Svg::middle, x, y + 4, std::to_string(section.code));
      const std::string range = rangeText(section.first, section.first + section.count - 1);
      if (!across) svg.text("small quiet", Svg::end, x - 13, y + 4, range);
      if (across && 7 * static_cast<int>(range.size()) <= end - begin + 8) {
        svg.text("small quiet", Svg::middle, x, y - 14, range);
      }
    }
  }

  bool hasUnreached() const {
    std::int64_t reached = 0;
    for (const PlanSector& sector : plan.sectors) reached += outputsOf(sector);
    return reached < outputsOf(plan);
  }

  /// Adds an entry to the legend; `key` draws its symbol at the given coordinates.
  template <class Key>
  void explain(const Key& key, std::initializer_list<std::string> lines) {
    const int x = left + axes[0].length() + 36;
    key(x, legendEnd);
    for (const std::string& line : lines) {
      svg.text(&line == lines.begin() ? "" : "quiet", Svg::start, x + 40, legendEnd + 4, line);
      legendEnd += 17;
    }
    legendEnd += 11;
  }

  void explainBox(std::string_view kind, std::initializer_list<std::string> lines) {
    explain([&](int x, int y) { svg.box(kind, {x, y - 8, 26, 16}); }, lines);
  }

  void explainKind(SectorKind kind, const std::string& meaning) {
    std::int64_t sectors = 0, outputs = 0;
    for (const PlanSector& sector : plan.sectors) {
      if (sector.kind != kind) continue;
      ++sectors;
      outputs += outputsOf(sector);
    }
    if (sectors == 0) return;
    explainBox(nameOf(kind), {std::string(nameOf(kind)) + ": " + meaning,
                              counted(sectors, "sector") + ", " + counted(outputs, "output")});
  }

  void drawLegend() {
    legendEnd = top;
    explainBox("frame", {"the input, " + extentsText(request.input)});
    explainKind(SectorKind::inside, "the window lies in the input, no test");
    explainKind(SectorKind::boundary, "listed edges are tested, tap by tap");
    explainKind(SectorKind::outside, "the window misses the input");
    if (hasUnreached()) explainBox("unreached", {"outputs beyond this reach: no sector"});
    if (!hasOutputs()) explainBox("unreached", {"no outputs"});
    if (!samples.empty()) {
      explain(
          [&](int x, int y) {
            svg.box("window", {x, y - 8, 26, 16});
            svg.circle("ring", x + 13, y, 5);
          },
          {"a window of " + extentsText(request.window) + " around its output"});
      explain([&](int x, int y) { svg.text("", Svg::middle, x + 13, y + 4, "1"); },
              {"number of a sector, in the order of their runs"});
    }
    explain(
        [&](int x, int y) {
          svg.circle("pill", x + 13, y, 8);
          svg.text("small", Svg::middle, x + 13, y + 4, "0");
        },
        {"section: 0 centre, 1 low and 2 high boundary,", "3 low and 4 high outside; with its positions"});
    if (axes[0].isShortened() || axes[1].isShortened()) {
      explain([](int, int) {}, {"Long runs of positions are drawn shortened,", "without the lines between outputs."});
    }
  }

  const PlanRequest& request;
  const PlanDescription& plan;
  const std::string& pad;
  Area input;
  std::vector<Sample> samples;
  std::array<PlanAxis, 2> axes;
  int ring = 0;
  Svg svg;
  int legendEnd = 0;
};

}  // namespace

std::string planPicture(const PlanRequest& request, const PlanDescription& plan, const std::string& pad) {
  if (request.input.size() > 2) {
    throw std::runtime_error("--svg: a plan of " + std::to_string(request.input.size()) +
                             " dimensions cannot be drawn; allowed are 1 and 2");
  }
  return Picture(request, plan, pad).draw();
}

}  // namespace BP::tool
