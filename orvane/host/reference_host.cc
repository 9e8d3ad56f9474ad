#include "orvane/host/reference_host.h"

#include <cstddef>
#include <stdexcept>

namespace BP {

namespace {

/// Bytes of the vector that `record` asks for.
std::size_t sizeOf(const WorkVectorRecord& record, const std::string& name) {
  if (record.width < 0 || record.count < 0) {
    throw std::invalid_argument("work vector " + name + ": width " + std::to_string(record.width) + ", count " +
                                std::to_string(record.count) + "; both must be 0 or more");
  }
  const auto elements = static_cast<std::size_t>(record.width) * static_cast<std::size_t>(record.count);
  switch (record.dataTypeId) {
    case workVectorInt: return elements * sizeof(int);
    case workVectorBool: return elements * sizeof(bool);
    default:
      throw std::invalid_argument("work vector " + name + ": type code " + std::to_string(record.dataTypeId) +
                                  "; known are 6 (int) and 8 (bool)");
  }
}

}  // namespace

void ReferenceHost::provideWorkVectors(AllocatorTolk& allocator) {
  constexpr std::size_t word = sizeof(std::uint64_t);
  std::vector<std::unique_ptr<std::uint64_t[]>> made;
  for (const auto& [name, record] : allocator.getWorkVectors()) {
    made.push_back(std::make_unique<std::uint64_t[]>((sizeOf(*record, name) + word - 1) / word));
  }
  auto next = made.begin();
  for (const auto& [name, record] : allocator.getWorkVectors()) {
    record->workIndex = static_cast<int>(vectors.size());
    adaptor.bindWork(record->workIndex, next->get());
    vectors.push_back(std::move(*next++));
  }
}

}  // namespace BP
