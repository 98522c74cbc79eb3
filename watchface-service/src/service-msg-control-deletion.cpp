// Deleted watch faces: their read/write folder goes, what was shipped stays.

#include "files.h"
#include "message-vocabulary.h"
#include "service-config-mirel.h"
#include "service-log.h"
#include "service-msg-control.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

bool RemoveFolder(const std::string& watchName)
{
    // An empty name would stand for the folder of all watch faces.
    return !watchName.empty() &&
           ecore_file_recursive_rm(WatchfaceManager::GeneratePath(true, PATH_TYPE_FOLDER, watchName).c_str());
}

}  // namespace

void MsgControl::OnDeletion(const Request& request)
{
    const bool removed = RemoveFolder(request.watchName);
    if (!removed) LOG_INFO("ecore_file_recursive_rm failed!!");
    Reply(request, removed);
    // The editors are told of a failure whoever asked, one of themselves included.
    if (removed && IsLocalEditor(request.remoteAppId)) {
        SendMessageToWms(request.type, request.watchName);
    } else {
        SendMessageToEditor(request.type, request.watchName);
    }
    if (IsGalleryWatchface(request.watchName)) {
        mBgManager.DeleteAllBg(kGalleryBg, GetWatchfaceBgTag(request.watchName));
    }
}

}  // namespace WatchfaceService
