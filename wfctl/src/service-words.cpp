#include "service-words.h"

#include <algorithm>
#include <iterator>

#include "application-table.h"
#include "bundle-data.h"
#include "faces.h"
#include "service-peer.h"
#include "system-setting-table.h"
#include "trace-switch-keys.h"
#include "world-clock-fields.h"

namespace Wfctl {

namespace {

constexpr char kType[] = "type";

constexpr std::string_view kMessageTypes[] = {
    "watch-icu-convert",
    "watch-dual-clock-data",
    "watch-req-watchlists",
    "watch-setting-created",
    "watch-setting-updated",
    "watch-setting-deleted",
    "watch-capture-finished",
    "watch-idle-changed",
    "watch-bg-add",
    "watch-bg-del",
    "watch-bg-save",
    "watch-bg-cancel",
    "watch-prepare-update-world-clock",
    "watch-setting-update-world-clock",
    // the backup agent's
    "watch",
    "image",
};

constexpr std::string_view kMessageKeys[] = {
    kType,
    "pkgid",
    "data/label",
    "data/xml_data",
    "data/icon_path",
    "status",
    "pkgName",
    "data/timestamp",
    "data/skeleton",
    "data/bestpattern",
    "formattedstring",
    "group/name",
    "timezonePath",
    "timezone",
    "city",
    "country",
    "updatedMode",
    "data/worldclock/complication_name",
    "data/worldclock/timezone",
    "data/worldclock/timezone_path",
    "data/worldclock/cityname",
    "data/worldclock/country",
    "bg_type",
    "bg_list",
    "watch-bg-pending",
    "watch-bg-direct",
    "operation",
    "message",
    "result_xml",
    "file_name",
    "file_path",
    // of the open port
    "evaluation-helper-op",
    "evaluation-helper-watchface-name",
    "evaluation-helper-data-duration",
    "evaluation-helper-ret",
};

constexpr std::string_view kLaunchKeys[] = {"wfs/req/type", "operation", "retail-mode"};
constexpr std::string_view kLaunchValues[] = {"wfs/type/log_query", "ttrace_enable", "ttrace_disable",
                                              "configuration", "init_watch"};

constexpr std::string_view kKeys[] = {
    kIdleClockKey,
    kWatchfaceNameKey,
    "db/setup_wizard/first_boot",
    "db/setup_wizard/returned_from_wpc",
    "db/setup_wizard/standalone",
    "db/wms/gm_setupwizard_eula_finished",
    "db/wms/host_status/vendor",
    "db/retailmode/enabled",
    Platform::kTraceKey,
};

constexpr std::string_view kPreferences[] = {
    "wfs/pref/initial_preview_update_done",
    "wfs-pref-idle-change-request-from",
    kWorldClockTargetPref,
};

// A face that such a message is about need not be there yet.
constexpr std::string_view kTypeOfNewFaces = "watch-setting-created";

template <std::size_t N>
Names AsNames(const std::string_view (&words)[N])
{
    return {std::begin(words), std::end(words)};
}

// A text is looked up among `values` where its key is the one given, or under each key for an empty one.
template <typename Values>
void WarnOfSlips(const Values& sent, const Names& keys, std::string_view valueKey, const Names& values)
{
    for (const auto& [key, value] : sent) {
        WarnOfSlip("the service knows no key", key, keys);
        const auto* text = std::get_if<std::string>(&value);
        if (text && (valueKey.empty() || key == valueKey))
            WarnOfSlip("the service knows no " + std::string(key), *text, values);
    }
}

}  // namespace

Names MessageTypes()
{
    return AsNames(kMessageTypes);
}
Names MessageKeys()
{
    return AsNames(kMessageKeys);
}
Names LaunchKeys()
{
    return AsNames(kLaunchKeys);
}
Names LaunchValues()
{
    return AsNames(kLaunchValues);
}

Names KeyNames()
{
    Names names = AsNames(kKeys);
    for (const Platform::SystemSetting& setting : Platform::kSystemSettings) names.push_back(setting.key);
    return names;
}

std::vector<std::string> PreferenceNames(std::string_view near)
{
    std::vector<std::string> names(std::begin(kPreferences), std::end(kPreferences));
    const std::string_view group = near.substr(0, near.rfind('-') + 1);  // "FACE-GROUP-"
    if (std::ranges::count(group, '-') < 2) return names;
    for (const WorldClockField& field : kWorldClockFields)
        names.push_back(std::string(group) + std::string(field.name));
    return names;
}

void WarnOfMessageSlips(const std::string& app, const bundle& message)
{
    if (app != Platform::kServiceId) return;
    WarnOfSlips(message.values, MessageKeys(), kType, MessageTypes());
    if (TextOf(message, kType) == kTypeOfNewFaces) return;
    const std::vector<std::string> faces = FaceNames();
    WarnOfSlip("there is no watch face", TextOf(message, "pkgid"), NamesOf(faces));
}

void WarnOfLaunchSlips(const std::string& app, const Platform::LaunchData& extra)
{
    if (app == Platform::kServiceId) WarnOfSlips(extra, LaunchKeys(), "", LaunchValues());
}

}  // namespace Wfctl
