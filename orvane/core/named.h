#pragma once

#include <string_view>

namespace BP {

/// A value that goes by a name, as in messages and in the command.
template <class T>
struct Named {
  std::string_view name;
  T value;
};

}  // namespace BP
