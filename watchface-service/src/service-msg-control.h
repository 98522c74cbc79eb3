// The service's conversation with its peers: one trusted port, on which requests arrive and from which
// replies and notices leave. Kinds, keys and peers are in message-vocabulary.h.
//
// Normal flow: a message arrives at OnIPCMessageReceived(), is checked (a bundle, a type, an allowed sender)
// and handed to the handler of its type, which works on the watch faces, replies to the sender and tells
// others. A *reply* is a copy of the request with "status"; a *notice* is a bundle of its own. A *local
// editor* is a peer on the watch whose changes the manager on the phone (the WMS) is told of.
//
// Everything runs on the main loop's thread, one message at a time. No send is checked: a peer that is not
// there misses the message.

#pragma once

#include <memory>
#include <string>

#include "bundle.h"
#include "common-util-ipc-control.h"
#include "data-util.h"
#include "handles.h"
#include "service-bg-manager.h"
#include "service-preview-check.h"

namespace WatchfaceService {

class WatchfaceManager;

class MsgControl {
public:
    explicit MsgControl(std::shared_ptr<WatchfaceManager> manager);
    MsgControl(const MsgControl&) = delete;
    MsgControl& operator=(const MsgControl&) = delete;

    void OnIPCMessageReceived(int localPortId, const std::string& remoteAppId, const std::string& remotePort,
                              bool trustedRemotePort, bundle* message);

    // Sends `message`, which stays the caller's, to an addressable peer; to nobody else.
    void SendMessage(const std::string& remoteAppId, bundle* message);

    // Replies to `message`: a copy without its XML, with the status and, unless empty, the icon path. The
    // port of the reply follows from the sender's id; the sender's own port is not used.
    void SendReplyWithIconPath(bundle* message, const std::string& remoteAppId, const std::string& remotePort,
                               bool success);
    void SendReplyWithIconPath(bundle* message, const std::string& remoteAppId, const std::string& remotePort,
                               bool success, const std::string& iconPath);

    // Notices to the WMS.
    void SendMessageToWms(const std::string& messageType, const std::string& watchName);
    void SendIcuRequestReplyToWms(const std::string& messageType, const std::string& formattedString);
    // Of `iconPath` only counts whether there is one; the path that is sent is that of the service's own
    // preview.
    void SendWatchfaceUpdateToWms(const std::string& messageType, const std::string& watchName,
                                  const std::string& label, const std::string& resultXml,
                                  const std::string& iconPath);

    // A notice to editor, settings list and home, each where its port is up.
    void SendMessageToEditor(const std::string& messageType, const std::string& watchName);

    // The variant of a gallery background type in upper case: "U1" of "watch-bg-gallery-u1"; else empty.
    std::string GetBgTypePrefix(const std::string& bgType) const;

    // Adds what is stored for a group of a watch face to the reply: the fields that can be read. True when
    // all of them can.
    static bool SetWorldClockData(bundle* reply, const std::string& watchName, const std::string& groupName);

    // Makes the read/write `watchface.xml` anew from a result XML with the record applied. False when a name
    // is empty, the data library refuses or the folder cannot be made; a failed write is not told.
    static bool UpdateWorldclockData(const std::string& watchName, const std::string& resultXmlFilepath,
                                     const data_util_worldclock_s& record);

    // One message of the backup agent's: sends it all that is backed up, or takes one item back. False when
    // the item cannot be used; nothing is rolled back then.
    bool BackupAndRestore(bundle* message);

private:
    // One received message.
    struct Request {
        const std::string& remoteAppId;
        const std::string& remotePort;
        const std::string& type;
        const std::string& watchName;
        bundle* message;
    };

    struct Handler {
        const char* type;
        void (MsgControl::*handle)(const Request&);
    };

    // One row per message kind, in the order of comparison.
    static const Handler kHandlers[];

    void OnDateRequest(const Request& request);
    void OnIdleChanged(const Request& request);
    void OnInstallOrUpdate(const Request& request);
    void OnDeletion(const Request& request);
    void OnDualClockRequest(const Request& request);
    void OnPrepareWorldClockUpdate(const Request& request);
    void OnWorldClockUpdate(const Request& request);
    void OnCaptureFinished(const Request& request);
    void OnBgAdd(const Request& request);
    void OnBgDel(const Request& request);
    void OnBgSave(const Request& request);
    void OnBgCancel(const Request& request);

    // How a background message wants its change made.
    struct BgChange {
        int type;            // BgType
        std::string prefix;  // of the gallery folder
        bool keep;           // hold it until save or cancel
        bool direct;         // it has been made already
    };
    BgChange ReadBgChange(const Request& request) const;
    std::string BgPrefixOf(const Request& request) const;
    static int BgTypeOf(const std::string& bgType);  // a BgType
    void SendBgDeletionToWms(const char* bgType, const BgManager::BgList& fileNames);

    // Backup and restore. One item is one message of the backup agent's; false when it cannot be used.
    struct Restorer {
        const char* kind;
        bool (MsgControl::*restore)(bundle* item);
    };

    // One row per kind of item, in the order of comparison.
    static const Restorer kRestorers[];

    // How far a restore has come. Images are taken once the gallery face has come and the old ones are gone.
    enum RestoreState { kNoGalleryFace = 0, kGalleryFaceRestored = 1, kOldBackgroundsDeleted = 2 };

    void BackUp();
    void BackUpWatchface(const std::string& watchName);
    void BackUpBackgrounds(int type, const char* bgType);
    bool Restore(bundle* item);
    void DeleteOldBackgrounds();
    bool RestoreWatchface(bundle* item);
    bool RestoreBackground(bundle* item);
    bool RestoreCurrentWatchface(bundle* item);
    void SendToBackupAgent(const BundlePtr& message);

    void ReplyWithStatus(const Request& request, bool success);
    void Reply(const Request& request, bool success);
    void TellOthersOfUpdate(const Request& request, const std::string& label, const std::string& resultXml,
                            const std::string& iconPath);
    void SendUpdateToEditor(const std::string& watchName);
    void SendToWms(bundle* message);

    std::shared_ptr<WatchfaceManager> mWatchfaceManager;
    CommonUtilIPCControl mIpcControl;  // its callback is bound to this object
    BgManager mBgManager;
    int restoreState = kNoGalleryFace;
    PreviewCheck mPreviewCheck;
};

}  // namespace WatchfaceService
