#include "tool/filter_settings.h"

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "tool/options.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

constexpr Choice<filters::Rounding> roundings[] = {
    {"ceiling", filters::Rounding::ceiling}, {"convergent", filters::Rounding::convergent},
    {"floor", filters::Rounding::floor},     {"nearest", filters::Rounding::nearest},
    {"round", filters::Rounding::round},     {"zero", filters::Rounding::zero}};
constexpr Choice<filters::Overflow> overflows[] = {{"wrap", filters::Overflow::wrap},
                                                   {"saturate", filters::Overflow::saturate},
                                                   {"symmetric", filters::Overflow::symmetric},
                                                   {"zero", filters::Overflow::zero}};

/// The entries that a text of types may have, and how errors tell them.
struct FixedForm {
  std::vector<std::string_view> keys;
  std::string_view text;
};

const FixedForm filterForm{
    {"input", "filter", "accumulator", "output", "product", "sqrt", "rounding", "overflow"},
    "input=TYPE,filter=TYPE,accumulator=TYPE,output=TYPE and if wanted product=TYPE, sqrt=TYPE, rounding=MODE, "
    "overflow=MODE"};
const FixedForm kernelForm{{"input", "filter", "rounding", "overflow"},
                           "input=TYPE,filter=TYPE and if wanted rounding=MODE, overflow=MODE"};

/// What a text of types says, entry by entry.
class FixedEntries {
 public:
  FixedEntries(const std::string& text, const FixedForm& chosen) : form(chosen) {
    for (const std::string_view part : split(text, ',')) {
      const std::size_t equals = part.find('=');
      const std::string key(trimmed(part.substr(0, equals)));
      if (equals == std::string_view::npos || std::ranges::find(form.keys, key) == form.keys.end()) {
        refuse("unknown entry " + inQuotes(part));
      }
      if (!entries.emplace(key, trimmed(part.substr(equals + 1))).second) refuse(key + " is given twice");
    }
  }

  filters::FixedType type(const std::string& key) const {
    const auto found = optionalType(key);
    if (!found) refuse(key + " is missing");
    return *found;
  }

  std::optional<filters::FixedType> optionalType(const std::string& key) const {
    const auto entry = entries.find(key);
    if (entry == entries.end()) return std::nullopt;
    try {
      return filters::fixedType(entry->second);
    } catch (const std::invalid_argument& error) {
      throw std::runtime_error("--fixed: " + key + ": " + error.what());
    }
  }

  filters::FixedModes modes() const {
    filters::FixedModes modes;
    if (const auto entry = entries.find("rounding"); entry != entries.end()) {
      modes.rounding = choose(roundings, entry->second, "--fixed: rounding");
    }
    if (const auto entry = entries.find("overflow"); entry != entries.end()) {
      modes.overflow = choose(overflows, entry->second, "--fixed: overflow");
    }
    return modes;
  }

 private:
  [[noreturn]] void refuse(const std::string& problem) const {
    throw std::runtime_error("--fixed: " + problem + "; allowed are " + std::string(form.text));
  }

  const FixedForm& form;
  std::map<std::string, std::string, std::less<>> entries;
};

filters::Pad padOf(PadTypeEnum pad) {
  switch (pad) {
    case PadTypeConstant: return filters::Pad::constant;
    case PadTypeReplicate: return filters::Pad::replicate;
    case PadTypeSymmetric: return filters::Pad::symmetric;
    case PadTypeCircular: return filters::Pad::circular;
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
  const FixedEntries entries(text, filterForm);
  FixedSettings settings;
  settings.types.input = entries.type("input");
  settings.filter = entries.type("filter");
  settings.types.accumulator = entries.type("accumulator");
  settings.types.output = entries.type("output");
  settings.types.product = entries.optionalType("product");
  settings.types.sqrt = entries.optionalType("sqrt");
  settings.types.modes = entries.modes();
  return settings;
}

KernelTypes parseKernelTypes(const std::string& text) {
  const FixedEntries entries(text, kernelForm);
  return {entries.type("input"), entries.type("filter"), entries.modes()};
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

std::string modeNames() {
  return "Rounding: " + namesOf(roundings, ", ") + ". Overflow: " + namesOf(overflows, ", ") + ".\n";
}

std::string filterFooter(bool canNormalise) {
  return edgeFooter("kernel") +
         std::string(
             "Fixed point: TYPES are such as\n"
             "  input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0,rounding=nearest,overflow=saturate\n"
             "where s16.14 is a signed type of 16 bits, 14 of them fraction. product=TYPE makes products inexact") +
         (canNormalise ? ",\n--normalise energy needs sqrt=TYPE" : "") + ".\n" + modeNames() +
         "Values are cast into the types of input and filter; what happened to values of each label is told at the "
         "end.\n";
}

}  // namespace BP::tool
