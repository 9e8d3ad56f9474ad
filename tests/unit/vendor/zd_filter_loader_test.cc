// The vendor's filter functions, played by a library of the tests: what is sent to them, when, and what comes back.
#include "orvane/vendor/zd_filter_loader.h"

#include <gmock/gmock.h>

#include <complex>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/filters/convolution.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/template_matcher.h"
#include "tests/support/conv_corr_bench.h"
#include "tests/support/vendor_filters.h"

namespace BP::test {
namespace {

/// Whole numbers: whatever the order of a sum, its bits are the same.
template <class T>
std::vector<T> wholeNumbers(std::mt19937& random, int count) {
  std::vector<T> values;
  for (int i = 0; i < count; ++i) values.push_back(static_cast<T>(pick(random, -50, 50)));
  return values;
}

template <class T>
Problem<T, T, T> wholeProblem(std::mt19937& random, int mostFilter = 5) {
  auto p = randomProblem<T, T, T>(random, mostFilter, 12);
  p.h = wholeNumbers<T>(random, p.hDims[0] * p.hDims[1]);
  p.u = wholeNumbers<T>(random, p.uDims[0] * p.uDims[1]);
  p.padValue = static_cast<T>(pick(random, -9, 9));
  p.outputMode = allModes[pick(random, 0, 2)];
  p.algorithmMode = static_cast<AlgorithmModeEnum>(pick(random, AlgorithmModeConvolution, AlgorithmModeCorrelation));
  p.padType = allPads[pick(random, 0, 4)];
  return p;
}

/// Runs with the complete stand-in named, and a fresh record.
class Vendor : public testing::Test {
 protected:
  void SetUp() override { load(VENDOR_FILTERS); }
  void TearDown() override {
    ZdLoader::clearLibraries();
    EXPECT_EQ(takeStatus(), 0);
  }
  static void load(const char* path) {
    ZdLoader::clearLibraries();
    ASSERT_EQ(ZdLoader::addLibrary(path), "");
    *vendorRecord() = {};
  }
  static IppStatus takeStatus() { return ZdLoader::takeBadStatus(ZdFilterLoader::clientTag); }

