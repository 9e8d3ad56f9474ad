#include "orvane/algorithm/correlation-inl.h"
#include "orvane/algorithm/correlation_stand_alone-inl.h"

namespace BP {

#define ORVANE_DEFINE(T, N) template class Correlation<T, T, T, PadExtendedInput<T, T, Allocator, N>, Allocator>;
ORVANE_FOR_CORRELATION_PADS(ORVANE_DEFINE, double)
#undef ORVANE_DEFINE
template class CorrelationStandAlone<double>;

}  // namespace BP
