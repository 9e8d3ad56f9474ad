#include "tool/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
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

}  // namespace

std::string inQuotes(std::string_view text) {
  constexpr std::size_t longest = 200;
  if (text.size() <= longest) return "'" + std::string(text) + "'";
  return "'" + std::string(text.substr(0, longest / 2)) + "..." + std::string(text.substr(text.size() - longest / 2)) +
         "'";
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

int parseWhole(std::string_view text, int least, int greatest, const std::string& what) {
  const std::optional<int> value = readAll<int>(trimmed(text));
  if (!value || *value < least || *value > greatest) {
    throw std::runtime_error(what + ": " + inQuotes(text) + " is not a whole number of " + std::to_string(least) +
                             " to " + std::to_string(greatest));
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

std::string roundedText(double value, int digits) {
  std::array<char, 400> buffer{};
  const auto result =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits);
  return {buffer.data(), result.ptr};
}

}  // namespace BP::tool
