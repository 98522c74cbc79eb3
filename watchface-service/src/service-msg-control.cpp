#include "service-msg-control.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>
#include <utility>

#include "common-util-i18n.h"
#include "common-util-pref.h"
#include "handles.h"
#include "message-values.h"
#include "message-vocabulary.h"
#include "persisted-keys.h"
#include "service-config-mirel.h"
#include "service-log.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

bool IsAllowedSender(const std::string& appId)
{
    return std::ranges::find(kAllowedSenders, appId) != std::end(kAllowedSenders);
}

}  // namespace

using namespace std::placeholders;

MsgControl::MsgControl(std::shared_ptr<WatchfaceManager> manager)
    : mWatchfaceManager(std::move(manager)),
      mIpcControl(kServicePort, true, std::bind(&MsgControl::OnIPCMessageReceived, this, _1, _2, _3, _4, _5)),
      mPreviewCheck(mWatchfaceManager)
{
}

// What arrives

const MsgControl::Handler MsgControl::kHandlers[] = {
    {MessageType::kIcuConvert,              &MsgControl::OnDateRequest            },
    {MessageType::kIdleChanged,             &MsgControl::OnIdleChanged            },
    {MessageType::kSettingCreated,          &MsgControl::OnInstallOrUpdate        },
    {MessageType::kSettingUpdated,          &MsgControl::OnInstallOrUpdate        },
    {MessageType::kSettingDeleted,          &MsgControl::OnDeletion               },
    {MessageType::kDualClockData,           &MsgControl::OnDualClockRequest       },
    {MessageType::kPrepareUpdateWorldClock, &MsgControl::OnPrepareWorldClockUpdate},
    {MessageType::kUpdateWorldClock,        &MsgControl::OnWorldClockUpdate       },
    {MessageType::kBgAdd,                   &MsgControl::OnBgAdd                  },
    {MessageType::kBgDel,                   &MsgControl::OnBgDel                  },
    {MessageType::kBgSave,                  &MsgControl::OnBgSave                 },
    {MessageType::kBgCancel,                &MsgControl::OnBgCancel               },
    {MessageType::kCaptureFinished,         &MsgControl::OnCaptureFinished        },
};

void MsgControl::OnIPCMessageReceived(int, const std::string& remoteAppId, const std::string& remotePort,
                                      bool, bundle* message)
{
    if (!message) {
        LOG_ERROR("message is nullptr");
        return;
    }
    if (remoteAppId == Peer::kBackupAgent) {
        LOG_ERROR("Backup & restore process!!");
        BackupAndRestore(message);
        return;
    }
    const std::string type = Get(message, MessageKey::kType);
    const std::string watchName = Get(message, MessageKey::kPkgId);
    const Request request{remoteAppId, remotePort, type, watchName, message};
    if (type.empty()) {
        LOG_ERROR("messageType is empty");
        Reply(request, false);  // also to a sender that is not allowed
        return;
    }
    LOG_ERROR("messageType = [%s], watch_name = [%s]", type.c_str(), watchName.c_str());
    if (!IsAllowedSender(remoteAppId)) {
        LOG_ERROR("request from not allowed app[%s]", remoteAppId.c_str());
        return;
    }
    const auto handler = std::ranges::find_if(kHandlers, [&](const Handler& h) { return type == h.type; });
    if (handler != std::end(kHandlers)) (this->*handler->handle)(request);
}

void MsgControl::OnIdleChanged(const Request& request)
{
    CommonUtilPref::SetString(kIdleChangeRequesterPref, request.remoteAppId);
    mWatchfaceManager->SetWatchface(request.watchName, true);
    if (IsLocalEditor(request.remoteAppId)) SendMessageToWms(request.type, request.watchName);
}

