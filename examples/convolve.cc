// Convolves a 4 by 3 image with a 2 by 2 filter and prints the 3 by 2 result.
#include <cstdio>

#include "orvane/convcorr/conv_corr_tolk.h"
#include "orvane/host/reference_host.h"

int main() {
  int imageSize[] = {4, 3}, filterSize[] = {2, 2};  // width, height
  double image[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  double filter[] = {0.5, 0.25, 0.125, 0.125};
  double result[3 * 2];

  BP::ReferenceHost host;
  BP::ConvCorrTolk<double, double, double> convolution(host.getAdaptor(), 2, filterSize, 2, imageSize,
                                                       BP::PadTypeConstant, BP::OutputModeValid,
                                                       BP::AlgorithmModeConvolution, BP::NormNone, false);
  host.provideWorkVectors(convolution.getAllocator());
  convolution.setup(filter, image, result, nullptr, false);
  convolution.computeOutputs();

  for (int y = 0; y < 2; ++y) std::printf("%g %g %g\n", result[3 * y], result[3 * y + 1], result[3 * y + 2]);
}
