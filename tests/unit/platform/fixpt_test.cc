#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <stdexcept>

#include "orvane/platform/karn_fixpt_3_make.h"

namespace {

using namespace KarnDSPFixpt;
using testing::AllOf;
using testing::HasSubstr;
using testing::ThrowsMessage;

DSPDataAttributesHandle handle(const FixptType& type, bool isComplex = false,
                               KarnSimCommon::overrideDType override = KarnSimCommon::overrideNone) {
  return makeAttributes({.value = type,
                         .product = {32, 8, type.isSigned},
                         .accumulator = {40, 8, type.isSigned},
                         .isComplex = isComplex,
                         .override = override});
}

TEST(FixptCursor, AddressesElementsAndComponents) {
  const auto real = makeFixpt(handle({12, 4}), 100);
  const auto complex = makeFixpt(handle({12, 4}, true), 100);
  for (int i = 0; i < 100; ++i) {
    (*real)[i] = i * 0.5;
    (*complex)[i].setComplex(i, -i);
  }
  real->setCursor(7);
  complex->setCursor(14);
  EXPECT_EQ(real->toDouble(), 3.5);
  EXPECT_EQ(complex->toDouble(), 7);
  EXPECT_EQ(complex->imaginaryToDouble(), -7);
  EXPECT_EQ((*complex)[99].cursor(), 198);
  EXPECT_EQ((*complex)[99].imaginaryToDouble(), -99);
}

TEST(FixptCursor, ComplexAndRealValuesMix) {
  const auto real = makeFixpt(handle({12, 4}));
  const auto complex = makeFixpt(handle({12, 4}, true));
  complex->setComplex(3, 4);
  *real = *complex;
  EXPECT_EQ(real->toDouble(), 3);
  *complex += *real;
  EXPECT_EQ(complex->toDouble(), 6);
  EXPECT_EQ(complex->imaginaryToDouble(), 4);
  complex->divideInto(*complex, *real);
  EXPECT_EQ(complex->toDouble(), 2);
  EXPECT_EQ(complex->imaginaryToDouble(), 1.3125);  // 4/3 in sixteenths
  *complex = *real;
  EXPECT_EQ(complex->imaginaryToDouble(), 0);
  complex->setComplex(9, 4);
  complex->sqrtInto(complex.get());
  EXPECT_EQ(complex->toDouble(), 3);
  EXPECT_EQ(complex->imaginaryToDouble(), 0);
  complex->setComplex(0, 1);
  EXPECT_FALSE(complex->isZero());
  *complex = 0;
  EXPECT_TRUE(complex->isZero());
}

TEST(FixptProduct, IsAValidOperandOfTheNext) {
  const auto a = makeFixpt(handle({12, 4}));
  const auto b = makeFixpt(handle({12, 4}));
  *a = 2.5;
  *b = -3.0;
  EXPECT_EQ((*a * (*a * *b)).toDouble(), -18.75);
  EXPECT_EQ(((*a * *b) * *b).toDouble(), 22.5);
  const auto x = makeFixpt(handle({12, 4}, true));
  const auto y = makeFixpt(handle({12, 4}, true));
  x->setComplex(1, 2);
  y->setComplex(3, -1);
  const Fixpt& cubic = *x * (*x * *y);  // (1 + 2i)(5 + 5i)
  EXPECT_EQ(cubic.toDouble(), -5);
  EXPECT_EQ(cubic.imaginaryToDouble(), 15);
}

TEST(FixptMemory, OfTheHostIsUsedInPlaceByTheBitsOfTheWord) {
  std::array<std::uint8_t, 3> pixels = {0, 255, 7};
  const auto image = makeFixpt(handle({8, 0, false}), 3);
  image->setValPtr(pixels.data());
  EXPECT_EQ((*image)[1].toDouble(), 255);
  (*image)[2] = 300;  // saturates
  EXPECT_EQ(pixels[2], 255);

  std::array<std::int16_t, 2> stray = {0x5801, 0};  // 12 bits: 0x801, a negative number
  const auto twelve = makeFixpt(handle({12, 0}), 2);
  twelve->setValPtr(stray.data());
  EXPECT_EQ(twelve->toDouble(), -2047);
  (*twelve)[1] += (*twelve)[0];
  EXPECT_EQ(twelve->toDouble(), 0);  // one array, one cursor
  (*twelve)[1] = -1;
  EXPECT_EQ(stray[1], -1);

  std::array<unsigned char, 33> odd{};
  const auto wide = makeFixpt(handle({128, 0}), 2);
  wide->setValPtr(odd.data() + 1);  // any alignment
  (*wide)[1] = -2;
  EXPECT_EQ(odd[17], 0xFE);
  EXPECT_EQ(odd[32], 0xFF);
  for (const auto& [word, bits] : {std::pair{1U, 8}, {9, 16}, {17, 32}, {33, 64}, {65, 128}}) {
    EXPECT_EQ(makeFixpt(handle({word, 0}))->containerBits(), bits);
  }
}

TEST(FixptStatistics, AreTakenOnceAndOutliveTheArray) {
  brekk::BrekkAdaptorTolk host;
  for (brekk::BrekkAdaptorTolk* adaptor : {&host, static_cast<brekk::BrekkAdaptorTolk*>(nullptr)}) {
    fxpBlockProperties* first = nullptr;
    fxpBlockProperties* second = nullptr;
    {
      const auto v = makeFixpt(makeAttributes({.value = {8, 4}, .valueLabel = "pixel", .adaptor = adaptor}));
      *v = 0;  // not a cast
      *v = 0.5;
      *v = 1.0 / 32;
      *v = 100;
      first = v->takeProperties();
      second = v->takeProperties();
      EXPECT_EQ(v->attributes().getLabel(), "pixel");
      EXPECT_EQ((*v * *v).attributes().getLabel(), "product");
      EXPECT_EQ(v->subordinate(0), &(*v * *v));
      EXPECT_EQ(v->norm().attributes().getLabel(), "product");
      for (int i : {-1, 1, 3, 4, 5}) EXPECT_EQ(v->subordinate(i), nullptr) << i;
    }
    const fxpLogStruct_tag& log = *first->getLogStruct();
    EXPECT_EQ(log.casts, 3U);
    EXPECT_EQ(log.overflows, 1U);
    EXPECT_EQ(log.lossyRoundings, 1U);
    EXPECT_EQ(log.minimum, 0.0625);
    EXPECT_EQ(log.maximum, 7.9375);
    const fxpLogStruct_tag& empty = *second->getLogStruct();
    EXPECT_EQ(empty.casts + empty.overflows + empty.lossyRoundings, 0U);
    EXPECT_NE(empty.logRange, 0U);
    EXPECT_GT(empty.minimum, empty.maximum);
  }
}

TEST(FixptStatistics, CanBeSwitchedOffAndAddedTo) {
  const auto v = makeFixpt(handle({8, 4}));
  *v** v;
  v->setStatistics(false);
  *v = 100;
  *v += *v * *v;
  EXPECT_EQ(v->takeProperties()->getLogStruct()->casts, 0U);
  EXPECT_EQ(v->subordinate(0)->takeProperties()->getLogStruct()->casts, 1U);
  v->setStatistics(true);
  *v = 1;
  v->addStatistics({1, 10, 5, 1, -3, 0.5});
  const fxpLogStruct_tag& log = *v->takeProperties()->getLogStruct();
  EXPECT_EQ(log.overflows, 1U);
  EXPECT_EQ(log.casts, 11U);
  EXPECT_EQ(log.lossyRoundings, 5U);
  EXPECT_EQ(log.minimum, -3);
  EXPECT_EQ(log.maximum, 1);
}

TEST(FixptOverride, ComputesInFloatingPoint) {
  for (const auto mode : {KarnSimCommon::overrideDouble, KarnSimCommon::overrideSingle}) {
    const bool single = mode == KarnSimCommon::overrideSingle;
    const auto rounded = [single](double v) { return single ? static_cast<double>(static_cast<float>(v)) : v; };
    const auto a = makeFixpt(handle({8, 4}, false, mode));
    const auto b = makeFixpt(handle({8, 4}, false, mode));
    EXPECT_EQ(a->containerBits(), single ? 32 : 64);
    *a = 1000.1;
    *b = std::numbers::pi;
    EXPECT_EQ(a->toDouble(), rounded(1000.1));
    EXPECT_EQ((*a * *b).toDouble(), rounded(rounded(1000.1) * rounded(std::numbers::pi)));
    EXPECT_EQ(a->norm().toDouble(), rounded(rounded(1000.1) * rounded(1000.1)));
    EXPECT_GT(*a, *b);
    const auto fixed = makeFixpt(handle({8, 4}));
    *fixed = *b;
    EXPECT_EQ(fixed->toDouble(), 3.125);
    *fixed += *a;
    EXPECT_EQ(fixed->toDouble(), 7.9375);
    const auto quotient = makeFixpt(handle({8, 4}, false, mode));
    quotient->divideInto(*b, *fixed);
    EXPECT_EQ(quotient->toDouble(), rounded(rounded(std::numbers::pi) / 7.9375));
    *quotient >>= 3;
    EXPECT_EQ(quotient->toDouble(), rounded(rounded(std::numbers::pi) / 7.9375) / 8);
    EXPECT_EQ(quotient->takeProperties()->getLogStruct()->overflows, 0U);
  }
}

TEST(FixptSpecials, HaveDefinedResults) {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  const auto v = makeFixpt(handle({8, 4})), zero = makeFixpt(handle({8, 4})), one = makeFixpt(handle({8, 4}));
  for (const auto& [given, expected] :
       {std::pair{infinite, 7.9375}, {-infinite, -8.0}, {std::nan(""), 0.0}, {1e308, 7.9375}, {-1e-308, 0.0}}) {
    *v = given;
    EXPECT_EQ(v->toDouble(), expected) << given;
  }
  for (const auto& [dividend, expected] : {std::pair{-1, -8}, {0, 0}}) {
    *one = dividend;
    v->divideInto(*one, *zero);
    EXPECT_EQ(v->toDouble(), expected);
  }
  using Limits = std::numeric_limits<int>;
  for (const auto& [shift, expected] : {std::pair{Limits::max(), 0.0}, {Limits::min(), 7.9375}}) {
    *v = 1;
    *v >>= shift;
    EXPECT_EQ(v->toDouble(), expected);
  }
}

TEST(FixptSilence, UnknownArgumentsFallBack) {
  constexpr int far = std::numeric_limits<int>::max();
  const DSPDataAttributesHandle odd(0, far, 500, -far - 1, 129, far, nullptr, static_cast<fxpModeOverflow_tag>(4),
                                    static_cast<fxpModeRounding_tag>(-1), true, true, "", "", "",
                                    static_cast<KarnSimCommon::overrideDType>(99));
  EXPECT_EQ(odd.type(), (FixptType{1, far, true}));
  EXPECT_EQ(odd.productType(odd), (FixptType{128, -far - 1, true}));
  EXPECT_EQ(odd.accumulatorType(odd).word, 128U);
  EXPECT_EQ(odd.overflowMode(), fxpOverflowWrap);
  EXPECT_EQ(odd.roundingMode(), fxpRoundFloor);
  EXPECT_EQ(odd.overrideMode(), KarnSimCommon::overrideNone);
  const std::unique_ptr<Fixpt> array(FixptFactory::createFixpt(odd, -5, 0));
  EXPECT_EQ(array->count(), 0);
  const auto v = makeFixpt(odd);
  v->setStored(-1);
  EXPECT_EQ(v->norm().toDouble(), 0);  // 2^-2max in units of 2^(max + 1)
  EXPECT_TRUE(*v > *makeFixpt(odd));
  v->divideInto(*v, *v);
  v->sqrtInto(v.get());
}

TEST(FixptText, OfTypesAndModesIsReadAndWritten) {
  for (const char* text : {"s16.12", "u8.0", "s1.-7", "u128.200"})
    EXPECT_EQ(formatFixptType(parseFixptType(text)), text);
  EXPECT_EQ(parseFixptType("u8.-2"), (FixptType{8, -2, false}));
  for (const char* text :
       {"", "s", "16.12", "s16", "s16.", "s.4", "x16.1", "s16.1 ", "s 16.1", "s-16.1", "s16.1.2", "s16.99999999999"}) {
    EXPECT_THAT([=] { parseFixptType(text); },
                ThrowsMessage<std::invalid_argument>(AllOf(HasSubstr(text), HasSubstr("as in s16.12"))))
        << text;
  }
  for (const char* text : {"s0.0", "u129.3"}) {
    EXPECT_THAT([=] { parseFixptType(text); },
                ThrowsMessage<std::invalid_argument>(AllOf(HasSubstr(text), HasSubstr("1 to 128"))));
  }
  for (int i = 0; i < 6; ++i) {
    const auto rounding = static_cast<fxpModeRounding_tag>(i);
    EXPECT_EQ(parseRoundingMode(modeName(rounding)), rounding);
    const auto overflow = static_cast<fxpModeOverflow_tag>(i % 4);
    EXPECT_EQ(parseOverflowMode(modeName(overflow)), overflow);
    const auto override = static_cast<KarnSimCommon::overrideDType>(i % 3);
    EXPECT_EQ(parseOverrideMode(modeName(override)), override);
  }
  EXPECT_EQ(modeName(static_cast<fxpModeRounding_tag>(-1)), "unknown");
  EXPECT_THAT([] { parseOverflowMode("clip"); },
              ThrowsMessage<std::invalid_argument>(
                  "overflow mode \"clip\" is unknown; allowed: wrap, saturate, symmetric or zero"));
}

TEST(FixptMake, RefusesWhatCannotBe) {
  const auto refuses = [](FixptDescription d, const char* text) {
    EXPECT_THAT([=] { makeAttributes(d); }, ThrowsMessage<std::invalid_argument>(HasSubstr(text)));
  };
  refuses({.value = {0, 0}}, "word length 0 of value is out of range; allowed: 1 to 128");
  refuses({.accumulator = {129, 0}}, "word length 129 of accumulator");
  refuses({.product = {8, 0, false}}, "product type u8.0 and value type s16.0 differ in sign");
  refuses({.overflow = static_cast<fxpModeOverflow_tag>(4)}, "overflow mode 4 is unknown; allowed: 0 to 3");
  EXPECT_THAT(
      [] {
        makeFixpt(handle({8, 0}), -1);
      },
      ThrowsMessage<std::invalid_argument>(HasSubstr("count -1 is negative")));
}

}  // namespace
