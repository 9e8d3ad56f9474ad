#pragma once

#include <map>
#include <string>
#include <type_traits>

#include "orvane/core/allocator.h"
#include "orvane/core/clever_ptr.h"
#include "orvane/core/work_vector_record.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"
#include "orvane/platform/karn_fixpt_3.h"
#include "orvane/platform/libkarnfxp.h"

namespace BP {

/// Statistics of fixed-point values per label.
using FixptLogMap = std::map<std::string, fxpBlockProperties*>;

/// The allocator of classes that a host drives.
///
/// It makes plain arrays and fixed-point arrays, and asks the host for work vectors. A fixed-point array has the data
/// type that was registered for its role: "input", "output", "filter", "accumulator", "sqrt" or "uint8". A role name
/// has no effect on plain elements; tables of integers have the role "ignore" or "int32". Failures go to the host as
/// messages, and execution goes on. One front object owns the allocator, and one thread at a time uses it.
class ORVANE_API AllocatorTolk {
 public:
  explicit AllocatorTolk(brekk::BrekkAdaptorTolk* adaptor);
  AllocatorTolk(const AllocatorTolk&) = delete;
  AllocatorTolk& operator=(const AllocatorTolk&) = delete;
  ~AllocatorTolk();

  /// Gives arrays of role `roleName` the type of `handle`, and keeps a copy of it. The first registration of a name
  /// counts; a further one is reported.
  void registerTypeName(std::string roleName, const KarnDSPFixpt::DSPDataAttributesHandle& handle);

  /// Makes `out` the owner of a new array of `count` values of the type of role `roleName`. A role that was not
  /// registered is reported, and `out` does not change.
  void createFixptArray(CleverPtr<KarnDSPFixpt::Fixpt>& out, int count, std::string roleName);

  /// Makes `out` the owner of a new array of `count` elements; a fixed-point array has the type of its role. The name
  /// of the array only documents the call.
  template <class T>
  void allocateArray(CleverPtr<T>& out, int count, std::string roleName, const std::string& /*arrayName*/ = {}) {
    if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
      createFixptArray(out, count, std::move(roleName));
    } else {
      allocatePlain(out, count);
    }
  }

  /// Requests a work vector of `width` elements from the host and stores its name in `out`. A name that is taken gets
  /// the suffix "_" and the number of records so far. T is `int` or `bool`.
  template <class T>
  void registerWorkVector(CleverPtr<T>& out, int width, std::string name, std::string roleName, int count);

  /// Points `out` at the vector that was registered under its name.
  template <class T>
  void attachWorkVector(CleverPtr<T>& out) {
    out.ptr = static_cast<T*>(workVectors[out.name]->data);
  }

  /// Asks the host for the address of each vector.
  void refreshWorkVectors();

  /// Adds the statistics of `value` and of its subordinate values to the host's map, by label. `useThis` false leaves
  /// out `value` itself. Nothing happens without a map or for a null value.
  void mergeFixptLog(KarnDSPFixpt::Fixpt* value, bool useThis);

  /// Sets the map that receives the statistics; null switches this off. The caller owns the map and must keep it while
  /// it is set.
  void setFixptLogMap(FixptLogMap* map) { fixptLogMap = map; }
  FixptLogMap* getFixptLogMap() const { return fixptLogMap; }

  brekk::BrekkAdaptorTolk* getAdaptor() const { return adaptor; }
  /// The requests for work vectors, by name. The host writes the vectors' numbers into the records.
  const std::map<std::string, WorkVectorRecord*>& getWorkVectors() const { return workVectors; }

 private:
  brekk::BrekkAdaptorTolk* adaptor;
  std::map<std::string, WorkVectorRecord*> workVectors;
  std::map<std::string, KarnDSPFixpt::DSPDataAttributesHandle*> typeHandles;
  FixptLogMap* fixptLogMap = nullptr;
};

extern template void AllocatorTolk::registerWorkVector(CleverPtr<int>&, int, std::string, std::string, int);
extern template void AllocatorTolk::registerWorkVector(CleverPtr<bool>&, int, std::string, std::string, int);

}  // namespace BP
