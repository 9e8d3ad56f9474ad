#include "tool/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace BP::tool {

namespace {

/// The whole of `text` as a number, with an optional plus sign.
template <class T>
std::optional<T> readAll(std::string_view text) {
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<double> readNumber(std::string_view text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return readAll<double>(text);
  const auto upper = readAll<double>(trimmed(text.substr(0, slash)));
  const auto lower = readAll<double>(trimmed(text.substr(slash + 1)));
  if (!upper || !lower) return std::nullopt;
  return *upper / *lower;
}

struct Character {
  std::int32_t code;   ///< of Unicode; a byte that is not UTF-8 as a negative number, -255 to -128
  std::size_t length;  ///< in bytes
};

/// The character that `text`, which must not be empty, begins with.
Character firstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return {static_cast<std::int32_t>(lead), 1};
  const Character invalid{-static_cast<std::int32_t>(lead), 1};
  const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
  if (lead < 0xc2 || lead > 0xf4 || text.size() < length) return invalid;
  std::int32_t code = static_cast<std::int32_t>(lead & (0xffu >> (length + 1)));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0u) != 0x80) return invalid;
    code = code << 6 | static_cast<std::int32_t>(byte(i) & 0x3fu);
  }
  constexpr std::int32_t minCode[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
  return code < minCode[length] || code > 0x10ffff || isSurrogate ? invalid : Character{code, length};
}

bool isPrintable(std::int32_t code) {
  const auto isIn = [code](std::int32_t first, std::int32_t last) { return code >= first && code <= last; };
  const bool isControl = code < 0x20 || isIn(0x7f, 0x9f);
  const bool turnsOrBreaksLines = isIn(0x200e, 0x200f) || isIn(0x2028, 0x202e) || isIn(0x2066, 0x2069);
  return !isControl && !turnsOrBreaksLines;
}

std::string escaped(std::int32_t code) {
  if (code == '\n') return "\\n";
  if (code == '\r') return "\\r";
  if (code == '\t') return "\\t";
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), code < 0x80 ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(std::abs(code)));
  return text.data();
}

/// The least number of letters to add, to take away, to change or to swap with their neighbour (Damerau and
/// Levenshtein's distance, without a second change to what was swapped).
std::size_t typingErrors(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> errors(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        errors[i][j] = i + j;
        continue;
      }
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      std::size_t least = std::min({errors[i - 1][j] + 1, errors[i][j - 1] + 1, errors[i - 1][j - 1] + change});
      const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isSwap) least = std::min(least, errors[i - 2][j - 2] + 1);
      errors[i][j] = least;
    }
  }
  return errors[a.size()][b.size()];
}

}  // namespace

std::string legible(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    result += isPrintable(character.code) ? std::string(text.substr(0, character.length)) : escaped(character.code);
    text.remove_prefix(character.length);
  }
  return result;
}

std::string validUtf8(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    result += character.code < 0 ? "\xef\xbf\xbd" : text.substr(0, character.length);
    text.remove_prefix(character.length);
  }
  return result;
}

std::string inQuotes(std::string_view text) {
  constexpr std::size_t maxLength = 200;
  if (text.size() <= maxLength) return "'" + legible(text) + "'";
  return "'" + legible(text.substr(0, maxLength / 2)) + "..." + legible(text.substr(text.size() - maxLength / 2)) + "'";
}

std::string suggestion(std::string_view text, const std::vector<std::string>& known) {
  std::string_view nearest;
  std::size_t errors = std::max<std::size_t>(2, text.size() / 4) + 1;
  for (const std::string& word : known) {
    const std::size_t distance = typingErrors(text, word);
    if (distance >= errors || distance >= word.size()) continue;
    errors = distance;
    nearest = word;
  }
  return nearest.empty() ? "" : "; did you mean " + inQuotes(nearest) + "?";
}

std::string counted(std::int64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (std::size_t end = text.find(separator); end != std::string_view::npos; end = text.find(separator)) {
    parts.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  parts.push_back(text);
  return parts;
}

std::string lowered(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

double parseNumber(std::string_view text, const std::string& what) {
  const std::optional<double> value = readNumber(trimmed(text));
  if (!value || !std::isfinite(*value)) {
    throw std::runtime_error(what + ": " + inQuotes(text) +
                             " is not a finite number; allowed are decimals such as -0.5 and fractions such as 1/16");
  }
  return *value;
}

int parseWhole(std::string_view text, int min, int max, const std::string& what) {
  const std::optional<int> value = readAll<int>(trimmed(text));
  if (!value || *value < min || *value > max) {
    throw std::runtime_error(what + ": " + inQuotes(text) + " is not a whole number of " + std::to_string(min) +
                             " to " + std::to_string(max));
  }
  return *value;
}

std::string joined(const std::vector<std::int64_t>& numbers, const char* separator) {
  std::string text;
  for (const std::int64_t number : numbers) text += (text.empty() ? "" : separator) + std::to_string(number);
  return text;
}

std::string numberText(double value) {
  std::array<char, 32> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  return {buffer.data(), result.ptr};
}

std::string roundedText(long double value, int digits) {
  std::array<char, 64> buffer{};
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits);
  return {buffer.data(), result.ptr};
}

}  // namespace BP::tool
