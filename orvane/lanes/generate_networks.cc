// Prints the source of straight-line sorting networks: the tiles of small windows, and the small sorts and merges that
// larger windows are put together from. Runs when the library is built.
//
//   generate_networks > median_networks-inl.h
//
// Every network is a list of steps on values that are set once: load, minimum and maximum of two, store. What no output
// needs is left out. A load stands right before the first use and a store right behind the last, so few values are
// alive at a time.

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "orvane/lanes/median_tile.h"

namespace {

using namespace BP::lanes;
using Values = std::vector<int>;

/// A network under construction. Value numbers are those of inputs and results in the order in which they are made.
class Network {
 public:
  int load(const std::string& address) {
    addresses[values] = address;
    return values++;
  }
  void store(int value, const std::string& address) { stores.insert({value, address}); }

  /// Merges two sorted lists: those of their even and of their odd entries, and then neighbours.
  Values merge(const Values& a, const Values& b) {
    if (a.empty()) return b;
    if (b.empty()) return a;
    if (a.size() == 1 && b.size() == 1) return order(a[0], b[0]);
    const Values even = merge(everySecond(a, 0), everySecond(b, 0));
    const Values odd = merge(everySecond(a, 1), everySecond(b, 1));
    Values merged{even[0]};
    for (std::size_t i = 0; i < odd.size() || i + 1 < even.size(); ++i) {
      if (i >= odd.size()) {
        merged.push_back(even[i + 1]);
      } else if (i + 1 >= even.size()) {
        merged.push_back(odd[i]);
      } else {
        for (const int value : order(odd[i], even[i + 1])) merged.push_back(value);
      }
    }
    return merged;
  }

  Values sort(const Values& list) {
    if (list.size() < 2) return list;
    const auto middle = list.begin() + static_cast<std::ptrdiff_t>((list.size() + 1) / 2);
    const Values first = sort(Values(list.begin(), middle));
    return merge(first, sort(Values(middle, list.end())));
  }

  void print() const {
    std::vector<bool> isUsed(static_cast<std::size_t>(values), false);
    for (const auto& [value, address] : stores) isUsed[static_cast<std::size_t>(value)] = true;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
      if (!isUsed[index(step->low)] && !isUsed[index(step->low + 1)]) continue;
      isUsed[index(step->a)] = isUsed[index(step->b)] = true;
    }
    std::vector<bool> isLoaded(static_cast<std::size_t>(values), false);
    const auto need = [&](int value) {
      const auto found = addresses.find(value);
      if (found == addresses.end() || isLoaded[index(value)]) return;
      isLoaded[index(value)] = true;
      std::printf("      const V v%d = K::load(%s);\n", value, found->second.c_str());
    };
    const auto give = [&](int value) {
      const auto [first, last] = stores.equal_range(value);
      for (auto at = first; at != last; ++at) std::printf("      K::store(%s, v%d);\n", at->second.c_str(), value);
    };
    for (const Step& step : steps) {
      for (const bool isHigh : {false, true}) {
        const int value = step.low + (isHigh ? 1 : 0);
        if (!isUsed[index(value)]) continue;
        need(step.a);
        need(step.b);
        std::printf("      const V v%d = K::%s(v%d, v%d);\n", value, isHigh ? "max" : "min", step.a, step.b);
      }
      give(step.low);
      give(step.low + 1);
    }
    for (const auto& [value, address] : stores) {  // values that are given out as they were loaded
      if (addresses.count(value) == 0) continue;
      need(value);
      std::printf("      K::store(%s, v%d);\n", address.c_str(), value);
    }
  }

 private:
  struct Step {
    int a, b, low;  ///< the minimum is value `low`, the maximum the next one
  };

  static std::size_t index(int value) { return static_cast<std::size_t>(value); }
  static Values everySecond(const Values& list, std::size_t first) {
    Values some;
    for (std::size_t i = first; i < list.size(); i += 2) some.push_back(list[i]);
    return some;
  }
  Values order(int a, int b) {
    steps.push_back({a, b, values});
    values += 2;
    return {values - 2, values - 1};
  }

  int values = 0;
  std::vector<Step> steps;
  std::map<int, std::string> addresses;
  std::multimap<int, std::string> stores;
};

std::string text(int number) { return std::to_string(number); }

/// Address of a line of a family; `shift` tiles further on.
std::string columnLine(int line, int shift) { return "columns + " + text(line) + " * line + " + text(shift); }
std::string rowLine(int y, int line, int shift) {
  return "rows + " + text(y) + " * row + " + text(line) + " * line + " + text(shift);
}

