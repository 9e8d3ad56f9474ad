// Square windows over square images: each element type, plain and normalised, and what edges and calls cost.
#include <initializer_list>

#include "bench/limits.h"
#include "bench/opencv_peer.h"
#include "bench/scene.h"

namespace bench {
namespace {

using namespace BP::filters;

/// The peer of filters whose elements are all T, in an array of its own.
template <class T>
struct OpenCv {
  explicit OpenCv(Scene<T>& scene)
      : output(scene.output.extents()), run(openCvFilter2D<T>(scene.input, scene.filter, output)) {
    if (!run) return;
    run();
    scene.run()();
    checkPeer(scene.output, output, static_cast<double>(scene.filter.size()));
  }
  Sampler sampler() const { return run ? timed(run, static_cast<double>(output.size())) : Sampler(); }

  Array<T> output;
  std::function<void()> run;
};

template <class UT, class HT>
Subject subjectOf(const char* job, std::int64_t side, std::int64_t window) {
  return {job,
          typeName<UT, HT>(),
          extentsText(side),
          extentsText(window),
          static_cast<double>(window * window),
          pairsPerTap<UT, HT>};
}

template <class UT, class HT>
void measurePlain(Harness& harness, std::int64_t side, std::int64_t window) {
  const Subject subject = subjectOf<UT, HT>("convolution", side, window);
  if (!harness.wants(subject)) return;
  Scene<UT, HT> scene(side, window);
  const Sampler ours = timed(scene.run(), scene.outputs());
  const Sampler peak = arithmeticPeak<RealOf<UT>>();
  if constexpr (std::is_same_v<UT, HT> && !isComplex<UT>) {
    const OpenCv<UT> openCv(scene);
    std::vector<Peer> peers = {{"filter2D", openCv.sampler()}};
    if (window == 3) peers.push_back({"copy", memoryCopy(side * side, sizeof(UT))});
    harness.measure(subject, ours, peers, peak);
  } else {
    harness.measure(subject, ours, {}, peak);
  }
}

/// Sums divided by the norms of filter and window, beside the same sums undivided.
template <class UT, class HT>
void measureNormalised(Harness& harness, std::int64_t side, std::int64_t window) {
  Subject subject = subjectOf<UT, HT>("normalised", side, window);
  subject.pairs += 0.5;  // squares are shared by all windows; each adds them for itself
  if (!harness.wants(subject)) return;
  ConvolutionOptions options = mirrored;
  options.normalise = Normalisation::energy;
  Scene<UT, HT> scene(side, window, options), plain(side, window);
  harness.measure(subject, timed(scene.run(), scene.outputs()),
                  {{"not normalised", timed(plain.run(), plain.outputs())}}, arithmeticPeak<RealOf<UT>>());
}

template <class UT, class HT>
void measureType(Harness& harness) {
  const bool quick = harness.settings.quick, isReal = pairsPerTap<UT, HT> == 1;
  if (quick) {
    for (const std::int64_t window : {3, 7, 15}) {
      if (isReal || window == 7) measurePlain<UT, HT>(harness, 512, window);
    }
    return measureNormalised<UT, HT>(harness, 512, 7);
  }
  for (const std::int64_t side : {512, 1024, 4096}) {
    for (const std::int64_t window : {3, 5, 7, 11, 15, 31, 63}) measurePlain<UT, HT>(harness, side, window);
  }
  for (const std::int64_t window : {3, 7, 15, 31}) measureNormalised<UT, HT>(harness, 1024, window);
}

/// Whole calls of a reused object on an image so small that the call itself costs most.
template <class T>
void measureCall(Harness& harness) {
  const Subject subject = subjectOf<T, T>("call", 32, 3);
  if (!harness.wants(subject)) return;
  Scene<T> scene(32, 3);
  const OpenCv<T> openCv(scene);
  harness.measure(subject, timed(scene.run(), scene.outputs()), {{"filter2D", openCv.sampler()}}, arithmeticPeak<T>());
}

/// Outputs whose windows cross an edge, beside those whose windows do not. The latter are the outputs of mode valid;
/// mode same makes these and the others, so what it takes longer is what the others cost.
template <class T>
void measureBoundary(Harness& harness) {
  constexpr std::int64_t side = 256, window = 15;
  const Subject subject = subjectOf<T, T>("boundary", side, window);
  if (!harness.wants(subject)) return;
  ConvolutionOptions options = mirrored;
  options.mode = OutputMode::valid;
  Scene<T> all(side, window), inside(side, window, options);
  const double insideCount = inside.outputs(), boundaryCount = all.outputs() - insideCount;
  const Sampler allTime = timed(all.run(), 1), insideTime = timed(inside.run(), 1);
  double lastInside = 0;  // ours is sampled ahead of its peer, so both rest on the same two times
  const Sampler boundary = [&] { return (allTime() - (lastInside = insideTime())) / boundaryCount; };
  harness.measure(subject, boundary, {{"inside", [&] { return lastInside / insideCount; }}}, arithmeticPeak<T>());
}

/// Bytes as inputs of `float` filters, whose lines are converted as they are read, beside inputs of `float`; with sums
/// as outputs, and with outputs that are rounded to bytes.
void measureBytes(Harness& harness, std::int64_t side, std::int64_t window) {
  Subject subject = subjectOf<float, float>("bytes", side, window);
  subject.type = "u8 float";
  Subject rounded = subject;
  rounded.type = "u8 float u8";
  if (!harness.wants(subject) && !harness.wants(rounded)) return;
  Scene<float> scene(side, window);
  Array<std::uint8_t> image({side, side}), bytes({side, side});
  std::mt19937 engine(1);
  for (std::uint8_t& value : image) value = static_cast<std::uint8_t>(engine());
  Convolution<std::uint8_t, float> job(scene.filter, image.extents(), mirrored);
  const auto count = static_cast<double>(side * side);
  const auto convert = timed([&] { job.run(image, scene.output); }, count);
  const auto round = timed([&] { job.runRounded(image, bytes); }, count);
  std::vector<Peer> peers{{"of float", timed(scene.run(), count)}};
  if (harness.wants(subject)) harness.measure(subject, convert, peers, arithmeticPeak<float>());
  const auto openCv = openCvFilter2DOfBytes(image, scene.filter, bytes);
  if (openCv) peers.push_back({"filter2D", timed(openCv, count)});
  if (harness.wants(rounded)) harness.measure(rounded, round, peers, arithmeticPeak<float>());
}

}  // namespace

void measureConvolution(Harness& harness) {
#define ORVANE_MEASURE(UT, HT) measureType<UT, HT>(harness);
  ORVANE_FOR_CONVOLUTION_PAIRS(ORVANE_MEASURE)
#undef ORVANE_MEASURE
}

void measureCalls(Harness& harness) {
  measureCall<float>(harness);
  measureCall<double>(harness);
  measureBoundary<float>(harness);
  measureBoundary<double>(harness);
  for (const std::int64_t window : {3, 7, 15}) measureBytes(harness, 1024, window);
}

}  // namespace bench
