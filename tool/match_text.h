#pragma once

#include <string>

#include "tool/match.h"

namespace BP::tool {

/// The names of the chosen metric, mode and search.
struct MatchNames {
  std::string metric;
  std::string mode;
  std::string search;
};

/// The result for people.
std::string matchText(const MatchResult& match, const filters::MatchOptions& options);

/// The result as one JSON object. Complex scores are [re, im]; NaN and infinities are "nan", "inf" and "-inf".
/// `mapHash` is that of the map, if it is not empty.
std::string matchJson(const MatchResult& match, const MatchNames& names, const filters::MatchOptions& options,
                      const std::string& mapHash);

}  // namespace BP::tool
