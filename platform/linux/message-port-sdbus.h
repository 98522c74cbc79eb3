// Message ports on the bus.
//
// Terms: an application A owns its id as a bus name. Its port P is up while the name A.trusted.ENC(P)
// (A.open.ENC(P) for an untrusted port) has the same owner as A. A message is a method call to A.
//
// Normal flow of a message that comes in: it is taken apart at once; then the owner ledger says who owned the
// claimed sender's name when the bus routed the message, and, for a trusted port, the bus says which user is
// behind the connection; then the port's callback runs, and last the caller gets its reply. Messages of one
// connection are delivered in their order, and wait while one of them is not checked yet. What waits is
// bounded.

#pragma once

#include <sys/types.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "bundle-wire-sdbus.h"
#include "bus-names.h"
#include "bus-sdbus.h"
#include "common-util-tasks.h"
#include "refusal-log.h"

namespace Platform {

// The bus name under which a port is up.
std::string PortBusName(const std::string& appId, const std::string& port, bool trusted);

// A call that carries a message. Without `expectReply` it starts nobody and nobody answers it.
MessagePtr NewPortMessage(sd_bus* bus, const std::string& toApp, const std::string& toPort, bool trusted,
                          const std::string& fromApp, const std::string& fromPort, const bundle& message,
                          bool expectReply, int* result);

// The ports of one application on one connection.
//
// A message that comes alone is delivered at once. When more has come, all of it is read first, and
// connections take turns, a message each: who sends much delays himself. The messages of a connection keep
// their order.
class MessagePorts {
public:
    using Callback = std::function<void(int id, const std::string& senderApp, const std::string& senderPort,
                                        bool trusted, bundle* message)>;

    MessagePorts(Bus& bus, std::string appId);
    MessagePorts(const MessagePorts&) = delete;
    MessagePorts& operator=(const MessagePorts&) = delete;

    // Opens a port. Its name is taken by Announce(), or at once when that has been. Returns its id, or a
    // negative code when there is such a port already.
    int Open(const std::string& name, bool trusted, Callback callback);
    void Close(int id);

    // Takes the names of all ports; 0 or the code of the first that could not be had, with the name.
    int Announce(std::string* failed);

    // Gives up the names; the ports still take what has been routed to them.
    void Retire();

    // Sends without expecting a reply; 0 when the bus took it.
    int Send(const std::string& app, const std::string& port, bool trusted, const std::string& fromPort,
             const bundle& message);

    // 1 up, 0 not, negative when the bus does not tell.
    int IsTrustedPortUp(const std::string& app, const std::string& port);

private:
    struct Port {
        std::string name;
        bool trusted;
        std::shared_ptr<Callback> callback;  // kept while it runs, should the port be closed inside
    };
    struct Incoming;
    struct Queue {
        std::deque<std::shared_ptr<Incoming>> messages;  // never empty between two events
        std::size_t bytes = 0;                           // that they take
        bool hasTurn = false;                            // it stands in mTurns
    };

    static int OnSendTrusted(sd_bus_message* message, void* self, sd_bus_error*);
    static int OnSend(sd_bus_message* message, void* self, sd_bus_error*);
    int OnMessage(sd_bus_message* message, bool trusted);
    std::shared_ptr<Incoming> Parse(sd_bus_message* message, bool trusted);
    bool MayWait(const Incoming& incoming) const;
    void Check(const std::shared_ptr<Incoming>& incoming);
    void Advance(const std::string& connection);
    static int OnTurns(sd_event_source*, void* self);
    void TakeTurn();
    void Finish(Incoming& incoming);
    void Deliver(Incoming& incoming);
    void Refuse(sd_bus_message* message, const std::string& sender, const char* error,
                const std::string& reason);
    bool HasRoomToSend(std::size_t bytes);
    const Port* Find(const std::string& name, bool trusted) const;

    Bus& mBus;
    const std::string mAppId;
    bool mAnnounced = false;
    int mNextId = 1;
    std::map<int, Port> mPorts;
    std::map<std::string, Queue> mWaiting;  // by connection
    std::size_t mWaitingBytes = 0;
    std::size_t mUnsentBytes = 0;    // since the bus took all
    std::deque<std::string> mTurns;  // connections whose first message has been checked
    RefusalLog mRefusals;
    CommonUtilTimer mRefusalSecond;
    CommonUtilTimer mQuiet;  // since much waited
    EventSourcePtr mTurnSource;
    SlotPtr mObject;  // last: no message arrives while the rest is destroyed
};

}  // namespace Platform
