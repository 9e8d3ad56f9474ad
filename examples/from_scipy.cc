// What scipy.ndimage.convolve(a, w) and scipy.signal.convolve2d(a, w) would do with their defaults.
#include <cstdio>
#include <vector>

#include "orvane/orvane.h"

int main() {
  using namespace orvane;
  const std::vector<double> a = {1, 2, 3, 4, 5, 6};  // of shape (2, 3): 3 is the extent of dimension 0
  const std::vector<double> w = {1, 0, 2, -1};       // of shape (2, 2)
  const ArrayView array(a, {3, 2}), weights(w, {2, 2});

  const Array<double> ndimage = convolve(array, weights, {.pad = PadRule::symmetric});  // mode='reflect'
  const Array<double> signal = convolve(array, weights, {.mode = OutputMode::full, .pad = PadRule::constant});
  for (const Array<double>* result : {&ndimage, &signal}) {
    for (const double value : *result) std::printf("%g ", value);
    std::printf("\n");
  }
}
