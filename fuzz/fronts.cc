// The fronts that hosts drive, with arrays of any rank, extents that vary between runs, null pointers where they are
// allowed, and stages in any number: outputs are those of the models of the tests, and nothing else is touched.
#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <functional>
#include <memory>
#include <vector>

#include "fuzz/byte_source.h"
#include "fuzz/target.h"
#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"
#include "orvane/median/median_filter_tolk.h"
#include "tests/support/choices.h"
#include "tests/support/conv_corr_model.h"
#include "tests/support/matching_calls.h"
#include "tests/unit/median/median_model.h"

namespace BP::fuzz {
namespace {

/// Extents as a host gives them. Most have two entries; there can be up to three, none, or a negative number of them.
/// One extent can be 0 or negative; two negative ones would make a number of elements that are not there.
struct Shape {
  int rank;
  std::vector<int> dims;

  Shape(ByteSource& source, int most) : rank(pick(source, 0, 7) != 0 ? 2 : pick(source, -1, 3)) {
    for (int d = 0; d < rank; ++d) dims.push_back(pick(source, 1, most));
    if (rank > 0 && pick(source, 0, 15) == 0) {
      dims[static_cast<std::size_t>(pick(source, 0, rank - 1))] = pick(source, -2, 0);
    }
  }
  int* table() { return rank > 0 ? dims.data() : nullptr; }
  int at(int d) const { return d < rank ? dims[static_cast<std::size_t>(d)] : 1; }
  int count() const { return at(0) * at(1) * at(2); }
  std::size_t most() const {
    return static_cast<std::size_t>(std::max(at(0), 1)) *
           static_cast<std::size_t>(std::max(at(1), 1) * std::max(at(2), 1));
  }
  /// Whether the models know what comes out: planes of positive extents.
  bool isPlain() const { return rank <= 2 && at(0) > 0 && at(1) > 0; }
  void shrink(ByteSource& source) {
    for (int& extent : dims) extent = extent > 1 ? pick(source, 1, extent) : extent;
  }
};

enum class Kind { single, separable, median };

/// A front, what it was given, and the model of it.
template <class T>
class Scene {
 public:
  Scene(ByteSource& newSource, Kind newKind)
      : source(newSource), kind(newKind), window(source, 6), row(source, 5), input(source, 9) {
    problem.outputMode = static_cast<OutputModeEnum>(pick(source, 0, 2));
    problem.padType = test::padChoices[pick(source, 0, 4)].second;
    problem.algorithmMode = pick(source, 0, 1) == 0 ? AlgorithmModeConvolution : AlgorithmModeCorrelation;
    problem.norm = kind == Kind::single ? static_cast<NormEnum>(pick(source, 0, 1)) : NormNone;
    isVarSize = pick(source, 0, 1) == 0;
    problem.padValue = test::RandomValue<T>::of(source, false);
    h = valuesOf(window), otherH = valuesOf(window), h2 = valuesOf(row), u = valuesOf(input);
    y.assign(outputCapacity(), untouched());
    make();
    host.provideWorkVectors(front->getAllocator());
    start();
  }

  void run() {
    for (int action = 0; action < 6; ++action) {
      switch (pick(source, 0, 7)) {
        case 0: front->setup(static_cast<setupModeT>(pick(source, 0, 6))); break;
        case 1: startByStages(); break;
        case 2: start(); break;
        case 3: tune(); break;
        case 4:
          if (isVarSize) window.shrink(source), row.shrink(source), input.shrink(source);
          break;
        default: compute();
      }
    }
    require(host.getMessages().empty(), "a front left a message");
  }

 private:
  static T untouched() { return T(-77); }
  std::vector<T> valuesOf(const Shape& shape) { return test::randomValues<T>(source, static_cast<int>(shape.most())); }

  /// The most outputs that the front can have, now or after extents have shrunk. Windows without elements have more
  /// positions than the input.
  std::size_t outputCapacity() const {
    constexpr int further = 3;
    std::size_t count = 1;
    for (int d = 0; d < 3; ++d) {
      int grown = std::max(window.at(d), 1);
      if (kind == Kind::separable) {
        grown = d == 0 ? static_cast<int>(window.most()) : d == 1 ? static_cast<int>(row.most()) : 1;
      }
      count *= static_cast<std::size_t>(std::max(input.at(d), 1) + grown + further);
    }
    return count;
  }

