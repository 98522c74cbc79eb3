// What checking a face document finds.
//
// A *finding* is one fault, doubt or remark, with a code that never changes its meaning, the place and
// what to do about it. Errors refuse the document, warnings and notes do not.

#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "nearest-name.h"

namespace DataUtil {

enum class Severity { kError, kWarning, kNote };

struct Finding {
    Severity severity = Severity::kError;
    std::string code;     // "E-...", "W-..." or "N-..."; listed in docs/face-format.md
    int line = 0;         // from 1; 0 when the finding has no place in the text
    int column = 0;       // from 1, in characters
    std::string path;     // as "/face-result/options/style[dial]/option[roman]"
    std::string message;  // what is wrong and what to do; one line
};

// A place in a document that findings refer to.
struct Place {
    int line = 0;
    int column = 0;
    std::string path;
};

// Collects findings. A hostile document can have very many of them; once `kMostFindings` are kept, checking
// stops, and since what was not looked at may be wrong too, the document counts as refused.
class Findings {
public:
    static constexpr std::size_t kMostFindings = 1000;

    // The severity follows from the code's first letter.
    void Add(std::string_view code, const Place& place, std::string message);

    // `value`, an attribute's, was refused, itself or with the element around it. Whatever may be a name in
    // it is kept: the document may declare that name or use it there.
    void Refuse(std::string_view value);
    // True for such a name, and for an empty one, which stands for a refused value. That it is not known, not
    // used or lacking somewhere may only follow from what was refused, so it is no finding.
    bool IsRefused(std::string_view name) const { return name.empty() || mRefusedNames.contains(name); }

    // What an unknown name of the document probably means: the candidate that it is near to, or an empty text
    // when there is none, or when too much was asked already.
    std::string_view Nearest(std::string_view name, const std::vector<std::string_view>& candidates)
    {
        return mGuesses.Nearest(name, candidates);
    }
    // The same as the end of a message.
    std::string Suggestion(std::string_view name, const std::vector<std::string_view>& candidates)
    {
        return MeantOrKnown(Nearest(name, candidates), candidates);
    }

    bool HasErrors() const { return mHasErrors || IsFull(); }
    // True when nothing more is kept; checks then end.
    bool IsFull() const { return mFindings.size() >= kMostFindings; }
    // All findings, sorted by place.
    std::vector<Finding> Take();

private:
    std::vector<Finding> mFindings;
    std::set<std::string, std::less<>> mRefusedNames;
    NameGuesses mGuesses;
    bool mHasErrors = false;
};

// "LINE:COL: CODE: message", the form used in the log and, after "file:", on terminals.
std::string FormatFinding(const Finding& finding);

}  // namespace DataUtil
