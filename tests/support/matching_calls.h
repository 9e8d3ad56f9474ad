#pragma once

#include <gmock/gmock.h>

#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/matching/template_matching_tolk.h"
#include "tests/support/matching_model.h"

namespace BP::test {

/// A model of random geometry with values that make ties and exact matches likely.
inline MatchingModel<double, double, double> randomMatching(auto& random) {
  MatchingModel<double, double, double> m;
  for (int d = 0; d < 2; ++d) {
    m.hDims[d] = pick(random, 1, 5);
    m.uDims[d] = pick(random, 1, 14);
    m.roi[d] = pick(random, -4, 10);
    m.roi[2 + d] = pick(random, -1, 14);
  }
  for (int i = 0; i < m.hDims[0] * m.hDims[1]; ++i) m.h.push_back(pick(random, -2, 2));
  for (int i = 0; i < m.uDims[0] * m.uDims[1]; ++i) m.u.push_back(pick(random, -2, 2));
  m.outputMode = static_cast<OutputModeEnum>(pick(random, 0, 2));
  m.metric = static_cast<AlgorithmModeEnum>(pick(random, 0, 4));
  m.mode = static_cast<TMModeEnum>(pick(random, 0, 2));
  m.search = static_cast<SearchMethodEnum>(pick(random, 0, 1));
  m.hasRoi = pick(random, 0, 1) == 1;
  m.edge = pick(random, 1, 5);
  m.map.assign(512, -77);
  m.block.assign(static_cast<std::size_t>(m.edge * m.edge), -77);
  return m;
}

/// Runs a random model and a front side by side for some calls, with the region of interest moving in between.
inline void expectCallsLikeTheModel(auto& random) {
  auto m = randomMatching(random);
  std::vector<double> map = m.map, block = m.block;
  int location[] = {m.location[0], m.location[1]};
  bool blockValid = false, roiValid = false;
  ReferenceHost host;
  TemplateMatchingTolk<double, double, double> front(host.getAdaptor(), 2, m.hDims, 2, m.uDims, PadTypeReplicate,
                                                     m.outputMode, m.metric, m.mode, false, m.hasRoi, true, m.search);
  host.provideWorkVectors(front.getAllocator());
  front.setup(m.h.data(), m.u.data(), m.roi, map.data(), location, m.edge, block.data(), &blockValid, &roiValid,
              nullptr, false);
  for (int step = 0; step < 3; ++step) {
    SCOPED_TRACE(testing::Message() << "call " << step << ", mode " << m.mode << ", metric " << m.metric << ", search "
                                    << m.search);
    m.call();
    front.computeOutputs();
    EXPECT_EQ(map, m.map);
    EXPECT_EQ(block, m.block);
    EXPECT_THAT(location, testing::ElementsAreArray(m.location));
    EXPECT_EQ(blockValid, m.blockValid);
    EXPECT_EQ(roiValid, m.roiValid);
    for (int d = 0; d < 4; ++d) m.roi[d] = step == 0 ? pick(random, -1, 12) : m.roi[d] - (d == 2 ? 20 : 0);
  }
  EXPECT_TRUE(host.getMessages().empty());
}

}  // namespace BP::test
