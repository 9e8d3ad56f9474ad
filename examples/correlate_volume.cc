// Sums each element of a 3 by 2 by 2 volume and its six neighbours, edge elements repeated; no host is needed.
#include <cstdio>

#include "orvane/correlation/correlation_stand_alone.h"

int main() {
  int volumeSize[] = {3, 2, 2}, filterSize[] = {3, 3, 3}, centre[] = {1, 1, 1};  // width, height, depth
  float volume[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, filter[27] = {}, result[12];
  for (int middleOfEachAxis : {4, 10, 12, 13, 14, 16, 22}) filter[middleOfEachAxis] = 1;
  BP::CorrelationStandAlone<float> correlation(3, filterSize, volumeSize, BP::PadTypeReplicate, BP::OutputModeSame,
                                               centre, filter, volume, result);
  correlation.setup();
  correlation.invoke();
  for (int row = 0; row < 12; row += 3) std::printf("%g %g %g\n", result[row], result[row + 1], result[row + 2]);
}
