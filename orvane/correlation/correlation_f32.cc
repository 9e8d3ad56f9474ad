#include "orvane/correlation/correlation-inl.h"
#include "orvane/correlation/correlation_stand_alone-inl.h"

namespace BP {

#define ORVANE_DEFINE(number, type, name, letters) \
  template class Correlation<float, float, float, PadExtendedInput<float, float, Allocator, type>, Allocator>;
ORVANE_FOR_PAD_TYPES(ORVANE_DEFINE)
#undef ORVANE_DEFINE
template class CorrelationStandAlone<float>;

}  // namespace BP
