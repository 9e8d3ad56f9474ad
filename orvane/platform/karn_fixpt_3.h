#pragma once

#include <string>

#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/libkarnfxp.h"

enum fxpModeOverflow_tag : int;
enum fxpModeRounding_tag : int;

namespace KarnSimCommon {
enum overrideDType : int;
}

/// Fixed-point values.
namespace KarnDSPFixpt {

class ORVANE_API DSPDataAttributesHandle {
 public:
  DSPDataAttributesHandle(const DSPDataAttributesHandle&);
  ~DSPDataAttributesHandle();
  std::string getLabel() const;
};

/// An array of fixed-point values of one data type with a cursor that says which value an operation addresses.
class ORVANE_API Fixpt {
 public:
  virtual ~Fixpt();

  /// The data type of the values.
  const DSPDataAttributesHandle& attributes() const;
  /// Subordinate value `i` (0 to 3 the four in a row, 4 the fifth), or null if it was never needed.
  Fixpt* subordinate(int i) const;
  /// The statistics gathered since the last call; gathering starts anew in another record.
  fxpBlockProperties* takeProperties();
};

/// Makes arrays.
class ORVANE_API FixptFactory {
 public:
  static Fixpt* createFixpt(const DSPDataAttributesHandle& handle, int count, int);
};

}  // namespace KarnDSPFixpt
