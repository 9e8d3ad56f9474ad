#include "orvane/core/allocator_tolk.h"

#include <memory>
#include <utility>

namespace BP {

using KarnDSPFixpt::DSPDataAttributesHandle;
using KarnDSPFixpt::Fixpt;
using KarnDSPFixpt::FixptFactory;

namespace {

constexpr int subordinatesInRow = 4;

/// Adds the counts of `from` to `to`; widens its range if `to` keeps one.
void foldLog(const fxpLogStruct_tag& from, fxpLogStruct_tag& to) {
  to.overflows += from.overflows;
  to.casts += from.casts;
  to.lossyRoundings += from.lossyRoundings;
  if (to.logRange == 0) return;
  if (from.minimum < to.minimum) to.minimum = from.minimum;
  if (from.maximum > to.maximum) to.maximum = from.maximum;
}

}  // namespace

AllocatorTolk::AllocatorTolk(brekk::BrekkAdaptorTolk* host) : adaptor(host) {}

AllocatorTolk::~AllocatorTolk() {
  for (auto& [name, record] : workVectors) delete record;
  for (auto& [name, handle] : typeHandles) delete handle;
}

void AllocatorTolk::registerTypeName(std::string roleName, const DSPDataAttributesHandle& handle) {
  // The copy is made before the name is looked up, because hosts rely on the order of copies. If the name is taken, no
  // one owns the copy, and it is never destroyed.
  auto copy = std::make_unique<DSPDataAttributesHandle>(handle);
  const bool isNew = typeHandles.emplace(std::move(roleName), copy.get()).second;
  copy.release();
  if (!isNew) {
    tolkSetErrorStatus(adaptor, "AllocatorTolk: attempted to register duplicate type name");
  }
}

void AllocatorTolk::createFixptArray(CleverPtr<Fixpt>& out, int count, std::string roleName) {
  const auto found = typeHandles.find(roleName);
  if (found == typeHandles.end()) {
    tolkSetErrorStatus(adaptor, "AllocatorTolk: specified type name was not registered");
    return;
  }
  out.ptr = FixptFactory::createFixpt(*found->second, count, 0);
  out.owned = true;
}

template <class T>
void AllocatorTolk::registerWorkVector(CleverPtr<T>& out, int width, std::string name, std::string /*roleName*/,
                                       int count) {
  auto record = std::make_unique<WorkVectorRecord>();
  record->width = width;
  record->dataTypeId = std::is_same_v<T, bool> ? workVectorBool : workVectorInt;
  record->count = count;
  if (workVectors.contains(name)) name += "_" + std::to_string(workVectors.size());
  out.name = name;
  out.ptr = nullptr;
  workVectors[std::move(name)] = record.get();
  record.release();  // not before the map has a place for it
}

template void AllocatorTolk::registerWorkVector(CleverPtr<int>&, int, std::string, std::string, int);
template void AllocatorTolk::registerWorkVector(CleverPtr<bool>&, int, std::string, std::string, int);

void AllocatorTolk::refreshWorkVectors() {
  for (auto& [name, record] : workVectors) record->data = tolkGetWork(adaptor, record->workIndex);
}

void AllocatorTolk::mergeFixptLog(Fixpt* value, bool useThis) {
  if (fixptLogMap == nullptr || value == nullptr) return;
  for (int i = 0; i <= subordinatesInRow; ++i) mergeFixptLog(value->subordinate(i), i < subordinatesInRow);
  if (!useThis) return;
  fxpBlockProperties* gathered = value->takeProperties();
  const auto [entry, isNew] = fixptLogMap->emplace(value->attributes().getLabel(), gathered);
  if (!isNew) foldLog(*gathered->getLogStruct(), *entry->second->getLogStruct());
}

}  // namespace BP
