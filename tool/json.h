#pragma once

#include <complex>
#include <concepts>
#include <cstdint>
#include <ranges>
#include <string>
#include <string_view>
#include <type_traits>

namespace BP::tool {

/// Values as JSON. NaN and infinities are the texts "nan", "inf" and "-inf", for JSON has no such numbers.
std::string jsonOf(double value);
std::string jsonOf(std::string_view text);  ///< bytes that are not UTF-8 become U+FFFD, for JSON is UTF-8
inline std::string jsonOf(const char* text) { return jsonOf(std::string_view(text)); }
template <std::same_as<bool> Bool>
std::string jsonOf(Bool value) {
  return value ? "true" : "false";
}
template <std::integral Whole>
requires(!std::same_as<Whole, bool>) std::string jsonOf(Whole value) { return std::to_string(value); }

/// An object under construction, or its text.
class JsonObject {
 public:
  template <class T>
  JsonObject& add(std::string_view key, const T& value);
  /// Adds a value that is JSON already.
  JsonObject& addText(std::string_view key, const std::string& json);
  std::string text() const { return "{" + members + "}"; }

 private:
  std::string members;
};

inline std::string jsonOf(const JsonObject& object) { return object.text(); }

/// A list of values.
template <std::ranges::range List>
requires(!std::convertible_to<List, std::string_view>) std::string jsonOf(const List& list) {
  std::string text;
  for (const auto& value : list) text += (text.empty() ? "" : ", ") + jsonOf(value);
  return "[" + text + "]";
}

/// A number, or the list of its real and imaginary part.
std::string jsonOf(const std::complex<double>& value, bool isComplex);

template <class T>
JsonObject& JsonObject::add(std::string_view key, const T& value) {
  return addText(key, jsonOf(value));
}

}  // namespace BP::tool
