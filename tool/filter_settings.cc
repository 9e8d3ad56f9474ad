#include "tool/filter_settings.h"

#include <cstddef>
#include <iterator>
#include <stdexcept>

#include "orvane/core/enums.h"
#include "tool/edge_names.h"
#include "tool/fixed_types.h"
#include "tool/names.h"
#include "tool/option_values.h"

namespace BP::tool {

namespace {

constexpr Named<ElementType> sumTypes[] = {{"float", ElementType::float32}, {"double", ElementType::float64}};

/// The types in a text such as "input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0,rounding=nearest".
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

/// The diagrams of the pads, two a line.
std::string padDiagrams() {
  std::string text;
  for (std::size_t i = 0; i < std::size(padTable); ++i) {
    const PadRow& row = padTable[i];
    const std::string name = std::string(row.name) + (row.pad == filters::PadRule::constant ? ":V" : "");
    const bool endsLine = i % 2 == 1 || i + 1 == std::size(padTable);
    text += "  " + name + std::string(11 - name.size(), ' ') + std::string(row.diagram) + (endsLine ? "\n" : "   ");
  }
  return text;
}

}  // namespace

std::vector<Option> edgeOptions() {
  return {modeOption("Which positions have an output, see below", "same"),
          padOption("What is read beyond the edge, see below", "replicate")};
}

std::string edgeDetails(const std::string& window) {
  return "Modes, by extent of the output in a dimension with an input of u and a " + window +
         " of h:\n  valid  u - h + 1   only where the " + window +
         " lies wholly in the input\n  same   u           the " + window +
         "'s middle lies on each element of the input in turn\n  full   u + h - 1   wherever " + window +
         " and input overlap\nPads, for an input of a b c:\n" + padDiagrams();
}

EdgeSettings edgeSettings(const Values& values) {
  const PadValue pad = padOf(values);
  return {modeOf(values).mode, {pad.row->pad, pad.value}};
}

std::vector<Option> filterOptions(bool canNormalise) {
  std::vector<Option> options = edgeOptions();
  if (canNormalise) {
    options.push_back({.name = "--normalise",
                       .meaning = "energy: divides each sum by the norms of kernel and window",
                       .defaultValue = "none",
                       .allowed = namesOf(normalisations)});
  }
  options.push_back(
      {.name = "--type",
       .meaning = "Type in which sums run; default: the elements' own type if it is float or complex, else double",
       .allowed = namesOf(sumTypes)});
  options.push_back({.name = "--fixed", .meaning = "Sums run in fixed point, see below", .form = "TYPES"});
  options.push_back(
      {.name = "--explain", .meaning = "With --fixed: says in a sentence how sums run; results do not depend on it"});
  return options;
}

std::string filterDetails(bool canNormalise) {
  return edgeDetails("kernel") +
         fixedDetails("input=u8.0,filter=s16.14,accumulator=s40.14,output=u8.0,rounding=nearest,overflow=saturate",
                      std::string("product=TYPE makes products inexact") +
                          (canNormalise ? ",\n--normalise energy needs sqrt=TYPE" : "")) +
         "Values are cast into the types of input and filter; what happened to values of each label is told at the "
         "end.\n";
}

FilterSettings filterSettings(const Values& values, filters::FilterDirection direction) {
  const EdgeSettings edges = edgeSettings(values);
  FilterSettings settings;
  settings.options = {.direction = direction, .mode = edges.mode, .pad = edges.pad};
  if (values.has("--normalise")) {
    const NormEnum norm = rowNamed(normalisations, values["--normalise"], "--normalise").value;
    settings.options.normalise = norm == NormNone ? filters::Normalisation::none : filters::Normalisation::energy;
  }
  if (values.has("--type")) settings.sumType = rowNamed(sumTypes, values["--type"], "--type").value;
  if (values.has("--fixed")) settings.fixed = parseFixed(values["--fixed"]);
  settings.explains = values.has("--explain");
  if (settings.explains && !settings.fixed) throw std::runtime_error("--explain needs --fixed");
  if (settings.sumType && settings.fixed) {
    throw std::runtime_error("--type and --fixed exclude each other; allowed is one");
  }
  return settings;
}

KernelTypes parseKernelTypes(const std::string& text) {
  const FixedEntries entries = parseFixedEntries(text, {{"input", "filter"}, {}});
  return {entries.at("input"), entries.at("filter"), entries.modes};
}

}  // namespace BP::tool
