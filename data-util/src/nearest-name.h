// "Did you mean ...?" for names that do not exist.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace DataUtil {

// Empty candidates are names that were refused; they are passed over.

// The candidate that differs least from `name`, or an empty text when none is near.
std::string_view NearestName(std::string_view name, const std::vector<std::string_view>& candidates);

// The same for all the unknown names of one document, as long as they are not too many: a hostile document
// has a thousand, and each is compared with thousands of others.
class NameGuesses {
public:
    static constexpr std::size_t kMostComparisons = 65536;  // of one name with one candidate

    // NearestName(), or an empty text when that would be more comparisons than a document has.
    std::string_view Nearest(std::string_view name, const std::vector<std::string_view>& candidates);

private:
    std::size_t mComparisons = 0;
};

// "; did you mean "x"?" for the nearest candidate; else, for few candidates, "; known: a b c"; else
// nothing.
std::string Suggestion(std::string_view name, const std::vector<std::string_view>& candidates);
// The same for a name that is near to `meant`, or to none of the known ones.
std::string MeantOrKnown(std::string_view meant, const std::vector<std::string_view>& known);

// "; did you mean "x"?"
std::string OrMeant(std::string_view meant);

// `before` and the names, each behind a space; nothing without names.
std::string Listed(std::string_view before, const std::vector<std::string_view>& names);

// The name that Suggestion() or OrMeant() put at the end of a message; empty where there is none.
std::string_view SuggestedName(std::string_view message);

// A text of the document as it stands in a message: in quotes, and cut when it is long.
std::string Quoted(std::string_view text);

}  // namespace DataUtil
