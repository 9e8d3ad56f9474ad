#include <memory>
#include <stdexcept>
#include <string>

#include "tool/chart.h"
#include "tool/operations.h"
#include "tool/png_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

struct Arguments {
  std::string out;
  std::string size = "640x480";
};

void run(const Arguments& arguments) {
  const std::string what = "--size " + inQuotes(arguments.size);
  const auto sides = split(arguments.size, 'x');
  if (sides.size() != 2) throw std::runtime_error(what + ": allowed is WIDTHxHEIGHT, such as 640x480");
  const int width = parseWhole(sides[0], leastChartWidth, longestChartSide, what + ": width");
  const int height = parseWhole(sides[1], leastChartHeight, longestChartSide, what + ": height");
  checkPngName(arguments.out);
  writePng(arguments.out, drawChart(width, height));
}

}  // namespace

void addChart(CLI::App& command) {
  CLI::App* operation = command.add_subcommand("chart", "Draws a test chart that shows what filters do");
  const auto arguments = std::make_shared<Arguments>();
  operation->add_option("OUT", arguments->out, "PNG picture to write, grey of 8 bits")->required()->type_name("");
  operation->add_option("--size", arguments->size, "Width and height in pixels")
      ->type_name("WxH")
      ->capture_default_str();
  operation->footer("Width " + std::to_string(leastChartWidth) + " to " + std::to_string(longestChartSide) +
                    ", height " + std::to_string(leastChartHeight) + " to " + std::to_string(longestChartSide) +
                    ". The same size gives the same picture on every machine.\n"
                    "Example: orvane chart chart.png --size 800x600\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
