#include "message-port-sdbus.h"

#include <malloc.h>
#include <pwd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "application-table.h"
#include "event-loop-sdevent.h"
#include "platform-log.h"
#include "trace-sdbus.h"
#include "utf8.h"

namespace Platform {

namespace {

constexpr char kNotTrusted[] = "com.corvane.platform.Error.NotTrusted";
constexpr char kNoSuchPort[] = "com.corvane.platform.Error.NoSuchPort";
constexpr char kInvalidBundle[] = "com.corvane.platform.Error.InvalidBundle";
constexpr char kQueueFull[] = "com.corvane.platform.Error.QueueFull";

// What may wait, for the check of its sender or for its turn. A sender gets room for thousands of messages at
// once, as a backup may need; the more is taken by others, the less, and some always stays for new ones.
constexpr std::size_t kMostWaitingBytes = std::size_t{32} << 20;
constexpr std::size_t kBytesBesideBundle = 2048;  // that a waiting message takes
static_assert(kMostWaitingBytes / 2 >= kMostBundleMemory + kBytesBesideBundle);
static_assert(kMostWaitingBytes / kBytesBesideBundle <= OwnerLedger::kMostQuestions);
// What may be kept of our own messages while the bus takes none.
constexpr std::size_t kMostUnsentBytes = std::size_t{32} << 20;
// Reading comes first, or what others send piles up at the bus, which knows no turns.
constexpr std::chrono::microseconds kReadingSlice{1000};
constexpr std::chrono::microseconds kDeliverySlice{250};
// What waited beyond this is given back to the system when it is quiet again: the allocator would keep it.
constexpr std::size_t kGivenBack = std::size_t{1} << 20;
constexpr double kQuietSeconds = 1;
constexpr std::size_t kMostShown = 256;  // of a peer's text in a refusal

void GiveBackMemory()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

std::string EncodeLabel(const std::string& label)
{
    char* path = nullptr;
    if (sd_bus_path_encode("/", label.c_str(), &path) < 0) return {};
    const std::string encoded = path + 1;
    free(path);
    return encoded;
}

// Whether the user may stand behind this application: ourselves, root, or who the table says.
bool MayBe(uid_t user, const std::string& appId)
{
    if (user == 0 || user == geteuid()) return true;
    const Application* app = FindApplication(appId);
    if (!app) return false;
    const passwd* entry = getpwnam(std::string(app->user).c_str());
    return entry && entry->pw_uid == user;
}

}  // namespace

std::string PortBusName(const std::string& appId, const std::string& port, bool trusted)
{
    return appId + (trusted ? ".trusted." : ".open.") + EncodeLabel(port);
}

MessagePtr NewPortMessage(sd_bus* bus, const std::string& toApp, const std::string& toPort, bool trusted,
                          const std::string& fromApp, const std::string& fromPort, const bundle& message,
                          bool expectReply, int* result)
{
    sd_bus_message* raw = nullptr;
    int code = sd_bus_message_new_method_call(bus, &raw, toApp.c_str(), kPortPath, kPortInterface,
                                              trusted ? "SendTrusted" : "Send");
    MessagePtr call(raw);
    if (code >= 0) {
        code = sd_bus_message_append(raw, "sss", toPort.c_str(), fromApp.c_str(), fromPort.c_str());
    }
    if (code >= 0) code = AppendBundle(raw, message);
    if (code >= 0 && !expectReply) code = sd_bus_message_set_expect_reply(raw, false);
    if (code >= 0 && !expectReply) code = sd_bus_message_set_auto_start(raw, false);
    *result = code < 0 ? code : 0;
    return code < 0 ? MessagePtr() : std::move(call);
}

struct MessagePorts::Incoming {
    MessagePtr message;
    std::string connection;  // the sender's unique name
    std::string port, senderApp, senderPort;
    bool trusted = false;
    BundlePtr bundle;
    std::size_t bytes = 0;
    std::optional<std::string> owner;  // of senderApp when the bus routed the message
    bool userKnown = false;
    std::optional<uid_t> user;

