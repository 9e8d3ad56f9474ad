#pragma once

#include <complex>

#include "orvane/platform/karn_fixpt_3.h"

/// Applies a macro to each pair of input and output elements that every processor and front exists for.
#define ORVANE_FOR_COMMON_PAIRS(APPLY)              \
  APPLY(float, float)                               \
  APPLY(double, double)                             \
  APPLY(float, std::complex<float>)                 \
  APPLY(double, std::complex<double>)               \
  APPLY(std::complex<float>, std::complex<float>)   \
  APPLY(std::complex<double>, std::complex<double>) \
  APPLY(KarnDSPFixpt::Fixpt, KarnDSPFixpt::Fixpt)

/// The pairs of processors and fronts with one output.
#define ORVANE_FOR_ELEMENT_PAIRS(APPLY) \
  ORVANE_FOR_COMMON_PAIRS(APPLY)        \
  APPLY(bool, bool)

/// The pairs of template matching, which counts over booleans.
#define ORVANE_FOR_MATCHING_PAIRS(APPLY) \
  ORVANE_FOR_COMMON_PAIRS(APPLY)         \
  APPLY(bool, KarnDSPFixpt::Fixpt)

/// Applies a macro to each triple of plain elements of filter (or template), input and output: one precision, and a
/// complex output if either of the others is.
#define ORVANE_FOR_PLAIN_TRIPLES(APPLY)                                \
  APPLY(float, float, float)                                           \
  APPLY(float, std::complex<float>, std::complex<float>)               \
  APPLY(std::complex<float>, float, std::complex<float>)               \
  APPLY(std::complex<float>, std::complex<float>, std::complex<float>) \
  APPLY(double, double, double)                                        \
  APPLY(double, std::complex<double>, std::complex<double>)            \
  APPLY(std::complex<double>, double, std::complex<double>)            \
  APPLY(std::complex<double>, std::complex<double>, std::complex<double>)
