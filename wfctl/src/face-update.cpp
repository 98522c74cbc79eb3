#include "face-update.h"

#include <sys/inotify.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "application-table.h"
#include "areas.h"
#include "event-loop-sdevent.h"
#include "exit-status.h"
#include "files.h"
#include "peer.h"
#include "private-watch.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

// Whom the service answers, each at its first port of the table of applications.
constexpr const char* kAnsweredPeers[] = {
    kManagerId,
    kEditorId,
    "com.corvane.w-home",
    "com.corvane.watch-utils.setting-list",
};

// Which picture lies at a path: changes with every replacement.
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

// The user's icon, copied to where the service may read it, while this lives.
class IconCopy {
public:
    IconCopy(const std::string& icon, const std::string& app, const std::string& face)
    {
        if (icon.empty()) return;
        std::ifstream file(icon, std::ios::binary);
        char signature[8] = {};
        if (!file) throw Stop(Exit::kNotFound, "the picture [" + icon + "] cannot be read");
        if (!file.read(signature, sizeof signature) || std::string(signature, 4) != "\x89PNG") {
            throw Stop(Exit::kError, "[" + icon + "] is no PNG");
        }
        const std::string folder = Platform::CurrentAreas().DataOf(app) + "wfctl/";
        mPath = folder + face + ".png";
        if (ecore_file_mkpath(folder.c_str()) && CommonUtilFile::Copy(fs::absolute(icon).string(), mPath))
            return;
        throw Stop(Exit::kError, "the picture [" + icon + "] could not be copied to [" + mPath + "]");
    }
    ~IconCopy()
    {
        if (!mPath.empty()) ecore_file_remove(mPath.c_str());
    }
    IconCopy(const IconCopy&) = delete;
    IconCopy& operator=(const IconCopy&) = delete;
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

// What the service and the data library wrote into the watch's log from here on.
class LogTail {
public:
    LogTail() : mPath(WatchPaths{Platform::CurrentAreas().root}.Log())
    {
        std::error_code error;
        const auto size = fs::file_size(mPath, error);
        mStart = error ? 0 : size;
    }
    // The lines that say why a document was refused; empty when there is no such log.
    std::string Reasons() const
    {
        std::ifstream log(mPath, std::ios::binary);
        log.seekg(static_cast<std::streamoff>(mStart));
        std::string reasons;
        for (std::string line; std::getline(log, line);) {
            const bool isRefusal =
                line.find("W/platform(") != std::string::npos && line.find(" refused") != std::string::npos;
            if (isRefusal || line.find("/data-util(") != std::string::npos) reasons += "\n  " + line;
        }
        return reasons;
    }

private:
    const std::string mPath;
    std::uintmax_t mStart = 0;
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

std::string TextOf(const bundle& message, const char* key)
{
    const auto it = message.values.find(std::string_view(key));
    const auto* text = it == message.values.end() ? nullptr : std::get_if<std::string>(&it->second);
    return text ? *text : "";
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
    throw Stop(Exit::kError, "the service refused [" + update.name + "]; " +
                                 (reasons.empty() ? "look for data-util in " + LogPlace("data-util")
                                                  : "its log says:" + reasons));
}

PeerAddress AnsweredPeer(const std::string& as)
{
    PeerAddress peer = ParsePeer(as, true);
    const bool isAnswered =
        std::any_of(std::begin(kAnsweredPeers), std::end(kAnsweredPeers),
                    [&](const char* id) { return peer.app == id && peer.port == ParsePeer(id, true).port; });
    if (isAnswered) return peer;
    std::string all;
    for (const char* id : kAnsweredPeers) all += std::string(all.empty() ? "" : ", ") + id;
    throw Stop(Exit::kUsage, "the service would not answer [" + as +
                                 "], so nobody would know how it went; say --as with one of " + all +
                                 ", or use wfctl send");
}

}  // namespace

bool IsNotOlder(const std::string& path, const std::string& than)
{
    struct stat one {
    }, other{};
    if (stat(path.c_str(), &one) != 0 || stat(than.c_str(), &other) != 0) return false;
    const bool sameSecond = one.st_mtim.tv_sec == other.st_mtim.tv_sec;
    return sameSecond ? one.st_mtim.tv_nsec >= other.st_mtim.tv_nsec
                      : one.st_mtim.tv_sec > other.st_mtim.tv_sec;
}

FaceUpdater::FaceUpdater(Connection& connection, const std::string& as)
    : mConnection(connection),
      mSelf(AnsweredPeer(as)),
      mPeer(connection, mSelf, true,
            [this](const std::string& app, const std::string& port, const bundle& message) {
                Receive(app, port, message);
            })
{
}

void FaceUpdater::Receive(const std::string& app, const std::string& port, const bundle& message)
{
    const bool isOurs = mCurrent && mReply.is_null() && app == Platform::kServiceId &&
                        TextOf(message, "pkgid") == mCurrent->name &&
                        TextOf(message, "type") == mCurrent->type && !TextOf(message, "status").empty();
    if (isOurs) mReply = MessageToJson(app, port, message);
}

void FaceUpdater::Store(const FaceUpdate& update, const std::function<void(const Json&)>& onReply)
{
    const Face face = WritableFace(update.name);
    const FileMark before = MarkOfFile(face.Preview());
    const IconCopy icon(update.icon, mSelf.app, update.name);
    const LogTail log;
    mCurrent = &update;
    mReply = nullptr;
    mPeer.Send(ParsePeer(std::string(Platform::kServiceId), true), true, *NewMessage(update, icon.Path()));
    const bool isAnswered = mConnection.RunUntil([this] { return !mReply.is_null(); }, update.timeout);
    mCurrent = nullptr;
    if (!isAnswered) {
        throw Stop(Exit::kNoAnswer, "the service took the message about [" + update.name +
                                        "] but did not answer [" + mSelf.app +
                                        "] in time; look for watchface-service in " +
                                        LogPlace("watchface-service"));
    }
    if (onReply) onReply(mReply);
    if (mReply["bundle"]["status"] != "success") Refused(update, log);
    if (!update.awaitsPreview || AwaitPreview(mConnection, face, before, update.timeout)) return;
    throw Stop(Exit::kNoAnswer, "[" + update.name + "] is stored, but no new preview came to [" +
                                    face.Preview() +
                                    "] in time; `wfctl status` says whether the capture application runs");
}

}  // namespace Wfctl
