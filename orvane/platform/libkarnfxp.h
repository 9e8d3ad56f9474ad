#pragma once

#include "orvane/platform/export.h"

/// Statistics of fixed-point values, gathered per label.

/// What was counted on the values of one label. The range is meaningful while `logRange` is not 0.
struct fxpLogStruct_tag {
  unsigned overflows = 0;       ///< values that did not fit their type
  unsigned casts = 0;           ///< values cast into the type
  unsigned lossyRoundings = 0;  ///< casts whose rounding lost bits
  unsigned logRange = 0;        ///< 0: `minimum` and `maximum` are not kept
  double minimum = 0;           ///< least value after the cast
  double maximum = 0;           ///< greatest value after the cast
};

/// The statistics record of one label.
class ORVANE_API fxpBlockProperties {
 public:
  /// The counters; they belong to this record.
  fxpLogStruct_tag* getLogStruct() const { return &log_; }

 private:
  mutable fxpLogStruct_tag log_;
};
