#include "orvane/platform/karn_fixpt_3_type.h"

#include <array>
#include <charconv>
#include <stdexcept>

namespace KarnDSPFixpt {

namespace {

// The place of a name is the number of its mode.
constexpr std::array<std::string_view, 4> overflowNames = {"wrap", "saturate", "symmetric", "zero"};
constexpr std::array<std::string_view, 6> roundingNames = {"ceiling", "convergent", "floor",
                                                           "nearest", "round",      "zero"};
constexpr std::array<std::string_view, 3> overrideNames = {"double", "single", "none"};

template <class Mode, std::size_t n>
Mode parseMode(const std::array<std::string_view, n>& names, const char* what, std::string_view name) {
  std::string allowed;
  for (std::size_t i = 0; i < n; ++i) {
    if (names[i] == name) return static_cast<Mode>(i);
    allowed += (i == 0 ? "" : i + 1 < n ? ", " : " or ") + std::string(names[i]);
  }
  throw std::invalid_argument(std::string(what) + " \"" + std::string(name) + "\" is unknown; allowed: " + allowed);
}

template <class Mode, std::size_t n>
std::string_view nameOf(const std::array<std::string_view, n>& names, Mode mode) {
  const auto index = static_cast<std::size_t>(static_cast<unsigned>(mode));
  return index < n ? names[index] : "unknown";
}

/// Reads a number that fills `text`.
template <class T>
bool readNumber(std::string_view text, T& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

}  // namespace

FixptType parseFixptType(std::string_view text) {
  FixptType type;
  const std::size_t point = text.find('.');
  const bool shaped = !text.empty() && (text[0] == 's' || text[0] == 'u') && point != std::string_view::npos;
  if (!shaped || !readNumber(text.substr(1, point - 1), type.word) ||
      !readNumber(text.substr(point + 1), type.fraction)) {
    throw std::invalid_argument("fixed-point type \"" + std::string(text) +
                                "\" is malformed; allowed: s or u, word length, point, fraction length, as in s16.12");
  }
  if (type.word < minWord || type.word > maxWord) {
    throw std::invalid_argument("word length " + std::to_string(type.word) + " of fixed-point type \"" +
                                std::string(text) + "\" is out of range; allowed: 1 to 128");
  }
  type.isSigned = text[0] == 's';
  return type;
}

std::string formatFixptType(const FixptType& type) {
  return (type.isSigned ? "s" : "u") + std::to_string(type.word) + "." + std::to_string(type.fraction);
}

fxpModeOverflow_tag parseOverflowMode(std::string_view name) {
  return parseMode<fxpModeOverflow_tag>(overflowNames, "overflow mode", name);
}

fxpModeRounding_tag parseRoundingMode(std::string_view name) {
  return parseMode<fxpModeRounding_tag>(roundingNames, "rounding mode", name);
}

KarnSimCommon::overrideDType parseOverrideMode(std::string_view name) {
  return parseMode<KarnSimCommon::overrideDType>(overrideNames, "override mode", name);
}

std::string_view modeName(fxpModeOverflow_tag mode) { return nameOf(overflowNames, mode); }
std::string_view modeName(fxpModeRounding_tag mode) { return nameOf(roundingNames, mode); }
std::string_view modeName(KarnSimCommon::overrideDType mode) { return nameOf(overrideNames, mode); }

}  // namespace KarnDSPFixpt
