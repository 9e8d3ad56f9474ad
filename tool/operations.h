#pragma once

#include <string_view>
#include <vector>

#include "tool/operation.h"

namespace BP::tool {

Operation convolveOperation();
Operation correlateOperation();
Operation separableOperation();
Operation medianOperation();
Operation matchOperation();
Operation compareOperation();
Operation checksumOperation();
Operation kernelOperation();
Operation showOperation();
Operation chartOperation();
Operation patchOperation();
Operation planOperation();
Operation listOperation();
Operation helpOperation();
Operation completionOperation();
Operation manOperation();
Operation referenceOperation();

/// All operations, in the order in which texts list them.
const std::vector<Operation>& operations();

/// The operation of this name, or null.
const Operation* findOperation(std::string_view name);

/// The operation of this name; throws `std::runtime_error` that suggests the nearest name, or lists all.
const Operation& operationNamed(std::string_view name);

}  // namespace BP::tool
