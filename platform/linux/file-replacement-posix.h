// Replacing a file in one step: the new content is written beside the target, synced, and renamed over it,
// and the folder is synced. Until Commit() succeeds, and after any failure, the target is as it was.

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "writable-path-posix.h"

namespace Platform {

class FileReplacement {
public:
    // Nothing when the path is refused or its folder cannot be written.
    static std::optional<FileReplacement> Begin(const std::string& path, const char* operation);

    FileReplacement(FileReplacement&&) = default;
    FileReplacement& operator=(FileReplacement&&) = delete;
    ~FileReplacement();

    int Fd() const { return mFile.Get(); }
    bool Write(std::string_view bytes);
    bool Commit();

private:
    FileReplacement(WritableTarget target, std::string path)
        : mTarget(std::move(target)), mPath(std::move(path))
    {
    }
    bool OpenUnfinished();
    bool GiveName();
    bool Fail(const char* step);

    WritableTarget mTarget;
    std::string mPath;  // for the log
    UniqueFd mFile;
    std::string mUnfinishedName;  // empty while the file has no name
};

}  // namespace Platform
