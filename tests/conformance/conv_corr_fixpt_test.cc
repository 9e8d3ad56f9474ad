// Fixed-point convolution and correlation against rational arithmetic: every cast in its place, every overflow counted.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"
#include "orvane/platform/karn_fixpt_3_make.h"
#include "tests/support/conv_corr_model.h"
#include "tests/support/fixpt_model.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using namespace KarnDSPFixpt;  // NOLINT: types and modes by their short names

/// An exact value of two parts; real ones leave the second 0.
struct Exact {
  mpq_class re, im;
};

/// Casts as the model makes them, with a count of those that did not fit.
class Caster {
 public:
  Caster(FixptType castType, const DSPDataAttributesHandle& modes)
      : type(castType), overflow(modes.overflowMode()), rounding(modes.roundingMode()) {}
  mpq_class operator()(const mpq_class& exact) { return take(model::cast(exact, type, overflow, rounding)); }
  mpq_class root(const mpq_class& exact) { return take(model::castRoot(exact, type, overflow, rounding)); }
  unsigned overflows = 0;

 private:
  mpq_class take(const model::Outcome& outcome) {
    overflows += outcome.overflow ? 1 : 0;
    return model::scale(outcome.stored, -long{type.fraction});
  }
  FixptType type;
  fxpModeOverflow_tag overflow;
  fxpModeRounding_tag rounding;
};

/// Handles of the five roles, with random types and modes.
struct Roles {
  DSPDataAttributesHandle input, output, filter, accumulator, sqrt;
};

FixptType randomType(std::mt19937& random, int minWord, int maxWord, bool isSigned) {
  const int word = pick(random, minWord, maxWord);
  return {static_cast<unsigned>(word), pick(random, -1, word - 1), isSigned};
}

DSPDataAttributesHandle randomHandle(std::mt19937& random, brekk::BrekkAdaptorTolk* adaptor, bool isSigned,
                                     bool isComplex, const std::string& label) {
  return makeAttributes({.value = randomType(random, 3, 12, isSigned),
                         .product = randomType(random, 6, 20, isSigned),
                         .accumulator = randomType(random, 6, 24, isSigned),
                         .overflow = static_cast<fxpModeOverflow_tag>(pick(random, 0, 3)),
                         .rounding = static_cast<fxpModeRounding_tag>(pick(random, 0, 5)),
                         .isComplex = isComplex,
                         .valueLabel = label,
                         .productLabel = label + " product",
                         .accumulatorLabel = label + " sum",
                         .adaptor = adaptor});
}

std::unique_ptr<Fixpt> randomArray(std::mt19937& random, const DSPDataAttributesHandle& handle, int count) {
  auto array = makeFixpt(handle, count);
  for (int i = 0; i < count << (handle.isComplex() ? 1 : 0); ++i) {
    array->setCursor(i);
    array->setStored(pick(random, -(1 << 15), 1 << 15));
  }
  return array;
}

Exact valueAt(Fixpt& array, int i) {
  array[i];
  return {model::value(array), array.isComplex() ? model::value(array, 1) : mpq_class(0)};
}

/// The casts of one run: the product of a tap, its sum if it is complex, the accumulator, the output.
class FixptModel {
 public:
  FixptModel(const Roles& r)
      : roles(r),
        product(r.input.productType(r.filter), r.input),
        complexSum(r.input.accumulatorType(r.filter), r.input),
        square(r.input.productType(r.input), r.input),
        accumulator(r.accumulator.type(), r.accumulator),
        root(r.sqrt.type(), r.sqrt),
        scaled(r.sqrt.productType(r.sqrt), r.sqrt),
        output(r.output.type(), r.output) {}

  void addProduct(Exact& acc, const Exact& tap, const Exact& h) {
    Exact p;
    if (roles.input.isComplex() && roles.filter.isComplex()) {
      p = {complexSum(product(tap.re * h.re) - product(tap.im * h.im)),
           complexSum(product(tap.re * h.im) + product(tap.im * h.re))};
    } else {  // one product for each component, nothing to add
      p.re = product(tap.re * h.re);
      if (roles.accumulator.isComplex()) p.im = product(tap.im * h.re + tap.re * h.im);
    }
    acc.re = accumulator(acc.re + p.re);
    if (roles.accumulator.isComplex()) acc.im = accumulator(acc.im + p.im);
  }

  Exact stored(const Exact& acc) { return {output(acc.re), roles.output.isComplex() ? output(acc.im) : mpq_class(0)}; }

  const Roles& roles;
  Caster product, complexSum, square, accumulator, root, scaled, output;
};

