#pragma once

#include <type_traits>
#include <utility>

#include "orvane/algorithm/collector.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/enums.h"
#include "orvane/plan/output.h"
#include "orvane/plan/sector.h"
#include "orvane/platform/export.h"

namespace BP {

/// Abstract root of the kernels.
class ORVANE_API AnyKernel {
 public:
  AnyKernel() = default;
  AnyKernel(const AnyKernel&) = delete;
  AnyKernel& operator=(const AnyKernel&) = delete;
  virtual void setup(setupModeT stage) = 0;
  virtual ~AnyKernel();
};

/// Runs one sector. There is an operation for each of three kinds of sector and three uses of the results; here all
/// nine are empty.
///
/// `run` stores a result at each position, `search` scores each position and keeps the best, `stepSearch` scores a
/// shrinking pattern. `result` is the plan's output. `bestIndex` has two entries and receives the best position. A
/// kernel must not keep a sector. `Out` is the `Output` class of results; the kernel's own output is a scratch output
/// of one element.
template <class Out, class Alloc>
class Kernel : public AnyKernel {
 public:
  Kernel(Alloc* alloc, Out* scratch) : allocator(alloc), output(scratch) {}

  void setup(setupModeT stage) override { output->setup(stage); }
  ~Kernel() override = default;
  virtual void searchOutside(OutsideSector&, Out& /*result*/, CleverPtr<int>& /*bestIndex*/) {}
  virtual void searchBoundary(BoundarySector&, Out& /*result*/, CleverPtr<int>& /*bestIndex*/) {}
  virtual void searchInside(InsideSector&, Out& /*result*/, CleverPtr<int>& /*bestIndex*/) {}
  virtual void runOutside(OutsideSector&, Out& /*result*/) {}
  virtual void runBoundary(BoundarySector&, Out& /*result*/) {}
  virtual void runInside(InsideSector&, Out& /*result*/) {}
  virtual void stepSearchOutside(OutsideSector&, Out& /*result*/, CleverPtr<int>& /*bestIndex*/) {}
  virtual void stepSearchBoundary(BoundarySector&, Out& /*result*/, CleverPtr<int>& /*bestIndex*/) {}
  virtual void stepSearchInside(InsideSector&, Out& /*result*/, CleverPtr<int>& /*bestIndex*/) {}

  /// The same operations by the class of the sector.
  void run(InsideSector& s, Out& result) { runInside(s, result); }
  void run(BoundarySector& s, Out& result) { runBoundary(s, result); }
  void run(OutsideSector& s, Out& result) { runOutside(s, result); }
  void search(InsideSector& s, Out& result, CleverPtr<int>& best) { searchInside(s, result, best); }
  void search(BoundarySector& s, Out& result, CleverPtr<int>& best) { searchBoundary(s, result, best); }
  void search(OutsideSector& s, Out& result, CleverPtr<int>& best) { searchOutside(s, result, best); }
  void stepSearch(InsideSector& s, Out& result, CleverPtr<int>& best) { stepSearchInside(s, result, best); }
  void stepSearch(BoundarySector& s, Out& result, CleverPtr<int>& best) { stepSearchBoundary(s, result, best); }
  void stepSearch(OutsideSector& s, Out& result, CleverPtr<int>& best) { stepSearchOutside(s, result, best); }

  Out& getScratch() const { return *output; }
  /// What keeps the best of the positions that were searched; null for algorithms that have none.
  using Value = std::remove_pointer_t<decltype(std::declval<Out&>().getBlock().getData().ptr)>;
  virtual MinIdxCollector<Alloc, Value>* getBest() { return nullptr; }

 protected:
  Alloc* allocator;
  Out* output;
};

}  // namespace BP
