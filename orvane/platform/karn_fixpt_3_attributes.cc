#include "orvane/platform/karn_fixpt_3_attributes.h"

#include <algorithm>
#include <utility>

namespace KarnDSPFixpt {

namespace {

constexpr std::size_t index(FixptRole role) { return static_cast<std::size_t>(role); }

/// `mode` if it is one of the first `count`, else `fallback`.
template <class Mode>
Mode known(Mode mode, int count, Mode fallback) {
  return mode >= 0 && mode < count ? mode : fallback;
}

unsigned knownWord(unsigned word) { return std::clamp(word, minWord, maxWord); }

}  // namespace

DSPDataAttributesHandle::DSPDataAttributesHandle(unsigned valueWord, int valueFrac, unsigned productWord,
                                                 int productFrac, unsigned accWord, int accFrac,
                                                 brekk::BrekkAdaptorTolk* adaptor, fxpModeOverflow_tag overflow,
                                                 fxpModeRounding_tag rounding, bool isSigned, bool isComplex,
                                                 std::string valueLabel, std::string productLabel, std::string accLabel,
                                                 KarnSimCommon::overrideDType override)
    : shared_(std::make_shared<const Shared>(Shared{
          {{{knownWord(valueWord), valueFrac, isSigned},
            {knownWord(productWord), productFrac, isSigned},
            {knownWord(accWord), accFrac, isSigned}}},
          {std::move(valueLabel), std::move(productLabel), std::move(accLabel)},
          adaptor,
          known(overflow, 4, fxpOverflowWrap),
          known(rounding, 6, fxpRoundFloor),
          known(override, 3, KarnSimCommon::overrideNone),
      })),
      isSigned_(isSigned),
      isComplex_(isComplex) {}

DSPDataAttributesHandle::DSPDataAttributesHandle(const DSPDataAttributesHandle&) = default;
DSPDataAttributesHandle& DSPDataAttributesHandle::operator=(const DSPDataAttributesHandle&) = default;
DSPDataAttributesHandle::~DSPDataAttributesHandle() = default;

std::string DSPDataAttributesHandle::getLabel() const { return shared_->labels[index(role_)]; }

FixptType DSPDataAttributesHandle::productType(const DSPDataAttributesHandle& right) const {
  FixptType type = typeOf(FixptRole::product);
  type.isSigned = isSigned_ || right.isSigned_;
  return type;
}

FixptType DSPDataAttributesHandle::accumulatorType(const DSPDataAttributesHandle& right) const {
  FixptType type = typeOf(FixptRole::accumulator);
  type.isSigned = isSigned_ || right.isSigned_;
  return type;
}

DSPDataAttributesHandle DSPDataAttributesHandle::withGathering(FixptGathering gathering) const {
  DSPDataAttributesHandle result = *this;
  result.gathering_ = gathering;
  return result;
}

DSPDataAttributesHandle DSPDataAttributesHandle::derived(FixptRole role, bool isSigned, bool isComplex) const {
  DSPDataAttributesHandle result = *this;
  result.role_ = role;
  result.isSigned_ = isSigned;
  result.isComplex_ = isComplex;
  return result;
}

}  // namespace KarnDSPFixpt
