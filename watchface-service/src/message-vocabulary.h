// The words of the service's messages: who speaks, on which ports, of what kind, under which keys.
//
// A message is one bundle. Its kind is under "type", the watch face it is about, where there is one, under
// "pkgid"; numbers are decimal strings. All messages of this vocabulary travel between trusted ports. A
// missing value reads as the empty string; the two are treated alike.
//
// A *peer* is an application that the service talks with. Only those in kAddressablePeers can be sent to by
// their id; a message to anybody else is dropped silently. Only those in kAllowedSenders are listened to,
// beside the backup agent, whose messages go their own way before that list is looked at.

#pragma once

#include <algorithm>
#include <iterator>
#include <string>

namespace WatchfaceService {

// The service's own trusted port.
inline constexpr char kServicePort[] = "watchface-service::localport";

namespace Peer {

inline constexpr char kViewer[] = "com.corvane.watchface";  // shows the watch faces; owns their file areas
inline constexpr char kSettingList[] = "com.corvane.watch-utils.setting-list";  // the watch's clock settings
inline constexpr char kEditor[] = "com.corvane.watchface-editor";
inline constexpr char kHome[] = "com.corvane.w-home";
inline constexpr char kWms[] = "com.corvane.w-manager-service";  // the manager on the phone
inline constexpr char kWorldClockMap[] = "com.corvane.worldclock-map";
inline constexpr char kWorldClockCityDetail[] = "com.corvane.worldclock-city-detail";
inline constexpr char kCapture[] = "com.corvane.watchface-capture";  // draws previews
inline constexpr char kBackupAgent[] = "com.corvane.watch-utils.service";

}  // namespace Peer

namespace PeerPort {

inline constexpr char kSettingList[] = "clocksetting::localport";
inline constexpr char kEditor[] = "watch-face-editor::localport";
inline constexpr char kHome[] = "w-home::localport";
inline constexpr char kWms[] = "w-manager-service::localport";
inline constexpr char kCapture[] = "watchface-capture::localport";        // capture requests only
inline constexpr char kBackupAgent[] = "watch-utils-service::localport";  // never reached by its id alone

}  // namespace PeerPort

struct PeerAddress {
    const char* id;
    const char* port;
};

// Whom a message can be sent to by application id alone; in the order of comparison.
inline constexpr PeerAddress kAddressablePeers[] = {
    {Peer::kSettingList, PeerPort::kSettingList},
    {Peer::kEditor,      PeerPort::kEditor     },
    {Peer::kHome,        PeerPort::kHome       },
    {Peer::kWms,         PeerPort::kWms        },
};

// Who on the watch shows or edits watch faces, in the order in which they are told of a change.
inline constexpr PeerAddress kEditorPeers[] = {
    {Peer::kEditor,      PeerPort::kEditor     },
    {Peer::kSettingList, PeerPort::kSettingList},
    {Peer::kHome,        PeerPort::kHome       },
};

inline constexpr const char* kAllowedSenders[] = {
    Peer::kViewer,        Peer::kSettingList,          Peer::kEditor,  Peer::kHome, Peer::kWms,
    Peer::kWorldClockMap, Peer::kWorldClockCityDetail, Peer::kCapture,
};

// Whose changes the manager on the phone is told of; in the order of comparison.
inline constexpr const char* kLocalEditors[] = {Peer::kSettingList, Peer::kHome, Peer::kEditor};

inline bool IsLocalEditor(const std::string& appId)
{
    return std::ranges::find(kLocalEditors, appId) != std::end(kLocalEditors);
}

// Values of "type".
namespace MessageType {

inline constexpr char kIcuConvert[] = "watch-icu-convert";
inline constexpr char kDualClockData[] = "watch-dual-clock-data";
inline constexpr char kReqWatchlists[] = "watch-req-watchlists";  // reserved: accepted and ignored
inline constexpr char kSettingCreated[] = "watch-setting-created";
inline constexpr char kSettingUpdated[] = "watch-setting-updated";
inline constexpr char kSettingDeleted[] = "watch-setting-deleted";
inline constexpr char kCaptureFinished[] = "watch-capture-finished";
inline constexpr char kIdleChanged[] = "watch-idle-changed";
inline constexpr char kBgAdd[] = "watch-bg-add";
inline constexpr char kBgDel[] = "watch-bg-del";
inline constexpr char kBgSave[] = "watch-bg-save";
inline constexpr char kBgCancel[] = "watch-bg-cancel";
inline constexpr char kPrepareUpdateWorldClock[] = "watch-prepare-update-world-clock";
inline constexpr char kUpdateWorldClock[] = "watch-setting-update-world-clock";

}  // namespace MessageType

namespace MessageKey {

inline constexpr char kType[] = "type";
inline constexpr char kPkgId[] = "pkgid";  // the watch face's name
inline constexpr char kLabel[] = "data/label";
inline constexpr char kXmlData[] = "data/xml_data";    // the whole result XML
inline constexpr char kIconPath[] = "data/icon_path";  // path of a preview
inline constexpr char kStatus[] = "status";            // kSuccess or kFail, in every reply
inline constexpr char kPkgName[] = "pkgName";          // the watch face's name in a capture request

// Dates
inline constexpr char kTimestamp[] = "data/timestamp";  // decimal integer
inline constexpr char kSkeleton[] = "data/skeleton";
inline constexpr char kBestPattern[] = "data/bestpattern";  // kTrue; anything else is false
inline constexpr char kFormattedString[] = "formattedstring";

// World clocks
inline constexpr char kGroupName[] = "group/name";
inline constexpr char kTimezonePath[] = "timezonePath";
inline constexpr char kTimezone[] = "timezone";
inline constexpr char kCity[] = "city";
inline constexpr char kCountry[] = "country";
inline constexpr char kUpdatedMode[] = "updatedMode";  // decimal integer
inline constexpr char kWorldClockComplicationName[] = "data/worldclock/complication_name";
inline constexpr char kWorldClockTimezone[] = "data/worldclock/timezone";
inline constexpr char kWorldClockTimezonePath[] = "data/worldclock/timezone_path";
inline constexpr char kWorldClockCityName[] = "data/worldclock/cityname";
inline constexpr char kWorldClockCountry[] = "data/worldclock/country";

// Backgrounds
inline constexpr char kBgType[] = "bg_type";
inline constexpr char kBgList[] = "bg_list";              // one string or an array
inline constexpr char kBgPending[] = "watch-bg-pending";  // kTrue: hold the change until save or cancel
inline constexpr char kBgDirect[] = "watch-bg-direct";    // kTrue: only the phone is to be told

// Backup and restore
inline constexpr char kOperation[] = "operation";
inline constexpr char kMessage[] = "message";
inline constexpr char kResultXml[] = "result_xml";
inline constexpr char kFileName[] = "file_name";
inline constexpr char kFilePath[] = "file_path";

}  // namespace MessageKey

inline constexpr char kSuccess[] = "success";
inline constexpr char kFail[] = "fail";
inline constexpr char kTrue[] = "true";

// Values of "bg_type". A gallery type may go on with a separator and a variant, as in "watch-bg-gallery-u1".
inline constexpr char kBgTypeDigital[] = "watch-bg-digital";
inline constexpr char kBgTypeGallery[] = "watch-bg-gallery";
inline constexpr char kBgTypeGalleryU1[] = "watch-bg-gallery-u1";

// Values of "type" in the backup agent's messages: kinds of items.
namespace BackupItem {

inline constexpr char kWatchface[] = "watch";
inline constexpr char kBackground[] = "image";
inline constexpr char kCurrentWatchface[] = "watch-idle-changed";

}  // namespace BackupItem

// Values of "operation" and "message" in the backup agent's messages.
inline constexpr char kOperationBackup[] = "corvane_cloud_backup";
inline constexpr char kOperationRestore[] = "corvane_cloud_restore";
inline constexpr char kRestoreStart[] = "restore_start";
inline constexpr char kRestoreFinished[] = "restore_finished";
inline constexpr char kBackupFinished[] = "backup_finished";

}  // namespace WatchfaceService
