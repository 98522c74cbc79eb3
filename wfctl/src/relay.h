// Handing a message to a running `wfctl listen` that is the application which somebody wants to speak as.
//
// An application's id belongs to one connection at a time. While a listener has it, another wfctl of the same
// user calls the listener's relay to send in its place; what the listener receives meanwhile it passes on
// too, to callers that asked for it (*followers*), until they are gone.

#pragma once

#include <functional>
#include <set>
#include <string>

#include "arguments.h"
#include "connection.h"

namespace Wfctl {

inline constexpr char kRelayPath[] = "/com/corvane/wfctl/relay";
inline constexpr char kRelayInterface[] = "com.corvane.wfctl.Relay1";

// The listener's side.
class RelayServer {
public:
    RelayServer(Connection& connection, PeerAddress self);
    RelayServer(const RelayServer&) = delete;
    RelayServer& operator=(const RelayServer&) = delete;

    // Whether somebody still waits for what was sent in its name, or for what was passed on.
    bool IsBusy() const { return mOutstanding > 0; }

    // Passes a received message on to the followers.
    void Received(const std::string& app, const std::string& port, const bundle& message);

private:
    static int OnSend(sd_bus_message* call, void* self, sd_bus_error*);
    void SendFor(sd_bus_message* call, bool isSameUser);

    Connection& mConnection;
    const PeerAddress mSelf;
    std::set<std::string> mFollowers;  // unique names
    unsigned mOutstanding = 0;         // calls whose answer has not come
    Platform::SlotPtr mObject;
};

// The side of the wfctl that found the name taken.
class RelayClient {
public:
    using Callback =
        std::function<void(const std::string& app, const std::string& port, const bundle& message)>;
    // `callback` may be empty: nothing is followed.
    RelayClient(Connection& connection, std::string app, Callback callback);
    RelayClient(const RelayClient&) = delete;
    RelayClient& operator=(const RelayClient&) = delete;

    // The answer of the message's receiver, or an error; one of UnknownMethod, UnknownObject or
    // UnknownInterface means that whoever has the name is no listener.
    Answer Send(const PeerAddress& to, bool trusted, const bundle& message, Seconds most);

private:
    static int OnReceived(sd_bus_message* call, void* self, sd_bus_error*);

    Connection& mConnection;
    const std::string mApp;
    const Callback mCallback;
    Platform::SlotPtr mObject;
};

}  // namespace Wfctl
