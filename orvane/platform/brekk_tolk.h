#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "orvane/platform/export.h"

/// The part of the host that the library uses: one object that takes messages and holds work vectors by number.
namespace brekk {

/// Host object: collects error messages in the order of their arrival and holds work vectors by number.
///
/// A work vector is host memory in which a filter keeps its tables. The object stores only its address, and the maker
/// of a vector keeps it alive. One thread at a time may use the object.
class ORVANE_API BrekkAdaptorTolk {
 public:
  BrekkAdaptorTolk() = default;
  BrekkAdaptorTolk(const BrekkAdaptorTolk&) = delete;
  BrekkAdaptorTolk& operator=(const BrekkAdaptorTolk&) = delete;

  /// Appends `message` to the list.
  void addMessage(std::string message);
  /// All messages so far, oldest first.
  const std::vector<std::string>& messages() const { return messages_; }
  void clearMessages() { messages_.clear(); }

  /// Gives the vector at `address` the number `index`. It replaces a vector that had this number.
  void bindWork(int index, void* address);
  /// The address of work vector `index`, or null if the number was never bound.
  void* work(int index) const;

  /// Keeps `object` alive until `releaseKept` or the destruction of this object.
  void keepAlive(std::shared_ptr<void> object);
  /// Releases all objects that were kept alive. They must not be used any more.
  void releaseKept() { kept_.clear(); }

 private:
  std::vector<std::string> messages_;
  std::unordered_map<int, void*> work_;
  std::vector<std::shared_ptr<void>> kept_;
};

/// Reports an error message to the host and returns. The host decides when to stop. With a null adaptor the message is
/// lost.
ORVANE_API void tolkSetErrorStatus(BrekkAdaptorTolk* adaptor, const char* message);

/// The address of the host's work vector `index`, or null if the host has no vector of this number.
ORVANE_API void* tolkGetWork(BrekkAdaptorTolk* adaptor, int index);

}  // namespace brekk
