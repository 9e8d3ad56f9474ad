#include <optional>
#include <stdexcept>
#include <string>

#include "tool/checksum.h"
#include "tool/file.h"
#include "tool/filtered_files.h"
#include "tool/fixed_types.h"
#include "tool/match.h"
#include "tool/match_input.h"
#include "tool/match_picture.h"
#include "tool/match_text.h"
#include "tool/messages.h"
#include "tool/names.h"
#include "tool/operations.h"
#include "tool/option_values.h"
#include "tool/picture_file.h"
#include "tool/progress.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

constexpr Named<filters::Metric> metrics[] = {
    {"sad", filters::Metric::sad},       {"ssd", filters::Metric::ssd},
    {"maxad", filters::Metric::maxad},   {"product", filters::Metric::product},
    {"cosine", filters::Metric::cosine}, {"coefficient", filters::Metric::correlationCoefficient}};
constexpr Named<filters::Search> searches[] = {{"exhaustive", filters::Search::exhaustive},
                                               {"three-step", filters::Search::threeStep}};

filters::Rectangle parseRegion(const std::string& text) {
  const PositionBox rectangle = parseBox(text, "--roi");
  if (rectangle.extents.size() != 2) {
    throw std::runtime_error("--roi " + inQuotes(text) + ": allowed is X,Y,WIDTHxHEIGHT, such as 2,3,20x10");
  }
  return {rectangle.first[0], rectangle.first[1], rectangle.extents[0], rectangle.extents[1]};
}

MatchRequest requestOf(const Values& values) {
  MatchRequest request;
  filters::MatchOptions& options = request.options;
  options.metric = rowNamed(metrics, values["--metric"], "--metric").value;
  options.mode = modeOf(values).mode;
  options.search = rowNamed(searches, values["--search"], "--search").value;
  if (values.has("--roi")) options.region = parseRegion(values["--roi"]);
  if (values.has("--neighbourhood")) {
    constexpr int maxNeighbourhood = 1023;
    options.neighbourhood = parseWhole(values["--neighbourhood"], 1, maxNeighbourhood, "--neighbourhood");
  }
  options.refine = values.has("--refine");
  options.threads = threadsOf(values);
  request.keepsMap = values.has("--map") || values.has("--overlay");
  if (values.has("--top")) {
    constexpr int maxCount = 100000;
    if (numberOf(values, "--min-distance") < 0) {
      throw std::runtime_error("--min-distance " + inQuotes(values["--min-distance"]) + " must not be less than 0");
    }
    request.peaks = {.count = parseWhole(values["--top"], 1, maxCount, "--top"),
                     .distance = numberOf(values, "--min-distance"),
                     .refine = options.refine};
  }
  options.map = request.keepsMap || request.peaks;
  return request;
}

std::optional<FixedMatchSettings> fixedOf(const Values& values) {
  if (!values.has("--fixed")) return std::nullopt;
  const FixedEntries entries =
      parseFixedEntries(values["--fixed"], {{"input", "template", "accumulator", "output"}, {"product"}});
  return FixedMatchSettings{{.input = entries.at("input"),
                             .accumulator = entries.at("accumulator"),
                             .output = entries.at("output"),
                             .product = entries.find("product"),
                             .modes = entries.modes},
                            entries.at("template")};
}

void checkNames(const Values& values) {
  const std::optional<std::string> map = values.find("--map"), overlay = values.find("--overlay");
  if (values.has("--checksum") && !map) throw std::runtime_error("--checksum needs --map");
  for (const auto& name : {map, overlay}) {
    if (name) formatFor(*name, {});
  }
  if (map && overlay && isSameFile(*map, *overlay)) {
    throw std::runtime_error("--map and --overlay: both are " + inQuotes(*map) + "; they must differ");
  }
  for (const auto& name : {map, overlay}) {
    if (name) checkWritable(*name);
  }
}

void checkBitDepths(const Values& values, const MatchInput& image, const MatchInput& pattern) {
  if (image.bitDepth == 0 || pattern.bitDepth == 0 || image.bitDepth == pattern.bitDepth) return;
  throw std::runtime_error(inQuotes(values["TEMPLATE"]) + " has samples of " + std::to_string(pattern.bitDepth) +
                           " bits, " + inQuotes(values["IMAGE"]) + " of " + std::to_string(image.bitDepth) +
                           "; they must be the same");
}

/// Adds the map of scores to the files; `hash` becomes that of what is written. Returns a note on how scores became
/// grey levels; it is empty for an array.
std::string addMap(OutputFiles& files, const std::string& path, const Array& map, const WriteSettings& settings,
                   std::string& hash) {
  if (formatFor(path, {}) == FileFormat::npy) {
    hash = addArray(files, path, map, settings);
    return {};
  }
  const ScorePicture picture = scorePicture(map);
  hash = addImage(files, path, {picture.image}, settings);
  return path + ": " + picture.scale;
}