void MsgControl::OnInstallOrUpdate(const Request& request)
{
    const std::string label = Get(request.message, MessageKey::kLabel);
    if (label.empty()) LOG_ERROR("data/label is empty!!");
    const std::string resultXml = Get(request.message, MessageKey::kXmlData);
    if (resultXml.empty()) {
        LOG_ERROR("data/xml_data is empty!!");
        Reply(request, false);
        return;
    }
    const std::string iconPath = Get(request.message, MessageKey::kIconPath);
    if (iconPath.empty()) LOG_ERROR("data/icon_path is empty!!");

    if (!mWatchfaceManager->UpdateWatchface(request.watchName, resultXml)) {
        LOG_ERROR("[Message Handle] watchface.xml generation is failed!");
        Reply(request, false);
        return;
    }
    LOG_ERROR("[Message Handle] watchface.xml generation is success!");
    mWatchfaceManager->UpdatePreview(request.watchName, iconPath);
    SendReplyWithIconPath(request.message, request.remoteAppId, request.remotePort, true,
                          WatchfaceManager::GeneratePath(true, PATH_TYPE_PREVIEW, request.watchName));
    mWatchfaceManager->SetWatchface(request.watchName, false);
    TellOthersOfUpdate(request, label, resultXml, iconPath);
    if (request.type == MessageType::kSettingCreated && request.remoteAppId == Peer::kWms &&
        IsMirelWatchface(request.watchName, true)) {
        // Once more than UpdatePreview() has asked: what the phone supplies is drawn anew on the watch.
        mWatchfaceManager->RequestPreviewCapture(request.watchName);
    }
    if (!iconPath.empty()) mPreviewCheck.Add(request.watchName);
}

void MsgControl::TellOthersOfUpdate(const Request& request, const std::string& label,
                                    const std::string& resultXml, const std::string& iconPath)
{
    if (IsLocalEditor(request.remoteAppId)) {
        SendWatchfaceUpdateToWms(request.type, request.watchName, label, resultXml, iconPath);
    }
    if (request.type == MessageType::kSettingUpdated && request.remoteAppId == Peer::kWms) {
        SendUpdateToEditor(request.watchName);
    }
}

void MsgControl::SendUpdateToEditor(const std::string& watchName)
{
    const BundlePtr notice = NewMessage({
        {MessageKey::kType,  MessageType::kSettingUpdated},
        {MessageKey::kPkgId, watchName                   }
    });
    SendMessage(Peer::kEditor, notice.get());
}

void MsgControl::OnCaptureFinished(const Request& request)
{
    mWatchfaceManager->UpdatePreviewDone(request.watchName);
    mPreviewCheck.Add(request.watchName);
}

// What leaves

void MsgControl::SendMessage(const std::string& remoteAppId, bundle* message)
{
    if (remoteAppId.empty()) {
        LOG_ERROR("remoteAppId empty!!");
        return;
    }
    if (!message) {
        LOG_ERROR("message is nullptr!!");
        return;
    }
    const auto peer = std::ranges::find(kAddressablePeers, remoteAppId, &PeerAddress::id);
    if (peer == std::end(kAddressablePeers)) return;
    CommonUtilIPCControl::SendTrustedMessage(remoteAppId, peer->port, message, &mIpcControl);
}

void MsgControl::Reply(const Request& request, bool success)
{
    SendReplyWithIconPath(request.message, request.remoteAppId, request.remotePort, success);
}

void MsgControl::ReplyWithStatus(const Request& request, bool success)
{
    const BundlePtr reply(bundle_dup(request.message));
    Add(reply, MessageKey::kStatus, success ? kSuccess : kFail);
    SendMessage(request.remoteAppId, reply.get());
}

void MsgControl::SendReplyWithIconPath(bundle* message, const std::string& remoteAppId,
                                       const std::string& remotePort, bool success)
{
    SendReplyWithIconPath(message, remoteAppId, remotePort, success, "");
}

void MsgControl::SendReplyWithIconPath(bundle* message, const std::string& remoteAppId, const std::string&,
                                       bool success, const std::string& iconPath)
{
    if (remoteAppId.empty()) {
        LOG_ERROR("remoteAppId is empty!!");
        return;
    }
    const BundlePtr reply(bundle_dup(message));
    bundle_del(reply.get(), MessageKey::kXmlData);
    Add(reply, MessageKey::kStatus, success ? kSuccess : kFail);
    if (!iconPath.empty()) {
        bundle_del(reply.get(), MessageKey::kIconPath);
        Add(reply, MessageKey::kIconPath, iconPath);
    }
    SendMessage(remoteAppId, reply.get());
}

