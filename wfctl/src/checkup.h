// What is wrong with a watch, as it lies on disk.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Wfctl {

enum class Remedy {
    kMove,     // nobody needs it where it lies
    kPreview,  // the service draws the preview, and makes the flat document, when it is asked
    kAdvice,   // only the user can know
};

// One row per kind of finding.
struct AilmentKind {
    std::string_view code;
    std::string_view why;  // it matters
    Remedy remedy;
};
std::span<const AilmentKind> AilmentKinds();

struct Ailment {
    const AilmentKind* kind;
    std::string path;    // of the file or folder; empty where it is none
    std::string face;    // empty where it is no face's
    std::string what;    // one line
    std::string advice;  // what to type
};

// Looks at the selected watch, which need not run; changes nothing.
std::vector<Ailment> Examine();

}  // namespace Wfctl
