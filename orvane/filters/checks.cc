#include "orvane/filters/checks.h"

#include <charconv>
#include <stdexcept>

namespace BP::filters::detail {

void refuse(std::string_view argument, const std::string& value, const std::string& allowed) {
  throw std::invalid_argument(std::string(argument) + ": " + value + "; " + allowed);
}

std::string textOf(double value) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

void checkExtents(std::string_view argument, const Extents& extents, std::int64_t maxElements, std::size_t maxRank) {
  if (extents.rank() < 1 || extents.rank() > maxRank) {
    refuse(argument, "rank " + std::to_string(extents.rank()),
           maxRank == 2 ? "allowed are 1 and 2" : "allowed are 1 to " + std::to_string(maxRank));
  }
  for (std::size_t d = 0; d < extents.rank(); ++d) {
    if (extents[d] >= 1 && extents[d] <= maxIndex) continue;
    refuse(argument, "extent " + std::to_string(extents[d]) + " in dimension " + std::to_string(d),
           "allowed are 1 to " + std::to_string(maxIndex));
  }
  if (elementCount(extents) > maxElements) {
    refuse(argument, toText(extents) + " are " + std::to_string(elementCount(extents)) + " elements",
           "at most " + std::to_string(maxElements) + " are allowed");
  }
}

void checkArray(std::string_view argument, const void* data, const Extents& extents, const Extents& expected) {
  if (extents != expected) refuse(argument, "extents " + toText(extents), "they must be " + toText(expected));
  if (data == nullptr) refuse(argument, "null", "it must point to " + toText(expected) + " elements");
}

void checkDisjoint(const void* input, std::size_t inputBytes, const void* output, std::size_t outputBytes) {
  const auto inputStart = reinterpret_cast<std::uintptr_t>(input);
  const auto outputStart = reinterpret_cast<std::uintptr_t>(output);
  // The distance of the starts cannot overflow, but an end could.
  const bool overlaps =
      inputStart <= outputStart ? outputStart - inputStart < inputBytes : inputStart - outputStart < outputBytes;
  if (overlaps) refuse("output", "overlaps the input", "the two must not share memory");
}

}  // namespace BP::filters::detail
