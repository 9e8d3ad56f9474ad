// What fixed-point fronts tell their host: statistics at the end, one label for each role, and roles that are missing.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/core/element.h"
#include "orvane/host/reference_host.h"
#include "orvane/matching/template_matching_tolk.h"
#include "orvane/median/median_filter_tolk.h"
#include "orvane/platform/karn_fixpt_3_make.h"

namespace BP::test {
namespace {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;

using Counts = std::map<std::string, unsigned>;

/// A window of 3 x 2 on an input of 5 x 4, all elements 0.
constexpr unsigned taps = 6, inputs = 20, runs = 2;

/// A front on its host. Every array has labels of its own; those that the front makes are labelled by their role.
struct Scene {
  DSPDataAttributesHandle handle(const std::string& label, bool isComplex = false) {
    return KarnDSPFixpt::makeAttributes({.isComplex = isComplex,
                                         .valueLabel = label,
                                         .productLabel = label + " product",
                                         .accumulatorLabel = label + " sum",
                                         .adaptor = host.getAdaptor()});
  }
  /// An array for the front to own.
  Fixpt* array(const std::string& label, unsigned count, bool isComplex = false) {
    return KarnDSPFixpt::makeFixpt(handle(label, isComplex), static_cast<int>(count)).release();
  }
  template <class FrontT, class... ArgsT>
  FrontT& make(ArgsT&&... args) {
    auto made = std::make_unique<FrontT>(host.getAdaptor(), args...);
    FrontT& result = *made;
    host.provideWorkVectors(result.getAllocator());
    finish = [&result] { result.setup(setupFinish); };
    front = std::move(made);
    return result;
  }

