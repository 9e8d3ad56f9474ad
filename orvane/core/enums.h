#pragma once

#include <array>

#include "orvane/core/named.h"
#include "orvane/core/pad_types.h"

/// Enumerations that all processors share, with the names that messages and the command use (pad types: see
/// pad_types.h). Their numbers are part of the interface to the host.
namespace BP {

/// Extent of the output, for an input of extent u and a filter of extent h in a dimension.
enum OutputModeEnum : int {
  OutputModeValid = 0,  ///< u - h + 1: only positions where the filter lies wholly in the input
  OutputModeSame = 1,   ///< u: the filter's centre lies on each input element in turn
  OutputModeFull = 2,   ///< u + h - 1: every position where filter and input overlap
};
inline constexpr std::array<Named<OutputModeEnum>, 3> outputModes{
    {{"valid", OutputModeValid}, {"same", OutputModeSame}, {"full", OutputModeFull}}};

/// The arithmetic of a processor. `ConvCorr` knows the first two, template matching all five.
enum AlgorithmModeEnum : int {
  AlgorithmModeConvolution = 0,  ///< the filter is walked from its last element to its first
  AlgorithmModeCorrelation = 1,  ///< the filter is walked in storage order
  AlgorithmModeSAD = 2,          ///< sum of absolute differences
  AlgorithmModeSSD = 3,          ///< sum of squared differences
  AlgorithmModeMaxAD = 4,        ///< maximum absolute difference
};
/// The directions in which a filter can be walked.
inline constexpr std::array<Named<AlgorithmModeEnum>, 2> directions{
    {{"convolution", AlgorithmModeConvolution}, {"correlation", AlgorithmModeCorrelation}}};

/// Normalisation of a convolution or correlation. Every non-zero value means `NormWindowEnergy`.
enum NormEnum : int {
  NormNone = 0,          ///< the plain sum of products
  NormWindowEnergy = 1,  ///< divided by the filter's norm and the norm of the window's values
};
inline constexpr std::array<Named<NormEnum>, 2> normalisations{{{"none", NormNone}, {"energy", NormWindowEnergy}}};

/// The stages of set-up. Objects test for ranges of stages, so their order matters. Stage 5 has no name and no effect.
enum setupModeT : int {
  setupAttachWork = 0,  ///< tables take their storage from the host's work vectors
  setupLinkTables = 1,  ///< tables that are slices of another one are pointed into it
  setupResize = 2,      ///< extents are read again, and all that depends on them is computed
  setupStart = 3,       ///< the first start
  setupInvoke = 4,      ///< once in each run
  setupFinish = 6,      ///< the end: statistics are gathered
};

}  // namespace BP
