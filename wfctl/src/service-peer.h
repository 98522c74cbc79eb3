// One of the peers that the service answers: asking it, and its answer.

#pragma once

#include <functional>
#include <string>

#include "connection.h"
#include "json-text.h"
#include "peer.h"

namespace Wfctl {

inline constexpr char kManagerId[] = "com.corvane.w-manager-service";
inline constexpr char kEditorId[] = "com.corvane.watchface-editor";
inline constexpr double kPatience = 20;  // seconds

// Is the application while it lives; asks one thing after the other.
class ServicePeer {
public:
    using Fits = std::function<bool(const bundle&)>;

    // Stops with Exit::kUsage when the service would not answer this application there.
    ServicePeer(Connection& connection, const std::string& as);
    // Any application on an open port of its own, which speaks to that open port of the service.
    ServicePeer(Connection& connection, PeerAddress self, PeerAddress service);
    ServicePeer(const ServicePeer&) = delete;
    ServicePeer& operator=(const ServicePeer&) = delete;

    const std::string& Application() const { return mSelf.app; }

    void Tell(const bundle& message);
    // Stops with Exit::kError when a listener has the application without a port of its kind, since the
    // answer goes to the listener's port. Ask() does so first; for those who change something before they
    // ask.
    void RequireAnswers();
    // The first message of the service that fits, as MessageToJson() has it. Stops with Exit::kNoAnswer when
    // none comes in time, which begins with the question: the bus may have to start the service first.
    Json Ask(const bundle& message, const Fits& isAnswer, Seconds timeout);
    // The same where the answer is a message of that type, about the same "pkgid" if there is one, with a
    // "status".
    Json Ask(const bundle& message, Seconds timeout);

private:
    ServicePeer(Connection& connection, PeerAddress self, PeerAddress service, bool trusted);
    void Receive(const std::string& app, const std::string& port, const bundle& message);

    Connection& mConnection;
    const PeerAddress mSelf, mService;
    const bool mIsTrusted;
    const Fits* mIsAnswer = nullptr;  // while an answer is waited for
    Json mAnswer;                     // null until it is there
    Peer mPeer;
};

bool IsSuccess(const Json& answer);

// The text under a key; empty when there is none.
std::string TextOf(const bundle& message, const char* key);

}  // namespace Wfctl
