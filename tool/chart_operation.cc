#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/chart.h"
#include "tool/operations.h"
#include "tool/picture_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

int run(const Values& values) {
  const std::string& size = values["--size"];
  const std::string what = "--size " + inQuotes(size);
  const auto sides = split(size, 'x');
  if (sides.size() != 2) throw std::runtime_error(what + ": allowed is WIDTHxHEIGHT, such as 640x480");
  const int width = parseWhole(sides[0], minChartWidth, maxChartSide, what + ": width");
  const int height = parseWhole(sides[1], minChartHeight, maxChartSide, what + ": height");
  const WriteSettings settings = writeSettings(values);
  formatFor(values["OUT"], settings);
  writeImage(values["OUT"], {drawChart(width, height), {}, true}, settings);
  return 0;
}

std::vector<Option> options() {
  std::vector<Option> all = {
      {.name = "OUT", .meaning = "Picture to write, grey of 8 bits", .isRequired = true},
      {.name = "--size", .meaning = "Width and height in pixels", .form = "WxH", .defaultValue = "640x480"}};
  for (Option& option : writeOptions()) all.push_back(std::move(option));
  return all;
}

}  // namespace

Operation chartOperation() {
  return {.name = "chart",
          .summary = "Draws a test chart that shows what filters do",
          .options = options(),
          .details = "Width " + std::to_string(minChartWidth) + " to " + std::to_string(maxChartSide) + ", height " +
                     std::to_string(minChartHeight) + " to " + std::to_string(maxChartSide) +
                     ". The same size gives the same picture on every machine.\n",
          .example = "chart chart.png --size 800x600",
          .run = run};
}

}  // namespace BP::tool
