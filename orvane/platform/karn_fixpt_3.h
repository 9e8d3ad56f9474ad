#pragma once

/// Fixed-point values: the class `Fixpt` with the bodies of its quick operations. Users include this header alone.

#include "orvane/platform/karn_fixpt_3-inl.h"
#include "orvane/platform/karn_fixpt_3_value.h"
