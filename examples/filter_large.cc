// Filters on all cores, tells how far it is, and stops halfway.
#include <cstdio>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const Array<float> picture(Extents{4000, 4000});
  double last = 0;
  const auto progress = [&](double fraction) {
    last = fraction;
    return fraction < 0.5;  // false cancels the run
  };
  try {
    median(picture, {9, 9}, {.threads = 0, .progress = progress});
  } catch (const Cancelled& stopped) {
    std::printf("%s: %s\n", last < 1 ? "halfway" : "at the end", stopped.what());
  }
}
