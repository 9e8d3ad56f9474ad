// Has a vendor's library, named on the command line, compute the same sum once more.
#include <cstdio>
#include <string>
#include <vector>

#include "orvane/orvane.h"
#include "orvane/vendor/zd_filter_loader.h"

int main(int count, char** arguments) {
  using namespace orvane;
  const std::vector<float> line = {1, 1e8F, -1e8F, 0}, ones = {1, 1, 1, 1};
  const ArrayView input(line, {4}), filter(ones, {4});

  std::printf("own code %g\n", convolve(input, filter, {.mode = OutputMode::valid})[0]);

  std::string error = count < 2 ? "which library?" : ZdLoader::addLibrary(arguments[1]);
  if (error.empty() && !BP::ZdFilterLoader().getAllLoaded()) error = "it lacks one of the three functions";
  if (!error.empty()) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
  }
  std::printf("vendor %g\n", convolve(input, filter, {.mode = OutputMode::valid})[0]);
}
