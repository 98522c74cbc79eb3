// The backup agent's side of its conversation with the service.

#pragma once

#include <functional>
#include <string>

#include "connection.h"
#include "peer.h"

namespace Wfctl {

class BackupAgent {
public:
    static constexpr char kId[] = "com.corvane.watch-utils.service";

    explicit BackupAgent(Connection& connection);
    BackupAgent(const BackupAgent&) = delete;
    BackupAgent& operator=(const BackupAgent&) = delete;

    // Holds the conversation, and once more while it says that the service ended in the middle: up to five
    // times, then it stops with Exit::kError.
    static void UntilTheEnd(const std::function<bool()>& conversation);

    // Asks for a backup; `onItem` gets what comes, its end not. False when the service ended meanwhile, or
    // began: then it has to be asked again. Stops with Exit::kNoAnswer when nothing more comes.
    bool AskForBackup(const std::function<void(const bundle&)>& onItem);

    // Begins a restore with the service that runs now, and starts one when none does. The service knows of it
    // until it ends.
    void BeginRestore();
    // Gives it an item, and returns when it has been stored. False when the service is not the one that knows
    // of the restore: then it has to be begun again.
    bool Give(bundle item);
    bool Give(const std::string& type, const std::string& watchName, const std::string& resultXml = {});
    bool GivePicture(const std::string& path, const std::string& bgType);
    bool EndRestore();

private:
    void Tell(const bundle& message);
    bool TellTheSame(const bundle& message);
    bool IsAcknowledged();  // "restore_finished", which has no other effect
    std::string Owner();
    bool IsTheSame();

    Connection& mConnection;
    std::function<void(const bundle&)> mOnMessage;
    std::string mService;  // its unique name, in a conversation
    Peer mPeer;
};

}  // namespace Wfctl
