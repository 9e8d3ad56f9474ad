#include "orvane/core/host_dims.h"

#include <algorithm>

#include "orvane/core/centre.h"

namespace BP {

int commonRank(int hNumDims, int uNumDims) {
  const int rank = std::max({hNumDims, uNumDims, 0});
  return rank == 1 ? 2 : rank;
}

void fillDims(CleverPtr<int>& dims, int nDims, const CleverPtr<int>& hostDims, int hostNumDims) {
  for (int d = 0; d < nDims; ++d) dims.ptr[d] = d < hostNumDims ? hostDims.ptr[d] : 1;
}

void foldDims(CleverPtr<int>& dims, int nDims, int along) {
  int product = 1;
  for (int d = 0; d < nDims; ++d) {
    product *= std::max(dims.ptr[d], 0);
    dims.ptr[d] = 1;
  }
  if (along < nDims) dims.ptr[along] = product;
}

void computeCentres(CleverPtr<int>& centres, int nDims, const CleverPtr<int>& dims) {
  for (int d = 0; d < nDims; ++d) centres.ptr[d] = centreOf(dims.ptr[d]);
}

bool isHgtU(int hNumDims, int uNumDims, const CleverPtr<int>& hDims, const CleverPtr<int>& uDims) {
  const int shared = std::max(std::min(hNumDims, uNumDims), 0);
  bool exceeds = false;
  for (int d = 0; d < shared; ++d) exceeds = exceeds || hDims.ptr[d] > uDims.ptr[d];
  for (int d = shared; d < hNumDims; ++d) exceeds = exceeds || hDims.ptr[d] > 1;
  for (int d = shared; d < uNumDims; ++d) exceeds = exceeds || uDims.ptr[d] < 1;
  return exceeds;
}

}  // namespace BP