/// Geometry as of the plain model, with indices in place of elements.
using Indices = Problem<int, int, int>;

Indices randomIndices(std::mt19937& random) {
  Indices p;
  for (int d = 0; d < 2; ++d) {
    p.hDims[d] = pick(random, 1, 4);
    p.uDims[d] = pick(random, 1, 6);
  }
  for (int i = 0; i < p.uDims[0] * p.uDims[1]; ++i) p.u.push_back(i);
  p.padValue = -1;
  p.outputMode = static_cast<OutputModeEnum>(pick(random, 0, 2));
  p.algorithmMode = static_cast<AlgorithmModeEnum>(pick(random, 0, 1));
  p.padType = static_cast<PadTypeEnum>(pick(random, 1, 4));
  return p;
}

/// One random problem, run by the front, with what the front logged.
struct FrontRun {
  FrontRun(std::mt19937& random, NormEnum norm, bool inputComplex, bool filterComplex)
      : p(randomIndices(random)),
        isComplex(inputComplex || filterComplex),
        roles{make(random, inputComplex, "input"), make(random, isComplex, "output"),
              make(random, filterComplex, "filter"), make(random, isComplex, "accumulator"),
              make(random, isComplex, "sqrt")} {
    u = randomArray(random, roles.input, p.uDims[0] * p.uDims[1]).release();
    h = randomArray(random, roles.filter, p.hDims[0] * p.hDims[1]).release();
    pad = randomArray(random, roles.input, 1).release();
    y = makeFixpt(roles.output, static_cast<int>(p.outputCount()) + 1).release();
    (*pad)[0];
    front = std::make_unique<ConvCorrTolk<Fixpt, Fixpt, Fixpt>>(
        host.getAdaptor(), 2, p.hDims, 2, p.uDims, p.padType, p.outputMode, p.algorithmMode, norm, false, roles.input,
        roles.output, roles.filter, roles.accumulator, roles.sqrt);
    host.provideWorkVectors(front->getAllocator());
    front->setFixptLogMap(&log);
    front->setup(h, u, y, pad, inputComplex);
    front->computeOutputs();
    front->setup(setupFinish);
    EXPECT_TRUE(host.getMessages().empty());
  }

  DSPDataAttributesHandle make(std::mt19937& random, bool complexValues, const char* label) {
    return randomHandle(random, host.getAdaptor(), pick(random, 0, 3) != 0, complexValues, label);
  }

  Exact tapAt(int x, int y0) {
    const int index = test::tapAt(p, x, y0);
    return index < 0 ? valueAt(*pad, 0) : valueAt(*u, index);
  }

  /// Calls `take(tap, filter element)` in the order of the sum for output (x, y).
  template <class TakeT>
  void forEachTap(int x, int y0, TakeT&& take) {
    const int count = p.hDims[0] * p.hDims[1];
    for (int k = 0; k < count; ++k) {
      const Exact tap = tapAt(x + p.firstTap(0) + k % p.hDims[0], y0 + p.firstTap(1) + k / p.hDims[0]);
      take(tap, valueAt(*h, p.algorithmMode == AlgorithmModeConvolution ? count - 1 - k : k));
    }
  }

  void expectOutput(int i, const Exact& expected) {
    const Exact found = valueAt(*y, i);
    ASSERT_EQ(found.re, expected.re) << "output " << i;
    ASSERT_EQ(found.im, expected.im) << "output " << i;
  }

  unsigned overflowsOf(const std::string& label) {
    const auto found = log.find(label);
    return found == log.end() ? 0 : found->second->getLogStruct()->overflows;
  }

  Indices p;
  bool isComplex;
  ReferenceHost host;
  Roles roles;
  FixptLogMap log;
  Fixpt *u, *h, *pad, *y;  // the front's
  std::unique_ptr<ConvCorrTolk<Fixpt, Fixpt, Fixpt>> front;
};

