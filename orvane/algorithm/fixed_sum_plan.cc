#include "orvane/algorithm/fixed_sum_plan.h"

#include <algorithm>

namespace BP {
namespace {

using KarnDSPFixpt::FixptType;
using KarnDSPFixpt::detail::castInto;
using KarnDSPFixpt::detail::Int128;
using KarnDSPFixpt::detail::makeRange;
using KarnDSPFixpt::detail::makeRounder;
using KarnDSPFixpt::detail::signedBits;

constexpr int maxShift = 40;  // so that bounds stay within 128 bits
constexpr int operandBits = 32;

struct Interval {
  Int128 low = 0;
  Int128 high = 0;
  void cover(const Interval& other) {
    low = std::min(low, other.low);
    high = std::max(high, other.high);
  }
  constexpr bool holds(const Interval& other) const { return other.low >= low && other.high <= high; }
};
Interval shifted(const Interval& v, int bits) { return {v.low << bits, v.high << bits}; }

/// The values of a type, of at most 125 bits.
Interval valuesOf(const FixptType& type) {
  const auto range = makeRange<Int128>(type, fxpOverflowWrap);
  return {range.least, range.greatest};
}

/// Signed bits that hold an interval.
int bitsOf(const Interval& v) {
  int bits = 1;
  while (v.low < -(Int128(1) << (bits - 1)) || v.high >= Int128(1) << (bits - 1)) ++bits;
  return bits;
}

/// A cast of intervals, and what it can do.
class BoundedCast {
 public:
  BoundedCast(const FixedFormat& to, int droppedBits)
      : format(to), drop(droppedBits), rounder(makeRounder<Int128>(drop, to.rounding)), values(valuesOf(to.type)) {
    if (to.overflow == fxpOverflowSymmetric && to.type.isSigned) ++values.low;
  }

  /// The results of casting `exact`; rounding never falls.
  Interval operator()(const Interval& exact) {
    met.cover(exact);
    const Interval rounded{roundBy(rounder, exact.low), roundBy(rounder, exact.high)};
    if (rounded.low >= values.low && rounded.high <= values.high) return rounded;
    fits = false;
    return {std::min<Int128>(values.low, 0), std::max<Int128>(values.high, 0)};
  }

  bool getFits() const { return fits; }
  bool isPlain() const { return rounder.isPlain; }
  /// Whether every cast that does not fit gives the nearest end of the range.
  bool clamps() const {
    return fits || format.overflow == fxpOverflowSaturate || format.overflow == fxpOverflowSymmetric;
  }
  /// Bits of everything that occurs on the way, the term of rounding included.
  int bits() const {
    const Int128 unit = drop > 0 ? Int128(1) << drop : 0;
    const int exactBits = bitsOf({met.low - unit, met.high + unit});
    return fits ? exactBits : std::max(exactBits, signedBits(format.type));
  }
  /// For lanes of `laneBits`: the range of the type, or that of the lanes if nothing leaves it.
  lanes::FixedCast inLanes(int laneBits) const {
    const FixptType whole{static_cast<unsigned>(laneBits == 32 ? 32 : 62), 0, true};
    return {makeRounder<std::int64_t>(drop, format.rounding),
            fits ? makeRange<std::int64_t>(whole, fxpOverflowSaturate)
                 : makeRange<std::int64_t>(format.type, format.overflow)};
  }

 private:
  FixedFormat format;
  int drop;
  KarnDSPFixpt::detail::Rounder<Int128> rounder;
  Interval values;
  Interval met;
  bool fits = true;
};

/// Follows the formats of one sum.
class Planner {
 public:
  Planner(const FixedSumFormats& given, std::span<const std::int64_t> filter)
      : formats(given),
        taps(filter),
        productShift(given.product.type.fraction - given.input.fraction - given.filter.fraction),
        sumShift(given.accumulator.type.fraction - given.product.type.fraction),
        outputShift(given.output.type.fraction - given.accumulator.type.fraction) {}

