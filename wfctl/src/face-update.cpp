#include "face-update.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <utility>

#include "area-copy.h"
#include "areas.h"
#include "documents.h"
#include "event-loop-sdevent.h"
#include "exit-status.h"
#include "face-document.h"
#include "file-times.h"
#include "flat-origin.h"
#include "log-tail.h"
#include "private-watch.h"
#include "reading-files.h"
#include "shell-command.h"

namespace Wfctl {

namespace {

// Which file lies at a path: changes with every replacement.
struct FileMark {
    ino_t inode = 0;
    timespec changed{};
    bool operator==(const FileMark& other) const
    {
        return inode == other.inode && changed.tv_sec == other.changed.tv_sec &&
               changed.tv_nsec == other.changed.tv_nsec;
    }
};

FileMark MarkOfFile(const std::string& path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? FileMark{info.st_ino, info.st_ctim} : FileMark{};
}

// The service answers that the document was good, whether or not it could write the files.
class Written {
public:
    explicit Written(Face face) : mFace(std::move(face)) {}

    // The file that is still without the document; empty where there is none. Whoever replaced one meanwhile
    // has an update of their own.
    std::string Missing(const std::string& xml) const
    {
        if (IsAsBefore(mFace.ResultXml(), mResultXml) && BytesOfFile(mFace.ResultXml()) != xml)
            return mFace.ResultXml();
        const bool isOld =
            IsAsBefore(mFace.WatchfaceXml(), mWatchfaceXml) &&
            !DataUtil::IsMadeFrom(BytesOfFile(mFace.WatchfaceXml()), *DataUtil::ParseFace(xml).document);
        return isOld ? mFace.WatchfaceXml() : "";
    }

private:
    static bool IsAsBefore(const std::string& path, const FileMark& before)
    {
        const bool isHidden = access(path.c_str(), R_OK) != 0 && errno == EACCES;
        return !isHidden && MarkOfFile(path) == before;
    }

    const Face mFace;
    const FileMark mResultXml = MarkOfFile(mFace.ResultXml());
    const FileMark mWatchfaceXml = MarkOfFile(mFace.WatchfaceXml());
};

Platform::BundlePtr NewMessage(const FaceUpdate& update, const std::string& icon)
{
    Platform::BundlePtr message(bundle_create());
    message->Set("type", update.type);
    message->Set("pkgid", update.name);
    message->Set("data/xml_data", update.xml);
    if (!update.label.empty()) message->Set("data/label", update.label);
    if (!icon.empty()) message->Set("data/icon_path", icon);
    return message;
}

// Waits until another picture lies at the face's preview path: one that is not older than the document,
// because a picture that was asked for before may come meanwhile.
bool AwaitPreview(Connection& connection, const Face& face, const FileMark& before, Seconds most)
{
    const auto hasChanged = [&] {
        const FileMark now = MarkOfFile(face.Preview());
        return now.inode != 0 && !(now == before) && IsNotOlder(face.Preview(), face.WatchfaceXml());
    };
    sd_event_source* raw = nullptr;
    const auto wakeUp = [](sd_event_source*, const inotify_event*, void*) { return 0; };
    sd_event_add_inotify(Platform::MainLoop(), &raw, face.folder.c_str(),
                         IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE, wakeUp, nullptr);
    const Platform::EventSourcePtr source(raw);
    return connection.RunUntil(hasChanged, most);
}

[[noreturn]] void Refused(const FaceUpdate& update, const LogTail& log)
{
    const std::string reasons = log.Reasons();
    throw Stop(
        Exit::kError,
        "the service refused [" + update.name + "]; type: wfctl validate " + ShellQuoted(update.file) + "; " +
            (reasons.empty() ? "look for data-util in " + LogPlace("data-util") : "its log says:" + reasons));
}

[[noreturn]] void NotDrawn(const Face& face, const LogTail& log)
{
    const std::string faults = log.FaultsOf(face.name);
    throw Stop(
        Exit::kNoAnswer,
        "[" + face.name + "] is stored, but no new preview came to [" + face.Preview() + "] in time; " +
            (faults.empty() ? "`" + WatchCommand("status") + "` says whether the capture application runs"
                            : "the log says:" + faults));
}

}  // namespace

bool IsNotOlder(const std::string& path, const std::string& than)
{
    struct stat one {
    }, other{};
    if (stat(path.c_str(), &one) != 0 || stat(than.c_str(), &other) != 0) return false;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return !IsEarlier(one.st_mtim, other.st_mtim) || IsEarlier(now, other.st_mtim);
}

FaceUpdate SameAgain(const Face& face, Seconds timeout)
{
    std::error_code error;
    if (!std::filesystem::exists(face.ResultXml(), error)) {
        throw Stop(Exit::kError, "[" + face.name +
                                     "] has no result XML, so the service is not asked to draw it; "
                                     "type: " +
                                     WatchCommand("render " + ShellWord(face.name)));
    }
    const std::string xml = ReadNamedFile(face.ResultXml());
    return {kUpdated, face.name, xml, FactsOf(xml).title, "", true, timeout, face.ResultXml()};
}

FaceUpdater::FaceUpdater(Connection& connection, const std::string& as)
    : mConnection(connection), mPeer(connection, as)
{
}

void FaceUpdater::Store(const FaceUpdate& update, const std::function<void(const Json&)>& onReply)
{
    const Face face = WritableFace(update.name);
    const FileMark preview = MarkOfFile(face.Preview());
    const Written written(face);
    std::optional<AreaCopy> icon;
    if (!update.icon.empty()) {
        if (KindOfPicture(update.icon) != PictureKind::kPng)
            throw Stop(Exit::kError, "[" + update.icon + "] is no PNG");
        icon.emplace(update.icon, mPeer.Application(), update.name + ".png");
    }
    const LogTail log;
    const Json reply = mPeer.Ask(*NewMessage(update, icon ? icon->Path() : ""), update.timeout);
    const std::string missing = IsSuccess(reply) ? written.Missing(update.xml) : "";
    if (!missing.empty()) NotWritten(missing, update.name, log);
    if (onReply) onReply(reply);
    if (!IsSuccess(reply)) Refused(update, log);
    if (!update.awaitsPreview || AwaitPreview(mConnection, face, preview, update.timeout)) return;
    NotDrawn(face, log);
}

}  // namespace Wfctl
