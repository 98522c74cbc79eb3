// The conversation with the backup agent: what the user has made of this watch goes to it item by item, and
// comes back item by item, on this watch or on another one of its product.
//
// The items are result XMLs, paths of background images and, on the way back, the current watch face. The
// images belong to the gallery face: they are taken back only after it, and in place of all that were there.

#include "common-util-pref.h"
#include "files.h"
#include "message-values.h"
#include "message-vocabulary.h"
#include "persisted-keys.h"
#include "service-config-mirel.h"
#include "service-log.h"
#include "service-msg-control.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

struct BgKind {
    int type;
    const char* bgType;
};

// The images that are backed up, and that a restore replaces; in this order. Those of kBgTypeGallery alone,
// without a variant, are neither, on purpose.
constexpr BgKind kBgKinds[] = {
    {kThemeBg,   kBgTypeDigital  },
    {kGalleryBg, kBgTypeGalleryU1},
};

// The watch face of this watch that an item is about; empty when there is none.
std::string LocalNameOf(bundle* item)
{
    const std::string watchName = Get(item, MessageKey::kPkgId);
    if (watchName.empty()) {
        LOG_ERROR("pkgid is empty!!");
        return {};
    }
    return GetWatchfaceFamily(watchName);
}

// `text` with `to` wherever `from`, which is not empty, stood.
std::string Replaced(const std::string& text, const std::string& from, const std::string& to)
{
    std::string result;
    std::size_t at = 0;
    for (std::size_t found = text.find(from); found != std::string::npos; found = text.find(from, at)) {
        result.append(text, at, found - at).append(to);
        at = found + from.size();
    }
    return result.append(text, at);
}

}  // namespace

bool MsgControl::BackupAndRestore(bundle* message)
{
    const std::string operation = Get(message, MessageKey::kOperation);
    const std::string step = Get(message, MessageKey::kMessage);
    LOG_ERROR("message = %s, operation = %s", step.c_str(), operation.c_str());
    if (step == kRestoreStart) {
        restoreState = kNoGalleryFace;
    } else if (step == kRestoreFinished) {
        SendToBackupAgent(NewMessage({
            {MessageKey::kMessage, kRestoreFinished}
        }));
    }
    if (operation == kOperationBackup) BackUp();
    return operation != kOperationRestore || Restore(message);
}

void MsgControl::SendToBackupAgent(const BundlePtr& message)
{
    if (!message) return;
    CommonUtilIPCControl::SendTrustedMessage(Peer::kBackupAgent, PeerPort::kBackupAgent, message.get(),
                                             &mIpcControl);
}

// Backup

void MsgControl::BackUp()
{
    WatchfaceManager::WatchfaceMap watchfaces;
    mWatchfaceManager->ScanWatchfaces(watchfaces, true);
    for (const auto& watchface : watchfaces) BackUpWatchface(watchface.first);
    for (const auto& [type, bgType] : kBgKinds) BackUpBackgrounds(type, bgType);
    SendToBackupAgent(NewMessage({
        {MessageKey::kMessage, kBackupFinished}
    }));
}

void MsgControl::BackUpWatchface(const std::string& watchName)
{
    const std::string path = WatchfaceManager::GeneratePath(true, PATH_TYPE_RESULT_XML, watchName);
    if (!CommonUtilFile::Exists(path)) {
        LOG_INFO("not editable watchface[%s]!!", watchName.c_str());
        return;
    }
    SendToBackupAgent(NewMessage({
        {MessageKey::kType,      BackupItem::kWatchface},
        {MessageKey::kPkgId,     watchName             },
        {MessageKey::kResultXml, ReadWholeFile(path)   }
    }));
}

void MsgControl::BackUpBackgrounds(int type, const char* bgType)
{
    const std::string prefix = GetBgTypePrefix(bgType);
    for (const std::string& fileName : mBgManager.ListBgFiles(type, prefix)) {
        SendToBackupAgent(NewMessage({
            {MessageKey::kType,     BackupItem::kBackground    },
            {MessageKey::kFileName, fileName                   },
            {MessageKey::kFilePath, mBgManager.BuildBgPath(type, prefix, fileName)},
            {MessageKey::kBgType,            bgType                                      }
        }));
    }
}

