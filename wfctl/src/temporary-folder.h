// A folder that goes with its scope.

#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "exit-status.h"

namespace Wfctl {

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
    std::string mPath;
};

}  // namespace Wfctl
