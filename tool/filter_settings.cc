#include "tool/filter_settings.h"

#include <stdexcept>

#include "tool/fixed_types.h"
#include "tool/options.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

filters::Pad padOf(PadTypeEnum pad) {
  switch (pad) {
    case PadTypeConstant: return filters::Pad::constant;
    case PadTypeReplicate: return filters::Pad::replicate;
    case PadTypeSymmetric: return filters::Pad::symmetric;
    case PadTypeCircular: return filters::Pad::circular;
    case PadTypeMirror: return filters::Pad::mirror;
  }
  throw std::logic_error("unknown pad type");
}

}  // namespace

filters::OutputMode filterModeOf(OutputModeEnum mode) {
  switch (mode) {
    case OutputModeValid: return filters::OutputMode::valid;
    case OutputModeSame: return filters::OutputMode::same;
    case OutputModeFull: return filters::OutputMode::full;
  }
  throw std::logic_error("unknown output mode");
}

FixedSettings parseFixed(const std::string& text) {
  const FixedEntries entries =
      parseFixedEntries(text, {{"input", "filter", "accumulator", "output"}, {"product", "sqrt"}});
  return {{.input = entries.at("input"),
           .accumulator = entries.at("accumulator"),
           .output = entries.at("output"),
           .product = entries.find("product"),
           .sqrt = entries.find("sqrt"),
           .modes = entries.modes},
          entries.at("filter")};
}

KernelTypes parseKernelTypes(const std::string& text) {
  const FixedEntries entries = parseFixedEntries(text, {{"input", "filter"}, {}});
  return {entries.at("input"), entries.at("filter"), entries.modes};
}

EdgeSettings parseEdges(const EdgeTexts& texts) {
  const Pad pad = parsePad(texts.pad);
  return {filterModeOf(parseMode(texts.mode)), padOf(pad.type), pad.value};
}

FilterSettings parseFilterTexts(const FilterTexts& texts, filters::Direction direction) {
  FilterSettings settings;
  const EdgeSettings edges = parseEdges(texts);
  settings.options = {.direction = direction,
                      .mode = edges.mode,
                      .pad = edges.pad,
                      .padValue = edges.padValue,
                      .normalise = parseNormalise(texts.normalise) == NormNone ? filters::Normalisation::none
                                                                               : filters::Normalisation::energy};
  if (texts.type) settings.sumType = parseSumType(*texts.type);
  if (texts.fixed) settings.fixed = parseFixed(*texts.fixed);
  if (texts.type && texts.fixed) throw std::runtime_error("--type and --fixed exclude each other; allowed is one");
  return settings;
}

void addEdgeOptions(CLI::App& operation, EdgeTexts& texts) {
  operation.add_option("--mode", texts.mode, "Which positions have an output, see below")
      ->type_name(namesOf(outputModes))
      ->capture_default_str();
  operation.add_option("--pad", texts.pad, "What is read beyond the edge, see below")
      ->type_name(std::string(padForms))
      ->capture_default_str();
}

void addFilterOptions(CLI::App& operation, FilterTexts& texts, bool canNormalise) {
  const auto add = [&](const char* name, auto& text, const char* meaning, const std::string& form) {
    return operation.add_option(name, text, meaning)->type_name(form);
  };
  addEdgeOptions(operation, texts);
  if (canNormalise) {
    add("--normalise", texts.normalise, "energy: divides each sum by the norms of kernel and window",
        namesOf(normalisations))
        ->capture_default_str();
  }
  add("--type", texts.type, "Type in which sums run; default: double; of arrays that have such elements their own",
      namesOf(sumTypes));
  add("--fixed", texts.fixed, "Sums run in fixed point, see below", "TYPES");
}

std::string edgeFooter(const std::string& window) {
  return "Modes, by extent of the output in a dimension with an input of u and a " + window +
         " of h:\n  valid  u - h + 1   only where the " + window +
         " lies wholly in the input\n  same   u           the " + window +
         "'s middle lies on each element of the input in turn\n  full   u + h - 1   wherever " + window +
         " and input overlap\n"
         "Pads, for an input of a b c:\n"
         "  constant:V v v v | a b c | v v v     replicate  a a a | a b c | c c c\n"
         "  symmetric  c b a | a b c | c b a     circular   a b c | a b c | a b c\n";
}

std::string filterFooter(bool canNormalise) {
  return edgeFooter("kernel") +
         fixedFooter("input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0,rounding=nearest,overflow=saturate",
                     std::string("product=TYPE makes products inexact") +
                         (canNormalise ? ",\n--normalise energy needs sqrt=TYPE" : "")) +
         "Values are cast into the types of input and filter; what happened to values of each label is told at the "
         "end.\n";
}

}  // namespace BP::tool