    bool Checked() const { return owner && (userKnown || !trusted); }
};

MessagePorts::MessagePorts(Bus& bus, std::string appId)
    : mBus(bus),
      mAppId(std::move(appId)),
      mRefusalSecond(1.0,
                     [this] {
                         mRefusals.EndSecond();
                         return kCommonUtilTaskEnd;
                     }),
      mQuiet(kQuietSeconds, [] {
          GiveBackMemory();
          return kCommonUtilTaskEnd;
      })
{
    // Unprivileged: who may send is decided here, per message; sd-bus would ask the bus behind each one.
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("SendTrusted", "sssa{sv}", "", OnSendTrusted, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Send", "sssa{sv}", "", OnSend, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    sd_bus_slot* slot = nullptr;
    const int code = sd_bus_add_object_vtable(mBus.Get(), &slot, kPortPath, kPortInterface, kTable, this);
    if (code < 0) PLATFORM_FAULT("could not offer [%s]: %s", kPortInterface, std::strerror(-code));
    mObject.reset(slot);
    sd_event_source* source = nullptr;
    sd_event_add_defer(sd_bus_get_event(mBus.Get()), &source, OnTurns, this);
    mTurnSource.reset(source);
    sd_event_source_set_enabled(source, SD_EVENT_OFF);
}

int MessagePorts::Open(const std::string& name, bool trusted, Callback callback)
{
    if (Find(name, trusted)) return -EEXIST;
    const int id = mNextId++;
    mPorts[id] = {name, trusted, std::make_shared<Callback>(std::move(callback))};
    if (!mAnnounced) return id;
    const std::string busName = PortBusName(mAppId, name, trusted);
    const int code = mBus.RequestName(busName);
    if (code < 0) PLATFORM_FAULT("could not take the name [%s]: %s", busName.c_str(), std::strerror(-code));
    return id;
}

void MessagePorts::Close(int id)
{
    const auto it = mPorts.find(id);
    if (it == mPorts.end()) return;
    if (mAnnounced) mBus.ReleaseName(PortBusName(mAppId, it->second.name, it->second.trusted));
    mPorts.erase(it);
}

int MessagePorts::Announce(std::string* failed)
{
    mAnnounced = true;
    for (const auto& [id, port] : mPorts) {
        *failed = PortBusName(mAppId, port.name, port.trusted);
        if (const int code = mBus.RequestName(*failed); code < 0) return code;
    }
    return 0;
}

void MessagePorts::Retire()
{
    for (const auto& [id, port] : mPorts) mBus.ReleaseName(PortBusName(mAppId, port.name, port.trusted));
    mAnnounced = false;
}

int MessagePorts::Send(const std::string& app, const std::string& port, bool trusted,
                       const std::string& fromPort, const bundle& message)
{
    const TraceSpan span("message", "send", {"to", app}, {"port", port});
    FeedWatchdog();
    int code = HasRoomToSend(BundleBytes(message)) ? 0 : -ENOBUFS;
    const MessagePtr call =
        code < 0 ? MessagePtr()
                 : NewPortMessage(mBus.Get(), app, port, trusted, mAppId, fromPort, message, false, &code);
    if (call) code = sd_bus_send(mBus.Get(), call.get(), nullptr);
    if (code >= 0) TraceSent(span, mBus.Get(), call.get());
    if (code < 0)
        PLATFORM_FAULT("message to [%s %s] not sent: %s", app.c_str(), port.c_str(), std::strerror(-code));
    return code < 0 ? code : 0;
}

// Whether so much may be kept until the bus takes it, which it does not while others leave too much unread.
bool MessagePorts::HasRoomToSend(std::size_t bytes)
{
    uint64_t unsent = 0;
    if (sd_bus_get_n_queued_write(mBus.Get(), &unsent) < 0 || unsent == 0) mUnsentBytes = 0;
    if (mUnsentBytes > kMostUnsentBytes) return false;
    mUnsentBytes += kBytesBesideBundle + bytes;
    return true;
}

int MessagePorts::IsTrustedPortUp(const std::string& app, const std::string& port)
{
    // What is no name cannot be up, and would be part of a match rule.
    const std::string portName = PortBusName(app, port, true);
    if (sd_bus_service_name_is_valid(portName.c_str()) <= 0) return 0;
    const auto owner = mBus.OwnerNow(app);
    if (!owner) return -EIO;
    if (owner->empty()) return 0;
    const auto portOwner = mBus.OwnerNow(portName);
    if (!portOwner) return -EIO;
    return *portOwner == *owner ? 1 : 0;
}

const MessagePorts::Port* MessagePorts::Find(const std::string& name, bool trusted) const
{
    for (const auto& [id, port] : mPorts) {
        if (port.name == name && port.trusted == trusted) return &port;
    }
    return nullptr;
}

int MessagePorts::OnSendTrusted(sd_bus_message* message, void* self, sd_bus_error*)
{
    return static_cast<MessagePorts*>(self)->OnMessage(message, true);
}

int MessagePorts::OnSend(sd_bus_message* message, void* self, sd_bus_error*)
{
    return static_cast<MessagePorts*>(self)->OnMessage(message, false);
}

// 1 on every way out: the message is dealt with here, now or later.
int MessagePorts::OnMessage(sd_bus_message* message, bool trusted)
{
    const auto incoming = Parse(message, trusted);
    if (!incoming) return 1;
    if (!MayWait(*incoming)) {
        Refuse(message, incoming->senderApp, kQueueFull, "too many messages wait");
        return 1;
    }
    Queue& queue = mWaiting[incoming->connection];
    queue.messages.push_back(incoming);
    queue.bytes += incoming->bytes;
    mWaitingBytes += incoming->bytes;
    Check(incoming);
    // Nothing that came together with it: its turn is now.
    if (mTurns.size() == 1 && !mBus.HasMoreToRead()) TakeTurn();
    return 1;
}

// The message taken apart; null after a refusal.
std::shared_ptr<MessagePorts::Incoming> MessagePorts::Parse(sd_bus_message* message, bool trusted)
{
    const char *port = nullptr, *app = nullptr, *senderPort = nullptr;
    const char* connection = sd_bus_message_get_sender(message);
    if (!connection || sd_bus_message_read(message, "sss", &port, &app, &senderPort) < 0) {
        Refuse(message, "", kInvalidBundle, "the message cannot be read");
        return nullptr;
    }
    std::string error;
    auto incoming = std::make_shared<Incoming>();
    incoming->bundle = ReadBundle(message, &error);
    if (!incoming->bundle) {
        Refuse(message, app, kInvalidBundle, error);
        return nullptr;
    }
    if (sd_bus_service_name_is_valid(app) <= 0 || *app == ':') {
        Refuse(message, app, kNotTrusted, "the sender's id is no application id");
        return nullptr;
    }
    if (!Find(port, trusted)) {
        Refuse(message, app, kNoSuchPort,
               "there is no such port [" + std::string(Utf8Prefix(port, kMostShown)) + "]");
        return nullptr;
    }
    incoming->message.reset(sd_bus_message_ref(message));
    incoming->connection = connection;
    incoming->port = port;
    incoming->senderApp = app;
    incoming->senderPort = senderPort;
    incoming->trusted = trusted;
    incoming->bytes = kBytesBesideBundle + BundleBytes(*incoming->bundle);
    return incoming;
}

bool MessagePorts::MayWait(const Incoming& incoming) const
{
    const auto it = mWaiting.find(incoming.connection);
    const std::size_t ofOne = incoming.bytes + (it == mWaiting.end() ? 0 : it->second.bytes);
    const std::size_t ofAll = incoming.bytes + mWaitingBytes;
    return ofAll <= kMostWaitingBytes && ofOne <= kMostWaitingBytes - ofAll;
}

void MessagePorts::Check(const std::shared_ptr<Incoming>& incoming)
{
    const std::string connection = incoming->connection;
    const std::weak_ptr<Incoming> weak = incoming;
    const bool asked = mBus.Owners().Ask(incoming->senderApp, [this, weak](const std::string& owner) {
        const auto held = weak.lock();
        if (!held) return;
        held->owner = owner;
        Advance(held->connection);
    });
    if (!asked) incoming->owner = "";  // no room to find out: refused like an unknown sender
    if (incoming->trusted) {
        mBus.UserOf(connection, [this, weak](std::optional<uid_t> user) {
            const auto held = weak.lock();
            if (!held) return;
            held->user = user;
            held->userKnown = true;
            Advance(held->connection);
        });
    }
    Advance(connection);
}

// Gives the connection a turn when the first of its messages has been checked.
void MessagePorts::Advance(const std::string& connection)
{
    const auto it = mWaiting.find(connection);
    if (it == mWaiting.end() || it->second.hasTurn || !it->second.messages.front()->Checked()) return;
    it->second.hasTurn = true;
    mTurns.push_back(connection);
    sd_event_source_set_enabled(mTurnSource.get(), SD_EVENT_ONESHOT);
}

int MessagePorts::OnTurns(sd_event_source*, void* data)
{
    auto* self = static_cast<MessagePorts*>(data);
    self->mBus.ReadAhead(kReadingSlice);
    const auto end = std::chrono::steady_clock::now() + kDeliverySlice;
    while (!self->mTurns.empty() && std::chrono::steady_clock::now() < end) self->TakeTurn();
    if (!self->mTurns.empty()) sd_event_source_set_enabled(self->mTurnSource.get(), SD_EVENT_ONESHOT);
    return 0;
}

// Finishes a message of the connection whose turn it is.
void MessagePorts::TakeTurn()
{
    const std::string connection = std::move(mTurns.front());
    mTurns.pop_front();
    const auto it = mWaiting.find(connection);
    Queue& queue = it->second;
    const std::shared_ptr<Incoming> incoming = std::move(queue.messages.front());
    queue.messages.pop_front();
    queue.hasTurn = false;
    queue.bytes -= incoming->bytes;
    if (mWaitingBytes > kGivenBack) mQuiet.Start();
    mWaitingBytes -= incoming->bytes;
    if (queue.messages.empty())
        mWaiting.erase(it);
    else
        Advance(connection);
    Finish(*incoming);
}

void MessagePorts::Finish(Incoming& incoming)
{
    sd_bus_message* message = incoming.message.get();
    if (*incoming.owner != incoming.connection) {
        return Refuse(message, incoming.senderApp, kNotTrusted,
                      "its connection " + incoming.connection + " does not own that name");
    }
    if (incoming.trusted && !incoming.user) {
        return Refuse(message, incoming.senderApp, kNotTrusted, "the bus no longer knows its user");
    }
    if (incoming.trusted && !MayBe(*incoming.user, incoming.senderApp)) {
        return Refuse(message, incoming.senderApp, kNotTrusted,
                      "user " + std::to_string(*incoming.user) + " may not be that application");
    }
    Deliver(incoming);
}

void MessagePorts::Deliver(Incoming& incoming)
{
    sd_bus_message* message = incoming.message.get();
    for (const auto& [id, port] : mPorts) {
        if (port.name != incoming.port || port.trusted != incoming.trusted) continue;
        const std::shared_ptr<Callback> callback = port.callback;
        const TraceSpan span("message", "receive", {"from", incoming.senderApp}, {"port", incoming.port});
        TraceArrived(span, message);
        (*callback)(id, incoming.senderApp, incoming.senderPort, incoming.trusted, incoming.bundle.get());
        if (sd_bus_message_get_expect_reply(message) > 0) sd_bus_reply_method_return(message, "");
        return;
    }
    Refuse(message, incoming.senderApp, kNoSuchPort, "the port was closed while the message waited");
}

void MessagePorts::Refuse(sd_bus_message* message, const std::string& sender, const char* error,
                          const std::string& reason)
{
    // Counted by connection: what a sender calls itself is its own invention, and as long as it likes.
    const char* connection = sd_bus_message_get_sender(message);
    const std::string claimed = "it says it is [" + std::string(Utf8Prefix(sender, kMostShown)) + "]: ";
    if (mRefusals.Refused(connection ? connection : "", claimed + reason)) mRefusalSecond.Start();
    if (sd_bus_message_get_expect_reply(message) > 0) {
        sd_bus_reply_method_errorf(message, error, "%s", reason.c_str());
    }
}

}  // namespace Platform
