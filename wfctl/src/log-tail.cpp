#include "log-tail.h"

#include <filesystem>
#include <fstream>

#include "areas.h"
#include "exit-status.h"
#include "private-watch.h"

namespace Wfctl {

LogTail::LogTail() : mPath(WatchPaths{Platform::CurrentAreas().root}.Log())
{
    std::error_code error;
    const auto size = std::filesystem::file_size(mPath, error);
    mStart = error ? 0 : size;
}

std::string LogTail::Reasons() const
{
    return Lines([](const std::string& line) {
        const bool isRefusal =
            line.find("W/platform(") != std::string::npos && line.find(" refused") != std::string::npos;
        return isRefusal || line.find("/data-util(") != std::string::npos;
    });
}

std::string LogTail::FaultsOf(const std::string& face) const
{
    return Lines([&](const std::string& line) {
        return line.find("E/platform(") != std::string::npos &&
               line.find("/" + face + "/") != std::string::npos;
    });
}

std::string LogTail::Lines(const std::function<bool(const std::string&)>& isWanted) const
{
    std::ifstream log(mPath, std::ios::binary);
    log.seekg(static_cast<std::streamoff>(mStart));
    std::string lines;
    for (std::string line; std::getline(log, line);)
        if (isWanted(line)) lines += "\n  " + line;
    return lines;
}

void NotWritten(const std::string& path, const std::string& face, const LogTail& log)
{
    const std::string faults = log.FaultsOf(face);
    throw Stop(Exit::kError, "the service could not write [" + path + "]; " +
                                 (faults.empty() ? "make room on its disk; the platform's lines in " +
                                                       LogPlace("platform") + " may say more"
                                                 : "its log says:" + faults));
}

}  // namespace Wfctl
