#include "service-config-mirel.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "files.h"
#include "service-log.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

constexpr const char* kFamilyPrefixes[] = {"com.corvane.watchface-mirel-"};

constexpr char kGalleryWatchface[] = "com.corvane.watchface-mirel-u1";
constexpr char kGalleryBgTag[] = "U1";

struct Row {
    const char* watchName;
    const char* value;
};

constexpr Row kProductCodes[] = {
    {"com.corvane.watchface-mirel-u3", "MU03"},
    {"com.corvane.watchface-mirel-c1", "MC01"},
    {"com.corvane.watchface-mirel-c2", "MC02"},
    {"com.corvane.watchface-mirel-c3", "MC03"},
    {"com.corvane.watchface-mirel-c4", "MC04"},
    {"com.corvane.watchface-mirel-u1", "MU01"},
    {"com.corvane.watchface-mirel-u6", "MU06"},
    {"com.corvane.watchface-mirel-e1", "ME01"},
};

constexpr Row kLabelIds[] = {
    {"com.corvane.watchface-mirel-c1", "STR_WATCHFACE_MIREL_C1"},
    {"com.corvane.watchface-mirel-c2", "STR_WATCHFACE_MIREL_C2"},
    {"com.corvane.watchface-mirel-c3", "STR_WATCHFACE_MIREL_C3"},
    {"com.corvane.watchface-mirel-c4", "STR_WATCHFACE_MIREL_C4"},
    {"com.corvane.watchface-mirel-e1", "STR_WATCHFACE_MIREL_E1"},
    {"com.corvane.watchface-mirel-u1", "STR_WATCHFACE_MIREL_U1"},
    {"com.corvane.watchface-mirel-u2", "STR_WATCHFACE_MIREL_U2"},
    {"com.corvane.watchface-mirel-u3", "STR_WATCHFACE_MIREL_U3"},
    {"com.corvane.watchface-mirel-u5", "STR_WATCHFACE_MIREL_U5"},
    {"com.corvane.watchface-mirel-u6", "STR_WATCHFACE_MIREL_U6"},
    {"com.corvane.watchface-mirel-u8", "STR_WATCHFACE_MIREL_U8"},
    {"com.corvane.watchface-mirel-u9", "STR_WATCHFACE_MIREL_U9"},
};

// Watch faces of the older family and those of this product that took their place.
constexpr Row kFamilyReplacements[] = {
    {"com.corvane.watchface-kelp-u1", "com.corvane.watchface-mirel-u1"},
    {"com.corvane.watchface-kelp-u3", "com.corvane.watchface-mirel-u3"},
    {"com.corvane.watchface-kelp-u6", "com.corvane.watchface-mirel-u6"},
};

std::string Find(std::span<const Row> table, const std::string& watchName)
{
    const auto row = std::ranges::find_if(table, [&](const Row& r) { return watchName == r.watchName; });
    return row == table.end() ? std::string() : row->value;
}

}  // namespace

bool IsMirelWatchface(const std::string& watchName, bool)
{
    return std::ranges::any_of(kFamilyPrefixes,
                               [&](const char* prefix) { return watchName.starts_with(prefix); });
}

bool IsGalleryWatchface(const std::string& watchName)
{
    return watchName == kGalleryWatchface;
}

std::string GetWatchfaceBgTag(const std::string& watchName)
{
    return IsGalleryWatchface(watchName) ? kGalleryBgTag : "";
}

bool AllowLimitedComplication()
{
    return false;
}

void OnSetupWizardReturned(std::shared_ptr<WatchfaceManager>) {}

void ApplyWatchfaceConfiguration(WatchfaceManager*) {}

std::string GetProductCode(const std::string& watchName)
{
    return Find(kProductCodes, watchName);
}

std::string GetLabelId(const std::string& watchName)
{
    return Find(kLabelIds, watchName);
}

std::string GetWatchfaceFamily(const std::string& watchName)
{
    std::string name = Find(kFamilyReplacements, watchName);
    if (name.empty()) {
        name = watchName;
    } else {
        LOG_ERROR("replace [%s] with [%s]", watchName.c_str(), name.c_str());
    }
    const std::string folder = WatchfaceManager::GeneratePath(false, PATH_TYPE_FOLDER, name);
    return CommonUtilFile::Exists(folder) ? name : std::string();
}

}  // namespace WatchfaceService
