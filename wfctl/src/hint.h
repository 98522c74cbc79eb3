// What may be meant by a name that there is not.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Wfctl {

using Names = std::vector<std::string_view>;

// The views of texts, which have to outlive them.
Names NamesOf(const std::vector<std::string>& texts);

// The only known name that goes on from what was typed, or else the one that is nearest, or else empty.
std::string_view MeantName(std::string_view name, const Names& known);

// "did you mean X? " or empty.
std::string DidYouMean(std::string_view name, const Names& known);

// The same behind a text that ends there: "; did you mean X?" or empty.
std::string OrMeant(std::string_view name, const Names& known);

// One line on stderr where the name is none of the known ones and one of them may be meant: for words that
// anybody may use as well.
void WarnOfSlip(const std::string& what, std::string_view name, const Names& known);

// A check of an option that takes one of few words: "WHAT is a, b or c, not d".
std::function<std::string(const std::string&)> OneOf(const std::string& what,
                                                     const std::vector<std::string>& words);

// "a, b, c".
std::string Listed(const Names& names);

// The applications of the watch.
Names ApplicationIds();

// What lies beside the file of that path, where the file is missing: "; did you mean PATH?" or empty.
std::string OrMeantFile(const std::string& path);

}  // namespace Wfctl
