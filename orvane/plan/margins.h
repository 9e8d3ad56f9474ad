#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/platform/export.h"

namespace BP {

/// The sections of a dimension: ranges of output positions at which the window meets the input's edges in the same way.
/// A farther reach of processing needs more codes: 0 for the inside, 0 to 2 for boundaries, 0 to 4 for everything.
///
///     position     low --------------------------------------------------> high
///     section      LowOutside   LowBoundary   Centre   HighBoundary   HighOutside
///     code              3            1           0          2              4
///     window       [---]
///     at each               [---]
///     first                            [---]
///     position                                 [---]
///                                                           [---]
///     input              |______________________________|
///
/// Where the window is wider than the input, the two boundary ranges overlap. The window crosses both edges in the
/// overlap, which takes the place of the centre.
enum SectionCode : int {
  SectionCentre = 0,
  SectionLowBoundary = 1,
  SectionHighBoundary = 2,
  SectionLowOutside = 3,
  SectionHighOutside = 4,
};
inline constexpr int sectionCount = 5;

/// One dimension of a plan's geometry. Positions are absolute, counted from the input's first element.
struct DimensionGeometry {
  int inputOrigin;   ///< origin of the input
  int inputEnd;      ///< last index of the input
  int outputOrigin;  ///< origin of the output
  int outputEnd;     ///< last index of the output
  int outputExtent;  ///< extent of the output
  int filterLoc;     ///< first filter element, relative to the output position
  int filterEnd;     ///< last index of the filter
};

/// The five sections of a dimension, by their codes: position of the first output and number of outputs.
struct DimensionSections {
  int loc[sectionCount];
  int width[sectionCount];
  bool overlap;  ///< low and high boundary overlap: the centre crosses both edges
};

/// Cuts the output of a dimension into its sections, which tile it. An output extent below 1 gives five empty sections.
ORVANE_API DimensionSections sectionsOf(const DimensionGeometry& geometry);

/// One section in every dimension. The plan owns the tables.
class ORVANE_API Margins {
 public:
  Margins(CleverPtr<int>& widthTable, CleverPtr<int>& locTable) : width(&widthTable), loc(&locTable) {}
  virtual ~Margins();

  /// Number of positions per dimension.
  CleverPtr<int>& getWidth() const { return *width; }
  /// Absolute position of the first one per dimension.
  CleverPtr<int>& getLoc() const { return *loc; }

 private:
  CleverPtr<int>* width;
  CleverPtr<int>* loc;
};

}  // namespace BP
