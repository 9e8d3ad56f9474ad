#include "tool/array.h"

#include <limits>
#include <stdexcept>

namespace BP::tool {

namespace {

struct TypeTraits {
  std::string_view name;
  std::size_t size;
};

/// In the order of the enumerators.
constexpr TypeTraits traits[] = {{"bool", 1},    {"int8", 1},      {"int16", 2},      {"int32", 4},  {"int64", 8},
                                 {"uint8", 1},   {"uint16", 2},    {"uint32", 4},     {"uint64", 8}, {"float32", 4},
                                 {"float64", 8}, {"complex64", 8}, {"complex128", 16}};

}  // namespace

std::size_t sizeOf(ElementType type) { return traits[static_cast<std::size_t>(type)].size; }

std::string_view nameOf(ElementType type) { return traits[static_cast<std::size_t>(type)].name; }

std::size_t bytesOf(ElementType type, const std::vector<std::int64_t>& extents) {
  constexpr std::int64_t maxBytes = std::numeric_limits<std::int64_t>::max();
  auto bytes = static_cast<std::int64_t>(sizeOf(type));
  bool isEmpty = false;
  for (const std::int64_t extent : extents) {
    if (extent < 0) throw std::length_error("an extent is negative");
    if (extent == 0) {
      isEmpty = true;
      continue;
    }
    if (bytes > maxBytes / extent) throw std::length_error("the extents multiply to more than 64 bits hold");
    bytes *= extent;
  }
  return isEmpty ? 0 : static_cast<std::size_t>(bytes);
}

}  // namespace BP::tool
