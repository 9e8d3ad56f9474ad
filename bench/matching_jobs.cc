// Template matching: maps of each metric, and the search for the best match beside its own map.
#if __has_include(<malloc.h>)
#include <malloc.h>
#endif

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "bench/limits.h"
#include "bench/opencv_peer.h"
#include "bench/scene.h"
#include "orvane/filters/fixed_template_matcher.h"
#include "orvane/filters/template_matcher.h"

namespace bench {
namespace {

using namespace BP::filters;

constexpr std::int64_t side = 1024;

const char* nameOf(Metric metric) {
  switch (metric) {
    case Metric::sad: return "SAD";
    case Metric::ssd: return "SSD";
    case Metric::maxad: return "greatest difference";
    case Metric::cosine: return "cosine";
    case Metric::correlationCoefficient: return "coefficient";
    default: return "product";
  }
}

Subject subjectOf(const std::string& job, const std::string& type, std::int64_t window) {
  return {job, type, extentsText(side), extentsText(window), static_cast<double>(window * window)};
}

double positionsOf(std::int64_t window) { return static_cast<double>((side - window + 1) * (side - window + 1)); }

/// Times a matcher of mode valid on one image.
template <class UT, class HT>
Sampler matchTime(const Array<UT>& image, const Array<HT>& pattern, Metric metric, bool isMap) {
  const auto matcher = std::make_shared<TemplateMatcher<UT, HT>>(
      pattern.view(), image.extents(), MatchOptions{.metric = metric, .best = !isMap, .map = isMap});
  return timed([matcher, &image] { keep(matcher->run(image.view())); }, positionsOf(pattern.extents()[0]));
}

/// The map of squared differences by OpenCV, held against ours.
Sampler openCvTime(const Array<float>& image, const Array<float>& pattern) {
  const TemplateMatcher<float> matcher(pattern.view(), image.extents());
  auto output = std::make_shared<Array<float>>(Extents{matcher.positions().width, matcher.positions().height});
  const auto run = openCvSquaredDifferences(image, pattern, *output);
  if (!run) return {};
  run();
  const auto ours = matchTemplate(image, pattern, {.metric = Metric::ssd, .best = false, .map = true});
  checkPeer(ours.map, *output, static_cast<double>(pattern.size()));
  return timed([output, run] { run(); }, static_cast<double>(output->size()));
}

template <class T>
void measureMap(Harness& harness, Metric metric, std::int64_t window) {
  const Subject subject = subjectOf(std::string(nameOf(metric)) + " map", elementName<T>(), window);
  if (!harness.wants(subject)) return;
  const auto image = randomArray<T>({side, side}), pattern = randomArray<T>({window, window});
  const bool isSquared = metric == Metric::ssd;
  std::vector<Peer> peers;
  if constexpr (std::is_same_v<T, float>) {
    if (isSquared) peers.push_back({"matchTemplate", openCvTime(image, pattern)});
  }
  harness.measure(subject, matchTime(image, pattern, metric, true), peers, differencePeak<T>(isSquared));
}

/// Maps without a limit of their own, beside the plain sums of products of the same elements.
template <class UT, class HT>
void measureOtherMap(Harness& harness, Metric metric, std::int64_t window) {
  const Subject subject = subjectOf(std::string(nameOf(metric)) + " map", typeName<UT, HT>(), window);
  if (!harness.wants(subject)) return;
  const auto image = randomArray<UT>({side, side});
  const auto pattern = randomArray<HT>({window, window});
  harness.measure(subject, matchTime(image, pattern, metric, true),
                  {{"product map", matchTime(image, pattern, Metric::product, true)}});
}

/// Counts of elements that differ.
void measureBits(Harness& harness, std::int64_t window) {
  const Subject subject = subjectOf("SAD map", "bool", window);
  if (!harness.wants(subject)) return;
  auto random = [engine = std::mt19937(1)](const Extents& extents) mutable {
    Array<bool> array(extents);
    for (bool& value : array) value = engine() % 2 != 0;
    return array;
  };
  const auto image = random(Extents{side, side}), pattern = random(Extents{window, window});
  harness.measure(subject, matchTime(image, pattern, Metric::sad, true));
}

/// Differences of 8-bit values, which are exact in their accumulator.
void measureBytes(Harness& harness, Metric metric, std::int64_t window) {
  const Subject subject = subjectOf(std::string(nameOf(metric)) + " map", "u8.0", window);
  if (!harness.wants(subject)) return;
  auto random = [engine = std::mt19937(1)](const Extents& extents) mutable {
    FixedArray array(extents, fixedType("u8.0"));
    auto* const bytes = static_cast<unsigned char*>(array.data());
    for (std::int64_t i = 0; i < extents[0] * extents[1]; ++i) bytes[i] = static_cast<unsigned char>(engine() >> 8);
    return array;
  };
  const auto image = random(Extents{side, side}), pattern = random(Extents{window, window});
  const FixedType sums = fixedType(metric == Metric::ssd ? "s32.0" : "u16.0");
  const auto matcher = std::make_shared<FixedTemplateMatcher>(
      pattern, image.extents(), FixedMatchTypes{.input = image.type(), .accumulator = sums, .output = sums},
      MatchOptions{.metric = metric, .best = false, .map = true});
  harness.measure(subject, timed([matcher, &image] { keep(matcher->run(image)); }, positionsOf(window)));
}

/// Smooth shapes of every size, edges, and a little noise: neighbouring elements are alike, as in a photograph.
Array<float> picture() {
  std::mt19937 engine(3);
  std::uniform_real_distribution<float> any(-1, 1);
  Array<float> image({side, side});
  for (std::int64_t cell = 256; cell >= 4; cell /= 2) {
    const std::int64_t cells = side / cell + 2;
    Array<float> corners({cells, cells});
    for (float& corner : corners) corner = any(engine) * std::sqrt(static_cast<float>(cell)) * 5;
    for (std::int64_t y = 0; y < side; ++y) {
      for (std::int64_t x = 0; x < side; ++x) {
        const float a = static_cast<float>(x % cell) / static_cast<float>(cell);
        const float b = static_cast<float>(y % cell) / static_cast<float>(cell);
        const float* const at = corners.data() + y / cell * cells + x / cell;
        image.data()[y * side + x] +=
            (at[0] * (1 - a) + at[1] * a) * (1 - b) + (at[cells] * (1 - a) + at[cells + 1] * a) * b;
      }
    }
  }
  const auto place = [&](std::int64_t last) {
    return static_cast<std::int64_t>(engine() % static_cast<std::uint32_t>(last));
  };
  for (int shape = 0; shape < 50; ++shape) {
    const std::int64_t left = place(side), top = place(side);
    const std::int64_t right = std::min(side, left + 20 + place(180)), bottom = std::min(side, top + 20 + place(180));
    const float level = any(engine) * 50;
    for (std::int64_t y = top; y < bottom; ++y) {
      for (std::int64_t x = left; x < right; ++x) image.data()[y * side + x] += level;
    }
  }
  for (float& value : image) value += any(engine) * 3;
  return image;
}

/// The part of an image at a corner, with noise of its own.
Array<float> partOf(const Array<float>& image, std::int64_t x, std::int64_t y, std::int64_t window) {
  std::mt19937 engine(4);
  std::uniform_real_distribution<float> noise(-4, 4);
  Array<float> part({window, window});
  for (std::int64_t j = 0; j < window; ++j) {
    for (std::int64_t i = 0; i < window; ++i) {
      part.data()[j * window + i] = image.data()[(y + j) * side + x + i] + noise(engine);
    }
  }
  return part;
}

void measureSearch(Harness& harness, Metric metric, std::int64_t window) {
  const Subject subject = subjectOf(std::string(nameOf(metric)) + " search", "float", window);
  if (!harness.wants(subject)) return;
  const auto image = picture();
  const auto pattern = partOf(image, 701, 613, window);
  harness.measure(subject, matchTime(image, pattern, metric, false),
                  {{"its map", matchTime(image, pattern, metric, true)}});
}

}  // namespace

void measureMatching(Harness& harness) {
#ifdef M_MMAP_THRESHOLD
  // Maps are made anew in each run. Their memory stays with the process, as it does in programs that run for long.
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
  for (const Metric metric : {Metric::ssd, Metric::sad}) {
    for (const std::int64_t window : {8, 16, 32, 64}) {
      if (harness.settings.quick && window != 16) continue;
      measureMap<float>(harness, metric, window);
      measureMap<double>(harness, metric, window);
      if (window > 8) measureSearch(harness, metric, window);
    }
    measureOtherMap<std::complex<float>, std::complex<float>>(harness, metric, 16);
    measureOtherMap<float, std::complex<float>>(harness, metric, 16);
  }
  for (const Metric metric : {Metric::maxad, Metric::cosine, Metric::correlationCoefficient}) {
    measureOtherMap<float, float>(harness, metric, 16);
  }
  for (const std::int64_t window : {16, 32}) measureBits(harness, window);
  for (const Metric metric : {Metric::sad, Metric::ssd}) measureBytes(harness, metric, 16);
  measureSearch(harness, Metric::maxad, 16);
}

}  // namespace bench
