// A folder that goes with its scope, also when the program is interrupted.

#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "exit-status.h"
#include "interruptions.h"

namespace Wfctl {

// Interruptions are held back while it is there: nothing waits meanwhile but for programs, as RunPrograms()
// does, which an interruption ends.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "wfctl-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw Stop(Exit::kError, std::string("no temporary folder: ") + std::strerror(errno));
        mPath = name;
    }
    ~TemporaryFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(mPath, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::string& Path() const { return mPath; }

private:
    const HeldSignals mHeld{Interruptions()};  // first, so that the folder is gone when they take effect
    std::string mPath;
};

}  // namespace Wfctl