  FixedSumPlan plan() const {
    if (!isWithinLimits()) return {};
    BoundedCast product(formats.product, std::max(-productShift, 0)), sum(formats.accumulator, std::max(-sumShift, 0));
    const Interval sums = follow(product, sum);
    BoundedCast output(formats.output, std::max(-outputShift, 0));
    output(shifted(sums, std::max(outputShift, 0)));
    FixedSumPlan plan;
    plan.outputAppend = std::max(outputShift, 0);
    chooseForm(plan, product, sum);
    if (bitsOf(shiftedTaps(plan.tapShift)) > operandBits || output.bits() > 62) return {};
    chooseLanes(plan, product, sum);
    if (plan.laneBits == 0) return {};
    if (plan.form == lanes::FixedForm::exact) chooseDots(plan);
    const bool outputIsNarrow = std::max(output.bits(), bitsOf(sums)) <= 32 && plan.outputAppend < 32;
    plan.outputLaneBits = plan.laneBits == 32 && outputIsNarrow ? 32 : 64;
    plan.product = product.inLanes(plan.laneBits);
    plan.sum = sum.inLanes(plan.laneBits);
    plan.output = output.inLanes(plan.outputLaneBits);
    return plan;
  }

 private:
  bool isWithinLimits() const {
    const auto isNear = [](int shift) { return shift >= -maxShift && shift <= maxShift; };
    const auto isNarrow = [](const FixedFormat& format) { return signedBits(format.type) <= 64; };
    return taps.size() <= std::size_t(lanes::maxFixedTaps) && signedBits(formats.input) <= operandBits &&
           signedBits(formats.filter) <= operandBits && isNarrow(formats.product) && isNarrow(formats.accumulator) &&
           isNarrow(formats.output) && isNear(productShift) && isNear(sumShift) && isNear(outputShift) &&
           isNear(productShift + sumShift);
  }

  Interval productOf(Int128 tap) const {
    const Interval input = valuesOf(formats.input);
    const Int128 a = input.low * tap, b = input.high * tap;
    return {std::min(a, b), std::max(a, b)};
  }

  /// Takes all taps through both casts. Returns what the sum can be at the end.
  Interval follow(BoundedCast& product, BoundedCast& sum) const {
    Interval running;
    for (const std::int64_t tap : taps) {
      const Interval p = shifted(product(shifted(productOf(tap), std::max(productShift, 0))), std::max(sumShift, 0));
      const Interval s = shifted(running, std::max(-sumShift, 0));
      running = sum({s.low + p.low, s.high + p.high});
    }
    return running;
  }

  /// Whether no tap loses a bit: neither in its product nor where that is added.
  bool isLossless() const {
    const int drop = std::max({-productShift, -(productShift + sumShift), 0});
    const std::int64_t dropped = (std::int64_t{1} << drop) - 1;
    return std::all_of(taps.begin(), taps.end(), [&](std::int64_t tap) { return (tap & dropped) == 0; });
  }

  Interval shiftedTaps(int shift) const {
    Interval all;
    for (const std::int64_t tap : taps) {
      const Int128 v = shift < 0 ? Int128(tap) >> -shift : Int128(tap) << shift;
      all.cover({v, v});
    }
    return all;
  }

  /// Bits of products and running sums in units of the sum, without a cast.
  int exactBits() const {
    const int shift = productShift + sumShift;
    Interval all, running;
    for (const std::int64_t tap : taps) {
      const Interval p = productOf(shift < 0 ? Int128(tap) >> -shift : Int128(tap) << shift);
      running = {running.low + p.low, running.high + p.high};
      all.cover(p);
      all.cover(running);
    }
    return bitsOf(all);
  }

  /// Chooses narrow operands for an exact sum, if they hold the input, shifted by half of its range or not, and the
  /// taps.
  void chooseDots(FixedSumPlan& plan) const {
    using lanes::DotOperands;
    constexpr Interval byte{-128, 127}, unsignedByte{0, 255}, word{-32768, 32767}, unsignedWord{0, 65535};
    const Interval input = valuesOf(formats.input), all = shiftedTaps(plan.tapShift);
    const auto choose = [&](DotOperands operands, int bias) { plan.dots = operands, plan.bias = bias; };
    if (plan.laneBits == 32 && byte.holds(all)) {
      if (unsignedByte.holds(input)) return choose(DotOperands::bytes, 0);
      if (byte.holds(input)) return choose(DotOperands::bytes, 128);
    }
    if (plan.laneBits == 32 && unsignedByte.holds(all)) {
      if (byte.holds(input)) return choose(DotOperands::signedBytes, 0);
      if (unsignedByte.holds(input)) return choose(DotOperands::signedBytes, -128);
    }
    const bool inTwo = plan.laneBits == 64;
    if (!(inTwo ? halvesFit(plan.tapShift) : word.holds(all))) return;
    if (word.holds(input)) {
      choose(DotOperands::words, 0);
    } else if (unsignedWord.holds(input)) {
      choose(DotOperands::words, -32768);
    }
    plan.dotsInTwo = inTwo && plan.dots != DotOperands::none;
  }

