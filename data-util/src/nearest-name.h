// "Did you mean ...?" for names that do not exist.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace DataUtil {

// The candidate that differs least from `name`, or an empty text when none is near.
std::string_view NearestName(std::string_view name, const std::vector<std::string_view>& candidates);

// "; did you mean "x"?" for the nearest candidate; else, for few candidates, "; known: a, b, c"; else
// nothing.
std::string Suggestion(std::string_view name, const std::vector<std::string_view>& candidates);

// A text of the document as it stands in a message: in quotes, and cut when it is long.
std::string Quoted(std::string_view text);

}  // namespace DataUtil
