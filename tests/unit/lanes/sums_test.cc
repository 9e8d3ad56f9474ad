#include "orvane/lanes/sums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <string>

#include "orvane/core/element.h"
#include "orvane/lanes/separable.h"
#include "orvane/lanes/target.h"
#include "tests/support/guarded_lines.h"
#include "tests/support/random_values.h"

namespace BP::lanes {
namespace {

using test::pick, test::randomValues, test::sameBits;

template <class T>
constexpr bool isComplex = false;
template <class T>
constexpr bool isComplex<std::complex<T>> = true;

constexpr int maxLines = 3 * 32, maxRows = 20;

/// Runs random sums of input U and filter H on the target in use, with each line and output row in guarded memory.
template <class T, class U, class H>
class Case {
 public:
  using Y = decltype(U() * H());
  static constexpr Elements elements = isComplex<U> ? (isComplex<H> ? Elements::complexComplex : Elements::complexReal)
                                                    : (isComplex<H> ? Elements::realComplex : Elements::realReal);

  explicit Case(std::mt19937& engine) : random(engine), memory(maxLines + maxRows) {}

  void run() {
    window = {pick(random, 1, 3), pick(random, 1, pick(random, 0, 2) ? 4 : 12),
              pick(random, 1, pick(random, 0, 3) ? 4 : 20)};
    rows = pick(random, 1, maxRows);
    width = pick(random, 1, pick(random, 0, 1) ? 140 : 12);
    const bool special = pick(random, 0, 2) == 0;
    layOut(special);
    const auto taps = randomValues<H>(random, window.planes * window.rows * window.columns, special);
    const bool reversed = pick(random, 0, 1) != 0;
    std::vector<T> storage(PackedFilter<T>::sizeFor(elements, window));
    PackedFilter<T> filter(elements, window, storage.data());
    filter.pack(reinterpret_cast<const T*>(taps.data()), reversed);

    const auto outParts = asParts(out);
    const Run<T> where{lines.data(), window.rows + rows - 1, rows, width, outParts.data()};
    filter.sumProducts(where);
    compare(taps, reversed, [](Y sum, const Y& /*energy*/) { return sum; });
    Y filterNorm = special ? Y(0) : Y(T(1.7));
    filter.sumNormalised(where, std::real(filterNorm));
    compare(taps, reversed, [&](Y sum, Y energy) {
      Y root;
      divideByNorms(sum, energy, root, filterNorm);
      return sum;
    });
  }

 private:
  void layOut(bool special) {
    lines.clear(), out.clear();
    const bool atEnd = pick(random, 0, 1) != 0;
    std::size_t stretch = 0;
    for (int k = 0; k < window.planes * (window.rows + rows - 1); ++k) {
      const auto values = randomValues<U>(random, width + window.columns - 1, special && pick(random, 0, 3) == 0);
      U* const line = memory.template get<U>(stretch++, values.size(), atEnd);
      std::copy(values.begin(), values.end(), line);
      lines.push_back(reinterpret_cast<const T*>(line));
    }
    for (int r = 0; r < rows; ++r) out.push_back(memory.template get<Y>(stretch++, std::size_t(width), atEnd));
  }

  /// Compares with the plain loop; `finish` makes the result from sum and energy.
  template <class FinishT>
  void compare(const std::vector<H>& taps, bool reversed, FinishT&& finish) {
    for (int r = 0; r < rows; ++r) {
      for (int i = 0; i < width; ++i) {
        Y sum(0), energy(0);
        std::size_t n = 0;
        for (int p = 0; p < window.planes; ++p) {
          for (int j = 0; j < window.rows; ++j) {
            const auto line = std::size_t(p * (window.rows + rows - 1) + r + j);
            for (int c = 0; c < window.columns; ++c, ++n) {
              const U x = reinterpret_cast<const U*>(lines[line])[i + c];
              multiplyAdd(sum, x, taps[reversed ? taps.size() - 1 - n : n]);
              addEnergy(energy, x);
            }
          }
        }
        Y& found = out[std::size_t(r)][i];
        const Y wanted = finish(sum, energy);
        ASSERT_TRUE(sameBits(found, wanted)) << describe(r, i) << found << " for " << wanted;
        found = Y(-1);  // so that the next call has to write it
      }
    }
  }

  template <class Element>
  static std::vector<T*> asParts(const std::vector<Element*>& pointers) {
    std::vector<T*> parts;
    for (Element* pointer : pointers) parts.push_back(reinterpret_cast<T*>(pointer));
    return parts;
  }

  std::string describe(int r, int i) const {
    std::ostringstream text;
    text << getTarget() << ", elements " << int(elements) << " of " << sizeof(T) << " bytes, window " << window.planes
         << 'x' << window.rows << 'x' << window.columns << ", " << rows << " rows of " << width << ", at " << r << ", "
         << i << ": ";
    return text.str();
  }

  std::mt19937& random;
  test::GuardedLines memory;
  FilterExtents window;
  int rows = 0, width = 0;
  std::vector<const T*> lines;
  std::vector<Y*> out;
};

class SumsTest : public testing::TestWithParam<std::string_view> {
 protected:
  SumsTest() { EXPECT_TRUE(forceTarget(GetParam())); }
  ~SumsTest() override { forceTarget(""); }