  ReferenceHost host;
  int hDims[2] = {3, 2}, columnDims[2] = {3, 1}, rowDims[2] = {1, 2}, uDims[2] = {5, 4}, location[2];
  bool blockValid, plainImage[inputs] = {}, plainTemplate[taps] = {};
  std::unique_ptr<BlockProcTolkCache> front;
  std::function<void()> finish;
};

/// One form of a front, and the casts that two runs log for each label.
struct Form {
  std::string name;
  std::function<void(Scene&)> start;
  Counts casts;
};

using ConvCorrFront = ConvCorrTolk<Fixpt, Fixpt, Fixpt>;

/// Pad types are constant with the full output, where every input element meets every tap, else replicate.
PadTypeEnum padOf(OutputModeEnum outputMode) {
  return outputMode == OutputModeFull ? PadTypeConstant : PadTypeReplicate;
}

Form convCorr(AlgorithmModeEnum mode, NormEnum norm, bool uIsComplex, bool hIsComplex, OutputModeEnum outputMode) {
  const bool isComplex = uIsComplex || hIsComplex;
  const unsigned outputs = outputMode == OutputModeFull ? 35 : 20, parts = isComplex ? 2 : 1;
  const unsigned tapsOfInput = runs * taps * inputs;  // those of the pad are counted there, and not told
  const unsigned products = uIsComplex && hIsComplex ? 4 : parts;
  Counts casts{{"u product", products * tapsOfInput},
               {"accumulator", runs * parts * taps * outputs},
               {"y", runs * parts * outputs}};
  if (uIsComplex && hIsComplex) casts["u sum"] = 2 * tapsOfInput;
  if (norm != NormNone) {
    casts["u product"] += tapsOfInput;  // its squares; the sum of these is a temporary, and not told
    casts["h product"] = taps * (1 + runs);
    casts["sqrt"] = 1 + runs;
  }
  const auto start = [=](Scene& s) {
    const auto accumulator = s.handle("accumulator", isComplex), output = s.handle("output", isComplex);
    auto& front = s.make<ConvCorrFront>(2, s.hDims, 2, s.uDims, padOf(outputMode), outputMode, mode, norm, false,
                                        s.handle("input", uIsComplex), output, s.handle("filter", hIsComplex),
                                        accumulator, s.handle("sqrt", isComplex));
    front.setup(s.array("h", taps, hIsComplex), s.array("u", inputs, uIsComplex), s.array("y", outputs, isComplex),
                s.array("pad", 1, uIsComplex), false);
  };
  return {"ConvCorr" + std::to_string(mode) + std::to_string(norm) + (uIsComplex ? "ComplexInput" : "") +
              (hIsComplex ? "ComplexFilter" : "") + std::to_string(outputMode),
          start, casts};
}

/// The intermediate has the role "output"; of it only the products are told.
Form separable(OutputModeEnum outputMode, Counts casts) {
  const auto start = [=](Scene& s) {
    auto& front = s.make<ConvCorrFront>(2, s.columnDims, 2, s.rowDims, 2, s.uDims, padOf(outputMode), outputMode,
                                        AlgorithmModeConvolution, false, s.handle("input"), s.handle("output"),
                                        s.handle("filter"), s.handle("accumulator"));
    front.setup(s.array("h", 3), s.array("h2", 2), s.array("u", inputs), s.array("y", 35), s.array("pad", 1), false);
  };
  return {"Separable" + std::to_string(outputMode), start, casts};
}

Form median(int height) {
  const auto start = [=](Scene& s) {
    s.hDims[1] = height;
    auto& front =
        s.make<MedianFilterTolk<Fixpt, Fixpt>>(2, s.hDims, 2, s.uDims, PadTypeConstant, OutputModeSame, false,
                                               s.handle("input"), s.handle("output"), s.handle("accumulator"));
    front.setup(s.array("u", inputs), s.array("y", inputs), s.array("pad", 1), false);
  };
  return {height % 2 == 0 ? "MedianEven" : "MedianOdd", start, {{"y", runs * inputs}}};
}

/// All positions score 0, so that the best one is the first inside the image, with 4 of the 9 around it.
template <class T>
Form matching(AlgorithmModeEnum metric, TMModeEnum mode) {
  const bool isMap = mode == TMModeMetric, hasBlock = mode == TMModeBestMatchNeighborhood;
  const unsigned scores = runs * (9 + (hasBlock ? 4 : 0));
  Counts casts;
  if (mode != TMModeBestMatch) casts["y"] = isMap ? runs * inputs : 0;
  if (hasBlock) casts["block"] = runs * 9;
  if (metric <= AlgorithmModeCorrelation) {
    casts["accumulator"] = taps * scores;
    if (std::is_same_v<T, Fixpt>) casts["u product"] = taps * scores;
  }
  const auto start = [=](Scene& s) {
    auto& front = s.make<TemplateMatchingTolk<T, T, Fixpt>>(
        2, s.hDims, 2, s.uDims, PadTypeConstant, OutputModeSame, metric, mode, false, false, false,
        SearchMethodExhaustive, s.handle("accumulator"), s.handle("input"), s.handle("output"), s.handle("filter"));
    Fixpt* const y = mode == TMModeBestMatch ? nullptr : s.array("y", inputs);
    Fixpt* const block = hasBlock ? s.array("block", 9) : nullptr;
    const auto begin = [&](T* h, T* u, const void* pad) {
      front.setup(h, u, nullptr, y, s.location, 3, block, &s.blockValid, nullptr, pad, false);
    };
    if constexpr (std::is_same_v<T, Fixpt>) {
      begin(s.array("h", taps), s.array("u", inputs), s.array("pad", 1));
    } else {
      begin(s.plainTemplate, s.plainImage, s.plainImage);
    }
  };
  return {(std::is_same_v<T, bool> ? "BoolMatching" : "Matching") + std::to_string(metric) + std::to_string(mode),
          start, casts};
}

std::vector<Form> allForms() {
  std::vector<Form> forms{separable(OutputModeSame, {{"u product", runs * 3 * 20},
                                                     {"output product", runs * 2 * 20},
                                                     {"accumulator", runs * 5 * 20},
                                                     {"y", runs * 20}}),
                          separable(OutputModeFull, {{"u product", runs * 3 * 20},
                                                     {"output product", runs * 2 * 28},
                                                     {"accumulator", runs * (3 * 28 + 2 * 35)},
                                                     {"y", runs * 35}}),
                          median(2), median(3)};
  for (int i = 0; i < 32; ++i) {
    forms.push_back(convCorr(i & 1 ? AlgorithmModeCorrelation : AlgorithmModeConvolution,
                             i & 2 ? NormWindowEnergy : NormNone, (i & 4) != 0, (i & 8) != 0,
                             i & 16 ? OutputModeFull : OutputModeSame));
  }
  for (const int metric : {0, 1, 2, 3, 4}) {
    for (const int mode : {0, 1, 2}) {
      forms.push_back(matching<Fixpt>(AlgorithmModeEnum(metric), TMModeEnum(mode)));
      forms.push_back(matching<bool>(AlgorithmModeEnum(metric), TMModeEnum(mode)));
    }
  }
  return forms;
}

class FixptStatistics : public testing::TestWithParam<Form> {};

TEST_P(FixptStatistics, EveryEndLogsTheSameOnce) {
  enum End { byLastStage, byDestruction, byBoth, withoutMapFirst };
  for (const End end : {byLastStage, byDestruction, byBoth, withoutMapFirst}) {
    FixptLogMap log;  // ends after the front, which logs into it to its end
    Scene scene;
    GetParam().start(scene);
    for (unsigned run = 0; run < runs; ++run) scene.front->computeOutputs();
    if (end == withoutMapFirst) {
      scene.finish();
      scene.front->setFixptLogMap(&log);
      scene.front->setFixptLogMap(nullptr);
      scene.finish();
      EXPECT_TRUE(log.empty());
    }
    scene.front->setFixptLogMap(&log);
    if (end != byDestruction) scene.finish();
    if (end != byLastStage) scene.front.reset();
    Counts casts;
    for (const auto& [label, properties] : log) casts[label] = properties->getLogStruct()->casts;
    EXPECT_EQ(casts, GetParam().casts) << "end " << end;
    EXPECT_TRUE(scene.host.getMessages().empty());
  }
}

INSTANTIATE_TEST_SUITE_P(Fronts, FixptStatistics, testing::ValuesIn(allForms()),
                         [](const auto& form) { return form.param.name; });

std::vector<std::string> reports(unsigned count) {
  return std::vector<std::string>(count, "AllocatorTolk: specified type name was not registered");
}

/// Each array that a front makes needs its role. An input has a pad value, and its pad another; a processor has a
/// scratch output and the best score's value; more are the algorithm's.
TEST(FixptRoles, FrontsWithoutTheirHandlesReportEachArrayAndEnd) {
  const auto expectReports = [](unsigned count, auto make) {
    FixptLogMap log;
    Scene s;
    make(s);
    s.front->setFixptLogMap(&log);
    s.front.reset();
    EXPECT_EQ(s.host.getMessages(), reports(count));
  };
  static constexpr auto mode = OutputModeSame;
  expectReports(6, [](Scene& s) {
    s.make<ConvCorrFront>(2, s.hDims, 2, s.uDims, PadTypeConstant, mode, AlgorithmModeConvolution, NormNone, false);
  });
  expectReports(1, [](Scene& s) {
    const auto any = s.handle("any");
    s.make<ConvCorrFront>(2, s.hDims, 2, s.uDims, PadTypeCircular, mode, AlgorithmModeConvolution, NormWindowEnergy,
                          false, any, any, any, any);
  });
  expectReports(13, [](Scene& s) {
    s.make<ConvCorrFront>(2, s.columnDims, 2, s.rowDims, 2, s.uDims, PadTypeReplicate, mode, AlgorithmModeConvolution,
                          false);
  });
  expectReports(6, [](Scene& s) {
    s.make<MedianFilterTolk<Fixpt, Fixpt>>(2, s.hDims, 2, s.uDims, PadTypeSymmetric, mode, false);
  });
  const auto match = [&]<class T>(const T*, AlgorithmModeEnum metric, unsigned count) {
    expectReports(count, [&](Scene& s) {
      s.make<TemplateMatchingTolk<T, T, Fixpt>>(2, s.hDims, 2, s.uDims, PadTypeConstant, mode, metric, TMModeMetric,
                                                false, false, false, SearchMethodExhaustive);
    });
  };
  constexpr unsigned ofFixpt[] = {5, 5, 6, 6, 7}, ofBool[] = {5, 5, 5, 5, 6};
  for (const int metric : {0, 1, 2, 3, 4}) {
    match(static_cast<Fixpt*>(nullptr), AlgorithmModeEnum(metric), ofFixpt[metric]);
    match(static_cast<bool*>(nullptr), AlgorithmModeEnum(metric), ofBool[metric]);
  }
}

TEST(FixptRoles, TemporariesReportAMissingOneInTheSameWords) {
  ReferenceHost host;
  AllocatorTolk allocator(host.getAdaptor());
  const TemporaryElement<Fixpt, AllocatorTolk> root(allocator, "sqrt");
  EXPECT_EQ(host.getMessages(), reports(1));
}

}  // namespace
}  // namespace BP::test