  /// Whether both halves of the taps are words, and the sum of either half fits 32 bits for all words.
  bool halvesFit(int tapShift) const {
    Int128 low = 0, high = 0;
    for (const std::int64_t tap : taps) {
      const auto halves = lanes::DotHalves::of(
          static_cast<std::int64_t>(tapShift < 0 ? Int128(tap) >> -tapShift : Int128(tap) << tapShift));
      if (halves.high < -32768 || halves.high > 32767) return false;
      low += halves.low < 0 ? -halves.low : halves.low;
      high += halves.high < 0 ? -halves.high : halves.high;
    }
    return std::max(low, high) < 65536;
  }

  void chooseLanes(FixedSumPlan& plan, const BoundedCast& product, const BoundedCast& sum) const {
    const bool isExact = plan.form == lanes::FixedForm::exact;
    const int bits = isExact ? exactBits() : std::max(product.bits(), sum.bits());
    const bool shiftsAreNarrow =  // even of what is always 0
        isExact || std::max({plan.append, plan.ownAppend, plan.otherAppend}) < 32;
    plan.laneBits = bits <= 32 && shiftsAreNarrow ? 32 : bits <= 62 ? 64 : 0;
    const FixedFormat& format = formats.accumulator;
    const bool fillsLane = format.type.word == 32 && format.type.isSigned && format.overflow == fxpOverflowSaturate;
    if (plan.path != FixedSumPath::checkedSums || !fillsLane || product.bits() > 32) return;
    plan.laneBits = 32;
    plan.form = plan.form == lanes::FixedForm::round ? lanes::FixedForm::roundWord : lanes::FixedForm::quickRoundWord;
  }

  void chooseForm(FixedSumPlan& plan, const BoundedCast& product, const BoundedCast& sum) const {
    if (isLossless() && product.getFits() && sum.getFits()) {
      plan.path = FixedSumPath::exact;
      plan.form = lanes::FixedForm::exact;
      plan.tapShift = productShift + sumShift;
      plan.append = -sumShift;
    } else if (product.getFits() && sumShift == 0 && sum.clamps()) {
      plan.path = sum.getFits() ? FixedSumPath::roundedProducts : FixedSumPath::checkedSums;
      plan.form = product.isPlain() ? lanes::FixedForm::quickRound : lanes::FixedForm::round;
      plan.tapShift = std::max(productShift, 0);
    } else {
      plan.path = FixedSumPath::generalCasts;
      plan.form = lanes::FixedForm::any;
      plan.append = std::max(productShift, 0);
      plan.ownAppend = std::max(-sumShift, 0);
      plan.otherAppend = std::max(sumShift, 0);
    }
  }

  FixedSumFormats formats;
  std::span<const std::int64_t> taps;
  int productShift;  ///< bits from an exact product to the product's type
  int sumShift;      ///< from there to the accumulator's
  int outputShift;   ///< from there to the output's
};

}  // namespace

FixedSumPlan planFixedSum(const FixedSumFormats& formats, std::span<const std::int64_t> taps) {
  return Planner(formats, taps).plan();
}

const char* describe(FixedSumPath path) {
  switch (path) {
    case FixedSumPath::exact:
      return "No product and no sum can round or overflow, so sums are integer sums with one cast at the end.";
    case FixedSumPath::roundedProducts: return "Products are rounded in vector lanes; no sum can round or overflow.";
    case FixedSumPath::checkedSums:
      return "Products are rounded in vector lanes, and each sum is cut to the accumulator's range, tap by tap.";
    case FixedSumPath::generalCasts:
      return "Products and sums are rounded and fitted into their types in vector lanes, tap by tap.";
    case FixedSumPath::singleValues: break;
  }
  return "Types or filter are beyond what vector lanes hold, so values are computed one by one.";
}

}  // namespace BP
