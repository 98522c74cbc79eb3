// "Did you mean ...?" for names that do not exist.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace DataUtil {

// Empty candidates are names that were refused; they are passed over.

// The candidate that differs least from `name`, or an empty text when none is near.
std::string_view NearestName(std::string_view name, const std::vector<std::string_view>& candidates);

// "; did you mean "x"?" for the nearest candidate; else, for few candidates, "; known: a b c"; else
// nothing.
std::string Suggestion(std::string_view name, const std::vector<std::string_view>& candidates);

// "; did you mean "x"?"
std::string OrMeant(std::string_view meant);

// `before` and the names, each behind a space; nothing without names.
std::string Listed(std::string_view before, const std::vector<std::string_view>& names);

// The name that Suggestion() or OrMeant() put at the end of a message; empty where there is none.
std::string_view SuggestedName(std::string_view message);

// A text of the document as it stands in a message: in quotes, and cut when it is long.
std::string Quoted(std::string_view text);

}  // namespace DataUtil
