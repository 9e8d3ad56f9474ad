// Draws what each rounding and overflow mode does, as docs/fixed-point.md shows it: on the upper number line values
// before a cast, on the lower one what the library makes of them.
//
//   draw_fixpt_modes DIRECTORY           writes the pictures
//   draw_fixpt_modes --check DIRECTORY   fails if a picture there is not what would be written

#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/karn_fixpt_3_make.h"

namespace {

using namespace KarnDSPFixpt;

constexpr double width = 560;
constexpr double margin = 24;
constexpr double upper = 30;  // heights of the two lines
constexpr double lower = 84;

/// One picture: the values from `least` to `greatest`, which `source` holds exactly, cast into `target`.
struct Picture {
  std::string name;
  FixptType source;
  FixptType target;
  fxpModeOverflow_tag overflow;
  fxpModeRounding_tag rounding;
  double least;
  double greatest;
};

class Drawing {
 public:
  explicit Drawing(const Picture& picture) : picture_(picture) {
    svg_ << "<svg xmlns='http://www.w3.org/2000/svg' width='" << width << "' height='112' viewBox='0 0 " << width
         << " 112' font-family='sans-serif' font-size='12' text-anchor='middle'>\n"
         << "<rect width='100%' height='100%' fill='white'/>\n";
  }

  double x(double value) const {
    return margin + (value - picture_.least) / (picture_.greatest - picture_.least) * (width - 2 * margin);
  }

  void line(double x1, double y1, double x2, double y2, std::string_view colour) {
    svg_ << "<line x1='" << x1 << "' y1='" << y1 << "' x2='" << x2 << "' y2='" << y2 << "' stroke='" << colour
         << "' stroke-width='1.5'/>\n";
  }
  void dot(double value, double y, double radius, std::string_view colour) {
    svg_ << "<circle cx='" << x(value) << "' cy='" << y << "' r='" << radius << "' fill='" << colour << "'/>\n";
  }
  void label(double value, double y) {
    svg_ << "<text x='" << x(value) << "' y='" << y << "'>" << (value < 0 ? "\u2212" : "") << std::abs(value)
         << "</text>\n";
  }

  std::string finish() { return svg_.str() + "</svg>\n"; }

 private:
  const Picture& picture_;
  std::ostringstream svg_;
};

FixptDescription describe(const Picture& picture, const FixptType& type) {
  return {.value = type, .overflow = picture.overflow, .rounding = picture.rounding};
}

std::string draw(const Picture& picture) {
  Drawing drawing(picture);
  drawing.line(margin / 2, upper, width - margin / 2, upper, "#999999");
  drawing.line(margin / 2, lower, width - margin / 2, lower, "#999999");
  const auto source = makeFixpt(makeAttributes(describe(picture, picture.source)));
  const auto target = makeFixpt(makeAttributes(describe(picture, picture.target)));
  const double step = std::ldexp(1, -picture.source.fraction);
  for (double value = picture.least; value <= picture.greatest; value += step) {
    *source = value;
    *target = *source;
    const fxpLogStruct_tag& log = *target->takeProperties()->getLogStruct();
    const double result = target->toDouble();
    const bool isTie = std::abs(value - std::floor(value)) == 0.5;
    const char* colour = log.overflows != 0 || isTie ? "#c2410c" : log.lossyRoundings != 0 ? "#60789a" : "#b8b8b8";
    drawing.line(drawing.x(value), upper, drawing.x(result), lower, colour);
    drawing.dot(value, upper, 3.5, colour);
    drawing.dot(result, lower, 5, "#1e3a5f");
    if (value == std::floor(value)) {
      drawing.label(value, upper - 12);
      drawing.label(value, lower + 20);
    }
  }
  return drawing.finish();
}

std::vector<Picture> pictures() {
  std::vector<Picture> all;
  for (int i = 0; i < 6; ++i) {
    const auto mode = static_cast<fxpModeRounding_tag>(i);
    all.push_back({"rounding-" + std::string(modeName(mode)), {8, 2}, {8, 0}, fxpOverflowSaturate, mode, -3, 3});
  }
  for (int i = 0; i < 4; ++i) {
    const auto mode = static_cast<fxpModeOverflow_tag>(i);
    all.push_back({"overflow-" + std::string(modeName(mode)), {8, 0}, {3, 0}, mode, fxpRoundFloor, -10, 10});
  }
  return all;
}

}  // namespace

int main(int argc, char* argv[]) {
  const bool checks = argc == 3 && std::string_view(argv[1]) == "--check";
  if (argc != 2 && !checks) {
    std::cerr << "usage: draw_fixpt_modes [--check] DIRECTORY\n";
    return 2;
  }
  int status = 0;
  for (const Picture& picture : pictures()) {
    const std::string path = std::string(argv[argc - 1]) + "/" + picture.name + ".svg";
    const std::string drawn = draw(picture);
    if (!checks) {
      std::ofstream out(path, std::ios::binary);
      if (!(out << drawn << std::flush)) {
        std::cerr << "draw_fixpt_modes: could not write " << path << "\n";
        return 2;
      }
      continue;
    }
    std::ifstream in(path, std::ios::binary);
    const std::string there(std::istreambuf_iterator<char>(in), {});
    if (there != drawn) {
      std::cerr << "draw_fixpt_modes: " << path << " is not what the library does; draw it anew\n";
      status = 1;
    }
  }
  return status;
}
