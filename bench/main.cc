#include <benchmark/benchmark.h>

// The library of SystemC, measured beside ours, asks for it; nothing here is simulated.
extern "C" __attribute__((visibility("default"))) int sc_main(int, char*[]) { return 0; }

BENCHMARK_MAIN();
