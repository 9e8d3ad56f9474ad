#include "orvane/input/pad_redirector.h"

namespace BP {

PadRedirector::~PadRedirector() = default;

}  // namespace BP
