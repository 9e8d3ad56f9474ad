#pragma once

#include <complex>

#include "orvane/platform/karn_fixpt_3.h"

/// Applies a macro to each pair of input and output elements that processors and fronts with one window exist for.
#define ORVANE_FOR_ELEMENT_PAIRS(APPLY)             \
  APPLY(bool, bool)                                 \
  APPLY(float, float)                               \
  APPLY(double, double)                             \
  APPLY(float, std::complex<float>)                 \
  APPLY(double, std::complex<double>)               \
  APPLY(std::complex<float>, std::complex<float>)   \
  APPLY(std::complex<double>, std::complex<double>) \
  APPLY(KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt)
