#include "orvane/core/any_bp.h"

namespace BP {

AnyBP::~AnyBP() = default;

const AnyBP* AnyBP::getBP() const { return this; }

const AnyCorrelation* AnyCorrelation::getConvCorr1() const { return this; }

const AnyCorrelation* AnyCorrelation::getConvCorr2() const { return this; }

}  // namespace BP
