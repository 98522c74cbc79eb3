// Files that a document names: face assets and the user's pictures.

#pragma once

#include <string>
#include <string_view>

namespace Drawing {

struct FileRead {
    enum Outcome { kRead, kMissing, kRefused };
    Outcome outcome = kMissing;
    std::string bytes;    // of kRead
    std::string problem;  // of kMissing and kRefused, as "is missing"
};

// The file `path` (its parts are not empty, "." or "..") below `folder`. No link below the folder is
// followed, nothing that is no regular file is waited for, and nothing larger than Limits::kLargestImageFile
// is read.
FileRead ReadBelow(const std::string& folder, std::string_view path);

}  // namespace Drawing
