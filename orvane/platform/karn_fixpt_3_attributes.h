#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3_type.h"

namespace KarnDSPFixpt {

/// Which of the three types of a handle its values have.
enum class FixptRole : unsigned char { value, product, accumulator };

/// What statistics arrays of a handle gather.
enum class FixptGathering : unsigned char {
  nothing,
  counts,  ///< casts, overflows and lossy roundings
  ranges,  ///< these, and the least and greatest values
};

/// Describes values: their type and modes, the types of their products and of the sums of products, and labels.
///
/// A handle never changes. Copies are cheap, as they share one description.
class ORVANE_API DSPDataAttributesHandle {
 public:
  /// Describes values of `valueWord` bits with `valueFrac` bits of fraction. The next two pairs describe products and
  /// sums of products. `isSigned` and `isComplex` hold for all three. If `adaptor` is not null, it keeps the statistics
  /// that are handed out.
  ///
  /// No argument is an error. A word length below 1 counts as 1, one above 128 as 128. An unknown overflow mode counts
  /// as wrap, an unknown rounding mode as floor, an unknown override as none.
  DSPDataAttributesHandle(unsigned valueWord, int valueFrac, unsigned productWord, int productFrac, unsigned accWord,
                          int accFrac, brekk::BrekkAdaptorTolk* adaptor, fxpModeOverflow_tag overflow,
                          fxpModeRounding_tag rounding, bool isSigned, bool isComplex, std::string valueLabel,
                          std::string productLabel, std::string accLabel, KarnSimCommon::overrideDType override);
  DSPDataAttributesHandle(const DSPDataAttributesHandle&);
  DSPDataAttributesHandle& operator=(const DSPDataAttributesHandle&);
  ~DSPDataAttributesHandle();

  /// The label of the values, under which their statistics are gathered.
  std::string getLabel() const;

  /// The type of the values.
  FixptType type() const { return typeOf(role_); }
  /// The type of the product of a value with one of `right`: word and fraction as given. It is signed if either operand
  /// is, so the product of an unsigned image and a signed filter keeps its sign.
  FixptType productType(const DSPDataAttributesHandle& right) const;
  /// The type of a sum of such products, which a complex product needs. The rule for the sign is the same.
  FixptType accumulatorType(const DSPDataAttributesHandle& right) const;

  fxpModeOverflow_tag overflowMode() const { return shared_->overflow; }
  fxpModeRounding_tag roundingMode() const { return shared_->rounding; }
  KarnSimCommon::overrideDType overrideMode() const { return shared_->override; }
  bool isFloating() const { return shared_->override != KarnSimCommon::overrideNone; }
  bool isSigned() const { return isSigned_; }
  bool isComplex() const { return isComplex_; }
  brekk::BrekkAdaptorTolk* adaptor() const { return shared_->adaptor; }
  FixptGathering gathering() const { return gathering_; }
  /// The same description of arrays that gather these statistics; by default they gather ranges.
  DSPDataAttributesHandle withGathering(FixptGathering gathering) const;

  /// The description of results, whose values have the type of `role` and the given sign and complexity.
  DSPDataAttributesHandle derived(FixptRole role, bool isSigned, bool isComplex) const;

 private:
  struct Shared {
    std::array<FixptType, 3> types;  // by role; their sign is the handle's own
    std::array<std::string, 3> labels;
    brekk::BrekkAdaptorTolk* adaptor;
    fxpModeOverflow_tag overflow;
    fxpModeRounding_tag rounding;
    KarnSimCommon::overrideDType override;
  };

  FixptType typeOf(FixptRole role) const {
    FixptType type = shared_->types[static_cast<std::size_t>(role)];
    type.isSigned = isSigned_;
    return type;
  }

  std::shared_ptr<const Shared> shared_;
  FixptRole role_ = FixptRole::value;
  FixptGathering gathering_ = FixptGathering::ranges;
  bool isSigned_;
  bool isComplex_;
};

}  // namespace KarnDSPFixpt
