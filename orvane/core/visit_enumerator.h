#pragma once

#include <type_traits>

namespace BP {

/// Turns a run-time enumerator into a template argument: calls `visit` with the `std::integral_constant` of `value`, if
/// it is one of `values`. Returns false, without a call, if it is not.
template <int... values, class VisitT>
bool visitEnumerator(int value, VisitT&& visit) {
  return ((value == values && (visit(std::integral_constant<int, values>{}), true)) || ...);
}

}  // namespace BP
