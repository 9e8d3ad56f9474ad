#include "orvane/filters/fixed_values.h"

#include <algorithm>

#include "orvane/filters/checks.h"

namespace BP::filters::detail {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;

namespace {

constexpr std::array<Named<fxpModeRounding_tag>, 6> roundings{{{"ceiling", fxpRoundCeiling},
                                                               {"convergent", fxpRoundConvergent},
                                                               {"floor", fxpRoundFloor},
                                                               {"nearest", fxpRoundNearest},
                                                               {"round", fxpRoundRound},
                                                               {"zero", fxpRoundZero}}};
constexpr std::array<Named<fxpModeOverflow_tag>, 4> overflows{{{"wrap", fxpOverflowWrap},
                                                               {"saturate", fxpOverflowSaturate},
                                                               {"symmetric", fxpOverflowSymmetric},
                                                               {"zero", fxpOverflowZero}}};
constexpr std::array<Named<KarnDSPFixpt::FixptGathering>, 3> gatherings{
    {{"nothing", KarnDSPFixpt::FixptGathering::nothing},
     {"counts", KarnDSPFixpt::FixptGathering::counts},
     {"ranges", KarnDSPFixpt::FixptGathering::ranges}}};

std::string describe(const FixedType& type, bool isComplex) {
  return filters::toText(type) + (isComplex ? " complex" : "");
}

}  // namespace

CoreModes::CoreModes(const FixedModes& modes)
    : rounding(chosen("rounding", modes.rounding, roundings)),
      overflow(chosen("overflow", modes.overflow, overflows)),
      gathering(chosen("gathering", modes.gathering, gatherings)) {}

DSPDataAttributesHandle makeHandle(const RoleDescription& role, const CoreModes& modes,
                                   brekk::BrekkAdaptorTolk* adaptor) {
  const auto word = [](const FixedType& type) { return static_cast<unsigned>(type.word); };
  const DSPDataAttributesHandle handle{word(role.value),
                                       role.value.fraction,
                                       word(role.product),
                                       role.product.fraction,
                                       word(role.sum),
                                       role.sum.fraction,
                                       adaptor,
                                       modes.overflow,
                                       modes.rounding,
                                       role.value.isSigned,
                                       role.isComplex,
                                       role.label,
                                       role.productLabel,
                                       role.productLabel + " sum",
                                       KarnSimCommon::overrideNone};
  return handle.withGathering(modes.gathering);
}

std::unique_ptr<Fixpt> makeAlias(const DSPDataAttributesHandle& handle, const void* data) {
  std::unique_ptr<Fixpt> alias(KarnDSPFixpt::FixptFactory::createFixpt(handle, 0, 0));
  if (data != nullptr) alias->setValPtr(const_cast<void*>(data));
  return alias;
}

void checkFixed(const char* argument, const FixedView& view, const RoleDescription& role, const Extents& extents) {
  if (view.type() != role.value || view.isComplex() != role.isComplex) {
    refuse(argument, "type " + describe(view.type(), view.isComplex()),
           "it must be " + describe(role.value, role.isComplex));
  }
  checkArray(argument, view.data(), view.layout(), extents, view.isComplex() ? maxComplexElements : maxIndex);
}

void copyStored(Fixpt& from, Fixpt& to, int count) {
  const int components = count << (from.isComplex() ? 1 : 0);
  for (int i = 0; i < components; ++i) {
    from.setCursor(i);
    to.setCursor(i);
    to.setStored(from.stored());
  }
}

void addCounts(const fxpLogStruct_tag& counts, FixedStatistics& totals) {
  totals.casts += counts.casts;
  totals.overflows += counts.overflows;
  totals.lossy += counts.lossyRoundings;
  totals.minimum = std::min(totals.minimum, counts.minimum);
  totals.maximum = std::max(totals.maximum, counts.maximum);
}

}  // namespace BP::filters::detail