TEST(FixptConvCorr, EveryCastOfAPlainSumIsInItsPlaceAndCounted) {
  std::mt19937 random(5);
  unsigned overflows = 0;
  for (int trial = 0; trial < 400; ++trial) {
    FrontRun run(random, NormNone, trial % 4 == 1 || trial % 4 == 3, trial % 4 >= 2);
    FixptModel model(run.roles);
    for (int i = 0; i < static_cast<int>(run.p.outputCount()); ++i) {
      Exact acc;
      run.forEachTap(i % run.p.yDim(0), i / run.p.yDim(0),
                     [&](const Exact& tap, const Exact& h) { model.addProduct(acc, tap, h); });
      ASSERT_NO_FATAL_FAILURE(run.expectOutput(i, model.stored(acc))) << "trial " << trial;
    }
    // Products of pad taps are counted by the pad value, which no log takes.
    if (run.p.padType != PadTypeConstant) {
      ASSERT_EQ(run.overflowsOf("input product"), model.product.overflows) << "trial " << trial;
      ASSERT_EQ(run.overflowsOf("input sum"), model.complexSum.overflows) << "trial " << trial;
    }
    ASSERT_EQ(run.overflowsOf("accumulator"), model.accumulator.overflows) << "trial " << trial;
    ASSERT_EQ(run.overflowsOf("output"), model.output.overflows) << "trial " << trial;
    overflows += model.output.overflows + model.accumulator.overflows + model.product.overflows;
  }
  EXPECT_GT(overflows, 400u);
}

TEST(FixptConvCorr, NormalisedSumsTakeTheirCastsInOrder) {
  std::mt19937 random(6);
  int zeros = 0, others = 0;
  for (int trial = 0; trial < 300; ++trial) {
    FrontRun run(random, NormWindowEnergy, false, false);
    FixptModel model(run.roles);
    Caster filterSquare(run.roles.filter.productType(run.roles.filter), run.roles.filter);
    mpq_class filterEnergy;
    for (int k = 0; k < run.p.hDims[0] * run.p.hDims[1]; ++k) {
      const mpq_class h = valueAt(*run.h, k).re;
      filterEnergy = model.accumulator(filterEnergy + filterSquare(h * h));
    }
    if (filterEnergy < 0) continue;  // wrapped: no root to speak of
    const mpq_class filterNorm = model.root.root(filterEnergy);
    for (int i = 0; i < static_cast<int>(run.p.outputCount()); ++i) {
      Exact acc;
      mpq_class energy;
      run.forEachTap(i % run.p.yDim(0), i / run.p.yDim(0), [&](const Exact& tap, const Exact& h) {
        energy = model.accumulator(energy + model.square(tap.re * tap.re));
        model.addProduct(acc, tap, h);
      });
      if (energy < 0) continue;
      const mpq_class divisor = model.accumulator(model.scaled(model.root.root(energy) * filterNorm));
      Exact y;
      if (divisor != 0) y.re = model.accumulator(acc.re / divisor);
      ++(divisor == 0 ? zeros : others);
      ASSERT_NO_FATAL_FAILURE(run.expectOutput(i, model.stored(y))) << "trial " << trial;
    }
  }
  EXPECT_GT(zeros, 100);
  EXPECT_GT(others, 100);
}

TEST(FixptConvCorr, SeparableQuantisesBetweenThePasses) {
  ReferenceHost host;
  const auto handle = [&](FixptType type) {
    return makeAttributes({.value = type, .overflow = fxpOverflowSaturate, .adaptor = host.getAdaptor()});
  };
  const auto input = handle({16, 0, true}), output = handle({5, 0, true}), filter = handle({8, 0, true}),
             accumulator = handle({24, 0, true});
  const auto make = [](const DSPDataAttributesHandle& type, const std::vector<int>& values) {
    auto array = makeFixpt(type, static_cast<int>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) (*array)[static_cast<int>(i)] = values[i];
    return array.release();
  };
  int column[] = {2, 1}, row[] = {1, 2}, size[] = {2, 2};
  const auto firstOutput = [&](OutputModeEnum mode, const std::vector<int>& first, const std::vector<int>& u) {
    ConvCorrTolk<Fixpt, Fixpt, Fixpt> front(host.getAdaptor(), 2, column, 2, row, 2, size, PadTypeConstant, mode,
                                            AlgorithmModeCorrelation, false, input, output, filter, accumulator);
    host.provideWorkVectors(front.getAllocator());
    auto* const y = make(output, std::vector<int>(9));
    front.setup(make(filter, first), make(filter, {1, -1}), make(input, u), y, make(input, {-1}), false);
    front.computeOutputs();
    return (*y)[0].toDouble();
  };
  // The column sums 20 and 7; 20 saturates to 15 in the intermediate, which has the output's type.
  EXPECT_EQ(firstOutput(OutputModeValid, {1, 1}, {10, 10, 3, 4}), 15 - 7);
  // The second pad value is the sum of the column, saturated in the output's type, and only then times the first.
  EXPECT_EQ(firstOutput(OutputModeFull, {10, 10}, {0, 0, 0, 0}), -15 + 10);
}

}  // namespace
}  // namespace BP::test