  std::mt19937 random{29};
  VendorRecord& record = *vendorRecord();
};

template <class T>
class VendorFilter : public Vendor {};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(VendorFilter, Elements);

TYPED_TEST(VendorFilter, IsSentTheInteriorInElementsOfItsOwnMeaning) {
  using T = TypeParam;
  for (const auto mode : {AlgorithmModeConvolution, AlgorithmModeCorrelation}) {
    Problem<T, T, T> p{{4, 3}, {9, 7}, wholeNumbers<T>(this->random, 12), wholeNumbers<T>(this->random, 63)};
    p.outputMode = OutputModeFull;
    p.algorithmMode = mode;
    Bench<T, T, T> bench(p);
    bench.run(p.outputCount());
    const VendorRecord& r = this->record;
    const int bytes = sizeof(T), uPitch = 9, yPitch = 12;
    EXPECT_EQ(r.source, bench.problem.u.data() + 1 + uPitch * 1) << "the filter's centre";
    EXPECT_EQ(r.destination, bench.y.data() + 3 + yPitch * 2) << "the first output whose window is inside";
    EXPECT_EQ(r.kernel == bench.problem.h.data(), mode == AlgorithmModeConvolution);
    EXPECT_THAT((std::vector{r.sourceStep, r.destinationStep}), testing::ElementsAre(uPitch * bytes, yPitch * bytes));
    EXPECT_THAT((std::vector{r.rectangle.width, r.rectangle.height}), testing::ElementsAre(6, 5));
    EXPECT_THAT((std::vector{r.kernelSize.width, r.kernelSize.height}), testing::ElementsAre(4, 3));
    EXPECT_THAT((std::vector{r.anchor.x, r.anchor.y}), testing::ElementsAre(2, 1));
  }
}

TYPED_TEST(VendorFilter, ComputesEveryInteriorWithOneCallARun) {
  using T = TypeParam;
  for (int trial = 0; trial < 400 && !this->HasFailure(); ++trial) {
    const auto p = wholeProblem<T>(this->random);
    const auto row = trial % 4 == 0 ? wholeNumbers<T>(this->random, pick(this->random, 1, 5)) : std::vector<T>{};
    Bench<T, T, T> bench(p, false, row);
    auto shape = p;
    int calls = p.hDims[0] <= p.uDims[0] && p.hDims[1] <= p.uDims[1] ? 1 : 0;
    if (!row.empty()) {
      shape.hDims[0] = static_cast<int>(p.h.size());
      shape.hDims[1] = static_cast<int>(row.size());
      const bool firstFits = shape.hDims[0] <= p.uDims[0];
      calls = (firstFits ? 1 : 0) + (shape.hDims[1] <= p.uDims[1] && shape.yDim(0) > 0 ? 1 : 0);
    }
    this->record = {};
    bench.run(shape.outputCount());  // the second run must not depend on the first
    EXPECT_EQ(bench.run(shape.outputCount()), row.empty() ? solve(p) : solveSeparable(p, row)) << "trial " << trial;
    EXPECT_EQ(this->record.filterCalls(), 2 * calls) << "trial " << trial;
    EXPECT_EQ(this->record.bufSize64fCalls, this->record.filter64fCalls);
    constexpr bool isDouble = std::is_same_v<T, double>;
    EXPECT_EQ(this->record.filter64fCalls, isDouble ? 2 * calls : 0);
  }
}

TYPED_TEST(VendorFilter, TunedFilterTakesEffectAndAGrownOneIsComputedHere) {
  using T = TypeParam;
  for (const auto mode : {AlgorithmModeConvolution, AlgorithmModeCorrelation}) {
    Problem<T, T, T> p{{3, 2}, {12, 12}, wholeNumbers<T>(this->random, 6), wholeNumbers<T>(this->random, 144)};
    p.algorithmMode = mode;
    Bench<T, T, T> bench(p, true);
    const auto expectRun = [&](int calls) {
      bench.front->tune(p.h.data(), nullptr, nullptr);
      for (int d = 0; d < 2; ++d) bench.hDims[d] = p.hDims[d];
      bench.y.assign(bench.y.size(), T(-77));
      this->record = {};
      EXPECT_EQ(bench.run(p.outputCount()), solve(p));
      EXPECT_EQ(this->record.filterCalls(), calls);
    };
    expectRun(1);
    p.h = wholeNumbers<T>(this->random, 6);
    p.hDims[0] = 2;
    p.hDims[1] = 3;
    expectRun(1);
    p.h = wholeNumbers<T>(this->random, 25);
    p.hDims[0] = p.hDims[1] = 5;
    expectRun(mode == AlgorithmModeConvolution ? 1 : 0);  // there is no room for its reversal
    bench.front->setup(p.h.data(), bench.problem.u.data(), bench.y.data(), nullptr, false);
    expectRun(1);
  }
}

TYPED_TEST(VendorFilter, UsesTheFirstPlaneOfMoreDimensions) {
  using T = TypeParam;
  int hDims[] = {2, 2, 2}, uDims[] = {3, 2, 3};
  auto h = wholeNumbers<T>(this->random, 8), u = wholeNumbers<T>(this->random, 18);
  for (const auto mode : {AlgorithmModeConvolution, AlgorithmModeCorrelation}) {
    ReferenceHost host;
    ConvCorrTolk<T, T, T> front(host.getAdaptor(), 3, hDims, 3, uDims, PadTypeConstant, OutputModeValid, mode, NormNone,
                                false);
    host.provideWorkVectors(front.getAllocator());
    std::vector<T> y(2);
    front.setup(h.data(), u.data(), y.data(), nullptr, false);
    front.computeOutputs();
    Problem<T, T, T> plane{{2, 2}, {3, 2}, {h.begin(), h.begin() + 4}, {u.begin(), u.begin() + 6}};
    plane.algorithmMode = mode;
    EXPECT_EQ(y, solve(plane));
  }
  EXPECT_EQ(this->record.filterCalls(), 2);
}

TYPED_TEST(VendorFilter, MatchesTemplatesWhereScoresAreStoredAndARegionOfInterestMovesTheInterior) {
  using T = TypeParam;
  using namespace filters;  // NOLINT: views and options by their short names
  for (int trial = 0; trial < 100 && !this->HasFailure(); ++trial) {
    const auto t = wholeNumbers<T>(this->random, 6), u = wholeNumbers<T>(this->random, 99);
    const filters::Rectangle region{pick(this->random, -2, 10), pick(this->random, -2, 8), 4, 3};
    MatchOptions options{.metric = Metric::product, .region = region, .neighbourhood = 3, .map = true};
    if (trial % 2 == 0) options.mode = OutputMode::full;
    const ArrayView image(u, {11, 9}), pattern(t, {3, 2});
    const auto find = [&] { return TemplateMatcher<T, T>(pattern, {11, 9}, options).run(image); };
    this->record = {};
    const auto found = find();
    if (found.found && options.mode == OutputMode::valid) {
      EXPECT_EQ(this->record.filterCalls(), 2) << "one for the block, one for the map";
    }
    ZdLoader::clearLibraries();
    const auto expected = find();
    this->load(VENDOR_FILTERS);
    const auto listOf = [](const Array<T>& a) { return std::vector<T>(a.data(), a.data() + a.size()); };
    EXPECT_EQ(listOf(found.map), listOf(expected.map)) << "trial " << trial;
    EXPECT_EQ(listOf(found.neighbourhood), listOf(expected.neighbourhood)) << "trial " << trial;
    EXPECT_EQ(found.location, expected.location) << "trial " << trial;
  }
}

TYPED_TEST(VendorFilter, IsNotCalledWhereItsMeaningIsAnother) {
  using T = TypeParam;
  using C = std::complex<T>;
  const auto expectNone = [&](auto problem, const char* what) {
    Bench bench(problem);
    bench.run(problem.outputCount());
    EXPECT_EQ(this->record.filterCalls() + this->record.bufSize64fCalls, 0) << what;
  };
  Problem<T, T, T> p{{2, 2}, {4, 4}, wholeNumbers<T>(this->random, 4), wholeNumbers<T>(this->random, 16)};
  p.norm = NormWindowEnergy;
  expectNone(p, "normalised");
  p.norm = NormNone;
  p.hDims[0] = 5;
  p.h = wholeNumbers<T>(this->random, 10);
  p.outputMode = OutputModeFull;
  expectNone(p, "boundary only");
  p.hDims[0] = 0;
  p.outputMode = OutputModeValid;
  expectNone(p, "no element");
  const auto real = wholeNumbers<T>(this->random, 16);
  const std::vector<C> complex(real.begin(), real.end());
  expectNone(Problem<C, C, C>{{2, 2}, {4, 4}, complex, complex}, "complex");
  expectNone(Problem<T, C, C>{{2, 2}, {4, 4}, real, complex}, "complex input");
  expectNone(Problem<C, T, C>{{2, 2}, {4, 4}, complex, real}, "complex filter");
  const std::vector<T> part(real.begin(), real.begin() + 4);
  filters::matchTemplate(filters::ArrayView(real, {4, 4}), filters::ArrayView(part, {2, 2}), {.map = true});
  EXPECT_EQ(this->record.filterCalls(), 0) << "another metric";
}

TYPED_TEST(VendorFilter, BadStatusIsReportedAndTheOtherSectorsAreComputed) {
  using T = TypeParam;
  const auto h = wholeNumbers<T>(this->random, 9), u = wholeNumbers<T>(this->random, 36);
  const Problem<T, T, T> p{{3, 3}, {6, 6}, h, u, T(2), OutputModeSame, AlgorithmModeCorrelation};
  for (const bool isAboutBuffer : {false, true}) {
    if (isAboutBuffer && std::is_same_v<T, float>) continue;
    this->record = {};
    (isAboutBuffer ? this->record.bufSizeAnswer : this->record.filterAnswer) = -9999;
    Bench<T, T, T> bench(p);
    const auto y = bench.run(36), expected = solve(p);
    for (int i = 0; i < 36; ++i) {
      const bool isInside = i % 6 > 0 && i % 6 < 5 && i / 6 > 0 && i / 6 < 5;
      const auto k = static_cast<std::size_t>(i);
      EXPECT_EQ(y[k], isInside ? T(-77) : expected[k]) << i;
    }
    EXPECT_EQ(this->takeStatus(), -9999);
    EXPECT_EQ(this->record.filterCalls(), isAboutBuffer ? 0 : 1);
  }
  try {
    filters::convolve(filters::ArrayView(u, {6, 6}), filters::ArrayView(h, {3, 3}));
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "vendor filter function: error status -9999; the output is not valid");
  }
}

TYPED_TEST(VendorFilter, OneMissingFunctionSwitchesAllOff) {
  using T = TypeParam;
  const char* const incomplete[] = {VENDOR_FILTERS_1, VENDOR_FILTERS_2, VENDOR_FILTERS_3};
  for (const char* path : incomplete) {
    this->load(path);
    const ZdFilterLoader loader;
    EXPECT_FALSE(loader.getAllLoaded()) << path;
    const auto recordOf = reinterpret_cast<VendorRecord* (*)()>(loader.getMethodPointer("vendorRecord"));
    ASSERT_NE(recordOf, nullptr);
    for (const auto mode : {AlgorithmModeConvolution, AlgorithmModeCorrelation}) {
      auto p = wholeProblem<T>(this->random, 3);
      p.algorithmMode = mode;
      Bench<T, T, T> bench(p);
      EXPECT_EQ(bench.run(p.outputCount()), solve(p)) << path;
    }
    EXPECT_EQ(recordOf()->filterCalls() + recordOf()->bufSize64fCalls, 0) << path;
  }
  ASSERT_EQ(ZdLoader::addLibrary(VENDOR_FILTERS), "");
  EXPECT_TRUE(ZdFilterLoader().getAllLoaded()) << "what one library lacks can come from the next";
}

TEST_F(Vendor, FixedPointIsNotSentToIt) {
  const filters::FixedType type{16, 0};
  filters::FixedConvolution convolution(filters::FixedArray({2}, type), {3},
                                        {.input = type, .accumulator = {32, 0}, .output = type});
  convolution.run(filters::FixedArray({3}, type));
  EXPECT_EQ(record.filterCalls(), 0);
}

}  // namespace
}  // namespace BP::test