  template <class T, class U, class H>
  void check() {
    Case<T, U, H> sums(random);
    for (int i = 0; i < 150 && !HasFatalFailure(); ++i) sums.run();
  }

  std::mt19937 random{2024};
};

TEST_P(SumsTest, BitsOfThePlainLoop) {
  ASSERT_EQ(getTarget(), GetParam());
  check<float, float, float>(), check<double, double, double>();
  check<float, std::complex<float>, float>(), check<double, std::complex<double>, double>();
  check<float, float, std::complex<float>>(), check<double, double, std::complex<double>>();
  check<float, std::complex<float>, std::complex<float>>(), check<double, std::complex<double>, std::complex<double>>();
}

/// Both passes in one against two passes, some lines beyond an edge.
template <class T>
void checkSeparable(std::mt19937& random, Elements first, Elements second) {
  const int inParts = isComplexInput(first) ? 2 : 1, outParts = second == Elements::realReal ? 1 : 2;
  const FilterExtents alongSize{1, 1, pick(random, 1, 20)}, acrossSize{1, pick(random, 1, 40), 1};
  const int rows = pick(random, 1, 80), width = pick(random, 1, 1500), lineCount = rows + acrossSize.rows - 1;
  std::vector<T> alongStore(PackedFilter<T>::sizeFor(first, alongSize));
  std::vector<T> acrossStore(PackedFilter<T>::sizeFor(second, acrossSize));
  PackedFilter<T> along(first, alongSize, alongStore.data()), across(second, acrossSize, acrossStore.data());
  along.pack(randomValues<T>(random, 2 * alongSize.columns).data(), false);
  across.pack(randomValues<T>(random, 2 * acrossSize.rows).data(), false);

  test::GuardedLines memory(std::size_t(lineCount + rows), 8);
  const auto beyond = randomValues<T>(random, width * outParts);
  std::vector<T> between(std::size_t(lineCount * width * outParts)), wanted(std::size_t(rows * width * outParts));
  std::vector<const T*> lines, lines2;
  std::vector<T*> betweenLines, out, wantedOut;
  for (int k = 0; k < lineCount; ++k) {
    const auto values = randomValues<T>(random, (width + alongSize.columns - 1) * inParts);
    T* const line = memory.get<T>(std::size_t(k), values.size(), true);
    lines.push_back(std::copy(values.begin(), values.end(), line) - values.size());
    betweenLines.push_back(&between[std::size_t(k * width * outParts)]);
    lines2.push_back(betweenLines.back());
  }
  for (int r = 0; r < rows; ++r) {
    out.push_back(memory.get<T>(std::size_t(lineCount + r), std::size_t(width * outParts), true));
    wantedOut.push_back(&wanted[std::size_t(r * width * outParts)]);
  }
  along.sumProducts({lines.data(), 0, lineCount, width, betweenLines.data()});
  for (int k : {0, 1, lineCount - 1}) {
    if (k < lineCount && pick(random, 0, 1)) lines[std::size_t(k)] = nullptr, lines2[std::size_t(k)] = beyond.data();
  }
  across.sumProducts({lines2.data(), 0, rows, width, wantedOut.data()});

  const auto scratch = SeparableSums<T>::scratchFor(across, width);
  std::vector<T> values(scratch.values);
  std::vector<const T*> pointers(scratch.pointers);
  SeparableSums<T>(along, across, values.data(), pointers.data())
      .sumProducts({lines.data(), 0, rows, width, out.data()}, beyond.data());
  for (int r = 0; r < rows; ++r) {
    EXPECT_TRUE(std::equal(out[std::size_t(r)], out[std::size_t(r)] + width * outParts, wantedOut[std::size_t(r)]))
        << getTarget() << " row " << r << " of " << rows << ", " << width << " wide";
  }
}

TEST_P(SumsTest, SeparableSumsAreTwoPasses) {
  for (int i = 0; i < 5; ++i) {
    checkSeparable<float>(random, Elements::realReal, Elements::realReal);
    checkSeparable<double>(random, Elements::complexReal, Elements::complexReal);
    checkSeparable<float>(random, Elements::realComplex, Elements::complexComplex);
    checkSeparable<double>(random, Elements::complexComplex, Elements::complexComplex);
  }
}
INSTANTIATE_TEST_SUITE_P(Target, SumsTest, testing::ValuesIn(getTargets()),
                         [](const auto& target) { return std::string(target.param); });

TEST(TargetTest, NamesWhatTheMachineHas) {
  ASSERT_TRUE(forceTarget(""));
  const auto targets = getTargets();
  EXPECT_EQ(targets.back(), "scalar");
  EXPECT_EQ(getTarget(), targets.front());
  EXPECT_FALSE(forceTarget("none"));
  EXPECT_EQ(getTarget(), targets.front());
#ifdef __x86_64__
  const auto has = [&](const char* name) { return std::find(targets.begin(), targets.end(), name) != targets.end(); };
  EXPECT_EQ(has("avx2"), __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
  EXPECT_EQ(has("avx512"), __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq"));
#endif
}

}  // namespace
}  // namespace BP::lanes
