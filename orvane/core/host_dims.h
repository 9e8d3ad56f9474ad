#pragma once

#include "orvane/core/clever_ptr.h"

/// What all front classes do with the extents that a host gives: arrays of its own, with a count of entries.
namespace BP {

/// The common number of dimensions: the larger count, at least 2.
int commonRank(int hNumDims, int uNumDims);

/// Copies the host's extents and fills up with 1.
void fillDims(CleverPtr<int>& dims, int nDims, const CleverPtr<int>& hostDims, int hostNumDims);

/// Lays all elements along dimension `along`: its extent becomes the product of all, the others 1.
void foldDims(CleverPtr<int>& dims, int nDims, int along);

/// The centre of each extent: the middle element, the lower one of the two of an even extent.
void computeCentres(CleverPtr<int>& centres, int nDims, const CleverPtr<int>& dims);

/// Whether a filter exceeds an input: in a dimension of both its extent is the greater; in a further dimension of the
/// filter alone it is above 1; in one of the input alone that is below 1.
bool isHgtU(int hNumDims, int uNumDims, const CleverPtr<int>& hDims, const CleverPtr<int>& uDims);

}  // namespace BP
