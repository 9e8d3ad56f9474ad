#include <memory>
#include <optional>
#include <string>

#include "orvane/filters/plan_description.h"
#include "tool/file.h"
#include "tool/operations.h"
#include "tool/options.h"
#include "tool/plan_picture.h"
#include "tool/plan_text.h"

namespace BP::tool {

namespace {

struct Arguments {
  std::string input;
  std::string window;
  std::string mode = "valid";
  std::string pad = "constant";
  std::optional<std::string> roi;
  std::optional<std::string> reach;
  std::optional<std::string> svg;
};

PlanRequest requestOf(const Arguments& arguments) {
  PlanRequest request;
  request.input = parseExtents(arguments.input, "--input");
  request.window = parseExtents(arguments.window, "--window");
  request.mode = parseMode(arguments.mode);
  request.pad = parsePad(arguments.pad).type;
  if (arguments.reach) request.reach = parseWhole(*arguments.reach, 0, 2, "--reach");
  if (arguments.roi) {
    const Rectangle region = parseRectangle(*arguments.roi, "--roi");
    request.region = PlanRegion{region.first, region.extents};
  }
  return request;
}

void run(const Arguments& arguments) {
  const PlanRequest request = requestOf(arguments);
  const PlanDescription plan = describePlan(request);
  if (arguments.svg) {
    checkFileName(*arguments.svg, ".svg");
    const std::string picture = planPicture(request, plan);
    replaceFile(*arguments.svg, {reinterpret_cast<const std::uint8_t*>(picture.data()), picture.size()});
  }
  printOut(planText(request, plan));
}

}  // namespace

void addPlan(CLI::App& command) {
  CLI::App* operation =
      command.add_subcommand("plan", "Shows how the outputs of a sliding window are cut into sectors");
  const auto arguments = std::make_shared<Arguments>();
  const auto add = [&](const char* name, auto& text, const char* meaning, const std::string& form) {
    return operation->add_option(name, text, meaning)->type_name(form);
  };
  add("--input", arguments->input, "Extents of the input", "WxH")->required();
  add("--window", arguments->window, "Extents of the window", "WxH")->required();
  add("--mode", arguments->mode, "Which positions have an output", namesOf(outputModes))->capture_default_str();
  add("--pad", arguments->pad, "What is read beyond the edge", namesOf(padTypes))->capture_default_str();
  add("--roi", arguments->roi, "Region of interest: outputs lie in it", "X,Y,WxH");
  add("--reach", arguments->reach, "0 inside, 1 boundary, 2 outside sectors too; default: that of the mode", "0..2");
  add("--svg", arguments->svg, "Picture to write; of one or two dimensions", "FILE");
  operation->footer("Positions count from the input's first element. One to " + std::to_string(highestPlanRank) +
                    " dimensions: 100, 100x80, 100x80x3.\n"
                    "With --roi and --reach 2 outputs lie anywhere in the region, whatever the mode.\n"
                    "preEdge and postEdge are the dimensions whose first and last edge a sector's windows can cross.\n"
                    "Example: orvane plan --input 10x10 --window 3x3 --mode same --svg plan.svg\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
