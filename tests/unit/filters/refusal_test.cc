// Every refusal names the argument, its value and what is allowed.
#include "tests/support/refusal.h"

#include <gmock/gmock.h>

#include <limits>
#include <type_traits>
#include <vector>

#include "orvane/filters/convolution.h"
#include "orvane/filters/correlation_nd.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/fixed_median.h"
#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/median.h"
#include "orvane/filters/template_matcher.h"

namespace BP::filters {
namespace {

constexpr std::int64_t greatest = std::numeric_limits<std::int32_t>::max();
const std::vector<float> few(64);

const ConvolutionOptions valid{.mode = OutputMode::valid};

/// A filter of 3 by 2 for inputs of these extents.
void make(const Extents& input, const ConvolutionOptions& options = valid, const Extents& filter = {3, 2}) {
  Convolution<float>(ArrayView(few.data(), filter), input, options);
}

/// Only extents, which are looked at before any element.
void makeHuge(const Extents& input, const Extents& filter, const ConvolutionOptions& options = valid) {
  Convolution<float>(ArrayView<const float>(nullptr, filter), input, options);
}

void makeSeparable(const Extents& input, const Extents& first, const Extents& second,
                   const ConvolutionOptions& options = valid) {
  SeparableConvolution<float>({few.data(), first}, {few.data(), second}, input, options);
}

/// Runs a filter of 3 by 2 over an input of 4 by 3 at the start of some memory.
void run(std::size_t outputStart, const Extents& outputExtents, const Extents& inputExtents = {4, 3}) {
  std::vector<float> memory(64);
  Convolution<float> convolution(ArrayView(few.data(), {3, 2}), {4, 3}, valid);
  convolution.run({memory.data() + 6, inputExtents}, {memory.data() + outputStart, outputExtents});
}

const ConvolutionOptions full{.mode = OutputMode::full};
const ConvolutionOptions mirrored{.mode = OutputMode::same, .pad = PadRule::symmetric};
const ConvolutionOptions energy{.normalise = Normalisation::energy};

TEST(RefusalTest, OfExtents) {
  EXPECT_REFUSAL("input: rank 3; allowed are 1 and 2", make({4, 3, 2}));
  EXPECT_REFUSAL("input: rank 0; allowed are 1 and 2", make({}));
  EXPECT_REFUSAL("input: extent 0 in dimension 1; allowed are 1 to 2147483647", make({4, 0}));
  EXPECT_REFUSAL("input: extent -4 in dimension 0; allowed are 1 to 2147483647", make({-4, 3}));
  EXPECT_REFUSAL("input: extent 2147483648 in dimension 0; allowed are 1 to 2147483647", make({greatest + 1, 1}));
  EXPECT_REFUSAL("input: 65536 x 32768 are 2147483648 elements; at most 2147483647 are allowed", make({65536, 32768}));
  EXPECT_REFUSAL("filter: extent 0 in dimension 0; allowed are 1 to 2147483647", makeHuge({4, 3}, {0, 1}));
  EXPECT_REFUSAL("filter: rank 1; it must be that of the input, 2", make({4, 3}, {}, {6}));
  EXPECT_REFUSAL("filter: null; it must point to 3 x 2 elements", makeHuge({4, 3}, {3, 2}));
  EXPECT_REFUSAL("filter: extent 3 in dimension 0; with mode valid and an input of 2 x 9, allowed are 1 to 2",
                 make({2, 9}));
  EXPECT_REFUSAL("filter: extent 1 in dimension 0; for an input extent of 2147483647, at most 0 is allowed",
                 makeHuge({greatest}, {1}));
  EXPECT_REFUSAL("filter: extent 1073741823 in dimension 0; for an input extent of 2, at most 1073741822 is allowed",
                 makeHuge({2}, {greatest / 2}, full));
  EXPECT_REFUSAL("output: 60000 x 60000 are 3600000000 elements; at most 2147483647 are allowed",
                 makeHuge({30001, 30001}, {30000, 30000}, full));
  EXPECT_REFUSAL("input: extent 1073741824 in dimension 0; with this pad at most 1073741823 is allowed",
                 makeHuge({greatest / 2 + 1}, {3}, mirrored));
  EXPECT_REFUSAL("view: 5 elements; extents 2 x 3 need 6", ArrayView<const int>(std::vector<int>(5), {2, 3}));
  EXPECT_REFUSAL("array: extents 2 x -1; allowed are extents of 0 or more", Array<int>({2, -1}));
  EXPECT_REFUSAL("extents: rank 9; allowed are 0 to 8", Extents{1, 1, 1, 1, 1, 1, 1, 1, 1});
}

TEST(RefusalTest, OfConvolutions) {
  EXPECT_REFUSAL("mode: 3; allowed are 0 (valid), 1 (same), 2 (full)", make({4, 3}, {.mode = OutputMode{3}}));
  EXPECT_REFUSAL("mode: 7; allowed are 0 (valid), 1 (same), 2 (full)", outputExtents({4}, {3}, OutputMode{7}));
  EXPECT_REFUSAL("pad: -1; allowed are 0 (constant), 1 (replicate), 2 (symmetric), 3 (circular), 4 (mirror)",
                 make({4, 3}, {.pad = PadRule{-1}}));
  EXPECT_REFUSAL("direction: 2; allowed are 0 (convolution), 1 (correlation)",
                 make({4, 3}, {.direction = FilterDirection{2}}));
  EXPECT_REFUSAL("direction: 0 (convolution); correlate allows only 1 (correlation); convolve convolves",
                 correlate(Array<float>({4}), Array<float>({1}), {.direction = FilterDirection::convolution}));
  EXPECT_REFUSAL("normalise: 9; allowed are 0 (none), 1 (energy)", make({4, 3}, {.normalise = Normalisation{9}}));
  EXPECT_REFUSAL("pad value: 0.5 - 2i; the input is real, so it must be real",
                 make({4, 3}, {.pad = {PadRule::constant, {0.5, -2}}}));
  EXPECT_REFUSAL("pad value: 1e+39; it must lie in the range of the input's element type",
                 make({4, 3}, {.pad = {PadRule::constant, 1e39}}));
  EXPECT_REFUSAL("normalise: 1 (energy); a separable convolution allows only 0 (none)",
                 makeSeparable({4, 3}, {3}, {2}, energy));
  EXPECT_REFUSAL("input: rank 1; a separable convolution needs 2", makeSeparable({4}, {3}, {2}));
  EXPECT_REFUSAL("first filter: rank 2; it must be 1", makeSeparable({4, 3}, {3, 1}, {2}));
  EXPECT_REFUSAL("second filter: extent 4 in dimension 1; with mode valid and an input of 2 x 3, allowed are 1 to 3",
                 makeSeparable({4, 3}, {3}, {4}));
  EXPECT_REFUSAL("intermediate array: 268435463 x 8 are 2147483704 elements; at most 2147483647 are allowed",
                 makeSeparable({268435455, 8}, {9}, {2}, full));
  EXPECT_REFUSAL("input: extents 3 x 4; they must be 4 x 3", run(0, {2, 2}, {3, 4}));
  EXPECT_REFUSAL("output: extents 4 x 3; they must be 2 x 2", run(0, {4, 3}));
  for (const std::size_t start : {3U, 17U}) {
    EXPECT_REFUSAL(
        "output: overlaps the input; the two must not share memory, as outputs would overwrite inputs of others",
        run(start, {2, 2}));
  }
}

TEST(RefusalTest, OfCorrelationsOfMoreDimensions) {
  using Job = CorrelationND<float>;
  const Array<float> filter({3, 3, 3}), input({5, 5, 5});
  EXPECT_REFUSAL("filter: rank 3; it must be that of the input, 2", Job(filter, {5, 5}));
  EXPECT_REFUSAL("filter: extent 3 in dimension 1; with mode valid and an input of 5 x 2 x 5, allowed are 1 to 2",
                 Job(filter, {5, 2, 5}, {.mode = OutputMode::valid}));
  EXPECT_REFUSAL("input: rank 0; allowed are 1 to 8", Job(filter, Extents{}));
  EXPECT_REFUSAL("input: extent 0 in dimension 1; allowed are 1 to 2147483647", Job(filter, {5, 0, 5}));
  EXPECT_REFUSAL("input: 2000 x 2000 x 2000 are 8000000000 elements; at most 2147483647 are allowed",
                 Job(filter, {2000, 2000, 2000}));
  EXPECT_REFUSAL("pad: 5; allowed are 0 (constant), 1 (replicate), 2 (symmetric), 3 (circular), 4 (mirror)",
                 Job(filter, {5, 5, 5}, {.pad = PadRule{5}}));
  EXPECT_REFUSAL("pad value: 1e+40; it must lie in the range of the input's element type",
                 Job(filter, {5, 5, 5}, {.pad = {PadRule::constant, 1e40}}));
  Array<float> wrong({3, 3, 5});
  EXPECT_REFUSAL("output: extents 3 x 3 x 5; they must be 3 x 3 x 3",
                 Job(filter, {5, 5, 5}, {.mode = OutputMode::valid}).run(input, wrong));
}

TEST(RefusalTest, OfMedians) {
  EXPECT_REFUSAL("window: extent 0 in dimension 1; allowed are 1 to 2147483647", Median<float>({3, 0}, {9, 9}));
  EXPECT_REFUSAL("window: rank 1; it must be that of the input, 2", Median<float>({3}, {9, 9}));
  EXPECT_REFUSAL("window: extent 4 in dimension 0; with mode valid and an input of 3, allowed are 1 to 3",
                 Median<float>({4}, {3}, {.mode = OutputMode::valid}));
  EXPECT_REFUSAL("window: extent 2147483647 in dimension 0; for an input extent of 3, at most 1073741822 is allowed",
                 Median<float>({greatest}, {3}, {.mode = OutputMode::same}));
  EXPECT_REFUSAL("input: rank 3; allowed are 1 and 2", Median<float>({1}, {2, 2, 2}));
  EXPECT_REFUSAL("mode: 3; allowed are 0 (valid), 1 (same), 2 (full)",
                 Median<float>({1}, {2}, {.mode = OutputMode{3}}));
  EXPECT_REFUSAL("pad value: 0.5; the input is bool, so it must be 0 or 1",
                 Median<bool>({1}, {2}, {.pad = {PadRule::constant, 0.5}}));
  float memory[16] = {};
  Median<float> median({3}, {6}, {.mode = OutputMode::valid});
  EXPECT_REFUSAL("input: extents 5; they must be 6", median.run({memory, {5}}, {memory + 8, {4}}));
  EXPECT_REFUSAL(
      "output: overlaps the input; the two must not share memory, as outputs would overwrite inputs of others",
      median.run({memory, {6}}, {memory + 5, {4}}));
}

/// `types` with another value for one member.
template <class Types, class Member>
Types with(Types types, Member Types::*member, const std::type_identity_t<Member>& value) {
  types.*member = value;
  return types;
}

const FixedType byte{8, 0, false};
const FixedTypes types{.input = byte, .accumulator = {40, 14}, .output = byte};

void makeFixed(const FixedTypes& changed, const ConvolutionOptions& options = valid,
               const FixedType& filter = {16, 14}) {
  FixedConvolution(FixedArray({2}, filter), {4}, changed, options);
}

void runFixed(const FixedType& outputType, bool isComplex) {
  FixedConvolution(FixedArray({2}, {16, 14}), {4}, types)
      .run(FixedArray({4}, byte), FixedArray({3}, outputType, isComplex));
}

TEST(RefusalTest, OfFixedPoint) {
  EXPECT_REFUSAL("accumulator: no type; allowed are word lengths of 1 to 128",
                 makeFixed(with(types, &FixedTypes::accumulator, {})));
  EXPECT_REFUSAL("output: word length 129; allowed are word lengths of 1 to 128",
                 makeFixed(with(types, &FixedTypes::output, {129, 0})));
  EXPECT_REFUSAL("input: fraction length 1025; allowed are -1024 to 1024",
                 makeFixed(with(types, &FixedTypes::input, {8, 1025})));
  EXPECT_REFUSAL("sqrt: no type; normalise 1 (energy) needs one", makeFixed(types, energy));
  EXPECT_REFUSAL("sqrt: s16.8; only normalise 1 (energy) takes one",
                 makeFixed(with(types, &FixedTypes::sqrt, FixedType{16, 8})));
  EXPECT_REFUSAL("product: u24.14; it must be signed, as products of input and filter are",
                 makeFixed(with(types, &FixedTypes::product, FixedType{24, 14, false})));
  EXPECT_REFUSAL(
      "product: 140 bits for exact products of input and filter (u100.0 and s40.0); at most 128 are allowed: a product "
      "type must be given",
      makeFixed(with(types, &FixedTypes::input, {100, 0, false}), {}, {40, 0}));
  EXPECT_REFUSAL("rounding: 6; allowed are 0 (ceiling), 1 (convergent), 2 (floor), 3 (nearest), 4 (round), 5 (zero)",
                 makeFixed(with(types, &FixedTypes::modes, {.rounding = Rounding{6}})));
  EXPECT_REFUSAL("overflow: 4; allowed are 0 (wrap), 1 (saturate), 2 (symmetric), 3 (zero)",
                 makeFixed(with(types, &FixedTypes::modes, {.overflow = Overflow{4}})));
  EXPECT_REFUSAL("pad value: 0.5; it must be a value of the input's type u8.0",
                 makeFixed(types, {.mode = OutputMode::same, .pad = {PadRule::constant, 0.5}}));
  EXPECT_REFUSAL("output: type s8.0; it must be u8.0", runFixed({8, 0, true}, false));
  EXPECT_REFUSAL("output: type u8.0 complex; it must be u8.0", runFixed(byte, true));
  EXPECT_REFUSAL("type: u8.0 for elements of 16 bits; its values are stored in elements of 8 bits",
                 FixedView(ArrayView<const std::uint16_t>(nullptr, {3}), byte));
  EXPECT_REFUSAL("values: complex; they must be real", toDouble(FixedArray({3}, byte, true)));
  EXPECT_REFUSAL("values: extent 0 in dimension 0; allowed are 1 to 2147483647", toDouble(FixedArray({0}, byte)));
}

TEST(RefusalTest, OfFixedMedians) {
  EXPECT_REFUSAL(
      "accumulator: 129 bits for the exact mean of two values of s127.0; at most 128 are allowed: its type must be "
      "given",
      FixedMedian({3}, {4}, {.input = {127, 0}}));
  EXPECT_REFUSAL("window: extent 5 in dimension 0; with mode valid and an input of 4, allowed are 1 to 4",
                 FixedMedian({5}, {4}, {.input = {8, 0}}, {.mode = OutputMode::valid}));
  FixedMedian median({3}, {4}, {.input = {8, 0}});
  EXPECT_REFUSAL("pad value: 0 + 1i; the input is real, so it must be real", median.setPadValue({0, 1}));
  EXPECT_REFUSAL("input: type s8.0 complex; it must be s8.0", median.run(FixedArray({4}, {8, 0}, true)));
}

/// A template of 3 by 2 for images of these extents; only the extents of others are looked at.
TemplateMatcher<float> makeMatcher(const Extents& image, const MatchOptions& options = {},
                                   const Extents& pattern = {3, 2}) {
  return {{few.data(), pattern}, image, options};
}

TEST(RefusalTest, OfTemplateMatching) {
  EXPECT_REFUSAL("image: rank 1; it must be 2", makeMatcher({4}));
  EXPECT_REFUSAL("template: rank 1; it must be that of the input, 2", makeMatcher({4, 3}, {}, {3}));
  EXPECT_REFUSAL("template: extent 3 in dimension 0; with mode valid and an input of 2 x 3, allowed are 1 to 2",
                 makeMatcher({2, 3}));
  EXPECT_REFUSAL("template: extent 1073741822 in dimension 0; for an input extent of 4, at most 1073741821 is allowed",
                 makeMatcher({4, 3}, {.mode = OutputMode::same}, {1073741822, 1}));
  EXPECT_REFUSAL("output: 65537 x 32768 are 2147516416 elements; at most 2147483647 are allowed",
                 makeMatcher({65535, 32767}, {.mode = OutputMode::full}));
  EXPECT_REFUSAL("image: 65536 x 8193 are 536936448 elements; at most 536870912 are allowed",
                 makeMatcher({65536, 8193}, {.mode = OutputMode::same, .search = Search::threeStep}));
  EXPECT_REFUSAL(
      "metric: 6; allowed are 0 (sad), 1 (ssd), 2 (maxad), 3 (product), 4 (cosine), 5 (correlation coefficient)",
      makeMatcher({4, 3}, {.metric = static_cast<Metric>(6)}));
  EXPECT_REFUSAL("metric: 4; allowed are 0 (sad), 1 (ssd), 2 (maxad), 3 (product)",
                 TemplateMatcher<bool>(Array<bool>({1, 1}), {4, 3}, {.metric = Metric::cosine}));
  EXPECT_REFUSAL("search: -1; allowed are 0 (exhaustive), 1 (three-step)",
                 makeMatcher({4, 3}, {.search = static_cast<Search>(-1)}));
  EXPECT_REFUSAL("neighbourhood: 46341; allowed are 0 (none) to 46340", makeMatcher({4, 3}, {.neighbourhood = 46341}));
  EXPECT_REFUSAL("neighbourhood: 3; without best it must be 0",
                 makeMatcher({4, 3}, {.neighbourhood = 3, .best = false, .map = true}));
  EXPECT_REFUSAL("best: false; it must be true unless map is", makeMatcher({4, 3}, {.best = false}));
  EXPECT_REFUSAL("region: height of -1; with y of 0, allowed are 0 to 2147483647",
                 makeMatcher({4, 3}, {.region = Rectangle{0, 0, 1, -1}}));
  EXPECT_REFUSAL("region: width of 2147483647; with x of 5, allowed are 0 to 2147483642",
                 makeMatcher({4, 3}, {.region = Rectangle{5, 0, greatest, 1}}));
  EXPECT_REFUSAL("region: x of -1073741824; allowed are -1073741823 to 2147483647",
                 makeMatcher({4, 3}, {.region = Rectangle{-1073741824, 0, 1, 1}}));
  EXPECT_REFUSAL("image: extents 4 x 2; they must be 4 x 3", makeMatcher({4, 3}).run({few.data(), {4, 2}}));
}

const FixedMatchTypes matchTypes{.input = byte, .accumulator = {80, 0}, .output = {16, 0}};

/// A template of type u8.0 for images of 4 by 3.
FixedTemplateMatcher makeFixedMatcher(const FixedMatchTypes& changed, const MatchOptions& options = {}) {
  return {FixedArray({3, 2}, byte), {4, 3}, changed, options};
}

TEST(RefusalTest, OfFixedTemplateMatching) {
  const auto withProduct = [](const FixedType& product) {
    return with(matchTypes, &FixedMatchTypes::product, product);
  };
  const MatchOptions squares{.metric = Metric::ssd};
  EXPECT_REFUSAL("product: s9.0; only metrics 1 (ssd) and 3 (product) take one", makeFixedMatcher(withProduct({9, 0})));
  EXPECT_REFUSAL(
      "product: 160 bits for exact products of differences (s80.0 and s80.0); at most 128 are allowed: a product type "
      "must be given",
      makeFixedMatcher(matchTypes, squares));
  EXPECT_REFUSAL("accumulator: u28.0; it must be signed, as metric 1 (ssd) squares signed differences",
                 makeFixedMatcher(with(matchTypes, &FixedMatchTypes::accumulator, {28, 0, false}), squares));
  EXPECT_REFUSAL("product: u9.0; it must be signed, as products of differences are",
                 makeFixedMatcher(withProduct({9, 0, false}), squares));
  EXPECT_REFUSAL("product: s9.0; it must be unsigned, as products of input and template are",
                 makeFixedMatcher(withProduct({9, 0}), {.metric = Metric::product}));
  EXPECT_REFUSAL("neighbourhood: 32769; allowed are 0 (none) to 32768",
                 makeFixedMatcher(with(matchTypes, &FixedMatchTypes::inputIsComplex, true), {.neighbourhood = 32769}));
  EXPECT_REFUSAL("image: type u8.0 complex; it must be u8.0",
                 makeFixedMatcher(matchTypes).run(FixedArray({4, 3}, byte, true)));
  EXPECT_REFUSAL("template: type s8.0; it must be u8.0",
                 makeFixedMatcher(matchTypes).setTemplate(FixedArray({3, 2}, {8, 0})));
}

}  // namespace
}  // namespace BP::filters