  void make() {
    auto* const adaptor = host.getAdaptor();
    const auto& p = problem;
    using Convolution = ConvCorrTolk<T, T, T>;
    if constexpr (!test::IsComplex<T>::value) {
      if (kind == Kind::median) {
        keep(std::make_unique<MedianFilterTolk<T, T>>(adaptor, window.rank, window.table(), input.rank, input.table(),
                                                      p.padType, p.outputMode, isVarSize),
             [this](auto& made) { made.setup(u.data(), y.data(), pad(), true); });
        return;
      }
    }
    if (kind == Kind::separable) {
      keep(std::make_unique<Convolution>(adaptor, window.rank, window.table(), row.rank, row.table(), input.rank,
                                         input.table(), p.padType, p.outputMode, p.algorithmMode, isVarSize),
           [this](auto& made) { made.setup(h.data(), h2.data(), u.data(), y.data(), pad(), true); });
    } else {
      keep(std::make_unique<Convolution>(adaptor, window.rank, window.table(), input.rank, input.table(), p.padType,
                                         p.outputMode, p.algorithmMode, p.norm, isVarSize),
           [this](auto& made) { made.setup(h.data(), u.data(), y.data(), pad(), true); });
    }
  }
  template <class FrontT, class StartT>
  void keep(std::unique_ptr<FrontT> made, StartT startOf) {
    start = [&made = *made, startOf] { startOf(made); };
    front = std::move(made);
  }

  /// The pad value, or null where none is read.
  const T* pad() const { return problem.padType == PadTypeConstant ? &problem.padValue : nullptr; }

  void startByStages() {
    front->getAllocator().refreshWorkVectors();
    for (const auto stage : {setupAttachWork, setupLinkTables, setupResize, setupStart}) {
      for (int times = pick(source, 1, 2); times > 0; --times) front->setup(stage);
    }
  }
  void tune() {
    const bool hasFilter = kind != Kind::median && pick(source, 0, 1) == 0;
    if (hasFilter) h.swap(otherH);
    if (pick(source, 0, 1) == 0) problem.padValue = test::RandomValue<T>::of(source, false);
    front->tune(hasFilter ? h.data() : nullptr, nullptr, const_cast<T*>(pad()));
  }

  void compute() {
    std::ranges::fill(y, untouched());
    front->computeOutputs();
    if (!window.isPlain() || !input.isPlain() || (kind == Kind::separable && !row.isPlain())) return;
    if (std::max({window.rank, input.rank, kind == Kind::separable ? row.rank : 0}) < 1) return;
    std::vector<T> expected = model();
    expected.resize(y.size(), untouched());
    require(std::ranges::equal(y, expected, [](T a, T b) { return test::sameBits(a, b); }),
            "outputs of a front differ from those of the model");
  }
  std::vector<T> model() {
    auto& p = problem;
    for (int d = 0; d < 2; ++d) p.hDims[d] = window.at(d), p.uDims[d] = input.at(d);
    p.h.assign(h.begin(), h.begin() + window.count());
    p.u.assign(u.begin(), u.begin() + input.count());
    if (kind == Kind::single) return test::solve(p);
    if (kind == Kind::separable) return test::solveSeparable(p, {h2.begin(), h2.begin() + row.count()});
    std::vector<T> outputs;
    if constexpr (!test::IsComplex<T>::value) {
      for (int i = 0; i < static_cast<int>(p.outputCount()); ++i) {
        outputs.push_back(test::medianOf(test::windowAt(p, i % p.yDim(0), i / p.yDim(0)), test::rankBySelection<T>,
                                         [](T lower, T upper) { return upper * T(0.5) + lower * T(0.5); }));
      }
    }
    return outputs;
  }

  ByteSource& source;
  Kind kind;
  Shape window, row, input;
  test::Problem<T, T, T> problem{};
  bool isVarSize;
  std::vector<T> h, otherH, h2, u, y;
  ReferenceHost host;
  std::unique_ptr<WindowFront<AnyCorrelation, T, T>> front;
  std::function<void()> start;
};

template <class T>
void runScene(ByteSource& source, Kind kind) {
  Scene<T>(source, kind).run();
}

}  // namespace
}  // namespace BP::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace BP::fuzz;
  testing::GTEST_FLAG(break_on_failure) = true;
  ByteSource source(data, size);
  switch (pick(source, 0, 7)) {
    case 0: runScene<float>(source, Kind::single); break;
    case 1: runScene<float>(source, Kind::separable); break;
    case 2: runScene<float>(source, Kind::median); break;
    case 3: runScene<double>(source, Kind::median); break;
    case 4: runScene<double>(source, Kind::separable); break;
    case 5: runScene<std::complex<float>>(source, Kind::single); break;
    case 6: runScene<std::complex<double>>(source, Kind::separable); break;
    default: BP::test::expectCallsLikeTheModel(source);
  }
  return 0;
}
