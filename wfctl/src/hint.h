// What may be meant by a name that there is not.

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Wfctl {

using Names = std::vector<std::string_view>;

// Views of the texts, which have to live as long as the views do.
Names NamesOf(const std::vector<std::string>& texts);

// The only known name that goes on from what was typed, or else the one that is nearest, or else empty. A
// known name means itself, so nothing else is meant by it.
std::string_view MeantName(std::string_view name, const Names& known);

// The end of an error: "; did you mean X? NEXT", "; NEXT" where nothing is near, or empty where `next` is
// empty too. `next` is what else helps, such as "type: wfctl list".
std::string OrMeant(std::string_view name, const Names& known, const std::string& next = "");

// One line on stderr where the name is none of the known ones and one of them may be meant: for words that
// anybody may use as well.
void WarnOfSlip(const std::string& what, std::string_view name, const Names& known);

// A check of an option that takes one of few words: "WHAT is one of a, b, c, not d; did you mean b?".
std::function<std::string(const std::string&)> OneOf(const std::string& what,
                                                     const std::vector<std::string>& words);

// "a, b, c".
std::string Listed(const Names& names);

// The applications of the watch.
Names ApplicationIds();

// What lies beside the file of that path, where the file is missing: "; did you mean PATH?" or empty.
std::string OrMeantFile(const std::string& path);

}  // namespace Wfctl
