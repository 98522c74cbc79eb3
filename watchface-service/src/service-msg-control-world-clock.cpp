// World clocks: what is stored for a group of a watch face, and new data for the watch face that was current
// when the change was announced.

#include "common-util-keys.h"
#include "common-util-pref.h"
#include "files.h"
#include "message-values.h"
#include "message-vocabulary.h"
#include "persisted-keys.h"
#include "service-log.h"
#include "service-msg-control.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

constexpr const char* kTextFields[] = {MessageKey::kTimezonePath, MessageKey::kTimezone, MessageKey::kCity,
                                       MessageKey::kCountry};

// A stored field into the reply, under the field's own name.
bool AddStoredText(bundle* reply, const std::string& key, const char* field)
{
    const auto [code, value] = CommonUtilPref::GetString(key);
    if (code != 0) {
        LOG_INFO("CommonUtilPref::GetString[%s] returns %d(%x)", key.c_str(), code, code);
        return false;
    }
    LOG_INFO("%s[%s]", key.c_str(), value.c_str());
    bundle_add_str(reply, field, value.c_str());
    return true;
}

bool AddStoredNumber(bundle* reply, const std::string& key, const char* field)
{
    const auto [code, value] = CommonUtilPref::GetInt(key);
    if (code != 0) {
        LOG_INFO("CommonUtilPref::GetInt[%s] returns %d(%x)", key.c_str(), code, code);
        return false;
    }
    LOG_INFO("%s[%d]", key.c_str(), value);
    bundle_add_str(reply, field, std::to_string(value).c_str());
    return true;
}

// The texts stay the message's; what is missing is null.
data_util_worldclock_s RecordOf(bundle* message)
{
    const auto text = [message](const char* key) {
        char* value = nullptr;
        bundle_get_str(message, key, &value);
        return value;
    };
    return {text(MessageKey::kWorldClockComplicationName), text(MessageKey::kWorldClockTimezone),
            text(MessageKey::kWorldClockTimezonePath), text(MessageKey::kWorldClockCityName),
            text(MessageKey::kWorldClockCountry)};
}

}  // namespace

void MsgControl::OnDualClockRequest(const Request& request)
{
    const BundlePtr reply(bundle_dup(request.message));
    const std::string group = Get(request.message, MessageKey::kGroupName);
    if (group.empty()) {
        LOG_ERROR("group/name is empty!!");
        Add(reply, MessageKey::kStatus, kFail);
    } else if (!SetWorldClockData(reply.get(), request.watchName, group)) {
        Add(reply, MessageKey::kStatus, kFail);
        LOG_ERROR("_watchface_msg_control_set_dual_clock_data is failed");
    } else {
        Add(reply, MessageKey::kStatus, kSuccess);
    }
    SendMessage(request.remoteAppId, reply.get());
}

bool MsgControl::SetWorldClockData(bundle* reply, const std::string& watchName, const std::string& groupName)
{
    if (!reply) {
        LOG_ERROR("reply is nullptr!!");
        return false;
    }
    if (watchName.empty() || groupName.empty()) {
        LOG_ERROR("watchName[%s] or groupName[%s] is empty!!", watchName.c_str(), groupName.c_str());
        return false;
    }
    const std::string prefix = watchName + "-" + groupName + "-";
    bool complete = true;
    for (const char* field : kTextFields) complete &= AddStoredText(reply, prefix + field, field);
    complete &= AddStoredNumber(reply, prefix + MessageKey::kUpdatedMode, MessageKey::kUpdatedMode);
    return complete;
}

// Fixes the watch face that the next update is for, whatever is current by then.
void MsgControl::OnPrepareWorldClockUpdate(const Request&)
{
    const std::string current = CommonUtilVConf::GetString(kWatchfaceNameKey).second;
    const int code = CommonUtilPref::SetString(kWorldClockTargetPref, current);
    if (code != 0) {
        LOG_ERROR("CommonUtilPref::SetString(WFS_SERVICE_WATCH_NAME_WORLD_CLOCK_UPDATE) returns %d(%x)!!",
                  code, code);
    }
    LOG_INFO("prepare worldclock update for [%s]", current.c_str());
}

void MsgControl::OnWorldClockUpdate(const Request& request)
{
    const std::string watchName = CommonUtilPref::GetString(kWorldClockTargetPref).second;
    const std::string resultXml = WatchfaceManager::GeneratePath(true, PATH_TYPE_RESULT_XML, watchName);
    if (!CommonUtilFile::Exists(resultXml) && !mWatchfaceManager->CopyWatchfaceToRW(watchName)) {
        LOG_ERROR("failed to copy watchface from ro to rw!! update wordlock data failed!!");
        return;  // the one failure that is not answered
    }
    if (!UpdateWorldclockData(watchName, resultXml, RecordOf(request.message))) {
        LOG_INFO("UpdateWorldclockData is failed!");
        Reply(request, false);
        return;
    }
    LOG_INFO("UpdateWorldclockData is success!");
    Reply(request, true);
    mWatchfaceManager->SetWatchface(watchName, false);
    mWatchfaceManager->RequestPreviewCapture(watchName);
}

bool MsgControl::UpdateWorldclockData(const std::string& watchName, const std::string& resultXmlFilepath,
                                      const data_util_worldclock_s& record)
{
    if (watchName.empty() || resultXmlFilepath.empty()) {
        LOG_ERROR("watchName or resultXmlFilepath is empty!!");
        return false;
    }
    const CStringPtr xml(
        data_util_resultxml_file_converter_update_worldclock(resultXmlFilepath.c_str(), record));
    if (!xml) {
        LOG_ERROR("data_util_resultxml_memory_converter is failed");
        return false;
    }
    if (!ecore_file_mkpath(WatchfaceManager::GeneratePath(true, PATH_TYPE_FOLDER, watchName).c_str())) {
        LOG_ERROR("ecore_file_mkpath failed!!");
        return false;
    }
    // The result XML stays as it is; whether the write succeeds is not looked at.
    FileOutputStream watchfaceXml(WatchfaceManager::GeneratePath(true, PATH_TYPE_WATCHFACE_XML, watchName));
    watchfaceXml.Write(xml.get());
    watchfaceXml.Close();
    return true;
}

}  // namespace WatchfaceService
