#include "service-log-manager.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "common-util-log-manager.h"
#include "common-util-xml.h"
#include "data-util.h"
#include "files.h"
#include "handles.h"
#include "service-config-mirel.h"
#include "service-log.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

constexpr char kSurveyApplication[] = "com.corvane.watchface-service";

namespace Feature {
constexpr char kWatchface[] = "ST00";
constexpr char kComplication[] = "ST02";
constexpr char kLegacyComplication[] = "1007";
}  // namespace Feature

constexpr char kNoComplication[] = "None";
constexpr char kNoWatchface[] = "N/A";

struct SourceLabel {
    const char* source;
    const char* label;
};

// All that counts steps is one label on purpose.
constexpr SourceLabel kSourceLabels[] = {
    {"battery",      "Battery"      },
    {"calendar",     "Schedule"     },
    {"weather",      "Weather"      },
    {"worldclock",   "World Clock"  },
    {"alarm",        "Alarm"        },
    {"pedometer",    "Steps"        },
    {"stepsPerSec",  "Steps"        },
    {"speedInMps",   "Steps"        },
    {"heartrate",    "Heart rate"   },
    {"water",        "Water"        },
    {"caffeine",     "Caffeine"     },
    {"d-day",        "D-day"        },
    {"notification", "Notifications"},
    {"shortcut",     "Shortcut"     },
    {"moonphase",    "Moonphase"    },
};

using LogItemPtr = std::unique_ptr<data_util_log_item_s, Releases<data_util_log_item_free>>;

void SendStatus(const std::string& feature, const std::string& value)
{
    CommonUtilLogManager::SendStatusSurveyInfo(kSurveyApplication, feature, value, "");
}

void SendLegacy(const std::string& label)
{
    CommonUtilLogManager::SendFeatureSurveyInfo(kSurveyApplication, Feature::kLegacyComplication, label, "");
}

bool IsInRW(int pathType, const std::string& watchName)
{
    return CommonUtilFile::Exists(WatchfaceManager::GeneratePath(true, pathType, watchName));
}

// The result XML to report from; empty when neither area has one.
std::string ChooseResultXml(const std::string& watchName)
{
    const bool isRW = IsInRW(PATH_TYPE_RESULT_XML, watchName);
    const std::string path = WatchfaceManager::GeneratePath(isRW, PATH_TYPE_RESULT_XML, watchName);
    if (isRW) {
        LOG_INFO("get log item from read/write area!!");
    } else {
        LOG_INFO("get log item from read only area!!");
    }
    return CommonUtilFile::Exists(path) ? path : std::string();
}

void SendPair(const char* feature, const char* value)
{
    if (feature && value) SendStatus(feature, value);
}

void SendComplication(const char* feature, const char* value)
{
    if (feature) SendStatus(feature, value);
    SendStatus(Feature::kComplication, value);
}

// At any depth, in document order. A slot that shows nothing has no role.
std::vector<CommonUtilXmlNode> DrawnComplications(const CommonUtilXmlNode& root)
{
    std::vector<CommonUtilXmlNode> found;
    std::vector<CommonUtilXmlNode> next = {root};
    while (!next.empty()) {
        const CommonUtilXmlNode node = next.back();
        next.pop_back();
        if (node.GetName() == "complication" && !node.GetAttribute("role").empty()) found.push_back(node);
        const auto children = CommonUtilXmlNodeRange::GetChildren(node);
        next.insert(next.end(), std::make_reverse_iterator(children.end()),
                    std::make_reverse_iterator(children.begin()));
    }
    return found;
}

void SendLegacySource(const std::string& source)
{
    const auto* row = std::ranges::find_if(kSourceLabels, [&](const auto& r) { return source == r.source; });
    if (row == std::end(kSourceLabels)) {
        LOG_ERROR("complication not handled(%s)", source.c_str());
        return;
    }
    SendLegacy(row->label);
}

}  // namespace

LogManager::LogManager(std::shared_ptr<WatchfaceManager> manager) : mWatchfaceManager(std::move(manager)) {}

void LogManager::SendSurveyLogs()
{
    if (data_util_log_result_xml_serialize_supported()) {
        SendCombinationData();
    } else if (data_util_log_item_supported()) {
        SendComplicationDataFromLogItem();
    } else {
        SendComplicationDataOld();
    }
    const auto [appId, watchName] = mWatchfaceManager->GetCurrentWatchface();
    SendStatus(Feature::kWatchface, watchName.empty() ? appId : watchName);
}

void LogManager::SendCombinationData()
{
    const std::string watchName = mWatchfaceManager->GetCurrentWatchface().second;
    const std::string feature = GetProductCode(watchName);
    const std::string path = ChooseResultXml(watchName);
    if (path.empty()) {
        LOG_ERROR("watchface[%s] is not a combination watchface type!!", watchName.c_str());
        return;
    }
    LogCombinationDataFromFile(feature, path);
}

void LogManager::LogCombinationDataFromFile(const std::string& feature, const std::string& resultXmlPath)
{
    if (feature.empty()) {
        LOG_ERROR("logFeature is empty!! logging failed");
        return;
    }
    const CStringPtr text(data_util_log_result_xml_serialize(resultXmlPath.c_str()));
    if (!text) {
        LOG_ERROR("combination is empty!! logging failed");
        return;
    }
    SendStatus(feature, text.get());
}

void LogManager::SendComplicationDataFromLogItem()
{
    const std::string path = ChooseResultXml(mWatchfaceManager->GetCurrentWatchface().second);
    if (!path.empty()) LogItemDataFromFile(path);
}

void LogManager::LogItemDataFromFile(const std::string& resultXmlPath)
{
    if (resultXmlPath.empty()) {
        LOG_ERROR("resultXml is empty!!");
        return;
    }
    const LogItemPtr item(data_util_log_item_get_from_result_xml_file(resultXmlPath.c_str()));
    if (!item) return;
    SendPair(item->firstFeature, item->firstValue);
    SendPair(item->secondFeature, item->secondValue);
    int count = item->complicationEntryCount;
    if (count == 0) SendComplication(item->complicationFeature, kNoComplication);
    for (int i = 0; i < count; ++i) {
        const char* entry = item->complicationEntries[i];
        if (!entry) continue;
        SendComplication(item->complicationFeature, entry);
        count = item->complicationEntryCount;  // asked anew on purpose, and only after an entry that was sent
    }
}

void LogManager::SendComplicationDataOld()
{
    const std::string watchName = mWatchfaceManager->GetCurrentWatchface().second;
    if (watchName.empty()) {
        SendLegacy(kNoWatchface);
        return;
    }
    const bool isRW = IsInRW(PATH_TYPE_WATCHFACE_XML, watchName);
    const CommonUtilXmlParser parser(
        WatchfaceManager::GeneratePath(isRW, PATH_TYPE_WATCHFACE_XML, watchName));
    const CommonUtilXmlNode root = parser.GetRoot();
    if (!root.IsValid() || root.GetName() != "watchface") {
        LOG_ERROR("doc is invalid!!");
        return;
    }
    const std::vector<CommonUtilXmlNode> complications = DrawnComplications(root);
    for (const CommonUtilXmlNode& complication : complications) {
        SendLegacySource(complication.GetAttribute("source"));
    }
    if (complications.empty()) SendLegacy(kNoComplication);
}

}  // namespace WatchfaceService
