#pragma once

#include "orvane/core/element.h"

namespace BP {

/// Calls `take(a, t)` for each element t of a template and the image element a under it. The window's first image
/// element has linear index `imageIndex`. The walk covers dimensions 0 and 1 and reads the template forward, dimension
/// 0 fastest.
template <class InputBlockT, class FilterBlockT, class TakeT>
inline void forEachPair(const InputBlockT& image, const FilterBlockT& filter, int imageIndex, TakeT&& take) {
  auto* const h = filter.getData().ptr;
  const int width = filter.getEnd().ptr[0] + 1, height = filter.getEnd().ptr[1] + 1, pitch = image.getStrides().ptr[1];
  int f = 0;
  for (int j = 0; j < height; ++j) {
    const int row = imageIndex + pitch * j;
    for (int i = 0; i < width; ++i, ++f) take(image.at(row + i), elementAt(h, f));
  }
}

}  // namespace BP
