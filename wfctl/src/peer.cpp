#include "peer.h"

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "application-table.h"
#include "exit-status.h"
#include "hint.h"

namespace Wfctl {

namespace {

constexpr Seconds kRelayPatience{3};

constexpr std::string_view kPlatformError = "com.corvane.platform.Error.";
constexpr std::string_view kBusError = "org.freedesktop.DBus.Error.";

// What may have been typed wrongly.
std::string NoHint(const PeerAddress&)
{
    return {};
}

std::string ApplicationHint(const PeerAddress& to)
{
    return OrMeant(to.app, ApplicationIds());
}

// Of both kinds; none of an application that is not the watch's.
Names PortsOf(const std::string& id)
{
    const Platform::Application* app = Platform::FindApplication(id);
    if (!app) return {};
    Names ports(app->trustedPorts.begin(), app->trustedPorts.end());
    ports.insert(ports.end(), app->openPorts.begin(), app->openPorts.end());
    return ports;
}

std::string PortHint(const PeerAddress& to)
{
    return OrMeant(to.port, PortsOf(to.app));
}

struct ErrorMeaning {
    std::string_view name;  // behind kPlatformError or kBusError
    Exit status;
    const char* text;
    std::string (*hint)(const PeerAddress&);
};

constexpr ErrorMeaning kMeanings[] = {
    {"NotTrusted",     Exit::kNotPermitted, "does not trust the sender",                        NoHint         },
    {"NoSuchPort",     Exit::kNotFound,     "takes no message there",                           PortHint       },
    {"InvalidBundle",  Exit::kError,        "refused the message",                              NoHint         },
    {"QueueFull",      Exit::kError,        "has too many messages waiting; try again",         NoHint         },
    {"ServiceUnknown", Exit::kNotFound,     "is not running and cannot be started on this bus", ApplicationHint},
    {"NameHasNoOwner", Exit::kNotFound,     "is not running",                                   ApplicationHint},
    {"AccessDenied",   Exit::kNotPermitted, "may not be spoken to by this user",                NoHint         },
    {"NoReply",        Exit::kNoAnswer,     "did not answer",                                   NoHint         },
    {"Timeout",        Exit::kNoAnswer,     "did not answer in time",                           NoHint         },
    {"TimedOut",       Exit::kNoAnswer,     "did not start in time",                            NoHint         },
    {"UnknownMethod",  Exit::kNotFound,     "takes no messages",                                NoHint         },
    {"UnknownObject",  Exit::kNotFound,     "takes no messages",                                NoHint         },
};

bool IsUnknown(const Answer& answer)
{
    return answer.errorName.starts_with(kBusError) &&
           (answer.errorName.ends_with(".UnknownMethod") || answer.errorName.ends_with(".UnknownObject") ||
            answer.errorName.ends_with(".UnknownInterface"));
}

}  // namespace

void WarnOfPeerSlips(const PeerAddress& self)
{
    WarnOfSlip("there is no application", self.app, ApplicationIds());
    WarnOfSlip("[" + self.app + "] has no port", self.port, PortsOf(self.app));
}

void StopFor(const Answer& answer, const PeerAddress& to, const std::string& self)
{
    const std::string whom = "[" + to.app + (to.port.empty() ? "" : ":" + to.port) + "] ";
    if (!answer.message) throw Stop(Exit::kNoAnswer, whom + "did not answer in time");
    std::string_view name = answer.errorName;
    for (const std::string_view prefix : {kPlatformError, kBusError}) {
        if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
    }
    for (const ErrorMeaning& meaning : kMeanings) {
        if (meaning.name != name) continue;
        throw Stop(meaning.status, whom + meaning.text + (self.empty() ? "" : " (as " + self + ")") + ": " +
                                       answer.errorText + meaning.hint(to));
    }
    throw Stop(Exit::kError, whom + "failed: " + answer.errorText + " (" + answer.errorName + ")");
}

Peer::Peer(Connection& connection, PeerAddress self, bool trusted, Callback callback)
    : mConnection(connection), mSelf(std::move(self)), mCallback(std::move(callback))
{
    mPorts = std::make_unique<Platform::MessagePorts>(connection.Bus(), mSelf.app);
    if (TakeNames(trusted)) return;
    mPorts.reset();
    mRelayClient = std::make_unique<RelayClient>(connection, mSelf.app, mCallback);
}

Peer::~Peer() = default;

// The port's name first and the application's last, so that whoever waits for the application finds its port.
bool Peer::TakeNames(bool trusted)
{
    std::string name;
    int code = 0;
    if (!mSelf.port.empty()) {
        const auto receive = [this](int, const std::string& app, const std::string& port, bool,
                                    bundle* message) {
            if (mRelayServer) mRelayServer->Received(app, port, *message);
            if (mCallback) mCallback(app, port, *message);
        };
        mPort = mPorts->Open(mSelf.port, trusted, receive);
    }
    code = mPorts->Announce(&name);
    if (code >= 0) code = mConnection.Bus().RequestName(name = mSelf.app);
    if (code >= 0) return true;
    if (mPort > 0) mPorts->Close(mPort);
    if (code == -EEXIST) return false;
    if (code == -EACCES || code == -EPERM) {
        throw Stop(Exit::kNotPermitted, "this user may not be [" + mSelf.app + "] on this bus");
    }
    throw Stop(Exit::kError, "the name [" + name + "] could not be taken: " + std::strerror(-code));
}

void Peer::OfferRelay()
{
    mRelayServer = std::make_unique<RelayServer>(mConnection, mSelf);
}

void Peer::FinishRelay()
{
    if (mRelayServer) mConnection.RunUntil([this] { return !mRelayServer->IsBusy(); }, kRelayPatience);
}

Answer Peer::SendOwn(const PeerAddress& to, bool trusted, const bundle& message, Seconds most)
{
    int code = 0;
    const auto call = Platform::NewPortMessage(mConnection.Get(), to.app, to.port, trusted, mSelf.app,
                                               mSelf.port, message, true, &code);
    if (code == -EMSGSIZE)
        throw Stop(Exit::kError,
                   "the message is larger than 8 MiB or has more than 65,536 strings, which no port takes");
    if (!call) throw Stop(Exit::kError, std::string("the message cannot be sent: ") + std::strerror(-code));
    return mConnection.Call(call.get(), most);
}

void Peer::Send(const PeerAddress& to, bool trusted, const bundle& message, Seconds most)
{
    if (to.port.empty())
        throw Stop(Exit::kUsage, "which port of [" + to.app + "]? say APP:PORT" + ApplicationHint(to));
    const Answer answer =
        HasNames() ? SendOwn(to, trusted, message, most) : mRelayClient->Send(to, trusted, message, most);
    if (answer.Good()) return;
    if (!HasNames() && (!answer.message || answer.errorName == SD_BUS_ERROR_NO_REPLY)) {
        throw Stop(Exit::kNoAnswer, "[" + mSelf.app +
                                        "] is running already, and nothing came back through it from [" +
                                        to.app + "] in time; end it or use another --as");
    }
    if (!HasNames() && IsUnknown(answer)) {
        const auto pid = mConnection.ProcessBehind(mSelf.app);
        throw Stop(Exit::kError, "[" + mSelf.app + "] is another program" +
                                     (pid ? " (pid " + std::to_string(*pid) + ")" : std::string()) +
                                     ", so wfctl cannot speak as it; end it or use another --as");
    }
    StopFor(answer, to, mSelf.app);
}

}  // namespace Wfctl
