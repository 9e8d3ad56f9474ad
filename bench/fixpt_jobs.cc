// Fixed-point values: sums of products and single operations, beside SystemC's two implementations.
#include <algorithm>
#include <memory>
#include <vector>

#include "bench/harness.h"
#include "bench/systemc_peer.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace bench {
namespace {

using namespace KarnDSPFixpt;

constexpr int taps = 1024;

/// 16-bit operands, products of 32 bits of which 4 bits are rounded away, sums of 40 bits with 4 bits less again;
/// everything rounds to the nearest and saturates.
FixptDescription description(const FixptType& value) {
  return {.value = value, .product = {32, 20}, .accumulator = {40, 16}};
}

std::unique_ptr<Fixpt> filled(const FixptDescription& d, unsigned seed) {
  auto array = makeFixpt(makeAttributes(d), taps);
  const std::vector<double> values = fixedSamples(seed);
  for (int i = 0; i < taps; ++i) (*array)[i].setComplex(values[static_cast<std::size_t>(i)], 1);
  return array;
}

void sumOfProducts(Harness& harness, const char* type, bool statistics, bool isComplex) {
  const Subject subject{"fixed-point sum", type, "", "", 1};
  if (!harness.wants(subject)) return;
  FixptDescription d = description({16, 12});
  d.isComplex = isComplex;
  const auto input = filled(d, 1);
  const auto filter = filled(d, 2);
  d.value = d.accumulator;
  const auto sum = makeFixpt(makeAttributes(d));
  for (Fixpt* array : {input.get(), filter.get(), sum.get()}) array->setStatistics(statistics);
  const int step = isComplex ? 2 : 1;
  const auto run = [&] {
    *sum = 0;
    for (int i = 0; i < taps; ++i) {
      input->setCursor(i * step);
      filter->setCursor(i * step);
      *sum += *input * *filter;
    }
    keep(sum->toDouble());
  };
  std::vector<Peer> peers;
  if (!isComplex) peers = {{"sc_fix", systemCFix({})}, {"sc_fix_fast", systemCFixFast({})}};
  harness.measure(subject, timed(run, taps), peers);
}

/// `operation(target, a, b)` for each of 1024 pairs of values.
template <class Operation>
void each(Harness& harness, const char* type, const FixptType& operand, const FixptType& target, Operation operation) {
  const Subject subject{"fixed-point value", type, "", ""};
  if (!harness.wants(subject)) return;
  FixptDescription d = description(operand);
  d.product = target;
  const auto a = filled(d, 3);
  const auto b = filled(d, 4);
  d.value = target;
  const auto result = makeFixpt(makeAttributes(d));
  const auto run = [&] {
    for (int i = 0; i < taps; ++i) {
      operation(*result, (*a)[i], (*b)[i]);
      keep(result->data());
    }
  };
  harness.measure(subject, timed(run, taps));
}

/// What a normalised sample does after its sums: two temporaries, a root, a product and a division.
void normalisation(Fixpt& y, Fixpt& a, Fixpt& b) {
  const std::unique_ptr<Fixpt> energy(FixptFactory::createFixpt(y.attributes(), 1, 0));
  const std::unique_ptr<Fixpt> root(FixptFactory::createFixpt(b.attributes(), 1, 0));
  *energy = a.norm();
  energy->sqrtInto(root.get());
  *energy = *root * b;
  if (!energy->isZero()) y.divideInto(y, *energy);
}
void product(Fixpt&, Fixpt& a, Fixpt& b) { keep(a * b); }
void assignment(Fixpt& y, Fixpt& a, Fixpt&) { y = a; }
void comparison(Fixpt&, Fixpt& a, Fixpt& b) { keep(a > b); }
void division(Fixpt& y, Fixpt& a, Fixpt& b) { y.divideInto(a, b); }
void squareRoot(Fixpt& y, Fixpt& a, Fixpt&) { a.sqrtInto(&y); }

}  // namespace

void measureFixedPoint(Harness& harness) {
  constexpr FixptType narrow = {16, 12}, wide = {128, 100};
  sumOfProducts(harness, "16 bits", false, false);
  sumOfProducts(harness, "16 bits, statistics", true, false);
  sumOfProducts(harness, "16 bits, complex", true, true);
  each(harness, "assignment, 16 to 12", narrow, {12, 8}, assignment);
  each(harness, "comparison, 16", narrow, narrow, comparison);
  each(harness, "product, 32 to 64", {32, 24}, {64, 48}, product);
  each(harness, "product, 128", wide, wide, product);
  each(harness, "division, 32", {32, 20}, {32, 20}, division);
  each(harness, "division, 128", wide, wide, division);
  each(harness, "normalisation, 16 in 40", narrow, {40, 20}, normalisation);
  each(harness, "square root, 40", {40, 30}, {32, 20}, squareRoot);
}

}  // namespace bench
