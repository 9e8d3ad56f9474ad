#include "orvane/input/output.h"
#include "orvane/input/pad_redirector.h"

namespace BP {

AnyOutput::~AnyOutput() = default;

PadRedirector::~PadRedirector() = default;

}  // namespace BP
