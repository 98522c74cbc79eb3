// wfctl as an application: it owns the application's names while it lives, sends as it, and receives.

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "arguments.h"
#include "connection.h"
#include "message-port-sdbus.h"
#include "relay.h"

namespace Wfctl {

// The bus may have to start the receiver first.
inline constexpr Seconds kSendPatience{25};

class Peer {
public:
    using Callback = RelayClient::Callback;

    // Takes the names of `self` (its port may be empty). When another process has them, that one is asked to
    // send instead, and then what it receives goes to `callback` too. `callback` may be empty.
    Peer(Connection& connection, PeerAddress self, bool trusted, Callback callback);
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    bool HasNames() const { return mPorts != nullptr; }

    // Offers the relay to others of the same user.
    void OfferRelay();

    // Waits, for a bounded time, until those who used the relay have their answers.
    void FinishRelay();

    // Sends and waits until the receiver has taken the message; stops with the fitting status when it was
    // refused, and with Exit::kNoAnswer when the time is over.
    void Send(const PeerAddress& to, bool trusted, const bundle& message, Seconds most = kSendPatience);

private:
    bool TakeNames(bool trusted);
    Answer SendOwn(const PeerAddress& to, bool trusted, const bundle& message, Seconds most);

    Connection& mConnection;
    const PeerAddress mSelf;
    Callback mCallback;
    int mPort = 0;
    std::unique_ptr<RelayServer> mRelayServer;
    std::unique_ptr<RelayClient> mRelayClient;
    std::unique_ptr<Platform::MessagePorts> mPorts;  // last: no message arrives while the rest is destroyed
};

// A line on stderr where the address of one who speaks or listens may be a slip of an application of the
// watch, or of a port of it. Anybody may have others.
void WarnOfPeerSlips(const PeerAddress& self);

// What a failed call means to the user of wfctl.
[[noreturn]] void StopFor(const Answer& answer, const PeerAddress& to, const std::string& self);

}  // namespace Wfctl
