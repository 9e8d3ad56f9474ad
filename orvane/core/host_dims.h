#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/platform/export.h"

/// What all fronts do with the extents that a host gives, an array with a count of entries. A negative count means no
/// entries.
namespace BP {

/// The common number of dimensions: the larger count, at least 2.
ORVANE_API int commonRank(int hNumDims, int uNumDims);

/// Copies the host's extents; missing ones become 1.
ORVANE_API void fillDims(CleverPtr<int>& dims, int nDims, const CleverPtr<int>& hostDims, int hostNumDims);

/// Lays all elements along dimension `along`: its extent becomes the product of all extents, of which negative ones
/// count as 0, and the others become 1.
ORVANE_API void foldDims(CleverPtr<int>& dims, int nDims, int along);

/// The centre of each extent (see centre.h).
ORVANE_API void computeCentres(CleverPtr<int>& centres, int nDims, const CleverPtr<int>& dims);

/// Whether the extent of a filter exceeds that of an input in some dimension. A dimension that only one of them has
/// counts as extent 1 of the other.
ORVANE_API bool isHgtU(int hNumDims, int uNumDims, const CleverPtr<int>& hDims, const CleverPtr<int>& uDims);

}  // namespace BP
