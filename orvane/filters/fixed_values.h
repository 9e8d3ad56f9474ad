#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "orvane/filters/fixed_array.h"
#include "orvane/platform/karn_fixpt_3.h"

/// Conversions between the fixed-point arrays of this API and those of the value library.
namespace BP::filters::detail {

/// The largest element count of a complex array. Cursors are signed 32-bit numbers, and count two components for each
/// element.
constexpr std::int64_t maxComplexElements = std::int64_t{1} << 30;

/// The greatest fraction length. Its negative is the least one. Exponents of `double` have the same range.
constexpr int maxFraction = 1024;

/// The library's enumerators for the modes. Throws `std::invalid_argument` for unknown modes.
struct CoreModes {
  explicit CoreModes(const FixedModes& modes);
  fxpModeRounding_tag rounding;
  fxpModeOverflow_tag overflow;
  KarnDSPFixpt::FixptGathering gathering;
};

/// The description of arrays and results of one role: types of values, products and their sums, and labels.
struct RoleDescription {
  std::string label;
  FixedType value;
  FixedType product;
  FixedType sum;
  bool isComplex = false;
  std::string productLabel = label + " product";
};

/// A handle for `role`. `adaptor` keeps its statistics records.
KarnDSPFixpt::DSPDataAttributesHandle makeHandle(const RoleDescription& role, const CoreModes& modes,
                                                 brekk::BrekkAdaptorTolk* adaptor);

/// An array that uses the memory at `data` for its values.
std::unique_ptr<KarnDSPFixpt::Fixpt> makeAlias(const KarnDSPFixpt::DSPDataAttributesHandle& handle, const void* data);

/// Throws `std::invalid_argument` unless `view` is an array of the role's type and these extents.
void checkFixed(const char* argument, const FixedView& view, const RoleDescription& role, const Extents& extents);

/// Copies `count` elements of the same type, bit for bit. It is not counted as a cast.
void copyStored(KarnDSPFixpt::Fixpt& from, KarnDSPFixpt::Fixpt& to, int count);

/// Adds the counts to the totals of a label.
void addCounts(const fxpLogStruct_tag& counts, FixedStatistics& totals);

}  // namespace BP::filters::detail
