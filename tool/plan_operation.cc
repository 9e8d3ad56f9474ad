#include <span>
#include <stdexcept>
#include <string>

#include "orvane/filters/plan_description.h"
#include "tool/file.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/output_files.h"
#include "tool/plan_picture.h"
#include "tool/plan_text.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

PlanRequest requestOf(const Values& values) {
  PlanRequest request;
  request.input = parseExtents(values["--input"], "--input");
  request.window = parseExtents(values["--window"], "--window");
  request.mode = modeOf(values).number;
  request.pad = padOf(values).row->number;
  if (values.has("--reach")) request.reach = parseWhole(values["--reach"], 0, 2, "--reach");
  if (values.has("--roi")) {
    const PositionBox region = parseBox(values["--roi"], "--roi");
    request.region = PlanRegion{region.first, region.extents};
  }
  return request;
}

/// Refuses a window that the filters refuse: one that fits nowhere in the input. With a region of interest and reach 2
/// the mode does not restrict the outputs, so any window is possible.
void checkFits(const PlanRequest& request) {
  const bool isAnywhere = request.region && request.reach == 2;
  if (request.mode != OutputModeValid || isAnywhere) return;
  for (std::size_t d = 0; d < request.input.size(); ++d) {
    if (request.window[d] <= request.input[d]) continue;
    throw std::runtime_error("window: extent " + std::to_string(request.window[d]) + " in dimension " +
                             std::to_string(d) + "; with mode valid and an input of " + extentsText(request.input) +
                             ", allowed are 1 to " + std::to_string(request.input[d]));
  }
}

int run(const Values& values) {
  const PlanRequest request = requestOf(values);
  const PlanDescription plan = describePlan(request);
  checkFits(request);
  OutputFiles files;
  if (values.has("--svg")) {
    checkFileName(values["--svg"], ".svg");
    const std::string picture = planPicture(request, plan, values["--pad"]);
    files.add(values["--svg"], {reinterpret_cast<const std::uint8_t*>(picture.data()), picture.size()});
  }
  printOut((values.has("--json") ? planJson : planText)(request, plan, values["--pad"]));
  files.commit();
  return 0;
}

}  // namespace

Operation planOperation() {
  return {
      .name = "plan",
      .summary = "Shows how the outputs of a sliding window are cut into sectors",
      .options = {{.name = "--input", .meaning = "Extents of the input", .form = "WxH", .isRequired = true},
                  {.name = "--window", .meaning = "Extents of the window", .form = "WxH", .isRequired = true},
                  modeOption("Which positions have an output", "same"),
                  padOption("What is read beyond the edge; sectors do not depend on the value V", "replicate"),
                  {.name = "--roi", .meaning = "Region of interest: outputs lie in it", .form = "X,Y,WxH"},
                  {.name = "--reach",
                   .meaning = "0 inside, 1 boundary, 2 outside sectors too; default: that of the mode",
                   .form = "0..2"},
                  jsonOption(),
                  {.name = "--svg", .meaning = "Picture to write; of one or two dimensions", .form = "FILE"}},
      .details = "Positions count from the input's first element. One to " + std::to_string(highestPlanRank) +
                 " dimensions: 100, 100x80, 100x80x3.\n"
                 "With --roi and --reach 2 outputs lie anywhere in the region, whatever the mode.\n"
                 "preEdge and postEdge are the dimensions whose first and last edge a sector's windows can cross.\n",
      .example = "plan --input 10x10 --window 3x3 --svg plan.svg",
      .run = run};
}

}  // namespace BP::tool
