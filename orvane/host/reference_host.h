#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvane/core/allocator_tolk.h"
#include "orvane/platform/brekk_tolk.h"
#include "orvane/platform/export.h"

namespace BP {

/// A host for fronts that have no other: it provides their work vectors, keeps these alive, and hands out messages.
///
///     ReferenceHost host;
///     ConvCorrTolk<double, double, double> front(host.getAdaptor(), ...);
///     host.provideWorkVectors(front.getAllocator());
///     front.setup(...);
///
/// The host must outlive its fronts; one thread at a time uses it and them.
class ORVANE_API ReferenceHost {
 public:
  ReferenceHost() = default;
  ReferenceHost(const ReferenceHost&) = delete;
  ReferenceHost& operator=(const ReferenceHost&) = delete;

  brekk::BrekkAdaptorTolk* getAdaptor() { return &adaptor; }

  /// Makes a cleared vector for each record of `allocator` and writes its number into the record. Throws
  /// `std::invalid_argument`, before it numbers any record, for a record of unknown type or negative width.
  void provideWorkVectors(AllocatorTolk& allocator);

  /// Messages of all fronts so far, oldest first.
  const std::vector<std::string>& getMessages() const { return adaptor.messages(); }

 private:
  brekk::BrekkAdaptorTolk adaptor;
  std::vector<std::unique_ptr<std::uint64_t[]>> vectors;
};

}  // namespace BP
