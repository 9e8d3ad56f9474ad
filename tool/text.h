#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Reading what people type. All functions are free of the locale.
namespace BP::tool {

/// `text` between single quotes, shortened in the middle if it is very long.
std::string inQuotes(std::string_view text);

/// `text` without spaces and tabs at its ends.
std::string_view trimmed(std::string_view text);

/// The parts of `text` between occurrences of `separator`: one more than there are separators.
std::vector<std::string_view> split(std::string_view text, char separator);

/// `text` in lower case, for the letters A to Z.
std::string lowered(std::string_view text);

/// The value of a decimal number ("-2", "0.5", "1e-3") or of a fraction of two ("1/16"), rounded once to nearest each
/// for the numbers and the quotient. Throws `std::runtime_error` naming `what` if it is none or not finite.
double parseNumber(std::string_view text, const std::string& what);

/// The value of a whole number of `least` to `greatest`; throws `std::runtime_error` naming `what` otherwise.
int parseWhole(std::string_view text, int least, int greatest, const std::string& what);

/// The numbers with `separator` between them.
std::string joined(const std::vector<std::int64_t>& numbers, const char* separator);

/// The shortest text that reads back as `value`.
std::string numberText(double value);

/// `value` with so many significant digits, or fewer where it ends earlier.
std::string roundedText(double value, int digits);

}  // namespace BP::tool
