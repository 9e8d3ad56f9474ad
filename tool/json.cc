#include "tool/json.h"

#include <array>
#include <cmath>
#include <cstdio>

#include "tool/text.h"

namespace BP::tool {

std::string jsonOf(double value) {
  if (std::isfinite(value)) return numberText(value);
  return "\"" + numberText(std::isnan(value) ? std::fabs(value) : value) + "\"";
}

std::string jsonOf(std::string_view text) {
  std::string result = "\"";
  for (const char c : validUtf8(text)) {
    std::array<char, 8> escape{};
    if (c == '"' || c == '\\') result += '\\';
    if (static_cast<unsigned char>(c) >= 0x20) {
      result += c;
    } else {
      std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
      result += escape.data();
    }
  }
  return result + "\"";
}

JsonObject& JsonObject::addText(std::string_view key, const std::string& json) {
  members += (members.empty() ? "" : ", ") + jsonOf(key) + ": " + json;
  return *this;
}

std::string jsonOf(const std::complex<double>& value, bool isComplex) {
  if (!isComplex) return jsonOf(value.real());
  return "[" + jsonOf(value.real()) + ", " + jsonOf(value.imag()) + "]";
}

}  // namespace BP::tool