// Restore

const MsgControl::Restorer MsgControl::kRestorers[] = {
    {BackupItem::kWatchface,        &MsgControl::RestoreWatchface       },
    {BackupItem::kBackground,       &MsgControl::RestoreBackground      },
    {BackupItem::kCurrentWatchface, &MsgControl::RestoreCurrentWatchface},
};

bool MsgControl::Restore(bundle* item)
{
    const std::string kind = Get(item, MessageKey::kType);
    if (restoreState == kGalleryFaceRestored) DeleteOldBackgrounds();
    for (const Restorer& restorer : kRestorers) {
        if (kind == restorer.kind) return (this->*restorer.restore)(item);
    }
    return true;
}

void MsgControl::DeleteOldBackgrounds()
{
    for (const auto& [type, bgType] : kBgKinds) {
        const std::string prefix = GetBgTypePrefix(bgType);
        const BgManager::BgList fileNames = mBgManager.ListBgFiles(type, prefix);
        if (fileNames.empty()) continue;
        mBgManager.DeleteAllBg(type, prefix);
        SendBgDeletionToWms(bgType, fileNames);
    }
    restoreState = kOldBackgroundsDeleted;
    LOG_ERROR("[DELETED_BG] background images are deleted");
}

bool MsgControl::RestoreWatchface(bundle* item)
{
    const std::string watchName = LocalNameOf(item);
    if (watchName.empty()) return false;
    if (IsGalleryWatchface(watchName)) {
        // Before it is written, and whatever becomes of that.
        restoreState = kGalleryFaceRestored;
        LOG_ERROR("[RESTORED_XML] watchface.xml is restored");
    }
    const std::string backedUp = Get(item, MessageKey::kResultXml);
    if (backedUp.empty()) {
        LOG_ERROR("data/xml_data is empty!!");
        return false;
    }
    const std::string resultXml = Replaced(backedUp, Get(item, MessageKey::kPkgId), watchName);
    if (!mWatchfaceManager->UpdateWatchface(watchName, resultXml)) {
        LOG_ERROR("[Message Handle] watchface.xml(%s) generation is failed!", watchName.c_str());
        return false;
    }
    LOG_ERROR("[Message Handle] watchface.xml(%s) generation is success!", watchName.c_str());
    mWatchfaceManager->RequestPreviewCapture(watchName);
    SendUpdateToEditor(watchName);
    SendWatchfaceUpdateToWms(MessageType::kSettingUpdated, watchName, GetLabelId(watchName), resultXml, "");
    return true;
}

bool MsgControl::RestoreBackground(bundle* item)
{
    if (restoreState != kOldBackgroundsDeleted) return true;
    const std::string path = Get(item, MessageKey::kFilePath);
    if (path.empty()) {
        LOG_ERROR("file path is empty!!");
        return false;
    }
    const std::string bgType = Get(item, MessageKey::kBgType);
    if (bgType.empty()) LOG_ERROR("bg type string is empty!!");
    const int type = BgTypeOf(bgType);
    const std::string prefix = GetBgTypePrefix(bgType);
    mBgManager.Add(path, type, prefix, false);  // the phone is told of it however that went
    const std::string place = mBgManager.BuildBgPath(type, prefix, ecore_file_file_get(path.c_str()));
    const BundlePtr notice = NewMessage({
        {MessageKey::kType,   MessageType::kBgAdd},
        {MessageKey::kBgType, bgType             },
        {MessageKey::kBgList, place              }
    });
    SendMessage(Peer::kWms, notice.get());
    return true;
}

bool MsgControl::RestoreCurrentWatchface(bundle* item)
{
    const std::string watchName = LocalNameOf(item);
    if (watchName.empty()) return false;
    CommonUtilPref::SetString(kIdleChangeRequesterPref, Peer::kBackupAgent);
    mWatchfaceManager->SetWatchface(watchName, true);
    SendMessageToWms(MessageType::kIdleChanged, watchName);
    return true;
}

}  // namespace WatchfaceService
