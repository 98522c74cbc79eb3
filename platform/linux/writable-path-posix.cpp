#include "writable-path-posix.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "areas.h"
#include "folder-rights-posix.h"
#include "platform-log.h"

namespace Platform {

namespace {

constexpr int kMostAttempts = 16;
constexpr mode_t kFolderMode = 0775;

std::vector<std::string> Components(std::string_view text)
{
    std::vector<std::string> parts;
    for (;;) {
        const auto slash = text.find('/');
        parts.emplace_back(text.substr(0, slash));
        if (slash == std::string_view::npos) return parts;
        text.remove_prefix(slash + 1);
    }
}

// The length of the area at the start of `path`: ROOT/apps/APP/shared/{data,trusted}/, or 0.
std::size_t AreaLength(const std::string& path)
{
    const std::string apps = CurrentAreas().root + "/apps/";
    if (CurrentAreas().root.empty() || !path.starts_with(apps)) return 0;
    const auto app = path.find('/', apps.size());
    if (app == std::string::npos || app == apps.size()) return 0;
    for (const std::string_view kind : {"/shared/data", "/shared/trusted"}) {
        if (path.compare(app, kind.size(), kind) != 0) continue;
        const std::size_t end = app + kind.size();
        if (end == path.size()) return end;
        if (path[end] == '/') return end + 1;
    }
    return 0;
}

const char* Forbidden(const std::vector<std::string>& components, PathRule rule)
{
    for (const std::string& part : components) {
        if (part == "." || part == "..") return "it has a \".\" or \"..\" component";
        if (part.empty() && rule == PathRule::kRecursive) return "it has an empty component";
    }
    return nullptr;
}

std::optional<AreaPath> Refuse(const char* operation, const std::string& path, const char* reason)
{
    PLATFORM_REFUSAL("%s refused for [%s]: %s", operation, path.c_str(), reason);
    return std::nullopt;
}

void LogOpening(const std::string& path)
{
    PLATFORM_FAULT("could not open the folder of [%s]: %s", path.c_str(), std::strerror(errno));
}

UniqueFd OpenResolving(int parent, const std::string& relative, uint64_t resolve)
{
    open_how how{};
    how.flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    how.resolve = resolve;
    // The kernel asks to try again when something is renamed while it follows a link upwards.
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const long fd = syscall(SYS_openat2, parent, relative.c_str(), &how, sizeof how);
        if (fd >= 0 || errno != EAGAIN) return UniqueFd(static_cast<int>(fd));
    }
    return {};
}

UniqueFd OpenRoot()
{
    return UniqueFd(open(CurrentAreas().root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// No link on the way from the root: an area is where it is said to be.
constexpr uint64_t kNoLinks = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
constexpr uint64_t kBeneath = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;

// The folder `name`, made where it is missing.
UniqueFd MakeAndOpen(int parent, const std::string& name, uint64_t resolve)
{
    const bool made = mkdirat(parent, name.c_str(), kFolderMode) == 0;
    if (!made && errno != EEXIST) return {};
    UniqueFd folder = OpenResolving(parent, name, resolve);
    if (made && folder) TakeRightsOf(parent, folder.Get(), kFolderMode);
    return folder;
}

UniqueFd OpenArea(const AreaPath& path)
{
    const UniqueFd root = OpenRoot();
    return root ? OpenResolving(root.Get(), path.areaBelowRoot, kNoLinks) : UniqueFd();
}

}  // namespace

std::optional<AreaPath> SplitWritable(const std::string& path, PathRule rule, const char* operation)
{
    // What the system would read as the end must not hide what is behind it.
    if (path.find('\0') != std::string::npos) return Refuse(operation, path, "it has a NUL inside");
    const std::size_t length = AreaLength(path);
    if (length == 0) return Refuse(operation, path, "it is outside the writable areas");
    std::string below = path.substr(length);
    const bool isFolder = below.ends_with('/');
    if (isFolder) below.pop_back();

    AreaPath split;
    split.area = path.substr(0, length);
    if (split.area.back() != '/') split.area += '/';
    split.areaBelowRoot = split.area.substr(CurrentAreas().root.size() + 1);
    split.components = Components(below);
    // The application's own name is a component too.
    for (const auto& part : Components(split.areaBelowRoot)) {
        if (part == "." || part == "..") return Refuse(operation, path, "it has a \".\" or \"..\" component");
    }
    const bool isArea = below.empty();
    if (isArea && rule == PathRule::kRecursive) return Refuse(operation, path, "it is the root of an area");
    if (isFolder && rule == PathRule::kFile) return Refuse(operation, path, "it names no file");
    if (isArea) split.components.clear();
    if (const char* reason = Forbidden(split.components, rule)) return Refuse(operation, path, reason);
    std::erase(split.components, std::string());
    return split;
}

UniqueFd OpenFolderBeneath(int parent, const std::string& relative)
{
    return OpenResolving(parent, relative.empty() ? "." : relative, kBeneath);
}

UniqueFd MakeArea(const AreaPath& path)
{
    if (UniqueFd area = OpenArea(path)) return area;
    if (errno != ENOENT) {
        LogOpening(path.area);
        return {};
    }
    UniqueFd at = OpenRoot();
    for (const std::string& part : Components(path.areaBelowRoot.substr(0, path.areaBelowRoot.size() - 1))) {
        if (at) at = MakeAndOpen(at.Get(), part, kNoLinks);
    }
    if (!at) LogOpening(path.area);
    return at;
}

UniqueFd MakeFolderBeneath(int parent, const std::string& name)
{
    return MakeAndOpen(parent, name, kBeneath);
}

void RefuseEscape(const char* operation, const std::string& path)
{
    Refuse(operation, path, "it leads out of its area");
}

std::optional<WritableTarget> OpenWritable(const std::string& path, PathRule rule, const char* operation)
{
    const auto split = SplitWritable(path, rule, operation);
    if (!split) return std::nullopt;
    if (split->components.empty()) {
        Refuse(operation, path, "it is the root of an area");
        return std::nullopt;
    }
    std::string above;
    for (std::size_t i = 0; i + 1 < split->components.size(); ++i) above += split->components[i] + "/";
    const UniqueFd area = OpenArea(*split);
    WritableTarget target{area ? OpenFolderBeneath(area.Get(), above) : UniqueFd(), split->components.back()};
    if (target.parent) return target;
    if (errno == EXDEV || errno == ELOOP) {
        RefuseEscape(operation, path);
    } else if (errno != ENOENT && errno != ENOTDIR) {
        LogOpening(path);
    }
    return std::nullopt;
}

}  // namespace Platform
