#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/platform/export.h"

/// What all front classes do with the extents that a host gives: arrays of its own, with a count of entries. A
/// negative count means no entries.
namespace BP {

/// The common number of dimensions: the larger count, at least 2.
ORVANE_API int commonRank(int hNumDims, int uNumDims);

/// Copies the host's extents and fills up with 1.
ORVANE_API void fillDims(CleverPtr<int>& dims, int nDims, const CleverPtr<int>& hostDims, int hostNumDims);

/// Lays all elements along dimension `along`: its extent becomes the product of all, the others 1.
ORVANE_API void foldDims(CleverPtr<int>& dims, int nDims, int along);

/// The centre of each extent (see centre.h).
ORVANE_API void computeCentres(CleverPtr<int>& centres, int nDims, const CleverPtr<int>& dims);

/// Whether a filter exceeds an input: in a dimension of both its extent is the greater; in a further dimension of the
/// filter alone it is above 1; in one of the input alone that is below 1.
ORVANE_API bool isHgtU(int hNumDims, int uNumDims, const CleverPtr<int>& hDims, const CleverPtr<int>& uDims);

}  // namespace BP
