#include "orvane/filters/array.h"

#include <stdexcept>
#include <string>

namespace BP::filters::detail {

void checkElementCount(std::size_t given, const Extents& extents) {
  const std::int64_t needed = elementCount(extents);
  if (given == static_cast<std::size_t>(needed)) return;
  throw std::invalid_argument("view: " + std::to_string(given) + " elements; extents " + toText(extents) + " need " +
                              std::to_string(needed));
}

std::size_t sizeOf(const Extents& extents) {
  for (const std::int64_t extent : extents) {
    if (extent < 0) {
      throw std::invalid_argument("array: extents " + toText(extents) + "; allowed are extents of 0 or more");
    }
  }
  return static_cast<std::size_t>(elementCount(extents));
}

}  // namespace BP::filters::detail
