#include "tool/operations.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "tool/text.h"

namespace BP::tool {

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = {
      convolveOperation(), correlateOperation(), separableOperation(), medianOperation(), matchOperation(),
      compareOperation(),  checksumOperation(),  kernelOperation(),    showOperation(),   chartOperation(),
      patchOperation(),    planOperation(),      listOperation(),      helpOperation(),   completionOperation(),
      manOperation(),      referenceOperation()};
  return all;
}

const Operation* findOperation(std::string_view name) {
  const auto found = std::ranges::find(operations(), name, &Operation::name);
  return found == operations().end() ? nullptr : &*found;
}

const Operation& operationNamed(std::string_view name) {
  if (const Operation* operation = findOperation(name)) return *operation;
  std::vector<std::string> names;
  std::string list;
  for (const Operation& operation : operations()) {
    names.push_back(operation.name);
    list += (list.empty() ? "" : ", ") + operation.name;
  }
  const std::string nearest = suggestion(name, names);
  throw std::runtime_error("unknown operation " + inQuotes(name) +
                           (nearest.empty() ? "; allowed are " + list : nearest));
}

}  // namespace BP::tool
