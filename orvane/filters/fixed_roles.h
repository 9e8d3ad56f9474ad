#pragma once

#include "orvane/core/enums.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/fixed_median.h"
#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/fixed_values.h"

namespace BP::filters::detail {

/// The descriptions of the arrays of a fixed-point convolution.
struct FixedRoles {
  /// Throws `std::invalid_argument` for a type that is missing, out of range, or in conflict with another type.
  FixedRoles(const FixedTypes& types, const FixedType& filterType, bool filterIsComplex, bool isNormalised);

  RoleDescription input;
  RoleDescription filter;
  RoleDescription accumulator;
  RoleDescription output;
  RoleDescription sqrt;
};

/// The descriptions of the arrays of a fixed-point median.
struct FixedMedianRoles {
  /// Throws `std::invalid_argument` for a type that is missing or out of range.
  explicit FixedMedianRoles(const FixedMedianTypes& types);

  RoleDescription input;
  RoleDescription accumulator;
  RoleDescription output;
};

/// The descriptions of the arrays of a fixed-point match.
struct FixedMatchRoles {
  /// Throws `std::invalid_argument` for a type that is missing, out of range, or in conflict with another type.
  FixedMatchRoles(const FixedMatchTypes& types, const FixedType& patternType, bool patternIsComplex,
                  AlgorithmModeEnum metric);

  RoleDescription image;
  RoleDescription pattern;
  RoleDescription accumulator;
  RoleDescription output;
};

}  // namespace BP::filters::detail
