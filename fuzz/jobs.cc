// Jobs of all kinds over random arrays: every way to run one gives the bits of the plain loops.
#include "fuzz/compare_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  BP::fuzz::ByteSource source(data, size);
  const BP::test::RandomJob job = BP::test::randomJob(source);
  BP::fuzz::compareWays(job, source);
  return 0;
}
