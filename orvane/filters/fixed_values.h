#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "orvane/filters/fixed_array.h"
#include "orvane/platform/karn_fixpt_3.h"

/// Fixed-point arrays in terms of the value library.
namespace BP::filters::detail {

/// Cursors count components of a complex array, and are signed 32-bit numbers.
constexpr std::int64_t maxComplexElements = std::int64_t{1} << 30;

/// The longest fraction, and the shortest negated: as much as the exponents of `double` reach.
constexpr int maxFraction = 1024;

/// The modes in the library's terms; throws `std::invalid_argument` for others.
struct CoreModes {
  explicit CoreModes(const FixedModes& modes);
  fxpModeRounding_tag rounding;
  fxpModeOverflow_tag overflow;
};

/// What arrays and results of one role are: types of values, products and their sums, and labels.
struct RoleDescription {
  std::string label;
  FixedType value;
  FixedType product;
  FixedType sum;
  bool isComplex = false;
  std::string productLabel = label + " product";
};

/// A handle for `role`. Its statistics records are kept by `adaptor`.
KarnDSPFixpt::DSPDataAttributesHandle makeHandle(const RoleDescription& role, const CoreModes& modes,
                                                 brekk::BrekkAdaptorTolk* adaptor);

/// An array whose values are those of `view`, read and written where they are.
std::unique_ptr<KarnDSPFixpt::Fixpt> makeAlias(const KarnDSPFixpt::DSPDataAttributesHandle& handle, const void* data);

/// Throws `std::invalid_argument` unless `view` is an array of the role's type and these extents.
void checkFixed(const char* argument, const FixedView& view, const RoleDescription& role, const Extents& extents);

/// Bytes of an array.
std::size_t bytesOf(const FixedView& view);

/// Copies `count` elements of one type, bit for bit and uncounted.
void copyStored(KarnDSPFixpt::Fixpt& from, KarnDSPFixpt::Fixpt& to, int count);

/// Adds what was counted to the totals of a label.
void addCounts(const fxpLogStruct_tag& counts, FixedStatistics& totals);

}  // namespace BP::filters::detail