/// The operations of a tile, recorded.
struct Record {
  using List = Values;
  const TilePlan& plan;
  Network network{};

  List columns(int first, int count) {
    List list;
    for (int i = 0; i < count * plan.shape.commonRows(); ++i) {
      list.push_back(
          network.load(columnLine(plan.columns.of(first, count).firstLine + i, first / plan.shape.tileWidth)));
    }
    return list;
  }
  List row(int y, int first, int count) {
    List list;
    for (int i = 0; i < count; ++i) {
      list.push_back(network.load(rowLine(y, plan.rows.of(first, count).firstLine + i, first / plan.shape.tileWidth)));
    }
    return list;
  }
  List pixels(int column, int first, int count) {
    List list;
    for (int y = first; y < first + count; ++y) list.push_back(row(y, column, 1)[0]);
    return network.sort(list);
  }
  List merge(const List& a, const List& b) { return network.merge(a, b); }
  List merge(const List& a, const List& b, int low, int high) {
    const List all = network.merge(a, b);
    return {all.begin() + low, all.begin() + high};
  }
  void emit(int x, int y, const List& a, const List& b, int low, int high) {
    const List all = network.merge(a, b);
    for (int rank = low; rank <= high; ++rank) {
      const int number = (y * plan.shape.tileWidth + x) * plan.shape.middles() + rank - low;
      network.store(all[static_cast<std::size_t>(rank)], "out + " + text(number) + " * outputLine");
    }
  }
  int mark() const { return 0; }
  void release(int /*mark*/) {}
};

void printFunction(const char* name, int number, const char* parameters, const char* advance, const Network& network) {
  std::printf("  static HWY_NOINLINE void %s", name);
  if (number >= 0) std::printf("%d", number);
  std::printf("(%s, int vectors) {\n    for (int i = 0; i < vectors; ++i, %s) {\n", parameters, advance);
  network.print();
  std::printf("    }\n  }\n");
}

/// Prints the networks of one table of families, and the list of them. Rows of one element are not sorted.
void printFamilies(const TilePlan& plan, bool ofRows) {
  const FamilyTable& table = ofRows ? plan.rows : plan.columns;
  const char* const name = ofRows ? "rowFamily" : "columnFamily";
  std::string list;
  for (std::size_t n = 0; n < table.families.size(); ++n) {
    const FamilyTable::Family& family = table.families[n];
    list += n == 0 ? "" : ", ";
    if (ofRows && family.length == 1) {
      list += "nullptr";
      continue;
    }
    list += name + text(static_cast<int>(n));
    Network network;
    Values sorted;
    const auto lineOf = [&](int line, int shift) { return ofRows ? rowLine(0, line, shift) : columnLine(line, shift); };
    if (family.length == 1) {
      Values pixels;
      for (int k = 0; k < plan.shape.commonRows(); ++k) {
        pixels.push_back(network.load(rowLine(plan.shape.tileHeight - 1 + k, family.phase, 0)));
      }
      sorted = network.sort(pixels);
    } else {
      Values lists[2];
      for (const int side : {0, 1}) {
        const auto& part = table.families[static_cast<std::size_t>(side == 0 ? family.left : family.right)];
        for (int k = 0; k < part.length * table.linesPerColumn; ++k) {
          lists[side].push_back(network.load(lineOf(part.firstLine + k, side == 0 ? 0 : family.rightShift)));
        }
      }
      sorted = network.merge(lists[0], lists[1]);
    }
    for (std::size_t k = 0; k < sorted.size(); ++k) {
      network.store(sorted[k], lineOf(family.firstLine + static_cast<int>(k), 0));
    }
    printFunction(name, static_cast<int>(n), ofRows ? "Key* rows" : "const Key* rows, Key* columns",
                  ofRows ? "rows += K::lanes" : "rows += K::lanes, columns += K::lanes", network);
  }
  std::printf("  static constexpr void (*%s[])(%s, int) = {%s};\n", ofRows ? "rowFamilies" : "columnFamilies",
              ofRows ? "Key*" : "const Key*, Key*", list.c_str());
}

