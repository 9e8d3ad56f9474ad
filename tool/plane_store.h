#pragma once

#include <optional>
#include <utility>

#include "tool/band_filter.h"

namespace BP::tool {

/// True for the types of whole numbers, and bool.
bool isWhole(ElementType type);

/// The least and the greatest value of a type of whole numbers, as `double` holds them.
std::pair<double, double> rangeOf(ElementType type);

/// The type in which elements of `type` are summed: `asked`, float32 or float64, or without it float32 and complex64 as
/// they are and the others in float64. It is complex if the elements are.
ElementType sumTypeFor(ElementType type, const std::optional<ElementType>& asked);

/// Makes samples of `type` from sums, each pixel having `channels` of them: sum * scale + offset, which becomes a whole
/// number as in `storeRounded` if the type is one of up to 32 bits, and else stays of T, which must be the type.
template <class T>
PlaneStore<T> makeStore(ElementType type, int channels, const SampleScaling& scaling);

}  // namespace BP::tool
