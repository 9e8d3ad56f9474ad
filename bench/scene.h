#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <stdexcept>

#include "bench/elements.h"
#include "orvane/filters/convolution.h"

namespace bench {

/// What is measured unless a job says otherwise: every element of the image has an output, and the image is mirrored
/// beyond its edges. Correlation, since that is what the peers compute.
inline const BP::filters::ConvolutionOptions mirrored = {.direction = BP::filters::FilterDirection::correlation,
                                                         .mode = BP::filters::OutputMode::same,
                                                         .pad = BP::filters::PadRule::symmetric};

/// A square image, a square filter, and the object that filters the one with the other.
template <class UT, class HT = UT>
struct Scene {
  using Output = BP::filters::ConvolutionOutput<UT, HT>;

  Scene(std::int64_t side, std::int64_t window, const BP::filters::ConvolutionOptions& options = mirrored)
      : input(randomArray<UT>({side, side})),
        filter(randomArray<HT>({window, window})),
        job(filter.view(), input.extents(), options),
        output(job.outputExtents()) {}

  std::function<void()> run() {
    return [this] { job.run(input, output); };
  }
  double outputs() const { return static_cast<double>(output.size()); }

  BP::filters::Array<UT> input;
  BP::filters::Array<HT> filter;
  BP::filters::Convolution<UT, HT> job;
  BP::filters::Array<Output> output;
};

/// Throws `std::runtime_error` unless a peer does the same work: up to its roundings, which for `taps` terms of about 1
/// stay far below what a wrong edge or a reversed filter would change.
template <class T>
void checkPeer(const BP::filters::Array<T>& ours, const BP::filters::Array<T>& theirs, double taps) {
  const double allowed = (std::is_same_v<T, float> ? 1e-5 : 1e-12) * taps;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    if (!(std::abs(ours[i] - theirs[i]) <= allowed)) throw std::runtime_error("a peer has other results than ours");
  }
}

}  // namespace bench
