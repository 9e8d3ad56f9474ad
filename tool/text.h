#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Reading what people type, and writing what they read. All functions are free of the locale.
namespace BP::tool {

/// `text` on one line of printable characters. Control characters and characters that change the direction of writing
/// become escapes such as \n, \x1b or \u202e, bytes that are not UTF-8 escapes such as \xff. Other text stays as it is.
std::string legible(std::string_view text);

/// `text` with the character U+FFFD in place of each byte that is not UTF-8.
std::string validUtf8(std::string_view text);

/// The legible `text` between single quotes, shortened in the middle if it is very long.
std::string inQuotes(std::string_view text);

/// As in "; did you mean '--kernel'?" if one of `known` is only a few typing errors away from `text`, else empty.
std::string suggestion(std::string_view text, const std::vector<std::string>& known);

/// As in "1 sector" and "2 sectors".
std::string counted(std::int64_t count, const std::string& noun);

/// `text` without spaces and tabs at its ends.
std::string_view trimmed(std::string_view text);

/// The parts of `text` between separators. Their number is the number of separators plus one.
std::vector<std::string_view> split(std::string_view text, char separator);

/// `text` with the letters A to Z in lower case.
std::string lowered(std::string_view text);

/// The value of a decimal number ("-2", "0.5", "1e-3") or of a fraction of two ("1/16"). Numbers and quotient are each
/// rounded once, to nearest. Throws `std::runtime_error` that names `what` if there is no finite value.
double parseNumber(std::string_view text, const std::string& what);

/// The value of a whole number of `min` to `max`; throws `std::runtime_error` that names `what` for other texts.
int parseWhole(std::string_view text, int min, int max, const std::string& what);

/// The numbers with `separator` between them.
std::string joined(const std::vector<std::int64_t>& numbers, const char* separator);

/// The shortest text that reads back as `value`.
std::string numberText(double value);

/// `value` with at most so many significant digits; trailing zeros are left out.
std::string roundedText(long double value, int digits);

}  // namespace BP::tool
