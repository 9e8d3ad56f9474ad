// Template matching against the plain model, bit for bit: maps, searches, regions of interest, consecutive calls.
#include <gtest/gtest.h>

#include <complex>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

#include "orvane/host/reference_host.h"
#include "orvane/matching/template_matching_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"
#include "tests/support/matching_model.h"
#include "tests/support/random_values.h"

namespace BP::test {
namespace {

using KarnDSPFixpt::Fixpt;

/// The data of a front: plain arrays, or `Fixpt` objects that the front owns, made from the same numbers.
template <class T>
struct FrontData {
  std::vector<T> values;
  template <class S>
  T* make(const std::vector<S>& from, const KarnDSPFixpt::DSPDataAttributesHandle&) {
    values.assign(from.begin(), from.end());
    return values.data();
  }
  template <class S>
  std::vector<S> read() const {
    return {values.begin(), values.end()};
  }
};
template <>
struct FrontData<bool> {
  std::unique_ptr<bool[]> values;
  bool* make(const std::vector<double>& from, const KarnDSPFixpt::DSPDataAttributesHandle&) {
    values = std::make_unique<bool[]>(from.size());
    for (std::size_t i = 0; i < from.size(); ++i) values[i] = from[i] != 0;
    return values.get();
  }
};
template <>
struct FrontData<Fixpt> {
  Fixpt* array = nullptr;
  int count = 0;
  Fixpt* make(const std::vector<double>& from, const KarnDSPFixpt::DSPDataAttributesHandle& handle) {
    count = static_cast<int>(from.size());
    array = KarnDSPFixpt::makeFixpt(handle, count).release();
    for (int i = 0; i < count; ++i) (*array)[i].setStored(static_cast<int>(from[static_cast<std::size_t>(i)]));
    return array;
  }
  template <class S>
  std::vector<S> read() const {
    std::vector<S> result;
    for (int i = 0; i < count; ++i) result.push_back((*array)[i].toDouble());
    return result;
  }
};

/// A row of element types, and the types in which the model computes it.
template <class H, class U, class Y, class MH, class MU, class MY>
struct Row {
  using HT = H;
  using UT = U;
  using YT = Y;
  using ModelHT = MH;
  using ModelYT = MY;
  using Model = MatchingModel<MH, MU, MY>;
};
template <class H, class U, class Y>
using PlainRow = Row<H, U, Y, H, U, Y>;

template <class RowT>
class MatchingConformance : public testing::Test {
 protected:
  using Model = typename RowT::Model;
  using MY = typename RowT::ModelYT;

  /// Values that make ties and exact matches likely; whole numbers for fixed point, 0 and 1 for booleans.
  template <class T>
  std::vector<T> values(int count) {
    std::vector<T> result;
    for (int i = 0; i < count; ++i) {
      if constexpr (std::is_same_v<typename RowT::UT, bool>) {
        result.push_back(pick(random, 0, 1));
      } else if constexpr (std::is_same_v<typename RowT::UT, Fixpt>) {
        result.push_back(pick(random, -9, 9));
      } else if (pick(random, 0, 1) == 0) {
        result.push_back(T(static_cast<float>(pick(random, -2, 2))));
      } else {
        result.push_back(RandomValue<T>::of(random, false));
      }
    }
    return result;
  }

  Model randomModel() {
    Model m;
    for (int d = 0; d < 2; ++d) {
      m.hDims[d] = pick(random, 1, 5);
      m.uDims[d] = pick(random, 1, 14);
      m.roi[d] = pick(random, -4, 10);
      m.roi[2 + d] = pick(random, -1, 14);
    }
    m.h = values<typename RowT::ModelHT>(m.hDims[0] * m.hDims[1]);
    m.u = values<typename decltype(m.u)::value_type>(m.uDims[0] * m.uDims[1]);
    m.outputMode = static_cast<OutputModeEnum>(pick(random, 0, 2));
    m.metric = static_cast<AlgorithmModeEnum>(pick(random, 0, 4));
    m.mode = static_cast<TMModeEnum>(pick(random, 0, 2));
    m.search = static_cast<SearchMethodEnum>(pick(random, 0, 1));
    m.hasRoi = pick(random, 0, 1) == 1;
    m.edge = pick(random, 1, 5);
    m.map.assign(512, MY(-77));
    m.block.assign(static_cast<std::size_t>(m.edge * m.edge), MY(-77));
    return m;
  }

