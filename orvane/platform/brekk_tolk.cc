#include "orvane/platform/brekk_tolk.h"

#include <utility>

namespace brekk {

void BrekkAdaptorTolk::addMessage(std::string message) { messages_.push_back(std::move(message)); }

void BrekkAdaptorTolk::bindWork(int index, void* address) { work_[index] = address; }

void* BrekkAdaptorTolk::work(int index) const {
  const auto found = work_.find(index);
  return found == work_.end() ? nullptr : found->second;
}

void BrekkAdaptorTolk::keepAlive(std::shared_ptr<void> object) { kept_.push_back(std::move(object)); }

void tolkSetErrorStatus(BrekkAdaptorTolk* adaptor, const char* message) {
  if (adaptor != nullptr) adaptor->addMessage(message);
}

void* tolkGetWork(BrekkAdaptorTolk* adaptor, int index) { return adaptor == nullptr ? nullptr : adaptor->work(index); }

}  // namespace brekk
