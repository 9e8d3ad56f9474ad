#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"
#include "tests/support/conv_corr_model.h"

namespace BP::test {

/// A front with its host and its arrays, which hold any problem of up to the given element counts.
template <class HT, class UT, class YT>
class Bench {
 public:
  using P = Problem<HT, UT, YT>;

  explicit Bench(const P& first, bool isVarSize = false, std::vector<HT> row = {}) : problem(first), h2(row) {
    for (int d = 0; d < 2; ++d) {
      hDims[d] = first.hDims[d];
      uDims[d] = first.uDims[d];
    }
    h2Dims[1] = static_cast<int>(row.size());
    if (row.empty()) {
      front = std::make_unique<Front>(host.getAdaptor(), 2, hDims, 2, uDims, first.padType, first.outputMode,
                                      first.algorithmMode, first.norm, isVarSize);
    } else {
      front = std::make_unique<Front>(host.getAdaptor(), 2, hDims, 2, h2Dims, 2, uDims, first.padType, first.outputMode,
                                      first.algorithmMode, isVarSize);
    }
    host.provideWorkVectors(front->getAllocator());
    y.assign(4096, YT(-77));
    if (row.empty()) {
      front->setup(problem.h.data(), problem.u.data(), y.data(), &problem.padValue, true);
    } else {
      front->setup(problem.h.data(), h2.data(), problem.u.data(), y.data(), &problem.padValue, true);
    }
  }

  std::vector<YT> run(std::size_t count) {
    front->computeOutputs();
    EXPECT_TRUE(host.getMessages().empty());
    for (std::size_t i = count; i < y.size(); ++i) EXPECT_EQ(y[i], YT(-77)) << "written behind the output";
    return {y.begin(), y.begin() + static_cast<std::ptrdiff_t>(count)};
  }

  using Front = ConvCorrTolk<HT, UT, YT>;
  P problem;
  std::vector<HT> h2;
  int hDims[2], uDims[2], h2Dims[2] = {1, 1};
  ReferenceHost host;
  std::unique_ptr<Front> front;
  std::vector<YT> y;
};

}  // namespace BP::test