  /// Runs model and front side by side for some calls, with the region of interest moving in between.
  void compare(Model m) {
    using KarnDSPFixpt::FixptType;
    ReferenceHost host;
    const auto handle = KarnDSPFixpt::makeAttributes({.value = {24, 0, true}, .adaptor = host.getAdaptor()});
    FrontData<typename RowT::HT> h;
    FrontData<typename RowT::UT> u;
    FrontData<typename RowT::YT> map, block;
    int location[] = {m.location[0], m.location[1]};
    bool blockValid = false, roiValid = false;
    auto* const mapData = map.make(m.map, handle);
    auto* const blockData = block.make(m.block, handle);
    TemplateMatchingTolk<typename RowT::HT, typename RowT::UT, typename RowT::YT> front(
        host.getAdaptor(), 2, m.hDims, 2, m.uDims, PadTypeReplicate, m.outputMode, m.metric, m.mode, false, m.hasRoi,
        true, m.search, handle, handle, handle, handle);
    host.provideWorkVectors(front.getAllocator());
    front.setup(h.make(m.h, handle), u.make(m.u, handle), m.roi, mapData, location, m.edge, blockData, &blockValid,
                &roiValid, nullptr, false);
    for (int step = 0; step < 3; ++step) {
      m.call();
      front.computeOutputs();
      const std::string what = "call " + std::to_string(step) + " mode " + std::to_string(m.mode) + " metric " +
                               std::to_string(m.metric) + " search " + std::to_string(m.search);
      ASSERT_TRUE(equal(map.template read<MY>(), m.map)) << what;
      ASSERT_TRUE(equal(block.template read<MY>(), m.block)) << what;
      ASSERT_EQ(location[0], m.location[0]) << what;
      ASSERT_EQ(location[1], m.location[1]) << what;
      ASSERT_EQ(blockValid, m.blockValid) << what;
      ASSERT_EQ(roiValid, m.roiValid) << what;
      for (int d = 0; d < 4; ++d) m.roi[d] = step == 0 ? pick(random, -1, 12) : m.roi[d] - (d == 2 ? 20 : 0);
    }
    EXPECT_TRUE(host.getMessages().empty());
  }

  static bool equal(const std::vector<MY>& a, const std::vector<MY>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](MY x, MY y) { return sameBits(x, y); });
  }

  std::mt19937 random{21};
};

using C64 = std::complex<float>;
using C128 = std::complex<double>;
using Rows =
    testing::Types<PlainRow<float, float, float>, PlainRow<float, C64, C64>, PlainRow<C64, float, C64>,
                   PlainRow<C64, C64, C64>, PlainRow<double, double, double>, PlainRow<double, C128, C128>,
                   PlainRow<C128, double, C128>, PlainRow<C128, C128, C128>,
                   Row<bool, bool, Fixpt, double, double, double>, Row<Fixpt, Fixpt, Fixpt, double, double, double>>;
TYPED_TEST_SUITE(MatchingConformance, Rows);

TYPED_TEST(MatchingConformance, CallsEqualThePlainModel) {
  for (int trial = 0; trial < 400; ++trial) {
    ASSERT_NO_FATAL_FAILURE(this->compare(this->randomModel())) << "trial " << trial;
  }
}

TYPED_TEST(MatchingConformance, ACropIsFoundWhereItWasTaken) {
  for (int trial = 0; trial < 40; ++trial) {
    auto m = this->randomModel();
    m.outputMode = OutputModeValid;
    m.mode = TMModeBestMatch;
    m.search = SearchMethodExhaustive;
    m.hasRoi = false;
    m.metric = static_cast<AlgorithmModeEnum>(pick(this->random, AlgorithmModeSAD, AlgorithmModeMaxAD));
    if (m.hDims[0] > m.uDims[0] || m.hDims[1] > m.uDims[1]) continue;
    const int x = pick(this->random, 0, m.uDims[0] - m.hDims[0]), y = pick(this->random, 0, m.uDims[1] - m.hDims[1]);
    for (int k = 0; k < m.hDims[0] * m.hDims[1]; ++k) {
      const auto pixel = m.u[static_cast<std::size_t>(x + k % m.hDims[0] + m.uDims[0] * (y + k / m.hDims[0]))];
      if constexpr (requires { m.h[0] = pixel; }) m.h[static_cast<std::size_t>(k)] = pixel;
    }
    ASSERT_NO_FATAL_FAILURE(this->compare(m));
  }
}

