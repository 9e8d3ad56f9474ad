#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

/// How a fuzz target says that it found something: the process ends, and the fuzzer keeps the input.
namespace BP::fuzz {

/// Ends the process unless `isTrue`.
inline void require(bool isTrue, const std::string& what) {
  if (isTrue) return;
  std::fprintf(stderr, "fuzz: %s\n", what.c_str());
  std::abort();
}

/// Calls `body`, which may refuse its argument: by `std::runtime_error` or `std::invalid_argument` with a text. What
/// else is thrown is a finding.
template <class Body>
void allowRefusal(Body&& body) {
  try {
    body();
  } catch (const std::runtime_error& error) {
    require(*error.what() != 0, "an error without a text");
  } catch (const std::invalid_argument& error) {
    require(*error.what() != 0, "an error without a text");
  }
}

}  // namespace BP::fuzz

/// What each target defines, and the fuzzer or the replay calls for each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
