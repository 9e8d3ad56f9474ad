#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "orvane/platform/export.h"

/// The host runtime as the library sees it: one object that takes messages and knows work vectors by number.
namespace brekk {

/// Host object: collects error messages in the order of their arrival and holds work vectors by number.
///
/// A work vector is memory of the host's in which a filter keeps its tables. The object stores addresses only;
/// who made a vector keeps it alive. One thread at a time.
class ORVANE_API BrekkAdaptorTolk {
 public:
  BrekkAdaptorTolk() = default;
  BrekkAdaptorTolk(const BrekkAdaptorTolk&) = delete;
  BrekkAdaptorTolk& operator=(const BrekkAdaptorTolk&) = delete;

  /// Records `message` behind those that came before.
  void addMessage(std::string message);
  /// All messages so far, oldest first.
  const std::vector<std::string>& messages() const { return messages_; }
  void clearMessages() { messages_.clear(); }

  /// Gives the vector at `address` the number `index`, in place of any vector that had it.
  void bindWork(int index, void* address);
  /// Address of work vector `index`; null for a number that was never bound.
  void* work(int index) const;

  /// Holds `object` until this object's own end, or until `releaseKept`.
  void keepAlive(std::shared_ptr<void> object);
  /// Lets go of all objects held; nobody may use them any more.
  void releaseKept() { kept_.clear(); }

 private:
  std::vector<std::string> messages_;
  std::unordered_map<int, void*> work_;
  std::vector<std::shared_ptr<void>> kept_;
};

/// Records an error message with the host and returns; the host decides when to stop. A null adaptor drops it.
ORVANE_API void tolkSetErrorStatus(BrekkAdaptorTolk* adaptor, const char* message);

/// Address of the host's work vector `index`, or null if the host has none of that number.
ORVANE_API void* tolkGetWork(BrekkAdaptorTolk* adaptor, int index);

}  // namespace brekk
