#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <utility>

#include "orvane/core/named.h"
#include "orvane/core/visit_enumerator.h"

/// The pad types, or edge rules: what an input yields beyond its edge.
///
/// The list below is the only one. The enumerators of the core and of the API for people, the names in messages and in
/// the command, and the choice among template arguments all come from it. A rule keeps its number for good.
///
/// A further rule takes a line here, its formulas in `orvane/input/pad_redirector.h`, and the documents that
/// `grep -rl "c b a |" README.md docs examples orvane tool` finds.
///
///     APPLY(number, enumerator, name, letters)
#define ORVANE_FOR_PAD_TYPES(APPLY)                                                         \
  APPLY(1, PadTypeConstant, constant, "v v v | a b c | v v v")   /* one value v */          \
  APPLY(2, PadTypeReplicate, replicate, "a a a | a b c | c c c") /* the edge element */     \
  APPLY(3, PadTypeSymmetric, symmetric, "c b a | a b c | c b a") /* mirrored, edge twice */ \
  APPLY(4, PadTypeCircular, circular, "a b c | a b c | a b c")   /* the input once more */  \
  APPLY(5, PadTypeMirror, mirror, "d c b | a b c d | c b a")     /* mirrored, edge once */

namespace BP {

/// What the input yields beyond its edge. Zero is not a pad type. The numbers are part of the interface to the host.
///
///     constant   v v v | a b c | v v v        replicate  a a a | a b c | c c c
///     symmetric  c b a | a b c | c b a        circular   a b c | a b c | a b c
///     mirror     d c b | a b c d | c b a
#define ORVANE_ENUMERATE(number, enumerator, name, letters) enumerator = number,
enum PadTypeEnum : int { ORVANE_FOR_PAD_TYPES(ORVANE_ENUMERATE) };
#undef ORVANE_ENUMERATE

/// A pad type as people know it.
struct PadTypeEntry : Named<PadTypeEnum> {
  std::string_view letters;  ///< what stands before, in and behind an input of a few elements
};

#define ORVANE_ENTER(number, enumerator, name, letters) PadTypeEntry{{#name, enumerator}, letters},
inline constexpr std::array padTypes{ORVANE_FOR_PAD_TYPES(ORVANE_ENTER)};
#undef ORVANE_ENTER

/// Calls `visit` with the `std::integral_constant` of `type`. Returns false, without a call, for a number that is no
/// pad type.
template <class VisitT>
bool visitPadType(int type, VisitT&& visit) {
  constexpr auto count = std::tuple_size_v<decltype(padTypes)>;
  return [&]<std::size_t... i>(std::index_sequence<i...>) { return visitEnumerator<padTypes[i].value...>(type, visit); }
  (std::make_index_sequence<count>{});
}

}  // namespace BP