TEST(MatchingFront, AnEarlyNanStaysALaterOneIsIgnored) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const int at : {0, 2}) {
    int hDims[] = {1}, uDims[] = {4}, location[2];
    float h[] = {3}, u[] = {1, 2, 2.5F, 3};
    u[at] = nan;
    ReferenceHost host;
    TemplateMatchingTolk<float, float, float> front(host.getAdaptor(), 1, hDims, 1, uDims, PadTypeReplicate,
                                                    OutputModeValid, AlgorithmModeSSD, TMModeBestMatch, false, false,
                                                    false, SearchMethodExhaustive);
    host.provideWorkVectors(front.getAllocator());
    front.setup(h, u, nullptr, nullptr, location, 0, nullptr, nullptr, nullptr, nullptr, false);
    front.computeOutputs();
    EXPECT_EQ(location[0], at == 0 ? 0 : 3);
  }
}

TEST(MatchingFront, PointersUpdatesAndVariableSizes) {
  int hDims[] = {2, 1}, uDims[] = {5, 1}, location[2], elsewhere[2];
  double h[] = {5, 6}, u[] = {1, 5, 6, 1, 1}, other[] = {0, 0, 0, 5, 6, 0, 7}, single[] = {7};
  ReferenceHost host;
  TemplateMatchingTolk<double, double, double> front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeConstant,
                                                     OutputModeValid, AlgorithmModeMaxAD, TMModeBestMatch, true, false,
                                                     false, SearchMethodExhaustive);
  host.provideWorkVectors(front.getAllocator());
  front.setup(h, u, nullptr, nullptr, location, 0, nullptr, nullptr, nullptr, nullptr, false);
  const auto found = [&](int* at) {
    front.computeOutputs();
    return at[0];
  };
  EXPECT_EQ(found(location), 1);
  front.updateInputPointers(other, nullptr);
  EXPECT_EQ(found(location), 3);
  uDims[0] = 7;
  hDims[0] = 1;
  front.tune(single, nullptr, nullptr);
  EXPECT_EQ(found(location), 6);
  front.updateOutputPointers(nullptr, elsewhere, nullptr, nullptr, nullptr);
  front.updateInputPointers(nullptr, h);
  EXPECT_EQ(found(elsewhere), 3);
  EXPECT_EQ(location[0], 6);
  EXPECT_FALSE(front.useConstantPad());
  EXPECT_EQ(front.getPadType(), PadTypeConstant);
}

/// Image 7.75, -4.25 and template 2.75, 1.25, with scores floored to whole numbers by every cast.
TEST(MatchingFront, FixedPointDifferencesTakeTheirCastsInOrder) {
  const auto scoreOf = [](AlgorithmModeEnum metric) {
    ReferenceHost host;
    const auto handle = [&](KarnDSPFixpt::FixptType type) {
      return KarnDSPFixpt::makeAttributes(
          {.value = type, .product = type, .rounding = fxpRoundFloor, .adaptor = host.getAdaptor()});
    };
    const auto exact = handle({8, 2, true}), whole = handle({8, 0, true});
    int hDims[] = {2, 1}, uDims[] = {2, 1};
    TemplateMatchingTolk<Fixpt, Fixpt, Fixpt> front(host.getAdaptor(), 2, hDims, 2, uDims, PadTypeReplicate,
                                                    OutputModeValid, metric, TMModeMetric, false, false, false,
                                                    SearchMethodExhaustive, whole, exact, whole, exact);
    host.provideWorkVectors(front.getAllocator());
    FrontData<Fixpt> h, u, y;
    auto* const scores = y.make({0}, whole);
    front.setup(h.make({11, 5}, exact), u.make({31, -17}, exact), nullptr, scores, nullptr, 0, nullptr, nullptr,
                nullptr, nullptr, false);
    front.computeOutputs();
    return y.read<double>().at(0);
  };
  EXPECT_EQ(scoreOf(AlgorithmModeSAD), 4 + 5) << "7 - 2.75 and 1 + 4.25: the greater one is cast, then the difference";
  EXPECT_EQ(scoreOf(AlgorithmModeSSD), 16 + 49) << "7 - 2.75 and -5 - 1.25";
  EXPECT_EQ(scoreOf(AlgorithmModeMaxAD), 6) << "7 - 2 and 1 + 5: both are cast ahead of all else";
}

}  // namespace
}  // namespace BP::test
