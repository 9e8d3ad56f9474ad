#include "orvane/lanes/fixed_sums.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orvane/lanes/target.h"
#include "tests/support/random_values.h"

namespace BP::lanes {
namespace {

using test::pick;
namespace detail = KarnDSPFixpt::detail;

FixedCast castTo(int word, int drop, fxpModeRounding_tag rounding, fxpModeOverflow_tag overflow) {
  const KarnDSPFixpt::FixptType type{static_cast<unsigned>(word), 0, true};
  return {detail::makeRounder<std::int64_t>(drop, rounding), detail::makeRange<std::int64_t>(type, overflow)};
}

bool fillsLane(FixedForm form) { return form == FixedForm::quickRoundWord || form == FixedForm::roundWord; }

/// Random runs of one form in lanes of T, against casts one by one.
template <class T>
class Case {
 public:
  explicit Case(std::mt19937& engine) : random(engine) {}

  void run(FixedForm form) {
    task = {};
    task.form = form;
    task.gathers = pick(random, 0, 3) != 0;
    task.ranges = pick(random, 0, 1) != 0;
    task.columns = pick(random, 1, 9);
    task.filterRows = pick(random, 1, 6);
    task.rows = pick(random, 1, 5);
    task.width = pick(random, 1, 200);
    const int operandBits = sizeof(T) == 8 ? 24 : fillsLane(form) ? 16 : 10;
    setCasts(form, operandBits);
    layOut(operandBits);
    FixedSumCounts found;
    sumFixed(task, found);
    compare(found);
  }

 private:
  void setCasts(FixedForm form, int operandBits) {
    const auto overflow = static_cast<fxpModeOverflow_tag>(pick(random, 0, 3));
    const auto rounding = static_cast<fxpModeRounding_tag>(pick(random, 0, 5));
    const int drop = fillsLane(form) ? pick(random, 0, 1) : pick(random, 0, 8),
              sumWord = operandBits * 2 + pick(random, -6, 3);
    const int whole = sizeof(T) == 4 ? 31 : 62;
    switch (form) {
      case FixedForm::exact:
        task.append = pick(random, -3, 3);
        task.product = task.sum = castTo(whole, 0, fxpRoundFloor, fxpOverflowWrap);
        break;
      case FixedForm::quickRound:
      case FixedForm::round:
      case FixedForm::quickRoundWord:
      case FixedForm::roundWord:
        task.product =
            castTo(whole, drop, form == FixedForm::round || form == FixedForm::roundWord ? rounding : fxpRoundNearest,
                   fxpOverflowWrap);
        if (fillsLane(form)) {
          task.sum = castTo(32, 0, fxpRoundFloor, fxpOverflowSaturate);
          break;
        }
        task.sum = castTo(sumWord, 0, fxpRoundFloor, pick(random, 0, 1) ? fxpOverflowSaturate : fxpOverflowSymmetric);
        break;
      case FixedForm::any:
        task.append = pick(random, 0, 2);
        task.ownAppend = pick(random, 0, 2);
        task.otherAppend = pick(random, 0, 2);
        task.product = castTo(operandBits * 2 - pick(random, 0, 8), drop, rounding, overflow);
        task.sum = castTo(sumWord, pick(random, 0, 4), rounding, overflow);
        break;
    }
  }

  void layOut(int operandBits) {
    const auto values = [&](std::vector<T>& to, std::ptrdiff_t count, int bits) {
      to.resize(std::size_t(count));
      for (T& v : to) v = T(pick(random, -(1 << (bits - 1)), (1 << (bits - 1)) - 1)) << pick(random, 0, 2);
    };
    values(taps, task.columns * task.filterRows, operandBits - 2);
    const std::ptrdiff_t length = task.width + task.columns - 1 + task.slack,
                         lineCount = task.rows + task.filterRows - 1;
    values(input, length * lineCount, operandBits - 2);
    marks.assign(input.size(), T(-1));
    hasMarks = pick(random, 0, 1) != 0;
    if (hasMarks) {
      for (T& mark : marks) mark = T(-pick(random, 0, 1));
    }
    output.assign(std::size_t(task.rows * (task.width + task.slack)), 0);
    lines.clear(), counted.clear(), out.clear();
    for (std::ptrdiff_t k = 0; k < lineCount; ++k) {
      lines.push_back(&input[std::size_t(k * length)]);
      counted.push_back(&marks[std::size_t(k * length)]);
    }
    for (int r = 0; r < task.rows; ++r) out.push_back(&output[std::size_t(r * (task.width + task.slack))]);
    task.taps = taps.data();
    task.lines = lines.data();
    task.counted = hasMarks ? counted.data() : nullptr;
    task.out = out.data();
  }

