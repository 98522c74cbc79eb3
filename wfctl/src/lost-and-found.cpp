#include "lost-and-found.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>

#include "areas.h"
#include "digest.h"
#include "documents.h"
#include "exit-status.h"
#include "file-times.h"
#include "files.h"
#include "folder-entries.h"
#include "hint.h"
#include "json-text.h"
#include "reading-files.h"
#include "unique-fd.h"
#include "utc-time.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

constexpr char kManifest[] = "/manifest.json";

std::string Below(const std::string& time)
{
    return Platform::CurrentAreas().root + "/lost+found" + (time.empty() ? "" : "/" + time);
}

// Never over what is there.
bool Move(const std::string& from, const std::string& to)
{
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

// A new folder named by the time.
std::string NewTime()
{
    const std::string text = Platform::UtcText("%Y%m%dT%H%M%SZ", std::time(nullptr));
    std::error_code error;
    fs::create_directories(Below(""), error);
    std::string time = text;
    for (int again = 2; mkdir(Below(time).c_str(), 0700) != 0; ++again) {
        if (errno != EEXIST)
            throw Stop(Exit::kError, "[" + Below(time) + "] could not be made: " + std::strerror(errno));
        time = text + "-" + std::to_string(again);
    }
    return time;
}

void WriteManifest(const std::string& time, const std::vector<LostItem>& items)
{
    const std::string& root = Platform::CurrentAreas().root;
    Json list = Json::array();
    for (std::size_t i = 0; i < items.size(); ++i) {
        list.push_back(Json::object({
            {"from",   BytesToJson(items[i].path.substr(root.size() + 1))},
            {"file",   std::to_string(i)                                 },
            {"reason", items[i].reason                                   }
        }));
    }
    WriteFile(Below(time) + kManifest, Json::object({
                                                        {"format", 1   },
                                                        {"items",  list}
    })
                                               .dump(2) +
                                           "\n");
    const Platform::UniqueFd file(open((Below(time) + kManifest).c_str(), O_RDONLY | O_CLOEXEC));
    if (!file || fsync(file.Get()) != 0)
        throw Stop(Exit::kError, "the list below [" + Below(time) + "] could not be written");
}

struct OldPlace {
    std::string from, file;
};

// Of an item; nothing when it leads out of the watch.
std::optional<OldPlace> PlaceOf(const Json& item)
{
    if (!item.is_object() || !item.contains("from") || !item.contains("file") || !item["file"].is_string())
        return std::nullopt;
    const Json& name = item["from"];
    std::optional<std::string> from;
    if (name.is_string()) from = name.get<std::string>();
    if (name.is_object() && name.contains("base64") && name["base64"].is_string())
        from = FromBase64(name["base64"].get<std::string>());
    const std::string file = item["file"];
    const bool isNumber = !file.empty() && file.find_first_not_of("0123456789") == std::string::npos;
    if (!from || from->empty() || !isNumber || fs::path(*from).is_absolute()) return std::nullopt;
    const fs::path path(*from);
    if (std::any_of(path.begin(), path.end(), [](const fs::path& part) { return part == ".."; }))
        return std::nullopt;
    return OldPlace{Platform::CurrentAreas().root + "/" + *from, file};
}

std::string NothingAt(const std::string& time)
{
    const std::vector<std::string> times = TimesOfLost();
    if (times.empty()) return "nothing was moved away, so there is nothing to put back";
    return "nothing was moved away under the time [" + time + "]; there are: " + Listed(NamesOf(times));
}

}  // namespace

std::vector<std::string> TimesOfLost()
{
    std::vector<std::string> times;
    for (const fs::path& path : EntriesOf(Below(""))) times.push_back(path.filename().string());
    return times;
}

bool IsUnchangedSince(const std::string& path, const timespec& before)
{
    struct stat info {};
    timespec now{};
    if (lstat(path.c_str(), &info) != 0) return false;
    clock_gettime(CLOCK_REALTIME, &now);
    if (!IsEarlier(info.st_ctim, before) && !IsEarlier(now, info.st_ctim)) return false;
    if (!S_ISDIR(info.st_mode)) return true;
    std::error_code error;
    const std::vector<fs::path> entries = EntriesOf(path, error);
    return !error && std::ranges::all_of(entries, [&](const fs::path& entry) {
        return IsUnchangedSince(entry.string(), before);
    });
}

MovedAway MoveAway(const std::vector<LostItem>& items, timespec before)
{
    const CommonUtilFileLock doctor(Below(""), CommonUtilFileLock::kReadWrite);
    std::vector<LostItem> old;
    std::ranges::copy_if(items, std::back_inserter(old),
                         [&](const LostItem& item) { return IsUnchangedSince(item.path, before); });
    MovedAway moved;
    if (old.empty()) return moved;
    moved.time = NewTime();
    WriteManifest(moved.time, old);
    for (std::size_t i = 0; i < old.size(); ++i) {
        std::optional<CommonUtilFileLock> lock;
        if (!old[i].lock.empty()) lock.emplace(old[i].lock, CommonUtilFileLock::kReadWrite);
        // The service may have taken the folder in use while we waited.
        if (!IsUnchangedSince(old[i].path, before)) continue;
        if (Move(old[i].path, Below(moved.time) + "/" + std::to_string(i)))
            moved.paths.push_back(old[i].path);
        else
            Warn("[" + old[i].path + "] could not be moved away: " + std::strerror(errno));
    }
    return moved;
}

PutBackResult PutBack(const std::string& time)
{
    const bool isName = !time.empty() && !time.starts_with('.') && time.find('/') == std::string::npos;
    const std::string manifest = Below(time) + kManifest;
    std::error_code error;
    if (!isName || !fs::exists(manifest, error)) throw Stop(Exit::kNotFound, NothingAt(time));
    const CommonUtilFileLock doctor(Below(""), CommonUtilFileLock::kReadWrite);
    const Json list = Json::parse(ReadNamedFile(manifest), nullptr, false);
    if (!list.is_object() || !list.contains("items") || !list["items"].is_array())
        throw Stop(Exit::kError, "[" + manifest + "] is damaged; look beside it for what was moved away");
    PutBackResult result;
    for (const Json& item : list["items"]) {
        const auto place = PlaceOf(item);
        if (!place) throw Stop(Exit::kError, "[" + manifest + "] is damaged: an item leads nowhere");
        const std::string here = Below(time) + "/" + place->file;
        if (!fs::exists(fs::symlink_status(here, error))) continue;
        fs::create_directories(fs::path(place->from).parent_path(), error);
        if (Move(here, place->from)) {
            result.paths.push_back(place->from);
        } else {
            ++result.kept;
            Warn("[" + place->from + "] could not be put back: " + std::strerror(errno) + "; it stays as [" +
                 here + "]");
        }
    }
    if (result.kept == 0) {
        fs::remove(manifest, error);
        fs::remove(Below(time), error);
        fs::remove(Below(""), error);
    }
    return result;
}

}  // namespace Wfctl
