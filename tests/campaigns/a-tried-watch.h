// A watch that faults are made on: a bus, a root in memory, the service behind a gate, and the peers that
// have it do what it does. What it keeps can be looked at whole, and be brought back to what it was.

#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "a-running-service.h"
#include "gated-program.h"

namespace Campaign {

// What a watch keeps: files of the two areas by their path below the root, folders with a "/" at their end,
// and values by their key behind the label of their store.
using State = std::map<std::string, std::string>;

// Something took longer than anything may.
struct Hang : std::runtime_error {
    using runtime_error::runtime_error;
};

enum class Answer { kNone, kSuccess, kFailure };

class TriedWatch {
public:
    // A reply is lost that has not come so long after the service came to rest. With no fault of the bus none
    // is lost, but on a busy machine it may be late.
    explicit TriedWatch(const std::string& prefix,
                        std::chrono::milliseconds replyIsLost = std::chrono::seconds(20));

    const std::string& Root() const { return mRoot; }
    std::string Address() const { return mBus.Address(); }
    // What all runs of the service have logged: its size now, and what came from there on.
    std::size_t LogSize() const;
    std::string LogFrom(std::size_t offset) const;

    // Starts the service and waits until it is ready or has ended; whether it is ready. Throws Hang.
    bool Start(GatedProgram::Watcher watcher = {});
    bool IsRunning();
    // Ends it as a device does.
    void Stop();
    GatedProgram& Service() { return *mService; }

    // Sends a message as that peer (the evaluator: to the open port), and waits until the service has dealt
    // with it, its status answered or not, or has ended. Throws Hang.
    Answer Ask(const Identity& peer, const Values& values);
    // Waits until the service has nothing left to do, playing the capture application. Throws Hang.
    void Settle();

    // The platform keys whose change was announced since this was asked last.
    std::vector<std::string> TakeAnnouncedKeys();

    State Look() const;
    // Brings back what was looked at, each preview newer than what it is drawn from; the service is to be
    // settled. What lies in the folders beside it goes.
    void Restore(const State& state);
    // Keeps a copy of all that lies below the root, and brings it back, while no service runs.
    void KeepRoot() const;
    void BringRootBack() const;
    // Files that were begun beside others and left.
    std::vector<std::string> Leftovers() const;
    // Whether SQLite finds the databases whole, and none was set aside.
    bool AreDatabasesWhole() const;
    std::size_t OpenFiles() const;  // of the service

    // Whether this is a file of a face, or its folder, as it is shipped.
    bool IsShipped(const std::string& path, const std::string& content) const;
    std::string ShippedDocument(const std::string& face) const;
    std::string ShippedPreview(const std::string& face) const;  // its path
    // A picture of the user's outside the watch, with that content; its path.
    std::string Picture(const std::string& name, const std::string& content);

    // Runs wfctl as the user of this watch, who is the editor then, and draws what is asked for meanwhile.
    // Throws Hang.
    struct ToolResult {
        int status;  // as waitpid() says
        std::string output;
    };
    ToolResult RunTool(std::vector<std::string> arguments);

private:
    void Connect(const Identity& peer);
    void Ping();
    bool HasEnded();
    enum class Drawing { kSaid, kDone };
    void DrainPeers(Drawing drawing);
    void Draw(const std::string& face) const;
    void BringValueBack(const std::string& name, const std::string& value) const;

    const std::chrono::milliseconds mReplyIsLost;
    TestSupport::PrivateBus mBus;
    TestSupport::TemporaryFolder mFolder;
    const std::string mRoot, mPrefix, mShippedFaces;
    Platform::UniqueFd mReadiness;
    std::map<std::string, std::unique_ptr<RawBus>> mPeers;  // by application
    std::unique_ptr<RawBus> mKeyWatcher;
    std::unique_ptr<GatedProgram> mService;
};

// What is done to the watch while faults are made. Each begins at what FormerState() gives.
struct Operation {
    const char* name;
    Answer (*run)(TriedWatch&);
    bool isAnswered;
    // The ends of what may be as before although "success" was answered: the service does not look whether it
    // could be written. The log has a line of each.
    std::span<const char* const> untested;
};
std::span<const Operation> Operations();

// What of `now` is not as in `latter`: paths and values.
std::vector<std::string> Undone(const State& now, const State& latter);

// Whether a path may have that content besides.
using Allowance = std::function<bool(const std::string& path, const std::string& content)>;
// What of `now` is neither as in `former` nor as in `latter`, nor allowed, and what both have and it has not;
// each in words.
std::vector<std::string> Damage(const State& now, const State& former, const State& latter,
                                const Allowance& isAllowed = {});

// A watch in use: the classic face edited, its preview drawn, one picture in the gallery, a duration saved by
// an application. The service runs.
State FormerState(TriedWatch& watch);

// The classic face edited anew; documents of different numbers differ, and so do the flat ones.
Answer UpdateTo(TriedWatch& watch, int number, const std::string& preview);
Answer InstallDigitalFace(TriedWatch& watch);
// A picture added and another deleted, both held until they are saved.
Answer SaveBackgrounds(TriedWatch& watch);
// That save alone.
Answer SaveHeldBackgrounds(TriedWatch& watch);

// An application that is none of the service's peers.
inline constexpr Identity kEvaluator{"com.example.evaluation", "answers"};

}  // namespace Campaign
