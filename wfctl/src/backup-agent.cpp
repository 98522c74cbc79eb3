#include "backup-agent.h"

#include "application-table.h"
#include "exit-status.h"
#include "private-watch.h"
#include "service-peer.h"

namespace Wfctl {

namespace {

constexpr int kMostBeginnings = 5;
constexpr Seconds kItemPatience{20};

bundle NewMessage(std::initializer_list<std::pair<const char*, std::string>> values)
{
    bundle message;
    for (const auto& [key, value] : values) message.Set(key, value);
    return message;
}

}  // namespace

BackupAgent::BackupAgent(Connection& connection)
    : mConnection(connection),
      mPeer(connection, ParsePeer(kId, true), true,
            [this](const std::string& app, const std::string&, const bundle& message) {
                if (app == Platform::kServiceId && mOnMessage) mOnMessage(message);
            })
{
    if (mPeer.HasNames()) return;
    throw Stop(Exit::kError,
               std::string("[") + kId +
                   "] is running: it makes backups of this watch, or another wfctl does; wait for it, "
                   "or end it");
}

void BackupAgent::UntilTheEnd(const std::function<bool()>& conversation)
{
    for (int beginnings = 0; beginnings < kMostBeginnings; ++beginnings) {
        if (conversation()) return;
    }
    throw Stop(Exit::kError,
               "the service ended in the middle, again and again; look for watchface-service in " +
                   LogPlace("watchface-service"));
}

void BackupAgent::Tell(const bundle& message)
{
    mPeer.Send(ParsePeer(std::string(Platform::kServiceId), true), true, message);
}

std::string BackupAgent::Owner()
{
    return mConnection.Bus().OwnerNow(std::string(Platform::kServiceId)).value_or("");
}

bool BackupAgent::IsTheSame()
{
    return Owner() == mService;
}

// The service sends all items at once, and only so many may wait until its user is known. So an answer to
// something that changes nothing comes first: from then on he is.
bool BackupAgent::AskForBackup(const std::function<void(const bundle&)>& onItem)
{
    mService = Owner();
    if (!IsAcknowledged()) return false;
    bool isOver = false;
    std::size_t count = 0;
    mOnMessage = [&](const bundle& message) {
        ++count;
        if (TextOf(message, "message") == "backup_finished") {
            isOver = true;
        } else if (!isOver) {
            onItem(message);
        }
    };
    const bool isTheSame = TellTheSame(NewMessage({
        {"operation", "corvane_cloud_backup"}
    }));
    if (!isTheSame) {
        mOnMessage = nullptr;
        return false;
    }
    for (;;) {
        const std::size_t before = count;
        const auto hasMore = [&] { return isOver || count > before || !IsTheSame(); };
        if (!mConnection.RunUntil(hasMore, kItemPatience)) {
            throw Stop(Exit::kNoAnswer, "the service sent " + std::to_string(count) +
                                            " items and then nothing more; look for watchface-service in " +
                                            LogPlace("watchface-service"));
        }
        if (isOver || !IsTheSame()) break;
    }
    mOnMessage = nullptr;
    return isOver;
}

void BackupAgent::BeginRestore()
{
    Tell(NewMessage({
        {"operation", "corvane_cloud_restore"},
        {"message",   "restore_start"        }
    }));
    mService = Owner();
}

bool BackupAgent::TellTheSame(const bundle& message)
{
    try {
        Tell(message);
    } catch (const Stop& stop) {
        mConnection.RoundTrip();  // then its end is known
        if (stop.Status() == Exit::kInterrupted || IsTheSame()) throw;
    }
    return IsTheSame();
}

bool BackupAgent::Give(bundle item)
{
    item.Set("operation", std::string("corvane_cloud_restore"));
    return TellTheSame(item);
}

bool BackupAgent::Give(const std::string& type, const std::string& watchName, const std::string& resultXml)
{
    bundle item = NewMessage({
        {"type",  type     },
        {"pkgid", watchName}
    });
    if (!resultXml.empty()) item.Set("result_xml", resultXml);
    return Give(std::move(item));
}

bool BackupAgent::GivePicture(const std::string& path, const std::string& bgType)
{
    return Give(NewMessage({
        {"type",      "image"},
        {"file_path", path   },
        {"bg_type",   bgType }
    }));
}

bool BackupAgent::IsAcknowledged()
{
    bool isOver = false;
    mOnMessage = [&](const bundle& message) { isOver |= TextOf(message, "message") == "restore_finished"; };
    const bool isTheSame = TellTheSame(NewMessage({
        {"message", "restore_finished"}
    }));
    const bool isAnswered =
        isTheSame && mConnection.RunUntil([&] { return isOver || !IsTheSame(); }, kItemPatience);
    mOnMessage = nullptr;
    if (isTheSame && !isAnswered)
        throw Stop(Exit::kNoAnswer,
                   "the service did not answer the backup agent; look for watchface-service in " +
                       LogPlace("watchface-service"));
    return isOver;
}

bool BackupAgent::EndRestore()
{
    return IsAcknowledged();
}

}  // namespace Wfctl
