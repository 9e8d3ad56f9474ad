#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "tool/file.h"
#include "tool/file_arguments.h"
#include "tool/filter_settings.h"
#include "tool/fixed_types.h"
#include "tool/match.h"
#include "tool/match_input.h"
#include "tool/match_picture.h"
#include "tool/match_text.h"
#include "tool/npy_file.h"
#include "tool/operations.h"
#include "tool/options.h"
#include "tool/png_file.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

constexpr Choice<filters::Metric> metrics[] = {{"sad", filters::Metric::sad},
                                               {"ssd", filters::Metric::ssd},
                                               {"maxad", filters::Metric::maxad},
                                               {"product", filters::Metric::product}};
constexpr Choice<filters::Search> searches[] = {{"exhaustive", filters::Search::exhaustive},
                                                {"three-step", filters::Search::threeStep}};

struct Arguments {
  std::string image;
  std::string pattern;
  MatchTexts texts;
  std::optional<std::string> roi;
  std::optional<std::string> neighbourhood;
  std::optional<std::string> map;
  std::optional<std::string> overlay;
  std::optional<std::string> fixed;
  bool json = false;
  bool quiet = false;
};

bool isNpyName(const std::string& path) { return lowered(path).ends_with(".npy"); }

filters::Region parseRegion(const std::string& text) {
  const Rectangle rectangle = parseRectangle(text, "--roi");
  if (rectangle.extents.size() != 2) {
    throw std::runtime_error("--roi " + inQuotes(text) + ": allowed is X,Y,WIDTHxHEIGHT, such as 2,3,20x10");
  }
  return {{rectangle.first[0], rectangle.first[1]}, {rectangle.extents[0], rectangle.extents[1]}};
}

filters::MatchOptions optionsOf(const Arguments& arguments) {
  filters::MatchOptions options;
  options.metric = choose(metrics, arguments.texts.metric, "--metric");
  options.mode = filterModeOf(parseMode(arguments.texts.mode));
  options.search = choose(searches, arguments.texts.search, "--search");
  if (arguments.roi) options.region = parseRegion(*arguments.roi);
  if (arguments.neighbourhood) {
    constexpr int most = 1023;
    options.neighbourhood = parseWhole(*arguments.neighbourhood, 1, most, "--neighbourhood");
  }
  options.map = arguments.map || arguments.overlay;
  return options;
}

FixedMatchSettings parseFixedMatch(const std::string& text) {
  const FixedEntries entries = parseFixedEntries(text, {{"input", "template", "accumulator", "output"}, {"product"}});
  return {{.input = entries.at("input"),
           .accumulator = entries.at("accumulator"),
           .output = entries.at("output"),
           .product = entries.find("product"),
           .modes = entries.modes},
          entries.at("template")};
}

void checkNames(const Arguments& arguments) {
  if (arguments.map && !isNpyName(*arguments.map)) {
    if (!isStream(*arguments.map) && !lowered(*arguments.map).ends_with(".png")) {
      throw std::runtime_error("--map " + inQuotes(*arguments.map) + ": allowed are names that end in .npy or .png");
    }
  }
  if (arguments.overlay) checkPngName(*arguments.overlay);
  if (arguments.map && arguments.map == arguments.overlay && !isStream(*arguments.map)) {
    throw std::runtime_error("--map and --overlay: both are " + inQuotes(*arguments.map) + "; they must differ");
  }
  for (const auto& name : {arguments.map, arguments.overlay}) {
    if (name) checkWritable(*name);
  }
}

void writeMap(const Arguments& arguments, const Array& map) {
  if (isNpyName(*arguments.map)) return writeNpy(*arguments.map, map);
  const ScorePicture picture = scorePicture(map);
  writePng(*arguments.map, picture.image);
  if (!arguments.quiet) std::fprintf(stderr, "orvane: %s: %s\n", arguments.map->c_str(), picture.scale.c_str());
}

