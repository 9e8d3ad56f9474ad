#include "tool/fixed_types.h"

#include <algorithm>
#include <stdexcept>

#include "tool/names.h"
#include "tool/text.h"

namespace BP::tool {

namespace {

constexpr Named<filters::Rounding> roundings[] = {
    {"ceiling", filters::Rounding::ceiling}, {"convergent", filters::Rounding::convergent},
    {"floor", filters::Rounding::floor},     {"nearest", filters::Rounding::nearest},
    {"round", filters::Rounding::round},     {"zero", filters::Rounding::zero}};
constexpr Named<filters::Gathering> gatherings[] = {{"nothing", filters::Gathering::nothing},
                                                    {"counts", filters::Gathering::counts},
                                                    {"ranges", filters::Gathering::ranges}};
constexpr Named<filters::Overflow> overflows[] = {{"wrap", filters::Overflow::wrap},
                                                  {"saturate", filters::Overflow::saturate},
                                                  {"symmetric", filters::Overflow::symmetric},
                                                  {"zero", filters::Overflow::zero}};

[[noreturn]] void refuse(const std::string& problem, const FixedRoleNames& roles) {
  std::string form;
  for (const std::string_view role : roles.required) form.append(form.empty() ? "" : ",").append(role).append("=TYPE");
  form += " and if wanted ";
  for (const std::string_view role : roles.optional) form.append(role).append("=TYPE, ");
  throw std::runtime_error("--fixed: " + problem + "; allowed are " + form +
                           "rounding=MODE, overflow=MODE, gather=WHAT");
}

using Texts = std::map<std::string, std::string, std::less<>>;

bool holds(const std::vector<std::string_view>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

Texts textsOf(const std::string& text, const FixedRoleNames& roles) {
  Texts texts;
  for (const std::string_view part : split(text, ',')) {
    const std::size_t equals = part.find('=');
    const std::string key(trimmed(part.substr(0, equals)));
    const bool isKnown = holds(roles.required, key) || holds(roles.optional, key) || key == "rounding" ||
                         key == "overflow" || key == "gather";
    if (equals == std::string_view::npos || !isKnown) refuse("unknown entry " + inQuotes(part), roles);
    if (!texts.emplace(key, trimmed(part.substr(equals + 1))).second) refuse(key + " is given twice", roles);
  }
  for (const std::string_view role : roles.required) {
    if (!texts.contains(role)) refuse(std::string(role) + " is missing", roles);
  }
  return texts;
}

filters::FixedType typeOf(const std::string& role, const std::string& text) {
  try {
    return filters::fixedType(text);
  } catch (const std::invalid_argument& error) {
    throw std::runtime_error("--fixed: " + role + ": " + error.what());
  }
}

}  // namespace

std::optional<filters::FixedType> FixedEntries::find(std::string_view role) const {
  const auto entry = types.find(role);
  if (entry == types.end()) return std::nullopt;
  return entry->second;
}

FixedEntries parseFixedEntries(const std::string& text, const FixedRoleNames& roles) {
  FixedEntries entries;
  for (const auto& [key, value] : textsOf(text, roles)) {
    if (key == "rounding") {
      entries.modes.rounding = rowNamed(roundings, value, "--fixed: rounding").value;
    } else if (key == "overflow") {
      entries.modes.overflow = rowNamed(overflows, value, "--fixed: overflow").value;
    } else if (key == "gather") {
      entries.modes.gathering = rowNamed(gatherings, value, "--fixed: gather").value;
    } else {
      entries.types.emplace(key, typeOf(key, value));
    }
  }
  return entries;
}

void checkFixedPad(filters::OutputMode mode, const filters::PadOption& pad, const filters::FixedType& input) {
  if (pad.rule != filters::PadRule::constant || mode == filters::OutputMode::valid) return;
  filters::Array<std::complex<double>> one({1});
  const std::complex<double> value = one[0] = pad.value;
  if (filters::toComplex(filters::quantise(one, input))[0] == value) return;
  throw std::runtime_error("--pad 'constant:" + numberText(value.real()) +
                           (value.imag() == 0 ? "" : "," + numberText(value.imag())) + "': " + filters::toText(input) +
                           ", the input's type, does not have this value");
}

std::string fixedModeNames() {
  return "Rounding: " + nameList(roundings) + ". Overflow: " + nameList(overflows) +
         ". What is counted (gather): " + nameList(gatherings) + ".\n";
}

std::string fixedDetails(const std::string& example, const std::string& remarks) {
  return "Fixed point: TYPES are such as\n  " + example +
         "\nA type such as s16.14 is signed and has 16 bits, 14 of them fraction. " + remarks + ".\n" +
         fixedModeNames();
}

}  // namespace BP::tool
