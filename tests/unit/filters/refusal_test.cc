// Every refusal names the argument, its value and what is allowed.
#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/filters/convolution.h"
#include "orvane/filters/fixed_convolution.h"
#include "orvane/filters/fixed_median.h"
#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/template_matcher.h"

namespace BP::filters {
namespace {

constexpr std::int64_t greatest = std::numeric_limits<std::int32_t>::max();

struct Refusal {
  const char* message;
  std::function<void()> call;
};

/// A filter of 3 by 2 for inputs of these extents.
void make(const Extents& input, const ConvolutionOptions& options = {}, const Extents& filterExtents = {3, 2}) {
  const std::vector<float> filter(static_cast<std::size_t>(elementCount(filterExtents)));
  Convolution<float>(ArrayView(filter, filterExtents), input, options);
}

/// Only extents, which are looked at before any element.
void makeHuge(const Extents& input, const Extents& filter, const ConvolutionOptions& options = {}) {
  Convolution<float>(ArrayView<const float>(nullptr, filter), input, options);
}

void makeSeparable(const Extents& input, const Extents& first, const Extents& second,
                   const ConvolutionOptions& options = {}) {
  const std::vector<float> filter(9);
  SeparableConvolution<float>({filter.data(), first}, {filter.data(), second}, input, options);
}

/// Runs a filter of 3 by 2 over an input of 4 by 3 at the start of some memory.
void run(std::size_t outputStart, const Extents& outputExtents, const Extents& inputExtents = {4, 3}) {
  std::vector<float> memory(64), filter(6);
  Convolution<float> convolution(ArrayView<const float>(filter, {3, 2}), {4, 3});
  convolution.run({memory.data() + 6, inputExtents}, {memory.data() + outputStart, outputExtents});
}

const ConvolutionOptions full{.mode = OutputMode::full};
const ConvolutionOptions mirrored{.mode = OutputMode::same, .pad = PadRule::symmetric};

const Refusal plainRefusals[] = {
    {"input: rank 3; allowed are 1 and 2",
     [] {
       make({4, 3, 2});
     }},
    {"input: rank 0; allowed are 1 and 2", [] { make({}); }},
    {"input: extent 0 in dimension 1; allowed are 1 to 2147483647",
     [] {
       make({4, 0});
     }},
    {"input: extent -4 in dimension 0; allowed are 1 to 2147483647",
     [] {
       make({-4, 3});
     }},
    {"input: extent 2147483648 in dimension 0; allowed are 1 to 2147483647",
     [] {
       make({greatest + 1, 1});
     }},
    {"input: 65536 x 32768 are 2147483648 elements; at most 2147483647 are allowed",
     [] {
       make({65536, 32768});
     }},
    {"filter: extent 0 in dimension 0; allowed are 1 to 2147483647",
     [] {
       makeHuge({4, 3}, {0, 1});
     }},
    {"filter: rank 1; it must be that of the input, 2",
     [] {
       make({4, 3}, {}, {6});
     }},
    {"filter: null; it must point to 3 x 2 elements",
     [] {
       makeHuge({4, 3}, {3, 2});
     }},
    {"filter: extent 3 in dimension 0; with mode valid and an input of 2 x 9, allowed are 1 to 2",
     [] {
       make({2, 9});
     }},
    {"filter: extent 1 in dimension 0; for an input extent of 2147483647, at most 0 is allowed",
     [] { makeHuge({greatest}, {1}); }},
    {"filter: extent 1073741823 in dimension 0; for an input extent of 2, at most 1073741822 is allowed",
     [] { makeHuge({2}, {greatest / 2}, full); }},
    {"output: 60000 x 60000 are 3600000000 elements; at most 2147483647 are allowed",
     [] {
       makeHuge({30001, 30001}, {30000, 30000}, full);
     }},
    {"input: extent 1073741824 in dimension 0; with a symmetric or a mirror pad at most 1073741823 is allowed",
     [] { makeHuge({greatest / 2 + 1}, {3}, mirrored); }},
    {"mode: 3; allowed are 0 (valid), 1 (same), 2 (full)",
     [] {
       make({4, 3}, {.mode = OutputMode{3}});
     }},
    {"pad: -1; allowed are 0 (constant), 1 (replicate), 2 (symmetric), 3 (circular), 4 (mirror)",
     [] {
       make({4, 3}, {.pad = PadRule{-1}});
     }},
    {"direction: 2; allowed are 0 (convolution), 1 (correlation)",
     [] {
       make({4, 3}, {.direction = FilterDirection{2}});
     }},
    {"normalise: 9; allowed are 0 (none), 1 (energy)",
     [] {
       make({4, 3}, {.normalise = Normalisation{9}});
     }},
    {"padValue: 0.5 - 2i; the input is real, so it must be real",
     [] {
       make({4, 3}, {.padValue = {0.5, -2}});
     }},
    {"padValue: 1e+39; it must lie in the range of the input's element type",
     [] {
       make({4, 3}, {.padValue = 1e39});
     }},
    {"mode: 7; allowed are 0 (valid), 1 (same), 2 (full)", [] { outputExtents({4}, {3}, OutputMode{7}); }},
    {"normalise: 1 (energy); a separable convolution allows only 0 (none)",
     [] {
       makeSeparable({4, 3}, {3}, {2}, {.normalise = Normalisation::energy});
     }},
    {"input: rank 1; a separable convolution needs 2", [] { makeSeparable({4}, {3}, {2}); }},
    {"first filter: rank 2; it must be 1",
     [] {
       makeSeparable({4, 3}, {3, 1}, {2});
     }},
    {"second filter: extent 4 in dimension 1; with mode valid and an input of 2 x 3, allowed are 1 to 3",
     [] {
       makeSeparable({4, 3}, {3}, {4});
     }},
    {"intermediate array: 268435463 x 8 are 2147483704 elements; at most 2147483647 are allowed",
     [] {
       makeSeparable({268435455, 8}, {9}, {2}, full);
     }},
    {"input: extents 3 x 4; they must be 4 x 3",
     [] {
       run(0, {2, 2}, {3, 4});
     }},
    {"output: extents 4 x 3; they must be 2 x 2",
     [] {
       run(0, {4, 3});
     }},
    {"output: overlaps the input; the two must not share memory",
     [] {
       run(3, {2, 2});
     }},
    {"output: overlaps the input; the two must not share memory",
     [] {
       run(17, {2, 2});
     }},
    {"view: 5 elements; extents 2 x 3 need 6",
     [] {
       ArrayView<const int>(std::vector<int>(5), {2, 3});
     }},
    {"array: extents 2 x -1; allowed are extents of 0 or more",
     [] {
       Array<int>({2, -1});
     }},
    {"extents: rank 9; allowed are 0 to 8", [] { Extents{1, 1, 1, 1, 1, 1, 1, 1, 1}; }},
};

const FixedTypes types{.input = {8, 0, false}, .accumulator = {40, 14}, .output = {8, 0, false}};

/// A filter of type s16.14 with types that `change` has changed.
void makeFixed(const std::function<void(FixedTypes&)>& change, const ConvolutionOptions& options = {},
               const FixedType& filterType = {16, 14}) {
  FixedTypes changed = types;
  change(changed);
  FixedConvolution(FixedArray({2}, filterType), {4}, changed, options);
}

void runFixed(const FixedType& outputType, bool isComplex) {
  const FixedArray input({4}, types.input);
  FixedConvolution(FixedArray({2}, {16, 14}), {4}, types).run(input, FixedArray({3}, outputType, isComplex));
}

const ConvolutionOptions energy{.normalise = Normalisation::energy};
const ConvolutionOptions halves{.mode = OutputMode::same, .padValue = 0.5};

const Refusal fixedRefusals[] = {
    {"accumulator: no type; allowed are word lengths of 1 to 128",
     [] { makeFixed([](auto& t) { t.accumulator = {}; }); }},
    {"output: word length 129; allowed are word lengths of 1 to 128",
     [] { makeFixed([](auto& t) { t.output.word = 129; }); }},
    {"input: fraction length 1025; allowed are -1024 to 1024",
     [] { makeFixed([](auto& t) { t.input.fraction = 1025; }); }},
    {"sqrt: no type; normalise 1 (energy) needs one", [] { makeFixed([](auto&) {}, energy); }},
    {"sqrt: s16.8; only normalise 1 (energy) takes one", [] { makeFixed([](auto& t) {
                                                                t.sqrt = {16, 8};
                                                              }); }},
    {"product: u24.14; it must be signed, as products of input and filter are",
     [] { makeFixed([](auto& t) {
            t.product = {24, 14, false};
          }); }},
    {"product: 140 bits for exact products of input and filter (u100.0 and s40.0); at most 128 are allowed: a product "
     "type must be given",
     [] {
       makeFixed([](auto& t) { t.input.word = 100; }, {}, {40, 0});
     }},
    {"rounding: 6; allowed are 0 (ceiling), 1 (convergent), 2 (floor), 3 (nearest), 4 (round), 5 (zero)",
     [] { makeFixed([](auto& t) { t.modes.rounding = Rounding{6}; }); }},
    {"overflow: 4; allowed are 0 (wrap), 1 (saturate), 2 (symmetric), 3 (zero)",
     [] { makeFixed([](auto& t) { t.modes.overflow = Overflow{4}; }); }},
    {"padValue: 0.5; it must be a value of the input's type u8.0", [] { makeFixed([](auto&) {}, halves); }},
    {"output: type s8.0; it must be u8.0",
     [] {
       runFixed({8, 0, true}, false);
     }},
    {"output: type u8.0 complex; it must be u8.0",
     [] {
       runFixed({8, 0, false}, true);
     }},
    {"type: u8.0 for elements of 16 bits; its values are stored in elements of 8 bits",
     [] {
       FixedView(ArrayView<const std::uint16_t>(nullptr, {3}), {8, 0, false});
     }},
    {"accumulator: 129 bits for the exact mean of two values of s127.0; at most 128 are allowed: its type must be "
     "given",
     [] {
       FixedMedian({3}, {4}, {.input = {127, 0}});
     }},
    {"window: extent 5 in dimension 0; with mode valid and an input of 4, allowed are 1 to 4",
     [] {
       FixedMedian({5}, {4}, {.input = {8, 0}});
     }},
    {"padValue: 0 + 1i; the input is real, so it must be real",
     [] {
       FixedMedian({3}, {4}, {.input = {8, 0}}).setPadValue({0, 1});
     }},
    {"input: type s8.0 complex; it must be s8.0",
     [] {
       FixedMedian({3}, {4}, {.input = {8, 0}}).run(FixedArray({4}, {8, 0}, true));
     }},
    {"values: complex; they must be real",
     [] {
       toDouble(FixedArray({3}, {8, 0}, true));
     }},
    {"values: extent 0 in dimension 0; allowed are 1 to 2147483647",
     [] {
       toDouble(FixedArray({0}, {8, 0}));
     }},
};

/// A template of 3 by 2 for images of these extents; only the extents of others are looked at.
void makeMatcher(const Extents& image, const MatchOptions& options = {}, const Extents& patternExtents = {3, 2}) {
  const std::vector<float> pattern(6);
  TemplateMatcher<float>({pattern.data(), patternExtents}, image, options);
}

const Refusal matchRefusals[] = {
    {"image: rank 1; it must be 2", [] { makeMatcher({4}); }},
    {"template: rank 1; it must be that of the input, 2",
     [] {
       makeMatcher({4, 3}, {}, {3});
     }},
    {"template: extent 3 in dimension 0; with mode valid and an input of 2 x 3, allowed are 1 to 2",
     [] {
       makeMatcher({2, 3});
     }},
    {"template: extent 1073741822 in dimension 0; for an input extent of 4, at most 1073741821 is allowed",
     [] {
       makeMatcher({4, 3}, {.mode = OutputMode::same}, {1073741822, 1});
     }},
    {"output: 65537 x 32768 are 2147516416 elements; at most 2147483647 are allowed",
     [] {
       makeMatcher({65535, 32767}, {.mode = OutputMode::full});
     }},
    {"image: 65536 x 8193 are 536936448 elements; at most 536870912 are allowed",
     [] {
       makeMatcher({65536, 8193}, {.mode = OutputMode::same, .search = Search::threeStep});
     }},
    {"metric: 4; allowed are 0 (sad), 1 (ssd), 2 (maxad), 3 (product)",
     [] {
       makeMatcher({4, 3}, {.metric = static_cast<Metric>(4)});
     }},
    {"search: -1; allowed are 0 (exhaustive), 1 (three-step)",
     [] {
       makeMatcher({4, 3}, {.search = static_cast<Search>(-1)});
     }},
    {"neighbourhood: 46341; allowed are 0 (none) to 46340",
     [] {
       makeMatcher({4, 3}, {.neighbourhood = 46341});
     }},
    {"neighbourhood: 3; without best it must be 0",
     [] {
       makeMatcher({4, 3}, {.neighbourhood = 3, .best = false, .map = true});
     }},
    {"best: false; it must be true unless map is",
     [] {
       makeMatcher({4, 3}, {.best = false});
     }},
    {"region: size -1 in dimension 1; with a start of 0, allowed are 0 to 2147483647",
     [] {
       makeMatcher({4, 3}, {.region = Rectangle{{0, 0}, {1, -1}}});
     }},
    {"region: size 2147483647 in dimension 0; with a start of 5, allowed are 0 to 2147483642",
     [] {
       makeMatcher({4, 3}, {.region = Rectangle{{5, 0}, {greatest, 1}}});
     }},
    {"region: start -1073741824 in dimension 0; allowed are -1073741823 to 2147483647",
     [] {
       makeMatcher({4, 3}, {.region = Rectangle{{-1073741824, 0}, {1, 1}}});
     }},
    {"image: extents 4 x 2; they must be 4 x 3",
     [] {
       const std::vector<float> values(12);
       TemplateMatcher<float>(ArrayView<const float>(values.data(), {3, 2}), {4, 3}).run({values.data(), {4, 2}});
     }},
};

/// A template of type u8.0 for images of 4 by 3, with types that `change` has changed.
FixedTemplateMatcher makeFixedMatcher(const std::function<void(FixedMatchTypes&)>& change,
                                      const MatchOptions& options = {}) {
  FixedMatchTypes changed{.input = {8, 0, false}, .accumulator = {80, 0}, .output = {16, 0}};
  change(changed);
  return {FixedArray({3, 2}, {8, 0, false}), {4, 3}, changed, options};
}

const MatchOptions squares{.metric = Metric::ssd};

const Refusal fixedMatchRefusals[] = {
    {"product: s9.0; only metrics 1 (ssd) and 3 (product) take one",
     [] { makeFixedMatcher([](auto& t) {
            t.product = {9, 0};
          }); }},
    {"product: 160 bits for exact products of differences (s80.0 and s80.0); at most 128 are allowed: a product type "
     "must be given",
     [] { makeFixedMatcher([](auto&) {}, squares); }},
    {"accumulator: u28.0; it must be signed, as metric 1 (ssd) squares signed differences",
     [] {
       makeFixedMatcher([](auto& t) { t.accumulator = {28, 0, false}; }, squares);
     }},
    {"product: u9.0; it must be signed, as products of differences are",
     [] {
       makeFixedMatcher([](auto& t) { t.product = {9, 0, false}; }, squares);
     }},
    {"product: s9.0; it must be unsigned, as products of input and template are",
     [] {
       makeFixedMatcher([](auto& t) { t.product = {9, 0}; }, {.metric = Metric::product});
     }},
    {"neighbourhood: 32769; allowed are 0 (none) to 32768",
     [] { makeFixedMatcher([](auto& t) { t.inputIsComplex = true; }, {.neighbourhood = 32769}); }},
    {"image: type u8.0 complex; it must be u8.0",
     [] {
       makeFixedMatcher([](auto&) {}).run(FixedArray({4, 3}, {8, 0, false}, true));
     }},
    {"template: type s8.0; it must be u8.0",
     [] {
       makeFixedMatcher([](auto&) {}).setTemplate(FixedArray({3, 2}, {8, 0}));
     }},
};

class RefusalTest : public testing::TestWithParam<Refusal> {};

TEST_P(RefusalTest, NamesArgumentValueAndWhatIsAllowed) {
  EXPECT_THAT(GetParam().call, testing::ThrowsMessage<std::invalid_argument>(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(Plain, RefusalTest, testing::ValuesIn(plainRefusals));
INSTANTIATE_TEST_SUITE_P(Fixed, RefusalTest, testing::ValuesIn(fixedRefusals));
INSTANTIATE_TEST_SUITE_P(Match, RefusalTest, testing::ValuesIn(matchRefusals));
INSTANTIATE_TEST_SUITE_P(FixedMatch, RefusalTest, testing::ValuesIn(fixedMatchRefusals));

}  // namespace
}  // namespace BP::filters
