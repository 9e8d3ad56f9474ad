#include "orvane/exec/kernel.h"

namespace BP {

AnyKernel::~AnyKernel() = default;

}  // namespace BP
