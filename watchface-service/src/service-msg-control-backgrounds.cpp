// Background images: added and deleted by peers, at once or pending until save or cancel, and told to the
// phone.

#include "files.h"
#include "message-values.h"
#include "message-vocabulary.h"
#include "service-log.h"
#include "service-msg-control.h"

namespace WatchfaceService {

namespace {

// The last components of the paths under "bg_list", which is one string or an array.
BgManager::BgList FileNamesOf(bundle* message)
{
    BgManager::BgList names;
    switch (bundle_get_type(message, MessageKey::kBgList)) {
        case BUNDLE_TYPE_STR:
            names.emplace_back(ecore_file_file_get(Get(message, MessageKey::kBgList).c_str()));
            break;
        case BUNDLE_TYPE_STR_ARRAY: {
            int count = 0;
            const char** paths = bundle_get_str_array(message, MessageKey::kBgList, &count);
            for (int i = 0; i < count; ++i) names.emplace_back(ecore_file_file_get(paths[i]));
            break;
        }
        default:
            break;
    }
    return names;
}

// One string stays one string, an array an array; a message with neither stays without.
void SetFileNames(const BundlePtr& message, const BgManager::BgList& names)
{
    const int type = bundle_get_type(message.get(), MessageKey::kBgList);
    if (type == BUNDLE_TYPE_STR) Add(message, MessageKey::kBgList, names.front());
    if (type == BUNDLE_TYPE_STR_ARRAY) AddArray(message, MessageKey::kBgList, names);
}

}  // namespace

int MsgControl::BgTypeOf(const std::string& bgType)
{
    return bgType.starts_with(kBgTypeGallery) ? kGalleryBg : kThemeBg;
}

std::string MsgControl::BgPrefixOf(const Request& request) const
{
    return GetBgTypePrefix(Get(request.message, MessageKey::kBgType));
}

MsgControl::BgChange MsgControl::ReadBgChange(const Request& request) const
{
    const std::string bgType = Get(request.message, MessageKey::kBgType);
    BgChange change{BgTypeOf(bgType), BgPrefixOf(request), false, false};
    LOG_INFO("bgTypeStr[%s] bgType[%d] prefix[%s]", bgType.c_str(), change.type, change.prefix.c_str());
    if (change.type != kGalleryBg) return change;

    change.keep = Get(request.message, MessageKey::kBgPending) == kTrue;
    change.direct = !change.keep && Get(request.message, MessageKey::kBgDirect) == kTrue;
    return change;
}

void MsgControl::OnBgAdd(const Request& request)
{
    const BgChange change = ReadBgChange(request);
    if (change.direct) LOG_ERROR("already copied image!! pass to wms directly!!");
    const std::string source = Get(request.message, MessageKey::kBgList);
    const bool added = change.direct || mBgManager.Add(source, change.type, change.prefix, change.keep);
    ReplyWithStatus(request, added);
    // Told also while it is pending; a cancellation takes it back.
    if (!added || !IsLocalEditor(request.remoteAppId)) return;

    const BundlePtr notice(bundle_dup(request.message));
    if (!change.direct) {
        const std::string fileName = ecore_file_file_get(source.c_str());
        Add(notice, MessageKey::kBgList, mBgManager.BuildBgPath(change.type, change.prefix, fileName));
    }
    SendMessage(Peer::kWms, notice.get());
}

void MsgControl::OnBgDel(const Request& request)
{
    const BgChange change = ReadBgChange(request);
    if (change.direct) LOG_ERROR("direct request received!!");
    const BgManager::BgList fileNames = FileNamesOf(request.message);
    const bool deleted = change.direct || mBgManager.Del(fileNames, change.type, change.prefix, change.keep);
    ReplyWithStatus(request, deleted);
    // What is pending is told when it is saved.
    if (!deleted || change.keep || !IsLocalEditor(request.remoteAppId)) return;

    const BundlePtr notice(bundle_dup(request.message));
    SetFileNames(notice, fileNames);
    SendMessage(Peer::kWms, notice.get());
}

// The phone is told of what is deleted by this before it happens: of the pending deletions on save, of the
// pending additions on cancel; without the variant, on purpose, whatever the request's type is.

void MsgControl::OnBgSave(const Request& request)
{
    const std::string prefix = BgPrefixOf(request);
    SendBgDeletionToWms(kBgTypeGallery, mBgManager.GetDeletedBgList(prefix));
    mBgManager.ApplyChanges(prefix);
    ReplyWithStatus(request, true);
}

void MsgControl::OnBgCancel(const Request& request)
{
    const std::string prefix = BgPrefixOf(request);
    SendBgDeletionToWms(kBgTypeGallery, mBgManager.GetAddedBgList(prefix));
    mBgManager.CancelChanges(prefix);
    ReplyWithStatus(request, true);
}

void MsgControl::SendBgDeletionToWms(const char* bgType, const BgManager::BgList& fileNames)
{
    if (fileNames.empty()) return;
    const BundlePtr notice = NewMessage({
        {MessageKey::kType,   MessageType::kBgDel},
        {MessageKey::kBgType, bgType             }
    });
    AddArray(notice, MessageKey::kBgList, fileNames);
    SendMessage(Peer::kWms, notice.get());
}

}  // namespace WatchfaceService
