// Fixed-point convolutions of whole images, with what they gather about casts.
#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "bench/harness.h"
#include "bench/opencv_peer.h"
#include "bench/systemc_peer.h"
#include "orvane/filters/convolution.h"
#include "orvane/filters/fixed_convolution.h"

namespace bench {
namespace {

using namespace BP::filters;

FixedArray randomFixed(const Extents& extents, const FixedType& type) {
  std::mt19937 engine(5);
  FixedArray array(extents, type);
  auto* const bytes = static_cast<unsigned char*>(array.data());
  std::generate_n(bytes, elementCount(extents) * (type.word / 8), [&] { return static_cast<unsigned char>(engine()); });
  return array;
}

/// The filter whose taps are equal and add up to 1.
FixedArray meanOf(const Extents& extents, const FixedType& type) {
  Array<double> taps(extents);
  std::fill(taps.begin(), taps.end(), 1.0 / static_cast<double>(taps.size()));
  return quantise(taps, type);
}

const ConvolutionOptions mirrored = {
    .direction = FilterDirection::correlation, .mode = OutputMode::same, .pad = PadRule::symmetric};

/// Values beside which a convolution is measured.
enum class FixedPeer { none, bytes, systemC };

/// One convolution, gathering nothing, counts, and counts with ranges. The filter is random, or has unity gain.
void measureTypes(Harness& harness, const std::string& name, std::int64_t side, std::int64_t window,
                  const FixedType& filterType, FixedTypes types, FixedPeer peer, bool hasUnityGain = false) {
  constexpr struct {
    Gathering gathering;
    const char* name;
  } choices[] = {{Gathering::nothing, ""}, {Gathering::counts, ", counts"}, {Gathering::ranges, ", ranges"}};
  for (const auto& choice : choices) {
    types.modes.gathering = choice.gathering;
    const Subject subject{"fixed-point convolution", name + choice.name, extentsText(side), extentsText(window),
                          static_cast<double>(window * window)};
    if (!harness.wants(subject)) continue;
    const FixedArray image = randomFixed({side, side}, types.input);
    const FixedArray filter =
        hasUnityGain ? meanOf({window, window}, filterType) : randomFixed({window, window}, filterType);
    FixedConvolution job(filter, image.extents(), types, mirrored);
    FixedArray output(image.extents(), types.output);
    const auto outputs = static_cast<double>(side * side);
    std::vector<Peer> peers;
    Array<float> taps({window, window});
    Array<std::uint8_t> theirs({side, side});
    if (peer == FixedPeer::systemC && choice.gathering == Gathering::nothing) {
      const SystemCSums sums{32, 12, subject.taps};
      peers = {{"sc_fix", systemCFix(sums)}, {"sc_fix_fast", systemCFixFast(sums)}};
    }
    if (peer == FixedPeer::bytes) {
      const auto* const raw = static_cast<const std::int8_t*>(filter.data());
      std::transform(raw, raw + window * window, taps.begin(),
                     [&](int v) { return std::ldexp(static_cast<float>(v), -filterType.fraction); });
      const auto run = openCvFilter2DOfBytes(
          ArrayView<const std::uint8_t>(static_cast<const std::uint8_t*>(image.data()), image.extents()), taps.view(),
          theirs.view());
      peers.push_back({"filter2D", run ? timed(run, outputs) : Sampler()});
    }
    harness.measure(subject, timed([&] { job.run(image, output); }, outputs), peers);
  }
}

}  // namespace

void measureFixedConvolutions(Harness& harness) {
  const std::int64_t side = harness.settings.quick ? 512 : 1024;
  for (const std::int64_t window : {3, 5, 7, 15}) {
    measureTypes(harness, "u8, exact", side, window, {8, 7, true},
                 {.input = {8, 0, false}, .accumulator = {32, 7, true}, .output = {8, 0, false}}, FixedPeer::bytes);
  }
  for (const std::int64_t window : {7, 15}) {
    measureTypes(harness, "s16, exact", side, window, {16, 12, true},
                 {.input = {16, 12, true}, .accumulator = {40, 24, true}, .output = {16, 12, true}}, FixedPeer::none);
    measureTypes(harness, "s16, exact, unity gain", side, window, {16, 15, true},
                 {.input = {16, 12, true}, .accumulator = {40, 27, true}, .output = {16, 12, true}}, FixedPeer::none,
                 true);
    measureTypes(harness, "s16, rounded, cut at 32 bits", side, window, {16, 12, true},
                 {.input = {16, 12, true},
                  .accumulator = {32, 20, true},
                  .output = {16, 12, true},
                  .product = FixedType{32, 20, true}},
                 FixedPeer::systemC);
  }
}

}  // namespace bench
