#pragma once

#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/platform/export.h"

/// Sectors: rectangles of output positions at which the window meets the same edges.
///
/// The plan owns a sector's tables. A kernel receives non-empty sectors only, and must not keep them.
namespace BP {

/// A rectangle of output positions; `start` and `end` are absolute and inclusive.
class ORVANE_API Sector {
 public:
  Sector(int rank, CleverPtr<int>& first, CleverPtr<int>& last) : start(&first), end(&last), numDims(rank) {}
  Sector(const Sector&) = delete;
  Sector& operator=(const Sector&) = delete;
  virtual ~Sector();

  CleverPtr<int>& getStart() const { return *start; }
  CleverPtr<int>& getEnd() const { return *end; }
  int getNumDims() const { return numDims; }
  bool getIsEmpty() const { return isEmpty; }
  void setIsEmpty(bool value) { isEmpty = value; }

  /// Forgets the last filling, at `setupStart` and `setupInvoke`.
  void reset(setupModeT stage);

 private:
  CleverPtr<int>* start;
  CleverPtr<int>* end;
  int numDims;
  bool isEmpty = false;
};

/// Positions whose window lies wholly in the input.
class ORVANE_API InsideSector : public Sector {
 public:
  using Sector::Sector;
};

/// A sector whose windows can leave the input. `preEdge` lists the dimensions in which they can begin before the first
/// element, `postEdge` those in which they can end behind the last one, both in ascending order. A dimension in which
/// the window is wider than the input can be in both lists.
class ORVANE_API OuterSector : public Sector {
 public:
  OuterSector(int rank, CleverPtr<int>& first, CleverPtr<int>& last, CleverPtr<int>& preEdges,
              CleverPtr<int>& postEdges)
      : Sector(rank, first, last), preEdge(&preEdges), postEdge(&postEdges) {}

  int getPreEdgeCount() const { return preEdgeCount; }
  CleverPtr<int>& getPreEdge() const { return *preEdge; }
  int getPostEdgeCount() const { return postEdgeCount; }
  CleverPtr<int>& getPostEdge() const { return *postEdge; }
  /// Whether dimension `d` stands in either list.
  bool getIsListed(int d) const;
  void setPreEdgeCount(int count) { preEdgeCount = count; }
  void setPostEdgeCount(int count) { postEdgeCount = count; }

  void reset(setupModeT stage);

 private:
  int preEdgeCount = 0;
  CleverPtr<int>* preEdge;
  int postEdgeCount = 0;
  CleverPtr<int>* postEdge;
};

/// Positions whose window crosses an edge of the input.
class ORVANE_API BoundarySector : public OuterSector {
 public:
  using OuterSector::OuterSector;
};

/// Positions whose window misses the input in some dimension.
class ORVANE_API OutsideSector : public OuterSector {
 public:
  using OuterSector::OuterSector;
};

}  // namespace BP
