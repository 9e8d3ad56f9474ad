#pragma once

#include <cstdint>

namespace BP::tool {

/// A pseudo-random number that depends on `index` alone (splitmix64).
inline std::uint64_t scramble(std::uint64_t index) {
  std::uint64_t z = (index + 1) * 0x9e3779b97f4a7c15u;
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
  return z ^ (z >> 31);
}

}  // namespace BP::tool
