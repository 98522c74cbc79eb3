#include "preview.h"

#include <cstdlib>
#include <optional>

#include "app-manager.h"
#include "capture-log.h"
#include "common-util-system-settings.h"
#include "draw-command.h"
#include "files.h"

namespace Capture {
namespace {

constexpr char kFacesId[] = "com.corvane.watchface";
constexpr size_t kLargestDocument = 1u << 20;
constexpr size_t kLongestName = 255;

bool IsFolderName(const std::string& name)
{
    return !name.empty() && name.size() <= kLongestName && name != "." && name != ".." &&
           name.find('/') == std::string::npos;
}

// The folder of one area, with "/" at its end; empty when the platform gives none.
std::string AreaOf(int (*area)(const char*, char**))
{
    char* path = nullptr;
    if (area(kFacesId, &path) != 0 || !path) return {};
    std::string folder = path;
    std::free(path);
    if (!folder.ends_with('/')) folder += '/';
    return folder;
}

// The folder of the face in one area; empty when the platform gives no area.
std::string FolderOf(int (*area)(const char*, char**), const std::string& name)
{
    const std::string folder = AreaOf(area);
    return folder.empty() ? folder : folder + "watchlist/" + name + "/";
}

Drawing::Settings WatchSettings()
{
    Drawing::Settings settings;
    settings.language = CommonUtilSystemSettings::GetLanguage();
    settings.hours24 = CommonUtilSystemSettings::Get24HourMode();
    settings.timezone = CommonUtilSystemSettings::GetTimezonePath();
    settings.trustedFolder = AreaOf(app_manager_get_shared_trusted_path);
    return settings;
}

// The face's document, read while nobody writes it.
std::optional<std::string> ReadDocument(const std::string& path)
{
    std::string document, problem;
    const CommonUtilFileLock lock(path, CommonUtilFileLock::kRead);
    if (ReadWholeFile(path, kLargestDocument, document, problem)) return document;
    CAPTURE_ERROR("%s cannot be read: %s", path.c_str(), problem.c_str());
    return std::nullopt;
}

}  // namespace

bool Preview::Replace(const std::string& name)
{
    if (!IsFolderName(name)) {
        CAPTURE_ERROR("[%s] is no watchface", name.c_str());
        return false;
    }
    const std::string own = FolderOf(app_manager_get_shared_data_path, name);
    const std::string installed = FolderOf(app_manager_get_shared_resource_path, name);
    if (own.empty() || !ecore_file_is_dir(own.c_str())) {
        CAPTURE_ERROR("watchface[%s] has no folder for its preview", name.c_str());
        return false;
    }
    const bool changed = ecore_file_exists((own + "watchface.xml").c_str()) || installed.empty();
    const std::string path = (changed ? own : installed) + "watchface.xml";
    const auto document = ReadDocument(path);
    if (!document) return false;

    Drawing::Settings settings = WatchSettings();
    settings.assetFolders = {own, installed};
    const Drawing::Result drawn = mRenderer.Draw(*document, settings);
    for (const Drawing::Finding& warning : drawn.warnings) {
        CAPTURE_WARNING("%s", Drawing::Describe(path, warning).c_str());
    }
    if (!drawn.picture) {
        CAPTURE_ERROR("%s", Drawing::Describe(path, drawn.error).c_str());
        return false;
    }
    FileOutputStream preview(own + name + ".png");
    preview.Write(Drawing::EncodePng(drawn.picture.get()));
    preview.Close();
    if (!preview.Good()) CAPTURE_ERROR("the preview of watchface[%s] could not be written", name.c_str());
    return preview.Good();
}

}  // namespace Capture
