#pragma once

#include <string>

#include "tool/match.h"

namespace BP::tool {

/// What was asked for, as it was typed.
struct MatchTexts {
  std::string metric = "sad";
  std::string mode = "valid";
  std::string search = "exhaustive";
};

/// The result for people.
std::string matchText(const MatchResult& match, const filters::MatchOptions& options);

/// The result as one JSON object. Complex scores are [re, im]; numbers that JSON lacks are "nan", "inf", "-inf".
std::string matchJson(const MatchResult& match, const MatchTexts& texts, const filters::MatchOptions& options);

}  // namespace BP::tool
