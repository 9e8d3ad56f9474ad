#include "orvane/platform/karn_fixpt_3_make.h"

#include <stdexcept>

namespace KarnDSPFixpt {

namespace {

void checkWord(const FixptType& type, const char* field) {
  if (type.word >= minWord && type.word <= maxWord) return;
  throw std::invalid_argument("word length " + std::to_string(type.word) + " of " + field +
                              " is out of range; allowed: 1 to 128");
}

void checkSign(const FixptDescription& d, const FixptType& type, const char* field) {
  if (type.isSigned == d.value.isSigned) return;
  throw std::invalid_argument(std::string(field) + " type " + formatFixptType(type) + " and value type " +
                              formatFixptType(d.value) + " differ in sign; allowed: all signed or all unsigned");
}

void checkMode(int mode, int count, const char* field) {
  if (mode >= 0 && mode < count) return;
  throw std::invalid_argument(std::string(field) + " mode " + std::to_string(mode) + " is unknown; allowed: 0 to " +
                              std::to_string(count - 1));
}

}  // namespace

DSPDataAttributesHandle makeAttributes(const FixptDescription& d) {
  checkWord(d.value, "value");
  checkWord(d.product, "product");
  checkWord(d.accumulator, "accumulator");
  checkSign(d, d.product, "product");
  checkSign(d, d.accumulator, "accumulator");
  checkMode(d.overflow, 4, "overflow");
  checkMode(d.rounding, 6, "rounding");
  checkMode(d.override, 3, "override");
  return {d.value.word,       d.value.fraction,       d.product.word, d.product.fraction,
          d.accumulator.word, d.accumulator.fraction, d.adaptor,      d.overflow,
          d.rounding,         d.value.isSigned,       d.isComplex,    d.valueLabel,
          d.productLabel,     d.accumulatorLabel,     d.override};
}

std::unique_ptr<Fixpt> makeFixpt(const DSPDataAttributesHandle& attributes, int count) {
  if (count < 0) {
    throw std::invalid_argument("count " + std::to_string(count) + " is negative; allowed: 0 or more");
  }
  return std::unique_ptr<Fixpt>(FixptFactory::createFixpt(attributes, count, 0));
}

}  // namespace KarnDSPFixpt
