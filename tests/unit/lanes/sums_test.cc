#include "orvane/lanes/sums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <string>

#include "orvane/algorithm/element.h"
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

constexpr int mostLines = 3 * 32, mostRows = 20;

/// Runs random sums of input U and filter H on the target in use, with each line and output row in guarded memory.
template <class T, class U, class H>
class Case {
 public:
  using Y = decltype(U() * H());
  static constexpr Elements elements = isComplex<U> ? (isComplex<H> ? Elements::complexComplex : Elements::complexReal)
                                                    : (isComplex<H> ? Elements::realComplex : Elements::realReal);

  explicit Case(std::mt19937& engine) : random(engine), memory(mostLines + 2 * mostRows) {}

  void run() {
    window = {pick(random, 1, 3), pick(random, 1, pick(random, 0, 2) ? 4 : 12),
              pick(random, 1, pick(random, 0, 3) ? 4 : 20)};
    rows = pick(random, 1, mostRows);
    width = pick(random, 1, pick(random, 0, 1) ? 140 : 12);
    const bool special = pick(random, 0, 2) == 0;
    layOut(special);
    const auto taps = randomValues<H>(random, window.planes * window.rows * window.columns, special);
    const bool reversed = pick(random, 0, 1) != 0;
    std::vector<T> storage(PackedFilter<T>::sizeFor(elements, window));
    PackedFilter<T> filter(elements, window, storage.data());
    filter.pack(reinterpret_cast<const T*>(taps.data()), reversed);

    const std::ptrdiff_t planeStride = window.rows + rows - 1;
    filter.sumProducts({lines.data(), planeStride, rows, width, asParts(out).data()});
    sumSquares<T>(isComplex<U>, window, {lines.data(), planeStride, rows, width, asParts(energies).data()});
    for (int r = 0; r < rows; ++r) {
      for (int i = 0; i < width; ++i) {
        Y sum(0);
        U energy(0);
        std::size_t n = 0;
        forEachTap(r, i, [&](const U& x) {
          multiplyAdd(sum, x, taps[reversed ? taps.size() - 1 - n : n]);
          addEnergy(energy, x);
          ++n;
        });
        ASSERT_TRUE(sameBits(out[std::size_t(r)][i], sum)) << where(r, i) << out[std::size_t(r)][i] << " for " << sum;
        ASSERT_TRUE(sameBits(std::real(energies[std::size_t(r)][i]), std::real(energy))) << where(r, i) << "energy";
      }
    }
    if constexpr (elements == Elements::realReal) checkNorms(special ? T(0) : T(1.7));
  }

 private:
  void layOut(bool special) {
    lines.clear(), out.clear(), energies.clear();
    const bool atEnd = pick(random, 0, 1) != 0;
    std::size_t stretch = 0;
    for (int k = 0; k < window.planes * (window.rows + rows - 1); ++k) {
      const auto values = randomValues<U>(random, width + window.columns - 1, special && pick(random, 0, 3) == 0);
      U* const line = memory.template get<U>(stretch++, values.size(), atEnd);
      std::copy(values.begin(), values.end(), line);
      lines.push_back(reinterpret_cast<const T*>(line));
    }
    for (int r = 0; r < rows; ++r) {
      out.push_back(memory.template get<Y>(stretch++, std::size_t(width), atEnd));
      energies.push_back(memory.template get<U>(stretch++, std::size_t(width), atEnd));
    }
  }

  template <class ActionT>
  void forEachTap(int r, int i, ActionT&& action) const {
    const auto* const* plane = lines.data();
    for (int p = 0; p < window.planes; ++p, plane += window.rows + rows - 1) {
      for (int j = 0; j < window.rows; ++j) {
        for (int c = 0; c < window.columns; ++c) action(reinterpret_cast<const U*>(plane[r + j])[i + c]);
      }
    }
  }

  void checkNorms(T filterNorm) {
    for (std::size_t r = 0; r < std::size_t(rows); ++r) {
      const std::vector<T> sums(out[r], out[r] + width), squares(energies[r], energies[r] + width);
      divideByNorms(out[r], energies[r], filterNorm, width);
      for (int i = 0; i < width; ++i) {
        const T divisor = std::sqrt(squares[std::size_t(i)]) * filterNorm;
        const T quotient = divisor == 0 ? 0 : sums[std::size_t(i)] / divisor;
        ASSERT_TRUE(sameBits(out[r][i], quotient)) << where(int(r), i) << "norm";
      }
    }
  }

  template <class Element>
  static std::vector<T*> asParts(const std::vector<Element*>& pointers) {
    std::vector<T*> parts;
    for (Element* pointer : pointers) parts.push_back(reinterpret_cast<T*>(pointer));
    return parts;
  }

  std::string where(int r, int i) const {
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
  std::vector<U*> energies;
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
INSTANTIATE_TEST_SUITE_P(Target, SumsTest, testing::ValuesIn(getTargets()),
                         [](const auto& target) { return std::string(target.param); });

TEST(TargetTest, NamesWhatTheMachineHas) {
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
