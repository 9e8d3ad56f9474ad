#include "orvane/input/pad_redirector.h"

namespace BP {

PadRedirector::~PadRedirector() = default;

bool doublesExtent(int padType) {
  bool doubles = false;
  visitPadType(padType, [&](auto pad) {
    if constexpr (pad() != PadTypeConstant) doubles = RedirectorOf<pad()>::type::doublesExtent;
  });
  return doubles;
}

int redirectedInto(int n, int padType, int i) {
  int at = i;
  visitPadType(padType, [&](auto pad) {
    if constexpr (pad() != PadTypeConstant) {
      using Rule = typename RedirectorOf<pad()>::type;
      at = i < 0 ? Rule::fromBelow(i, 0, n - 1, n) : Rule::fromAbove(i, 0, n - 1, n);
    }
  });
  return at;
}

}  // namespace BP
