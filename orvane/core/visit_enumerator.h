#pragma once

#include <type_traits>

namespace BP {

/// Turns a run-time enumerator into a template argument: calls `visit` with the `std::integral_constant` of that one of
/// `values` that `value` equals. False, and no call, if it equals none.
template <int... values, class VisitT>
bool visitEnumerator(int value, VisitT&& visit) {
  return ((value == values && (visit(std::integral_constant<int, values>{}), true)) || ...);
}

}  // namespace BP
