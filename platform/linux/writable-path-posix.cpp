#include "writable-path-posix.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include <cerrno>
#include <string_view>

#include "areas.h"
#include "platform-log.h"

namespace Platform {

namespace {

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

}  // namespace

std::optional<AreaPath> SplitWritable(const std::string& path, PathRule rule, const char* operation)
{
    const std::size_t length = AreaLength(path);
    if (length == 0) return Refuse(operation, path, "it is outside the writable areas");
    std::string below = path.substr(length);
    if (!below.empty() && below.back() == '/') below.pop_back();

    AreaPath split;
    split.area = path.substr(0, length);
    if (split.area.back() != '/') split.area += '/';
    split.components = Components(below);
    // The application's own name is a component too.
    for (const auto& part : Components(split.area.substr(CurrentAreas().root.size()))) {
        if (part == "." || part == "..") return Refuse(operation, path, "it has a \".\" or \"..\" component");
    }
    const bool isArea = below.empty();
    if (isArea && rule == PathRule::kRecursive) return Refuse(operation, path, "it is the root of an area");
    if (isArea) split.components.clear();
    if (const char* reason = Forbidden(split.components, rule)) return Refuse(operation, path, reason);
    std::erase(split.components, std::string());
    return split;
}

UniqueFd OpenFolderBeneath(int parent, const std::string& relative)
{
    open_how how{};
    how.flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    const char* path = relative.empty() ? "." : relative.c_str();
    return UniqueFd(static_cast<int>(syscall(SYS_openat2, parent, path, &how, sizeof how)));
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
    const UniqueFd area(open(split->area.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!area) return std::nullopt;
    WritableTarget target{OpenFolderBeneath(area.Get(), above), split->components.back()};
    if (!target.parent) {
        if (errno == EXDEV) Refuse(operation, path, "it leads out of its area");
        return std::nullopt;
    }
    return target;
}

}  // namespace Platform
