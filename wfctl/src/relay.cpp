#include "relay.h"

#include <unistd.h>

#include <cstring>
#include <utility>

#include "exit-status.h"
#include "message-port-sdbus.h"

namespace Wfctl {

namespace {

constexpr uint64_t kForwardTimeoutUsec = 5'000'000;
constexpr std::size_t kMostFollowers = 16;

void AnswerLike(sd_bus_message* call, sd_bus_message* answer)
{
    const sd_bus_error* error = sd_bus_message_get_error(answer);
    if (error)
        sd_bus_reply_method_error(call, error);
    else
        sd_bus_reply_method_return(call, "");
}

}  // namespace

RelayServer::RelayServer(Connection& connection, PeerAddress self)
    : mConnection(connection), mSelf(std::move(self))
{
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Send", "ssbba{sv}", "", OnSend, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    sd_bus_slot* slot = nullptr;
    sd_bus_add_object_vtable(connection.Get(), &slot, kRelayPath, kRelayInterface, kTable, this);
    mObject.reset(slot);
}

int RelayServer::OnSend(sd_bus_message* call, void* data, sd_bus_error*)
{
    auto* self = static_cast<RelayServer*>(data);
    const char* sender = sd_bus_message_get_sender(call);
    const auto kept = std::shared_ptr<sd_bus_message>(sd_bus_message_ref(call), sd_bus_message_unref);
    self->mConnection.Bus().UserOf(sender ? sender : "", [self, kept](std::optional<uid_t> user) {
        self->SendFor(kept.get(), user && *user == geteuid());
    });
    return 1;
}

void RelayServer::SendFor(sd_bus_message* call, bool isSameUser)
{
    if (!isSameUser) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED,
                                   "only the same user may speak through a listener");
        return;
    }
    const char *app = nullptr, *port = nullptr;
    int trusted = 0, follows = 0;
    std::string error = "the call cannot be read";
    Platform::BundlePtr message;
    if (sd_bus_message_read(call, "ssbb", &app, &port, &trusted, &follows) >= 0) {
        message = Platform::ReadBundle(call, &error);
    }
    if (!message) {
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "%s", error.c_str());
        return;
    }
    if (follows && mFollowers.size() < kMostFollowers) mFollowers.insert(sd_bus_message_get_sender(call));
    int code = 0;
    const auto onward = Platform::NewPortMessage(mConnection.Get(), app, port, trusted, mSelf.app, mSelf.port,
                                                 *message, true, &code);
    const auto kept = std::shared_ptr<sd_bus_message>(sd_bus_message_ref(call), sd_bus_message_unref);
    const auto then = [this, kept](sd_bus_message* answer) {
        --mOutstanding;
        AnswerLike(kept.get(), answer);
    };
    if (onward) code = Platform::CallDetached(mConnection.Get(), onward.get(), 0, then);
    if (code < 0)
        sd_bus_reply_method_errno(call, code, nullptr);
    else
        ++mOutstanding;
}

void RelayServer::Received(const std::string& app, const std::string& port, const bundle& message)
{
    for (const std::string& follower : mFollowers) {
        sd_bus_message* raw = nullptr;
        int code = sd_bus_message_new_method_call(mConnection.Get(), &raw, follower.c_str(), kRelayPath,
                                                  kRelayInterface, "Received");
        const Platform::MessagePtr call(raw);
        if (code >= 0) code = sd_bus_message_append(raw, "ss", app.c_str(), port.c_str());
        if (code >= 0) code = Platform::AppendBundle(raw, message);
        // A follower that is gone does not answer.
        const auto then = [this, follower](sd_bus_message* answer) {
            --mOutstanding;
            if (sd_bus_message_get_error(answer)) mFollowers.erase(follower);
        };
        if (code >= 0) code = Platform::CallDetached(mConnection.Get(), raw, kForwardTimeoutUsec, then);
        if (code >= 0) ++mOutstanding;
    }
}

RelayClient::RelayClient(Connection& connection, std::string app, Callback callback)
    : mConnection(connection), mApp(std::move(app)), mCallback(std::move(callback))
{
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Received", "ssa{sv}", "", OnReceived, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    sd_bus_slot* slot = nullptr;
    if (mCallback)
        sd_bus_add_object_vtable(connection.Get(), &slot, kRelayPath, kRelayInterface, kTable, this);
    mObject.reset(slot);
}

int RelayClient::OnReceived(sd_bus_message* call, void* data, sd_bus_error*)
{
    auto* self = static_cast<RelayClient*>(data);
    const char *sender = sd_bus_message_get_sender(call), *app = nullptr, *port = nullptr;
    std::string error;
    const auto owner = self->mConnection.Bus().OwnerNow(self->mApp);
    if (!sender || !owner || *owner != sender) {
        return sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED, "not the listener");
    }
    Platform::BundlePtr message;
    if (sd_bus_message_read(call, "ss", &app, &port) >= 0) message = Platform::ReadBundle(call, &error);
    if (message) self->mCallback(app, port, *message);
    return sd_bus_reply_method_return(call, "");
}

Answer RelayClient::Send(const PeerAddress& to, bool trusted, const bundle& message, Seconds most)
{
    sd_bus_message* raw = nullptr;
    int code = sd_bus_message_new_method_call(mConnection.Get(), &raw, mApp.c_str(), kRelayPath,
                                              kRelayInterface, "Send");
    const Platform::MessagePtr call(raw);
    if (code >= 0) {
        code = sd_bus_message_append(raw, "ssbb", to.app.c_str(), to.port.c_str(), int{trusted},
                                     int{mCallback != nullptr});
    }
    if (code >= 0) code = Platform::AppendBundle(raw, message);
    if (code < 0)
        throw Stop(Exit::kError, std::string("the message cannot be sent: ") + std::strerror(-code));
    return mConnection.Call(raw, most);
}

}  // namespace Wfctl
