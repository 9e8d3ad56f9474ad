#include "orvane/platform/karn_fixpt_3.h"

#include <cmath>
#include <mutex>
#include <vector>

#include "orvane/platform/karn_fixpt_3_tier.h"

namespace KarnDSPFixpt {

using detail::Int128;
using detail::Uint128;
using detail::Wide;

namespace {

std::uint64_t keyOf(const DSPDataAttributesHandle& attributes) {
  const FixptType type = attributes.type();
  const auto flags = static_cast<std::uint64_t>(attributes.overrideMode()) << 2 |
                     static_cast<std::uint64_t>(type.isSigned) << 1 |
                     static_cast<std::uint64_t>(attributes.isComplex());
  return static_cast<std::uint64_t>(static_cast<std::uint32_t>(type.fraction)) << 32 | flags << 8 | type.word;
}

unsigned char bytesLogOf(const DSPDataAttributesHandle& attributes) {
  if (attributes.overrideMode() == KarnSimCommon::overrideDouble) return 3;
  if (attributes.overrideMode() == KarnSimCommon::overrideSingle) return 2;
  unsigned char log = 0;
  while ((8U << log) < attributes.type().word) ++log;
  return log;
}

/// Keeps the statistics records of arrays without an adaptor until the process ends.
void keepForProcess(std::shared_ptr<void> record) {
  static std::mutex mutex;
  static auto& records = *new std::vector<std::shared_ptr<void>>;
  const std::lock_guard lock(mutex);
  records.push_back(std::move(record));
}

}  // namespace

Fixpt::Fixpt(const DSPDataAttributesHandle& attributes, int count, bool counting)
    : counting_(counting), count_(std::max(count, 0)), attributes_(attributes) {
  adoptType(attributes);
  const std::size_t bytes = static_cast<std::size_t>(count_) << (bytesLog_ + (isComplex_ ? 1 : 0));
  if (bytes > few_.size()) many_ = std::make_unique<std::byte[]>(bytes);
  values_ = many_ ? many_.get() : few_.data();
}

Fixpt::~Fixpt() = default;

Fixpt* FixptFactory::createFixpt(const DSPDataAttributesHandle& handle, int count, int) {
  return new Fixpt(handle, count, handle.gathering() != FixptGathering::nothing);
}

/// Changes the type. All prepared plans become invalid; the counts stay.
void Fixpt::adoptType(const DSPDataAttributesHandle& attributes) {
  attributes_ = attributes;
  key_ = keyOf(attributes);
  bytesLog_ = bytesLogOf(attributes);
  isComplex_ = attributes.isComplex();
  const bool fits = !attributes.isFloating() && detail::signedBits(attributes.type()) <= detail::narrowBits;
  range_ = fits ? detail::makeRange<std::int64_t>(attributes.type(), attributes.overflowMode()) : decltype(range_){};
  isNarrow_ = fits;
  assignPlan_ = integerPlan_ = sumPlan_ = productPlan_ = normPlan_ = Plan{};
  preparedFor_ = 0;
}

void Fixpt::setValPtr(void* p) {
  values_ = static_cast<std::byte*>(p);
  many_.reset();
}

Fixpt& Fixpt::subordinateAs(std::size_t i, const DSPDataAttributesHandle& attributes) const {
  auto& value = subordinates_[i];
  if (!value) {
    value.reset(new Fixpt(attributes, 1, counting_));
  } else if (value->key_ != keyOf(attributes)) {
    value->adoptType(attributes);
  }
  value->cursor_ = 0;
  return *value;
}

Fixpt* Fixpt::subordinate(int i) const {
  const auto index = static_cast<std::size_t>(i);
  return index < subordinates_.size() ? subordinates_[index].get() : nullptr;
}

void Fixpt::setStatistics(bool on) {
  counting_ = on;
  for (auto& value : subordinates_) {
    if (value) value->setStatistics(on);
  }
}

void Fixpt::addStatistics(const fxpLogStruct_tag& counts) {
  counters_.overflows += counts.overflows;
  counters_.casts += counts.casts;
  counters_.lossy += counts.lossyRoundings;
  counters_.minimum = std::min(counters_.minimum, counts.minimum);
  counters_.maximum = std::max(counters_.maximum, counts.maximum);
}

fxpBlockProperties* Fixpt::takeProperties() {
  auto record = std::make_shared<fxpBlockProperties>();
  fxpLogStruct_tag& log = *record->getLogStruct();
  log.overflows = counters_.overflows;
  log.casts = counters_.casts;
  log.lossyRoundings = counters_.lossy;
  log.minimum = counters_.minimum;
  log.maximum = counters_.maximum;
  if (attributes_.gathering() == FixptGathering::counts) {
    log = {log.overflows, log.casts, log.lossyRoundings, 0};
  } else if (counters_.least <= counters_.greatest) {
    const int fraction = attributes_.type().fraction;
    log.minimum = std::min(log.minimum, detail::scaled(static_cast<double>(counters_.least), fraction));
    log.maximum = std::max(log.maximum, detail::scaled(static_cast<double>(counters_.greatest), fraction));
  }
  fxpBlockProperties* const taken = record.get();
  if (attributes_.adaptor() != nullptr) {
    attributes_.adaptor()->keepAlive(std::move(record));
  } else {
    keepForProcess(std::move(record));
  }
  counters_ = {};  // not before the record is safe
  return taken;
}

Int128 Fixpt::stored() const { return static_cast<Int128>(load<Wide>(cursor_).low()); }

void Fixpt::setStored(Int128 v) {
  const FixptType type = attributes_.type();
  const int spare = static_cast<int>(maxWord - type.word);
  const Uint128 high = static_cast<Uint128>(v) << spare;
  store(cursor_, type.isSigned ? static_cast<Uint128>(static_cast<Int128>(high) >> spare) : high >> spare);
}

void Fixpt::clearAny() {
  store(cursor_, 0);  // also the pattern of 0.0
  if (isComplex_) store(cursor_ + 1, 0);
}

bool Fixpt::isZero() const {
  const auto zero = [this](int component) {
    return attributes_.isFloating() ? componentToDouble(component) == 0 : load<Wide>(component) == Wide(0);
  };
  return zero(cursor_) && (!isComplex_ || zero(cursor_ + 1));
}

Fixpt& Fixpt::operator=(double v) {
  putDouble(cursor_, v);
  if (isComplex_) store(cursor_ + 1, 0);
  return *this;
}

void Fixpt::setComplex(double re, double im) {
  putDouble(cursor_, re);
  if (isComplex_) putDouble(cursor_ + 1, im);
}

}  // namespace KarnDSPFixpt
