#include <algorithm>

#include "application-table.h"
#include "bundle-data.h"
#include "common-util-ipc-control.h"
#include "platform-state.h"

using namespace MemoryPlatform;

namespace {

using Port = Registration<PortHandler>;

std::shared_ptr<Port> FindPort(const State& state, const std::string& name)
{
    const auto it = std::find_if(state.ports.begin(), state.ports.end(),
                                 [&](const auto& port) { return port->name == name; });
    return it == state.ports.end() ? nullptr : *it;
}

void Receive(const std::shared_ptr<Port>& port, const std::string& senderId, const std::string& senderPort,
             bundle* message)
{
    if (port->alive) port->handler(port->id, senderId, senderPort, port->trusted, message);
}

// On the next turn, to an open port of that kind; false when there is none.
bool PostToPort(State& state, const std::string& name, bool trusted, const std::string& senderId,
                const std::string& senderPort, const Message& message)
{
    const auto port = FindPort(state, name);
    if (!port || port->trusted != trusted) return false;
    state.loop.Post([=] {
        const std::unique_ptr<bundle, ::Platform::BundleDeleter> content(NewBundle(message));
        Receive(port, senderId, senderPort, content.get());
    });
    return true;
}

// Whether the message finds its port; one to the service itself comes back to it.
bool Arrives(State& state, const SentMessage& sent)
{
    if (sent.appId == ::Platform::kServiceId) {
        return PostToPort(state, sent.port, sent.trusted, sent.appId, sent.senderPort, sent.message);
    }
    return sent.trusted && state.portsUp.contains({sent.appId, sent.port});
}

int Send(SentMessage message, const bundle* content)
{
    State* state = Current();
    message.message = ContentOf(content);
    Note((message.trusted ? "send " : "send-open ") + message.appId + " " + message.port + " " +
         ToText(message.message));
    if (const auto code = Use(message.trusted ? "SendTrustedMessage" : "SendMessage")) return *code;
    if (!content || !state) return BUNDLE_ERROR_INVALID_PARAMETER;
    message.arrived = Arrives(*state, message);
    state->sent.push_back(std::move(message));
    return 0;
}

}  // namespace

class CommonUtilIPCControl::Impl {
public:
    std::shared_ptr<Port> port;
};

CommonUtilIPCControl::CommonUtilIPCControl(const std::string& name, bool trusted, Callback callback)
    : mImpl(std::make_unique<Impl>())
{
    State* state = Current();
    Note("port open " + name + (trusted ? " trusted" : " open"));
    mImpl->port = Register(state->ports, name, PortHandler(std::move(callback)));
    mImpl->port->trusted = trusted;
    mImpl->port->id = ++state->lastPortId;
}

CommonUtilIPCControl::~CommonUtilIPCControl()
{
    Note("port close " + mImpl->port->name);
    if (State* state = Current()) Unregister(state->ports, mImpl->port);
}

int CommonUtilIPCControl::SendTrustedMessage(const std::string& appId, const std::string& port,
                                             bundle* message, const CommonUtilIPCControl* from)
{
    return Send({appId, port, from ? from->mImpl->port->name : "", true, false, {}}, message);
}

int CommonUtilIPCControl::SendMessage(const std::string& appId, const std::string& port, bundle* message,
                                      const CommonUtilIPCControl* from)
{
    return Send({appId, port, from ? from->mImpl->port->name : "", false, false, {}}, message);
}

int CommonUtilIPCControl::CheckTrustedRemotePort(const std::string& appId, const std::string& port)
{
    const State* state = Current();
    Note("port check " + appId + " " + port);
    if (const auto code = Use("CheckTrustedRemotePort")) return *code;
    if (appId == ::Platform::kServiceId) {
        const auto own = FindPort(*state, port);
        return own && own->trusted;
    }
    return state->portsUp.contains({appId, port});
}

std::string CommonUtilIPCControl::BundleGetString(bundle* message, const std::string& key)
{
    char* value = nullptr;
    bundle_get_str(message, key.c_str(), &value);
    return value ? value : "";
}

namespace MemoryPlatform {

void Platform::SetPortUp(const std::string& appId, const std::string& port, bool up)
{
    if (up) {
        mState->portsUp.emplace(appId, port);
    } else {
        mState->portsUp.erase({appId, port});
    }
}

std::vector<SentMessage> Platform::Sent() const
{
    return mState->sent;
}

std::vector<SentMessage> Platform::SentTo(const std::string& appId) const
{
    std::vector<SentMessage> sent = mState->sent;
    std::erase_if(sent, [&](const SentMessage& message) { return message.appId != appId; });
    return sent;
}

Strings Platform::OpenPorts() const
{
    Strings names;
    for (const auto& port : mState->ports) names.push_back(port->name);
    return names;
}

bool Platform::Deliver(const std::string& port, const std::string& senderId, const Message& message,
                       const std::string& senderPort)
{
    const auto found = FindPort(*mState, port);
    if (!found) return false;
    const std::unique_ptr<bundle, ::Platform::BundleDeleter> content(NewBundle(message));
    Receive(found, senderId, senderPort, content.get());
    return true;
}

bool Platform::DeliverNothing(const std::string& port, const std::string& senderId)
{
    const auto found = FindPort(*mState, port);
    if (found) Receive(found, senderId, "", nullptr);
    return found != nullptr;
}

void Platform::SendAs(const std::string& senderId, const std::string& port, bool trusted,
                      const Message& message, const std::string& senderPort)
{
    PostToPort(*mState, port, trusted, senderId, senderPort, message);
}

}  // namespace MemoryPlatform
