// Jobs of all kinds over random arrays: every way to run one gives the bits of the plain loops. Arguments that make no
// sense are refused.
#include "fuzz/arguments.h"
#include "fuzz/compare_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  BP::fuzz::ByteSource source(data, size);
  const int kind = pick(source, 0, BP::test::jobKinds);
  if (kind == BP::test::jobKinds) {
    BP::fuzz::allowRefusal([&] { BP::fuzz::tryArguments(source); });
    return 0;
  }
  const BP::test::RandomJob job = BP::test::randomJob(source, kind);
  BP::fuzz::compareWays(job, source);
  return 0;
}
