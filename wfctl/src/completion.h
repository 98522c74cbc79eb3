// Completion of command lines. The shells' scripts ask wfctl itself, so that what it completes is what it
// parses.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Wfctl {

// The first word of the command line that the scripts ask with; the words typed so far follow, the last of
// them being the one to complete. What is printed are lines "WORD" or "WORD\tDESCRIPTION", and last
// kCompleteFiles where files may stand there too.
inline constexpr char kCompleteWord[] = "--complete";
inline constexpr char kCompleteFiles[] = ":files";

struct Completion {
    std::string word;
    std::string description;  // may be empty
};
struct Completions {
    std::vector<Completion> words;  // all begin with what is typed
    bool files = false;
};

// `words` are those behind "wfctl", and not empty. Never fails: where there is no watch there are no names of
// one.
Completions Complete(std::span<const std::string> words);

int PrintCompletions(std::span<const std::string> words);

// Of "bash", "zsh" or "fish"; null for another shell.
const char* CompletionScript(std::string_view shell);

}  // namespace Wfctl
