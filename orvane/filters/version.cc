#include "orvane/filters/version.h"

#include "orvane/core/version.h"

namespace BP::filters {

std::string_view version() { return orvaneblockprocbrekk_version; }

}  // namespace BP::filters
