// The name that was probably meant.
#pragma once

#include <string>
#include <vector>

namespace plenar_tool {

// " (did you mean NAME?)" for the name of the list that takes the fewest changed letters; empty when none is near.
std::string SuggestName(const std::string& given, const std::vector<std::string>& names);

// "a, b and c", with another word than "and" where that fits better.
std::string JoinNames(const std::vector<std::string>& names, const std::string& lastWord = "and");

}  // namespace plenar_tool
