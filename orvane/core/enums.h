#pragma once

/// Enumerations that all processors share. Their numbers are part of the interface to the host.
namespace BP {

/// Extent of the output, for an input of extent u and a filter of extent h in a dimension.
enum OutputModeEnum : int {
  OutputModeValid = 0,  ///< u - h + 1: only positions where the filter lies wholly in the input
  OutputModeSame = 1,   ///< u: the filter's centre lies on each input element in turn
  OutputModeFull = 2,   ///< u + h - 1: every position where filter and input overlap
};

/// The arithmetic of a processor. `ConvCorr` knows the first two, template matching all five.
enum AlgorithmModeEnum : int {
  AlgorithmModeConvolution = 0,  ///< the filter is walked from its last element to its first
  AlgorithmModeCorrelation = 1,  ///< the filter is walked in storage order
  AlgorithmModeSAD = 2,          ///< sum of absolute differences
  AlgorithmModeSSD = 3,          ///< sum of squared differences
  AlgorithmModeMaxAD = 4,        ///< maximum absolute difference
};

/// Normalisation of a convolution or correlation. Only zero and non-zero are told apart.
enum NormEnum : int {
  NormNone = 0,          ///< the plain sum of products
  NormWindowEnergy = 1,  ///< divided by the filter's norm and the norm of the window's values
};

/// What the input yields beyond its edge. Zero is not a pad type.
///
///     constant   v v v | a b c | v v v        replicate  a a a | a b c | c c c
///     symmetric  c b a | a b c | c b a        circular   a b c | a b c | a b c
enum PadTypeEnum : int {
  PadTypeConstant = 1,
  PadTypeReplicate = 2,
  PadTypeSymmetric = 3,
  PadTypeCircular = 4,
};

/// The stages of set-up. Objects ask for ranges of them, so the order counts; 5 has no name and no effect.
enum setupModeT : int {
  setupAttachWork = 0,  ///< tables take their storage from the host's work vectors
  setupLinkTables = 1,  ///< tables that are slices of another find their place in it
  setupResize = 2,      ///< extents are read anew and everything that follows from them is worked out
  setupStart = 3,       ///< the first start
  setupInvoke = 4,      ///< once in each run
  setupFinish = 6,      ///< the end: statistics are gathered
};

}  // namespace BP