void MsgControl::SendToWms(bundle* message)
{
    CommonUtilIPCControl::SendTrustedMessage(Peer::kWms, PeerPort::kWms, message, &mIpcControl);
}

void MsgControl::SendMessageToWms(const std::string& messageType, const std::string& watchName)
{
    if (messageType.empty() || watchName.empty()) {
        LOG_ERROR("messageType[%s] or watchName[%s] is empty!!", messageType.c_str(), watchName.c_str());
        return;
    }
    const BundlePtr notice(bundle_create());
    if (!notice) return;
    Add(notice, MessageKey::kType, messageType);
    Add(notice, MessageKey::kPkgId, watchName);
    SendToWms(notice.get());
}

void MsgControl::SendIcuRequestReplyToWms(const std::string& messageType, const std::string& formattedString)
{
    if (messageType.empty() || formattedString.empty()) {
        LOG_ERROR("messageType[%s] or formattedString[%s] is empty!!", messageType.c_str(),
                  formattedString.c_str());
        return;
    }
    const BundlePtr reply(bundle_create());
    if (!reply) return;
    Add(reply, MessageKey::kType, messageType);
    Add(reply, MessageKey::kFormattedString, formattedString);
    SendToWms(reply.get());
}

void MsgControl::SendWatchfaceUpdateToWms(const std::string& messageType, const std::string& watchName,
                                          const std::string& label, const std::string& resultXml,
                                          const std::string& iconPath)
{
    if (messageType.empty() || watchName.empty() || resultXml.empty()) {
        LOG_ERROR("type[%s], watchName[%s] or resultBuffer[%s] is empty!!", messageType.c_str(),
                  watchName.c_str(), resultXml.c_str());
        return;
    }
    const BundlePtr notice(bundle_create());
    if (!notice) return;
    Add(notice, MessageKey::kType, messageType);
    Add(notice, MessageKey::kPkgId, watchName);
    if (!label.empty()) Add(notice, MessageKey::kLabel, label);
    Add(notice, MessageKey::kXmlData, resultXml);
    if (!iconPath.empty()) {
        Add(notice, MessageKey::kIconPath,
            WatchfaceManager::GeneratePath(true, PATH_TYPE_PREVIEW, watchName));
    }
    SendToWms(notice.get());
}

void MsgControl::SendMessageToEditor(const std::string& messageType, const std::string& watchName)
{
    if (messageType.empty() || watchName.empty()) {
        LOG_ERROR("type[%s] or watchName[%s] is empty!!", messageType.c_str(), watchName.c_str());
        return;
    }
    const BundlePtr notice(bundle_create());
    if (!notice) return;
    Add(notice, MessageKey::kType, messageType);
    Add(notice, MessageKey::kPkgId, watchName);
    for (const PeerAddress& peer : kEditorPeers) {
        if (CommonUtilIPCControl::CheckTrustedRemotePort(peer.id, peer.port) != 1) continue;
        CommonUtilIPCControl::SendTrustedMessage(peer.id, peer.port, notice.get(), &mIpcControl);
    }
}

std::string MsgControl::GetBgTypePrefix(const std::string& bgType) const
{
    constexpr std::size_t kVariantAt = std::string_view(kBgTypeGallery).size() + 1;
    std::string prefix;
    if (bgType.starts_with(kBgTypeGallery) && bgType.size() > kVariantAt) {
        // Whatever character stands between the two counts as their separator.
        prefix = CommonUtilI18NStringUtility::ToUpper(bgType.substr(kVariantAt));
    }
    LOG_INFO("bgTypeStr[%s] prefix[%s]", bgType.c_str(), prefix.c_str());
    return prefix;
}

}  // namespace WatchfaceService
