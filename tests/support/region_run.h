#pragma once

#include <algorithm>
#include <vector>

#include "orvane/core/allocator_tolk.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/host/reference_host.h"
#include "orvane/plan/region.h"
#include "tests/support/conv_corr_model.h"

namespace BP::test {

/// A random problem with outputs wanted in a rectangle only, for processors, which take handles.
struct RegionRun {
  Problem<float, float, float> problem;
  int centres[2], at[2], size[2];
  CleverPtr<int> hDims, uDims, centre, loc, dims;
  CleverPtr<float> h, u, y;
  RestrictedRegion region{2, dims, loc};

  explicit RegionRun(std::mt19937& random) : problem(randomProblem<float, float, float>(random, 5, 9)) {
    problem.outputMode = OutputModeSame;
    problem.padType = PadTypeSymmetric;
    for (int d = 0; d < 2; ++d) {
      centres[d] = problem.centre(d);
      at[d] = pick(random, 0, problem.uDims[d] - 1);
      size[d] = pick(random, 1, problem.uDims[d] - at[d]);
    }
    hDims.ptr = problem.hDims, uDims.ptr = problem.uDims, centre.ptr = centres, loc.ptr = at, dims.ptr = size;
    h.ptr = problem.h.data(), u.ptr = problem.u.data();
  }

  /// Runs the processor that `make(allocator, handles)` makes once; the outputs in the rectangle.
  template <class MakeT>
  std::vector<float> operator()(MakeT&& make) {
    std::vector<float> part(static_cast<std::size_t>(size[0] * size[1]));
    y.ptr = part.data();
    ReferenceHost host;
    AllocatorTolk allocator(host.getAdaptor());
    auto processor = make(&allocator, *this);
    host.provideWorkVectors(allocator);
    allocator.refreshWorkVectors();
    for (const auto stage : {setupAttachWork, setupLinkTables, setupStart}) processor.setup(stage);
    processor.invoke();
    return part;
  }

  /// Place in the whole output of element `i` of the rectangle.
  int column(std::size_t i) const { return at[0] + static_cast<int>(i) % size[0]; }
  int row(std::size_t i) const { return at[1] + static_cast<int>(i) / size[0]; }
};

}  // namespace BP::test