  static std::int64_t cast(const FixedCast& by, std::int64_t exact, FixedCounts& counts, bool isCounted,
                           int shift = 0) {
    const auto result = detail::castInto(exact, by.rounder, by.range);
    if (!isCounted) return result.value;
    const std::int64_t scaled = shift < 0 ? result.value >> -shift : result.value << shift;
    counts.add({1, result.overflow, result.lossy, scaled, scaled});
    return result.value;
  }

  void compare(const FixedSumCounts& found) {
    const bool isExact = task.form == FixedForm::exact;
    FixedSumCounts wanted;
    for (int r = 0; r < task.rows; ++r) {
      for (std::ptrdiff_t i = 0; i < task.width; ++i) {
        std::int64_t sum = 0;
        for (int n = 0; n < task.columns * task.filterRows; ++n) {
          const int j = n / task.columns;
          const std::ptrdiff_t at = i + n % task.columns;
          const std::int64_t exact = std::int64_t{lines[std::size_t(r + j)][at]} * taps[std::size_t(n)];
          const std::int64_t p = cast(task.product, isExact ? exact : exact << task.append, wanted.product,
                                      counted[std::size_t(r + j)][at] != 0, isExact ? task.append : 0);
          sum = cast(task.sum, (sum << task.ownAppend) + (p << task.otherAppend), wanted.sum, true);
        }
        ASSERT_EQ(out[std::size_t(r)][i], sum) << describe(r, i);
      }
    }
    FixedSumCounts met = found;
    if (task.form == FixedForm::any) {
      if (!task.gathers) return;
      compareCounts("product", met.product, wanted.product);
    } else {
      countCasts(task, met);
      ASSERT_EQ(met.product.casts, wanted.product.casts) << describe(0, 0);
      if (!task.gathers || (!task.ranges && isExact)) wanted.sum.overflows = met.sum.overflows;
      if (!task.gathers || !task.ranges) {
        wanted.sum.least = std::numeric_limits<std::int64_t>::max();
        wanted.sum.greatest = std::numeric_limits<std::int64_t>::min();
      }
      wanted.sum.lossy = 0;
    }
    compareCounts("sum", met.sum, wanted.sum);
  }

  void compareCounts(const char* name, const FixedCounts& found, const FixedCounts& wanted) const {
    ASSERT_EQ(found.casts, wanted.casts) << name << describe(0, 0);
    ASSERT_EQ(found.overflows, wanted.overflows) << name << describe(0, 0);
    ASSERT_EQ(found.lossy, wanted.lossy) << name << describe(0, 0);
    ASSERT_EQ(found.least, wanted.least) << name << describe(0, 0);
    ASSERT_EQ(found.greatest, wanted.greatest) << name << describe(0, 0);
  }

  std::string describe(int r, std::ptrdiff_t i) const {
    std::ostringstream text;
    text << ' ' << getTarget() << ", form " << int(task.form) << " in " << sizeof(T) << " bytes, " << task.columns
         << 'x' << task.filterRows << ", " << task.rows << " rows of " << task.width << ", marks " << hasMarks
         << ", at " << r << ", " << i;
    return text.str();
  }

  std::mt19937& random;
  FixedSumTask<T> task;
  bool hasMarks = false;
  std::vector<T> taps, input, marks, output;
  std::vector<const T*> lines, counted;
  std::vector<T*> out;
};

class FixedSumsTest : public testing::TestWithParam<std::string_view> {
 protected:
  FixedSumsTest() { EXPECT_TRUE(forceTarget(GetParam())); }
  ~FixedSumsTest() override { forceTarget(""); }
};

TEST_P(FixedSumsTest, ValuesAndCountsOfCastsOneByOne) {
  std::mt19937 random(16);
  Case<std::int32_t> narrow(random);
  Case<std::int64_t> wide(random);
  for (int i = 0; i < 400 && !HasFatalFailure(); ++i) {
    const auto form = static_cast<FixedForm>(i % 6);
    narrow.run(form);
    if (!fillsLane(form)) wide.run(form);
  }
}
INSTANTIATE_TEST_SUITE_P(Target, FixedSumsTest, testing::ValuesIn(getTargets()),
                         [](const auto& target) { return std::string(target.param); });

}  // namespace
}  // namespace BP::lanes
