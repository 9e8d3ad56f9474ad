// Uses each public class and function for each of its element types. It is built against the installed library.
#include <complex>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>

#include "orvane/lanes/target.h"
#include "orvane/orvane.h"

namespace {

using namespace orvane;

int count = 0;

template <class T>
Array<T> ones(const Extents& extents) {
  Array<T> array(extents);
  for (T& element : array) element = T(1);
  return array;
}

template <class UT, class HT>
void useConvolution() {
  const Array<UT> input = ones<UT>({6, 5});
  const Array<HT> filter = ones<HT>({3, 3}), line = ones<HT>({3});
  Convolution<UT, HT> convolution(filter, {6, 5});
  auto output = convolution.run(input);
  convolution.run(input, output);
  convolution.setFilter(filter);
  convolution.setPadValue(1);
  SeparableConvolution<UT, HT> separable(line, line, {6, 5});
  separable.setFilters(line, line);
  output = separable.run(input);
  output = correlate(input, filter);
  output = convolveSeparable(input, line, line);
  if constexpr (std::is_floating_point_v<ConvolutionOutput<UT, HT>>) {
    Array<std::int16_t> rounded({6, 5});
    count += static_cast<int>(convolveInto(input, filter, rounded));
  }
  const auto area = convolution.positions().width * convolution.windowExtents()[0] * convolution.outputExtents()[1];
  count += static_cast<int>(area);
}

template <class T, class UT>
void useCorrelationND() {
  const Array<T> filter = ones<T>({3, 3, 2});
  CorrelationND<T, UT> correlation(filter, {6, 5, 4});
  correlation.setFilter(filter);
  correlation.setPadValue(1);
  count += static_cast<int>(correlation.run(ones<UT>({6, 5, 4})).size());
  count += static_cast<int>(correlation.positions().extents[0] + correlation.windowExtents()[0]);
}

template <class T>
void useMedian() {
  Median<T> filter({3, 3}, {6, 5});
  filter.setPadValue(0);
  count += static_cast<int>(filter.run(ones<T>({6, 5})).size() + median(ones<T>({6, 5}), {2, 2}).size());
}

template <class UT, class HT>
void useMatcher() {
  const Array<HT> pattern = ones<HT>({2, 2});
  TemplateMatcher<UT, HT> matcher(pattern, {6, 5}, {.neighbourhood = 3, .map = true});
  matcher.setTemplate(pattern);
  matcher.setRegion(Rectangle{0, 0, 3, 3});
  const auto match = matcher.run(ones<UT>({6, 5}));
  count += static_cast<int>(match.map.size() + matchTemplate(ones<UT>({6, 5}), pattern).found);
  if constexpr (std::is_floating_point_v<MatchScore<UT, HT>> || std::is_same_v<UT, bool>) {
    count += static_cast<int>(matches(match, {.count = 2}).size());
  }
}

void useFixed() {
  const FixedType type = fixedType("s16.8");
  const FixedArray input = quantise(ones<double>({6, 5}), type), filter = quantise(ones<double>({3, 3}), type);
  const FixedArray line = quantise(ones<double>({3}), type);
  const FixedTypes types{.input = type, .accumulator = fixedType("s40.16"), .output = type};
  FixedConvolution convolution(filter, {6, 5}, types);
  convolution.setFilter(filter);
  FixedSeparableConvolution separable(line, line, {6, 5}, types);
  separable.setFilters(line, line);
  FixedMedian median({3, 3}, {6, 5}, {.input = type});
  FixedTemplateMatcher matcher(filter, {6, 5}, {.input = type, .accumulator = fixedType("s40.16"), .output = type});
  count += static_cast<int>(convolution.run(input).extents()[0] + separable.run(input).extents()[0] +
                            median.run(input).extents()[0] + matcher.run(input).found);
  count += static_cast<int>(convolution.statistics().size() + std::string(describe(convolution.path())).size());
  count += static_cast<int>(toDouble(input).size() + toComplex(input).size() + toText(type).size());
}

#define USE_CONVOLUTION(UT, HT) useConvolution<UT, HT>();
#define USE_MATCHER(UT, HT) useMatcher<UT, HT>();
#define USE_CORRELATION(T, UT) useCorrelationND<T, UT>();
#define USE_MEDIAN(T) useMedian<T>();

}  // namespace

int main() {
  ORVANE_FOR_CONVOLUTION_PAIRS(USE_CONVOLUTION)
  ORVANE_FOR_INTEGER_PAIRS(USE_CONVOLUTION)
  ORVANE_FOR_MATCH_PAIRS(USE_MATCHER)
  ORVANE_FOR_INTEGER_MATCH_PAIRS(USE_MATCHER)
  ORVANE_FOR_CORRELATION_PAIRS(USE_CORRELATION)
  ORVANE_FOR_MEDIAN_ELEMENTS(USE_MEDIAN)
  useFixed();
  std::printf("%s on %s, %d\n", std::string(version()).c_str(), std::string(BP::lanes::getTarget()).c_str(), count);
}