int run(const Values& values) {
  MatchRequest request = requestOf(values);
  const filters::MatchOptions& options = request.options;
  checkNames(values);
  const std::optional<FixedMatchSettings> fixed = fixedOf(values);
  const MatchInput image = readMatchInput(values["IMAGE"], fixed.has_value(), values.has("--overlay"));
  const MatchInput pattern = readMatchInput(values["TEMPLATE"], fixed.has_value(), false);
  checkBitDepths(values, image, pattern);
  constexpr std::int64_t steps = 1000;
  Progress progress(steps, static_cast<std::int64_t>(image.elements.elements()) / steps);
  request.options.progress = [&progress](double part) {
    progress.done(static_cast<std::int64_t>(part * static_cast<double>(steps)));
    return true;
  };
  const MatchResult match =
      fixed ? findFixedMatch(image.elements, pattern.elements, request, *fixed) : findMatch(image, pattern, request);
  OutputFiles files;
  std::string note, hash;
  const WriteSettings settings{.hasChecksum = values.has("--checksum")};
  if (values.has("--map")) note = addMap(files, values["--map"], match.map, settings, hash);
  if (values.has("--overlay")) {
    addImage(files, values["--overlay"], {matchOverlay(image.picture, match, options.region)}, {});
  }
  const MatchNames names{values["--metric"], values["--mode"], values["--search"]};
  printOut(values.has("--json") ? matchJson(match, names, options, hash) : matchText(match, options));
  files.commit();
  if (!hash.empty() && !values.has("--json")) printChecksum(values["--map"], hash);
  if (values.has("--quiet")) return 0;
  if (!note.empty()) tell(note);
  tellCount(values["IMAGE"], match.rounded, image.elements.elements() + pattern.elements.elements(),
            "rounded to float64 before they were matched");
  tellFixed(values["IMAGE"], match.fixedTable);
  return 0;
}

std::vector<Option> options() {
  return {
      {.name = "IMAGE", .meaning = "Picture, or array of bool, float or complex elements", .isRequired = true},
      {.name = "TEMPLATE", .meaning = "The same, smaller; elements of the same precision", .isRequired = true},
      {.name = "--metric",
       .meaning = "What makes the score of a position, see below",
       .defaultValue = "sad",
       .allowed = namesOf(metrics)},
      modeOption("Which positions there are, see below", "valid"),
      {.name = "--search",
       .meaning = "three-step looks at few positions: fast, but can miss the best",
       .defaultValue = "exhaustive",
       .allowed = namesOf(searches)},
      {.name = "--roi", .meaning = "Looks only at positions in this region", .form = "X,Y,WxH"},
      {.name = "--neighbourhood", .meaning = "Prints N by N scores around the best, 1 to 1023", .form = "N"},
      {.name = "--top", .meaning = "Prints the N best matches", .form = "N"},
      {.name = "--min-distance",
       .meaning = "Least distance of any two of them, in pixels",
       .form = "NUMBER",
       .defaultValue = "1"},
      {.name = "--refine", .meaning = "Estimates where between pixels matches lie, by parabolas"},
      {.name = "--map",
       .meaning = "Writes the scores of all positions, .npy, or as a picture with the least score black",
       .form = "OUT"},
      {.name = "--overlay", .meaning = "Draws what was found, the region and a heat map of the scores", .form = "OUT"},
      {.name = "--fixed", .meaning = "Scores are computed in fixed point, see below", .form = "TYPES"},
      threadsOption(),
      jsonOption(),
      {.name = "--checksum", .meaning = "Prints SHA-256 of the map (see `orvane help checksum`)"},
      {.name = "--quiet", .meaning = "Does not say how a map was scaled, nor of fixed point", .shortName = 'q'}};
}

std::string details() {
  return "A position is where the middle of TEMPLATE lies, of an even side the pixel further left or up of the two;\n"
         "the window is what of IMAGE lies under TEMPLATE then. The best match has the least score, or the greatest; "
         "of equal scores "
         "the\nfirst, row by row, and those at an edge last. Metrics, with a of the window and t of TEMPLATE:\n"
         "  sad          sum of |a - t|\n"
         "  ssd          sum of (a - t)^2\n"
         "  maxad        greatest |a - t|\n"
         "  product      sum of a * t, TEMPLATE turned by 180 degrees\n"
         "  cosine       sum of a * t / (root of sum of a^2 * root of sum of t^2), the greatest is best\n"
         "  coefficient  the same of a and t less their means, the greatest is best\n"
         "The least product is the best match too. Differences of complex elements stay complex, a - t or t - a, and\n"
         "scores compare by magnitude.\n"
         "Modes:\n"
         "  valid    TEMPLATE lies wholly in IMAGE, every score is real\n"
         "  same     its middle lies in IMAGE;  full  it overlaps IMAGE\n"
         "Where TEMPLATE does not fit the score is 0, which often wins. Such scores count in the map, too.\n"
         "Colours are matched by their luma, 0.2126 R + 0.7152 G + 0.0722 B; alpha is dropped.\n" +
         fixedDetails("input=u8.0,template=u8.0,accumulator=s24.0,output=u16.0,rounding=nearest,overflow=saturate",
                      "Differences and\nsums are cast into the accumulator's type, scores into the output's. "
                      "product=TYPE, for ssd and product, makes products\ninexact. The accumulator must hold elements "
                      "and the greatest score, for ssd signed: of sad, ssd and maxad it is not\ntold if it overflows") +
         "Elements of all types are cast into the types of input and template; what happened to values is told at "
         "the\nend. Scores in the map are float64 or complex128.\n";
}

}  // namespace

Operation matchOperation() {
  return {.name = "match",
          .summary = "Finds where a picture holds a smaller one",
          .options = options(),
          .details = details(),
          .example = "match photo.png patch.png --neighbourhood 3 --overlay found.png",
          .run = run};
}

}  // namespace BP::tool