void printTile(int columns, int rows) {
  const TilePlan plan(tileShapeFor(columns, rows));
  std::printf("template <class K>\nstruct TileOf%dx%d {\n", columns, rows);
  std::printf("  using V = typename K::V;\n  using Key = typename K::Key;\n");
  std::printf("  static constexpr TileShape shape = tileShapeFor(%d, %d);\n", columns, rows);
  std::printf("  static constexpr StripLayout layout{shape, sizeof(Key), %d};\n", plan.rows.lines);
  std::printf("  static constexpr std::ptrdiff_t line = layout.line, row = layout.row, outputLine = layout.tiles;\n");
  printFamilies(plan, true);
  printFamilies(plan, false);
  Record record{plan};
  TileWalk<Record>(plan.shape, record).run();
  printFunction("tile", -1, "const Key* rows, const Key* columns, Key* out",
                "rows += K::lanes, columns += K::lanes, out += K::lanes", record.network);
  std::printf("};\n\n");
}

/// Prints a merge of sorted lists a and b, or the sort of list a if b has size 0.
void printSmall(int a, int b, bool isSort) {
  Network network;
  Values lists[2];
  for (int i = 0; i < a; ++i) lists[0].push_back(network.load("a + " + text(i) + " * as"));
  for (int i = 0; i < b; ++i) lists[1].push_back(network.load("b + " + text(i) + " * bs"));
  const Values sorted = isSort ? network.sort(lists[0]) : network.merge(lists[0], lists[1]);
  for (std::size_t k = 0; k < sorted.size(); ++k) {
    network.store(sorted[k], "out + " + text(static_cast<int>(k)) + " * K::lanes");
  }
  if (isSort) {
    std::printf("  static void sort%d(const Key* a, std::ptrdiff_t as, Key* out) {\n", a);
  } else {
    const char* const unused = b == 0 ? "[[maybe_unused]] " : "";
    std::printf(
        "  static void merge%dAnd%d(const Key* a, std::ptrdiff_t as, %sconst Key* b, %sstd::ptrdiff_t bs,"
        " Key* out) {\n",
        a, b, unused, unused);
  }
  if (a < 2) std::printf("    (void)as;\n");
  if (b == 1) std::printf("    (void)bs;\n");
  network.print();
  std::printf("  }\n");
}

void printSmallNetworks() {
  constexpr int mostMerged = 12, mostSorted = 16;
  std::printf("/// Merges of up to %d and %d values, and sorts of up to %d, in registers.\n", mostMerged, mostMerged,
              mostSorted);
  std::printf("template <class K>\nstruct SmallNetworks {\n");
  std::printf("  using V = typename K::V;\n  using Key = typename K::Key;\n");
  std::printf("  static constexpr int mostMerged = %d, mostSorted = %d;\n", mostMerged, mostSorted);
  std::string merges, sorts = "nullptr";
  for (int a = 1; a <= mostMerged; ++a) {
    for (int b = 0; b <= a; ++b) {
      printSmall(a, b, false);
      merges += (merges.empty() ? "merge" : ", merge") + text(a) + "And" + text(b);
    }
  }
  for (int a = 1; a <= mostSorted; ++a) {
    printSmall(a, 0, true);
    sorts += ", sort" + text(a);
  }
  std::printf("  using Merge = void(const Key*, std::ptrdiff_t, const Key*, std::ptrdiff_t, Key*);\n");
  std::printf("  /// That of a and b values, a >= b, a > 0, is number a (a + 1) / 2 - 1 + b.\n");
  std::printf("  static constexpr Merge* merges[] = {%s};\n", merges.c_str());
  std::printf("  static constexpr void (*sorts[])(const Key*, std::ptrdiff_t, Key*) = {%s};\n};\n\n", sorts.c_str());
}

}  // namespace

int main() {
  constexpr int squares[] = {5, 7, 9, 11, 15};
  std::puts(R"(// Made by generate_networks.cc. Included once for each target.

#if defined(ORVANE_LANES_MEDIAN_NETWORKS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_LANES_MEDIAN_NETWORKS_INL
#undef ORVANE_LANES_MEDIAN_NETWORKS_INL
#else
#define ORVANE_LANES_MEDIAN_NETWORKS_INL
#endif

#include <hwy/highway.h>

#include "orvane/lanes/median_tile.h"

HWY_BEFORE_NAMESPACE();
namespace BP::lanes {
namespace HWY_NAMESPACE {
)");
  printSmallNetworks();
  for (const int side : squares) printTile(side, side);
  std::printf("/// Calls `visit` with the type of each tile.\ntemplate <class K, class VisitT>\n");
  std::printf("void forEachTile(VisitT&& visit) {\n");
  for (const int side : squares) std::printf("  visit(TileOf%dx%d<K>());\n", side, side);
  std::puts(R"(}

}  // namespace HWY_NAMESPACE
}  // namespace BP::lanes
HWY_AFTER_NAMESPACE();

#endif)");
  return 0;
}
