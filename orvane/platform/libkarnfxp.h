#pragma once

#include <limits>

#include "orvane/platform/export.h"

/// Statistics of fixed-point values, gathered per label.

/// The counts and the range of the values of one label. The range is valid if `logRange` is not 0. A new record has an
/// empty range, whose minimum exceeds its maximum, so merging it into another record changes nothing.
struct fxpLogStruct_tag {
  unsigned overflows = 0;                                     ///< values that did not fit their type
  unsigned casts = 0;                                         ///< values cast into the type
  unsigned lossyRoundings = 0;                                ///< casts whose rounding lost bits
  unsigned logRange = 1;                                      ///< 0: `minimum` and `maximum` are not kept
  double minimum = std::numeric_limits<double>::infinity();   ///< least value after the cast
  double maximum = -std::numeric_limits<double>::infinity();  ///< greatest value after the cast
};

/// The statistics record of one label.
class ORVANE_API fxpBlockProperties {
 public:
  /// The counters, which this record owns.
  fxpLogStruct_tag* getLogStruct() const { return &log_; }

 private:
  mutable fxpLogStruct_tag log_;
};
