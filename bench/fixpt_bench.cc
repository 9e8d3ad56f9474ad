// Fixed-point values: sums of products and single operations, beside SystemC's two implementations.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#define SC_INCLUDE_FX
#include <sysc/datatypes/fx/fx.h>

#include "bench/per_item.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace {

using namespace KarnDSPFixpt;

constexpr int taps = 1024;

std::vector<double> samples(unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> any(-7.9, 7.9);
  std::vector<double> values(taps);
  for (double& v : values) v = any(engine);
  return values;
}

/// 16-bit operands, products of 32 bits of which 4 bits are rounded away, sums of 40 bits with 4 bits less again;
/// everything rounds to the nearest and saturates.
FixptDescription description(const FixptType& value) {
  return {.value = value, .product = {32, 20}, .accumulator = {40, 16}};
}

std::unique_ptr<Fixpt> filled(const FixptDescription& d, unsigned seed) {
  auto array = makeFixpt(makeAttributes(d), taps);
  const std::vector<double> values = samples(seed);
  for (int i = 0; i < taps; ++i) (*array)[i].setComplex(values[static_cast<std::size_t>(i)], 1);
  return array;
}

void sumOfProducts(benchmark::State& state, bool statistics, bool isComplex) {
  FixptDescription d = description({16, 12});
  d.isComplex = isComplex;
  const auto input = filled(d, 1);
  const auto filter = filled(d, 2);
  d.value = d.accumulator;
  const auto sum = makeFixpt(makeAttributes(d));
  for (Fixpt* array : {input.get(), filter.get(), sum.get()}) array->setStatistics(statistics);
  const int step = isComplex ? 2 : 1;
  for (auto _ : state) {
    *sum = 0;
    for (int i = 0; i < taps; ++i) {
      input->setCursor(i * step);
      filter->setCursor(i * step);
      *sum += *input * *filter;
    }
    benchmark::DoNotOptimize(sum->toDouble());
  }
  reportPerItem(state, "op", taps);
}
BENCHMARK_CAPTURE(sumOfProducts, no_statistics, false, false);
BENCHMARK_CAPTURE(sumOfProducts, statistics, true, false);
BENCHMARK_CAPTURE(sumOfProducts, complex, true, true);

/// The sums of a convolution, statistics included: an image of 256 by 256 with a filter of 7 by 7.
void convolution(benchmark::State& state, const BP::filters::FixedType& filterType,
                 const BP::filters::FixedTypes& types, BP::filters::Pad pad) {
  using namespace BP::filters;
  constexpr std::int64_t side = 256, edge = 7;
  const auto random = [](const Extents& extents, const FixedType& type) {
    std::mt19937 engine(5);
    FixedArray array(extents, type);
    auto* const bytes = static_cast<unsigned char*>(array.data());
    std::generate_n(bytes, elementCount(extents) * (type.word / 8),
                    [&] { return static_cast<unsigned char>(engine()); });
    return array;
  };
  const FixedArray image = random({side, side}, types.input);
  const OutputMode mode = pad == Pad::constant ? OutputMode::valid : OutputMode::same;
  FixedConvolution job(random({edge, edge}, filterType), image.extents(), types, {.mode = mode, .pad = pad});
  FixedArray output(job.outputExtents(), types.output);
  for (auto _ : state) job.run(image, output);
  reportPerItem(state, "op", elementCount(job.outputExtents()) * edge * edge);
}
constexpr BP::filters::FixedType fixed8 = {8, 7, true};
constexpr BP::filters::FixedType fixed16 = {16, 12, true};
const BP::filters::FixedTypes exactTypes = {
    .input = {8, 0, false}, .accumulator = {32, 7, true}, .output = {16, 0, true}};
const BP::filters::FixedTypes roundedTypes = {.input = fixed16,
                                              .accumulator = {40, 16, true},
                                              .output = fixed16,
                                              .product = BP::filters::FixedType{32, 20, true}};
BENCHMARK_CAPTURE(convolution, exact, fixed8, exactTypes, BP::filters::Pad::constant);
BENCHMARK_CAPTURE(convolution, rounded, fixed16, roundedTypes, BP::filters::Pad::constant);

