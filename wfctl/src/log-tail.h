// What the selected watch's programs wrote into its log since something was asked of them, for what they do
// not answer themselves.

#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace Wfctl {

// Empty throughout where the watch logs elsewhere.
class LogTail {
public:
    // From here on.
    LogTail();

    // The lines that say why a document was refused.
    std::string Reasons() const;

    // The lines that say why a file of the face could not be written; none also on a disk that is too full
    // for them.
    std::string FaultsOf(const std::string& face) const;

private:
    std::string Lines(const std::function<bool(const std::string&)>& isWanted) const;

    const std::string mPath;
    std::uintmax_t mStart = 0;
};

// Stops: the service answered, but could not write the file at `path` of the face.
[[noreturn]] void NotWritten(const std::string& path, const std::string& face, const LogTail& log);

}  // namespace Wfctl
