#pragma once

#include <cstdint>
#include <string>

namespace BP {

/// The host's type codes of work vectors.
enum WorkVectorType : std::int32_t {
  workVectorInt = 6,
  workVectorBool = 8,
};

/// A filter's request for one work vector, an array of tables that lives with the host.
///
/// The library makes a record for each table at construction. The host reads the records, makes vectors of at least
/// `width` elements of the given type, and writes its number for each into `workIndex`, before the filter starts.
struct WorkVectorRecord {
  void* data = nullptr;         ///< address in the host's storage; null until refreshed
  std::int32_t width = 0;       ///< number of elements
  std::int32_t dataTypeId = 0;  ///< a `WorkVectorType`
  std::int32_t workIndex = 0;   ///< the host's number of the vector; only the host writes it
  std::string label;            ///< empty; for the host
  bool flagA = false;           ///< for the host
  std::int32_t count = 0;       ///< as given at registration: 1
  bool flagB = false;           ///< for the host
};

}  // namespace BP
