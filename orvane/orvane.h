#pragma once

/// Everything that a program needs, under one name: arrays and views, options, filters, medians, template matching and
/// fixed point.
#include "orvane/filters/array.h"
#include "orvane/filters/box.h"
#include "orvane/filters/convolution.h"
#include "orvane/filters/correlation_nd.h"
#include "orvane/filters/elements.h"
#include "orvane/filters/extents.h"
#include "orvane/filters/fixed_array.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/fixed_median.h"
#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/median.h"
#include "orvane/filters/options.h"
#include "orvane/filters/peaks.h"
#include "orvane/filters/progress.h"
#include "orvane/filters/rectangle.h"
#include "orvane/filters/template_matcher.h"
#include "orvane/filters/tile.h"
#include "orvane/filters/version.h"

namespace orvane = BP::filters;
