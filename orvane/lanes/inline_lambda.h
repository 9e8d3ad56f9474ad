#pragma once

#include <hwy/base.h>

/// Before the body of a lambda of vectors: it is compiled for the target, and always inlined.
#define ORVANE_INLINE_LAMBDA HWY_ATTR __attribute__((always_inline))