void run(const Arguments& arguments) {
  const filters::MatchOptions options = optionsOf(arguments);
  checkNames(arguments);
  std::optional<FixedMatchSettings> fixed;
  if (arguments.fixed) fixed = parseFixedMatch(*arguments.fixed);
  const MatchInput image = readMatchInput(arguments.image, fixed.has_value());
  const MatchInput pattern = readMatchInput(arguments.pattern, fixed.has_value());
  if (image.bitDepth > 0 && pattern.bitDepth > 0 && image.bitDepth != pattern.bitDepth) {
    throw std::runtime_error(inQuotes(arguments.pattern) + " has samples of " + std::to_string(pattern.bitDepth) +
                             " bits, " + inQuotes(arguments.image) + " of " + std::to_string(image.bitDepth) +
                             "; they must be the same");
  }
  const MatchResult match = fixed ? findFixedMatch(image.elements, pattern.elements, options, *fixed)
                                  : findMatch(image.elements, pattern.elements, options);
  if (arguments.map) writeMap(arguments, match.map);
  if (arguments.overlay) writePng(*arguments.overlay, matchOverlay(image.picture, match, options.region));
  printOut(arguments.json ? matchJson(match, arguments.texts, options) : matchText(match, options));
  if (arguments.quiet) return;
  tellCount(arguments.image, match.rounded, image.elements.elements() + pattern.elements.elements(),
            "rounded to float64 before they were matched");
  tellFixed(arguments.image, match.fixedTable);
}

void addOptions(CLI::App& operation, Arguments& arguments) {
  const auto add = [&](const char* name, auto& text, const char* meaning, const std::string& form) {
    return operation.add_option(name, text, meaning)->type_name(form);
  };
  add("IMAGE", arguments.image, "PNG picture, or NPY array of bool, float or complex elements", "")->required();
  add("TEMPLATE", arguments.pattern, "The same, smaller; elements of the same precision", "")->required();
  add("--metric", arguments.texts.metric, "What makes the score of a position, see below", namesOf(metrics))
      ->capture_default_str();
  add("--mode", arguments.texts.mode, "Which positions there are, see below", namesOf(outputModes))
      ->capture_default_str();
  add("--search", arguments.texts.search, "three-step looks at few positions: fast, but can miss the best",
      namesOf(searches))
      ->capture_default_str();
  add("--roi", arguments.roi, "Looks only at positions in this region", "X,Y,WxH");
  add("--neighbourhood", arguments.neighbourhood, "Prints N by N scores around the best, 1 to 1023", "N");
  add("--map", arguments.map, "Writes the scores of all positions, .npy, or .png with the least score black", "OUT");
  add("--overlay", arguments.overlay, "Draws what was found, the region and a heat map of the scores", "OUT.png");
  add("--fixed", arguments.fixed, "Scores are computed in fixed point, see below", "TYPES");
  operation.add_flag("--json", arguments.json, "Prints all results as JSON");
  operation.add_flag("--quiet", arguments.quiet, "Does not say how a map was scaled, nor of fixed point");
}

}  // namespace

void addMatch(CLI::App& command) {
  CLI::App* operation = command.add_subcommand("match", "Finds where a picture holds a smaller one");
  const auto arguments = std::make_shared<Arguments>();
  addOptions(*operation, *arguments);
  operation->footer(
      "A position is where the middle of TEMPLATE lies, of an even side the pixel further left or up of the two;\n"
      "the window is what of IMAGE lies under TEMPLATE then. The best match has the least score; of equal scores the\n"
      "first, row by row. Metrics, with a of the window and t of TEMPLATE:\n"
      "  sad      sum of |a - t|          ssd      sum of (a - t)^2\n"
      "  maxad    greatest |a - t|        product  sum of a * t, TEMPLATE turned by 180 degrees\n"
      "The least product is the best match too. Differences of complex elements stay complex, a - t or t - a, and\n"
      "scores compare by magnitude.\n"
      "Modes:\n"
      "  valid    TEMPLATE lies wholly in IMAGE, every score is real\n"
      "  same     its middle lies in IMAGE;  full  it overlaps IMAGE\n"
      "Where TEMPLATE does not fit the score is 0, which often wins. Such scores count in the map, too.\n"
      "Colours are matched by their luma, 0.2126 R + 0.7152 G + 0.0722 B; alpha is dropped.\n" +
      fixedFooter("input=u8.0,template=u8.0,accumulator=s24.0,output=u16.0,rounding=nearest,overflow=saturate",
                  "Differences and\nsums are cast into the accumulator's type, scores into the output's. product=TYPE, "
                  "for ssd and product, makes products\ninexact. The accumulator must hold elements and the greatest "
                  "score, for ssd signed: of sad, ssd and maxad it is not\ntold if it overflows") +
      "Elements of all types are cast into the types of input and template; what happened to values is told "
      "at the\nend. Scores in the map are float64 or complex128.\n"
      "Example: orvane match photo.png patch.png --neighbourhood 3 --overlay found.png\n");
  operation->callback([arguments] { run(*arguments); });
}

}  // namespace BP::tool
