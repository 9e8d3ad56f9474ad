// Medians of square windows over square images, with pad replicate, which is the peer's.
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>

#include "bench/harness.h"
#include "bench/opencv_peer.h"
#include "orvane/filters/fixed_median.h"
#include "orvane/filters/median.h"

namespace bench {
namespace {

using namespace BP::filters;

constexpr OutputMode mode = OutputMode::same;
constexpr PadRule pad = PadRule::replicate;

/// Elements that are all alike likely; a median's time hardly depends on them.
template <class T>
Array<T> randomPixels(std::int64_t side) {
  std::mt19937 engine(1);
  Array<T> pixels({side, side});
  for (T& pixel : pixels) {
    pixel = std::is_floating_point_v<T> ? static_cast<T>(engine())
                                        : static_cast<T>(engine() >> 31 * std::is_same_v<T, bool>);
  }
  return pixels;
}

Subject subjectOf(const char* type, std::int64_t side, std::int64_t window) {
  return {"median", type, extentsText(side), extentsText(window), 0};
}

/// OpenCV's median of the same picture. Throws `std::runtime_error` if it is not ours.
template <class T>
Peer openCvPeer(const Array<T>& input, std::int64_t window, const Array<T>& ours, Array<T>& output) {
  const auto run = openCvMedian<T>(input.view(), window, output.view());
  if (!run) return {"medianBlur", {}};
  run();
  if (!std::equal(ours.begin(), ours.end(), output.begin())) throw std::runtime_error("a peer has other medians");
  return {"medianBlur", timed(run, static_cast<double>(output.size()))};
}

template <class T>
void measurePlain(Harness& harness, const char* type, std::int64_t side, std::int64_t window) {
  const Subject subject = subjectOf(type, side, window);
  if (!harness.wants(subject)) return;
  const Array<T> input = randomPixels<T>(side);
  Array<T> output({side, side}), peerOutput({side, side});
  Median<T> median({window, window}, {side, side}, {.mode = mode, .pad = pad});
  const auto run = [&] { median.run(input.view(), output.view()); };
  run();
  std::vector<Peer> peers;
  if constexpr (std::is_same_v<T, float>) {
    peers.push_back(openCvPeer(input, window, output, peerOutput));
    if (window == 7 || window == 15) {  // of a smaller picture, as it takes long
      constexpr int peerSide = 256;
      const std::string job = "median float " + std::to_string(peerSide) + ' ' + std::to_string(window);
      peers.push_back({"SciPy", harness.scipySampler(job, peerSide * peerSide)});
    }
  }
  harness.measure(subject, timed(run, static_cast<double>(output.size())), peers);
}

/// Bytes without fraction, as OpenCV has them.
void measureFixed(Harness& harness, std::int64_t side, std::int64_t window) {
  const Subject subject = subjectOf("u8.0", side, window);
  if (!harness.wants(subject)) return;
  const FixedType type{8, 0, false};
  const Array<std::uint8_t> input = randomPixels<std::uint8_t>(side);
  Array<std::uint8_t> output({side, side}), peerOutput({side, side});
  FixedMedian median({window, window}, {side, side}, {.input = type}, {.mode = mode, .pad = pad});
  const FixedView from(input.view(), type);
  const MutableFixedView to(output.view(), type);
  const auto run = [&] { median.run(from, to); };
  run();
  harness.measure(subject, timed(run, static_cast<double>(output.size())),
                  {openCvPeer(input, window, output, peerOutput)});
}

}  // namespace

void measureMedians(Harness& harness) {
  const std::int64_t side = harness.settings.quick ? 512 : 1024;
  for (const std::int64_t window : {3, 5, 7, 15, 31, 101}) {
    if (harness.settings.quick && window > 15) continue;
    measurePlain<float>(harness, "float", side, window);
    measurePlain<double>(harness, "double", side, window);
    measurePlain<bool>(harness, "bool", side, window);
    measureFixed(harness, side, window);
  }
}

}  // namespace bench
