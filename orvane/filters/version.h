#pragma once

#include <string_view>

#include "orvane/platform/export.h"

namespace BP::filters {

/// The version of the library that the program runs with, as in "1.2.3".
ORVANE_API std::string_view version();

}  // namespace BP::filters
