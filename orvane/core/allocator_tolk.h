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
/// Beside plain arrays it makes fixed-point arrays, whose data type it knows by the name of their role ("input",
/// "output", "filter", "accumulator", "sqrt", "uint8"), and it asks the host for work vectors. Failures go to the
/// host as messages, and execution goes on. For plain elements a role name has no effect; arrays of fixed type are
/// asked for as "ignore" or "int32". One front object owns it, and one thread at a time uses it.
class ORVANE_API AllocatorTolk {
 public:
  explicit AllocatorTolk(brekk::BrekkAdaptorTolk* adaptor);
  AllocatorTolk(const AllocatorTolk&) = delete;
  AllocatorTolk& operator=(const AllocatorTolk&) = delete;
  ~AllocatorTolk();

  /// Lets arrays of role `roleName` have the type of `handle`, of which a copy is kept. The first registration of
  /// a name stays; a further one is reported.
  void registerTypeName(std::string roleName, const KarnDSPFixpt::DSPDataAttributesHandle& handle);

  /// Makes `out` the owner of a new array of `count` values of the type of role `roleName`. A role that was not
  /// registered is reported, and `out` stays as it is.
  void createFixptArray(CleverPtr<KarnDSPFixpt::Fixpt>& out, int count, std::string roleName);

  /// Makes `out` the owner of a new array of `count` elements; fixed-point arrays go by their role. The name of the
  /// array is for the reader of the call.
  template <class T>
  void allocateArray(CleverPtr<T>& out, int count, std::string roleName, const std::string& /*arrayName*/ = {}) {
    if constexpr (std::is_same_v<T, KarnDSPFixpt::Fixpt>) {
      createFixptArray(out, count, std::move(roleName));
    } else {
      allocatePlain(out, count);
    }
  }

  /// Asks the host for a work vector of `width` elements and lets `out` carry its name. A name that was given
  /// before is made different by "_" and the number of records so far. T is `int` or `bool`.
  template <class T>
  void registerWorkVector(CleverPtr<T>& out, int width, std::string name, std::string roleName, int count);

  /// Points `out` at the vector that was registered under its name.
  template <class T>
  void attachWorkVector(CleverPtr<T>& out) {
    out.ptr = static_cast<T*>(workVectors[out.name]->data);
  }

  /// Asks the host for the address of each vector.
  void refreshWorkVectors();

  /// Adds what was counted on `value` and on its subordinate values to the host's map, label by label. `useThis`
  /// false leaves the value itself out. Without a map, or for a null value, nothing happens.
  void mergeFixptLog(KarnDSPFixpt::Fixpt* value, bool useThis);

  /// Sets the map in which statistics are gathered; null switches gathering off. The map stays the caller's, and must
  /// be there for as long as it is set.
  void setFixptLogMap(FixptLogMap* map) { fixptLogMap = map; }
  FixptLogMap* getFixptLogMap() const { return fixptLogMap; }

  brekk::BrekkAdaptorTolk* getAdaptor() const { return adaptor; }
  /// The work vectors asked for, by name; the host writes their numbers into the records.
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
