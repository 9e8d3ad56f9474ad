#include "orvane/convcorr/conv_corr_tolk.h"

#include <gmock/gmock.h>

#include <limits>
#include <vector>

#include "orvane/host/reference_host.h"

namespace BP {
namespace {

using testing::ElementsAre;

struct Array {
  std::vector<int> dims;
  std::vector<double> data;
};

/// The first `outputSize` elements of the front's output.
std::vector<double> run(AlgorithmModeEnum mode, Array h, Array u, std::size_t outputSize) {
  ReferenceHost host;
  ConvCorrTolk<double, double, double> front(host.getAdaptor(), static_cast<int>(h.dims.size()), h.dims.data(),
                                             static_cast<int>(u.dims.size()), u.dims.data(), PadTypeConstant,
                                             OutputModeValid, mode, NormNone, false);
  host.provideWorkVectors(front.getAllocator());
  std::vector<double> y(outputSize);
  front.setup(h.data.data(), u.data.data(), y.data(), nullptr, false);
  front.computeOutputs();
  EXPECT_TRUE(host.getMessages().empty());
  return y;
}

TEST(ConvCorrTolkTest, SumIsNeitherFusedNorReorderedNorWidened) {
  const double a = 1 + 0x1p-27;  // a * a = 1 + 2^-26 + 2^-54, of which the last term is rounded away
  const Array ones{{4, 1}, {1, 1, 1, 1}};
  const Array fused{{2, 1}, {-(1 + 0x1p-26), a}};
  EXPECT_THAT(run(AlgorithmModeCorrelation, {{2, 1}, {1, a}}, fused, 1), ElementsAre(0.0));
  EXPECT_THAT(run(AlgorithmModeCorrelation, ones, {{4, 1}, {1, 0x1p53, -0x1p53, 1}}, 1), ElementsAre(1.0));
  EXPECT_THAT(run(AlgorithmModeConvolution, ones, {{4, 1}, {0x1p53, 1, -0x1p53, 1}}, 1), ElementsAre(1.0));
}

TEST(ConvCorrTolkTest, SmallKnownCases) {
  const Array ramp{{8}, {1, 2, 3, 4, 5, 6, 7, 8}};
  EXPECT_THAT(run(AlgorithmModeConvolution, {{3}, {1, 0, 0}}, ramp, 6), ElementsAre(3, 4, 5, 6, 7, 8));
  EXPECT_THAT(run(AlgorithmModeCorrelation, {{3}, {1, 0, 0}}, ramp, 6), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(run(AlgorithmModeConvolution, {{1, 1}, {2}}, ramp, 8), ElementsAre(2, 4, 6, 8, 10, 12, 14, 16));
  EXPECT_THAT(run(AlgorithmModeCorrelation, {{2, 2}, {1, 2, 3, 4}}, {{3, 2}, {1, 2, 3, 4, 5, 6}}, 2),
              ElementsAre(1 + 4 + 12 + 20, 2 + 6 + 15 + 24));
  EXPECT_THAT(run(AlgorithmModeConvolution, {{2, 2}, {1, 2, 3, 4}}, {{3, 2}, {1, 2, 3, 4, 5, 6}}, 2),
              ElementsAre(4 + 6 + 8 + 5, 8 + 9 + 10 + 6));
}

TEST(ConvCorrTolkTest, ZeroTapsCount) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_THAT(run(AlgorithmModeConvolution, {{2}, {0, 1}}, {{3}, {1, infinity, 2}}, 2),
              ElementsAre(testing::IsNan(), infinity));
  const std::vector<double> y = run(AlgorithmModeConvolution, {{1}, {1}}, {{1}, {-0.0}}, 1);
  EXPECT_FALSE(std::signbit(y[0])) << "a sum that starts at +0 cannot end at -0";
}

}  // namespace
}  // namespace BP
