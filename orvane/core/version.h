#pragma once

#include "orvane/platform/export.h"

extern "C" {

/// Version of the library, as in "1.2.3".
ORVANE_API extern const char* const orvaneblockprocbrekk_version;
/// Day of the build, as in "Jan  2 2030".
ORVANE_API extern const char* const orvaneblockprocbrekk_build_date;

}  // extern "C"
