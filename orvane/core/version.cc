#include "orvane/core/version.h"

extern "C" {

const char* const orvaneblockprocbrekk_version = ORVANE_VERSION;
const char* const orvaneblockprocbrekk_build_date = __DATE__;

}  // extern "C"