/// The same sum in SystemC, whose values carry their types as ours do.
template <class Number>
void sumOfProductsSystemC(benchmark::State& state) {
  const auto values = [](unsigned seed) {
    std::vector<std::unique_ptr<Number>> numbers;
    for (const double v : samples(seed)) {
      numbers.push_back(std::make_unique<Number>(16, 4, sc_dt::SC_RND, sc_dt::SC_SAT));
      *numbers.back() = v;
    }
    return numbers;
  };
  const auto input = values(1);
  const auto filter = values(2);
  Number product(32, 12, sc_dt::SC_RND, sc_dt::SC_SAT);
  Number sum(40, 24, sc_dt::SC_RND, sc_dt::SC_SAT);
  for (auto _ : state) {
    sum = 0;
    for (std::size_t i = 0; i < taps; ++i) {
      product = *input[i] * *filter[i];
      sum += product;
    }
    benchmark::DoNotOptimize(sum.to_double());
  }
  reportPerItem(state, "op", taps);
}
BENCHMARK_TEMPLATE(sumOfProductsSystemC, sc_dt::sc_fix)->Name("sumOfProducts/systemc_fix");
BENCHMARK_TEMPLATE(sumOfProductsSystemC, sc_dt::sc_fix_fast)->Name("sumOfProducts/systemc_fix_fast");

/// `operation(target, a, b)` for each of 1024 pairs of values.
template <class Operation>
void each(benchmark::State& state, const FixptType& operand, const FixptType& target, Operation operation) {
  FixptDescription d = description(operand);
  d.product = target;
  const auto a = filled(d, 3);
  const auto b = filled(d, 4);
  d.value = target;
  const auto result = makeFixpt(makeAttributes(d));
  for (auto _ : state) {
    for (int i = 0; i < taps; ++i) {
      operation(*result, (*a)[i], (*b)[i]);
      benchmark::DoNotOptimize(result->data());
    }
  }
  reportPerItem(state, "op", taps);
}

constexpr FixptType narrow = {16, 12};
constexpr FixptType wide = {128, 100};

/// What a normalised sample does after its sums: two temporaries, a root, a product and a division.
void normalisation(Fixpt& y, Fixpt& a, Fixpt& b) {
  const std::unique_ptr<Fixpt> energy(FixptFactory::createFixpt(y.attributes(), 1, 0));
  const std::unique_ptr<Fixpt> root(FixptFactory::createFixpt(b.attributes(), 1, 0));
  *energy = a.norm();
  energy->sqrtInto(root.get());
  *energy = *root * b;
  if (!energy->isZero()) y.divideInto(y, *energy);
}
void product(Fixpt&, Fixpt& a, Fixpt& b) { benchmark::DoNotOptimize(&(a * b)); }
void assignment(Fixpt& y, Fixpt& a, Fixpt&) { y = a; }
void comparison(Fixpt&, Fixpt& a, Fixpt& b) { benchmark::DoNotOptimize(a > b); }
void division(Fixpt& y, Fixpt& a, Fixpt& b) { y.divideInto(a, b); }
void squareRoot(Fixpt& y, Fixpt& a, Fixpt&) { a.sqrtInto(&y); }
BENCHMARK_CAPTURE(each, assignment_16_to_12, narrow, FixptType{12, 8}, assignment);
BENCHMARK_CAPTURE(each, comparison_16, narrow, narrow, comparison);
BENCHMARK_CAPTURE(each, product_32_to_64, FixptType{32, 24}, FixptType{64, 48}, product);
BENCHMARK_CAPTURE(each, product_128, wide, wide, product);
BENCHMARK_CAPTURE(each, division_32, FixptType{32, 20}, FixptType{32, 20}, division);
BENCHMARK_CAPTURE(each, division_128, wide, wide, division);
BENCHMARK_CAPTURE(each, normalisation_16_in_40, narrow, FixptType{40, 20}, normalisation);
BENCHMARK_CAPTURE(each, square_root_40, FixptType{40, 30}, FixptType{32, 20}, squareRoot);

}  // namespace
