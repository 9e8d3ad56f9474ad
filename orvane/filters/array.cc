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

void checkSpan(std::size_t given, const Layout& layout) {
  const std::int64_t needed = layout.span();
  if (given >= static_cast<std::size_t>(needed)) return;
  throw std::invalid_argument("view: " + std::to_string(given) + " elements; extents " + toText(layout.extents()) +
                              " with this pitch need at least " + std::to_string(needed));
}

std::size_t sizeOf(const Extents& extents) {
  for (const std::int64_t extent : extents) {
    if (extent < 0) {
      throw std::invalid_argument("array: extents " + toText(extents) + "; allowed are extents of 0 or more");
    }
  }
  return static_cast<std::size_t>(elementCount(extents));
}

Layout layoutOf(std::span<const std::int64_t> extents, std::span<const std::int64_t> strides, bool lastIsFastest) {
  std::array<std::int64_t, Extents::maxRank> e{}, s{};
  const std::size_t rank = extents.size();
  const Extents inOrder(extents);  // checks the rank
  for (std::size_t d = 0; d < rank; ++d) {
    const std::size_t from = lastIsFastest ? rank - 1 - d : d;
    e[d] = extents[from];
    s[d] = strides[from];
  }
  if (rank > 0 && e[0] > 1 && s[0] != 1) {
    throw std::invalid_argument("view: stride " + std::to_string(s[0]) + " of the " +
                                (lastIsFastest ? "last" : "first") +
                                " index; it must be 1, as this index is dimension 0");
  }
  s[0] = 1;
  return Layout::withStrides(Extents(std::span<const std::int64_t>(e.data(), rank)), s);
}

}  // namespace BP::filters::detail
