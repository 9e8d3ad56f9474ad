#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

/// Lets the table show the time of one of the `items` that an iteration does, in a column "time/NAME".
inline void reportPerItem(benchmark::State& state, const char* name, std::int64_t items) {
  using benchmark::Counter;
  state.counters[std::string("time/") + name] = Counter(
      static_cast<double>(items), static_cast<Counter::Flags>(Counter::kIsIterationInvariantRate | Counter::kInvert));
}
