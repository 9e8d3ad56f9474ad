#include "bench/systemc_peer.h"

#include <memory>
#include <random>
#include <vector>

#define SC_INCLUDE_FX
#include <sysc/datatypes/fx/fx.h>

namespace bench {
namespace {

constexpr int count = 1024;

template <class Number>
Sampler systemC(const SystemCSums& sums) {
  struct Operands {
    std::vector<Number> input, filter;
    Number product{32, 12, sc_dt::SC_RND, sc_dt::SC_SAT};
    Number sum;
    explicit Operands(const SystemCSums& s) : sum(s.sumWord, s.sumInteger, sc_dt::SC_RND, sc_dt::SC_SAT) {}
  };
  const auto o = std::make_shared<Operands>(sums);
  for (const unsigned seed : {1U, 2U}) {
    std::vector<Number>& numbers = seed == 1 ? o->input : o->filter;
    numbers.reserve(count);
    for (const double v : fixedSamples(seed)) {
      numbers.emplace_back(16, 4, sc_dt::SC_RND, sc_dt::SC_SAT);
      numbers.back() = v;
    }
  }
  return timed(
      [o] {
        o->sum = 0;
        for (std::size_t i = 0; i < count; ++i) {
          o->product = o->input[i] * o->filter[i];
          o->sum += o->product;
        }
        keep(o->sum);
      },
      count / sums.taps);
}

}  // namespace

std::vector<double> fixedSamples(unsigned seed) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<double> any(-7.9, 7.9);
  std::vector<double> values(count);
  for (double& v : values) v = any(engine);
  return values;
}

Sampler systemCFix(const SystemCSums& sums) { return systemC<sc_dt::sc_fix>(sums); }
Sampler systemCFixFast(const SystemCSums& sums) { return systemC<sc_dt::sc_fix_fast>(sums); }

}  // namespace bench
