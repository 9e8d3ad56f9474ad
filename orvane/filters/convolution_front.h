#pragma once

#include <memory>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/filters/convolution_geometry.h"
#include "orvane/filters/job.h"
#include "orvane/host/reference_host.h"

namespace BP::filters::detail {

/// Makes a front for `geometry`, which must outlive it, with work vectors of `host`. `types` are the fixed-point types
/// of its roles, if any.
template <class HT, class UT, class YT, class... Types>
std::unique_ptr<ConvCorrTolk<HT, UT, YT>> makeFront(ReferenceHost& host, ConvolutionGeometry& geometry,
                                                    const Types&... types) {
  using Front = ConvCorrTolk<HT, UT, YT>;
  const int rank = geometry.rank;
  int* const input = geometry.inputDims.data();
  int* const filter = geometry.filterDims.data();
  std::unique_ptr<Front> front;
  if constexpr (sizeof...(Types) < 5) {  // a separable filter has no form with a root type
    if (geometry.isSeparable()) {
      front = std::make_unique<Front>(host.getAdaptor(), rank, filter, rank, geometry.secondDims.data(), rank, input,
                                      geometry.pad, geometry.mode, geometry.algorithm, false, types...);
    }
  }
  if (!front) {
    front = std::make_unique<Front>(host.getAdaptor(), rank, filter, rank, input, geometry.pad, geometry.mode,
                                    geometry.algorithm, geometry.norm, false, types...);
  }
  host.provideWorkVectors(front->getAllocator());
  return front;
}

}  // namespace BP::filters::detail
