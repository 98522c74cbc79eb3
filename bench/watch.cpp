#include "watch.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "message-port-sdbus.h"

namespace Bench {

namespace {

constexpr std::pair<const char*, const char*> kPorts[] = {
    {kManager,     kManagerPort    },
    {kCapture,     kCapturePort    },
    {kBackupAgent, kBackupAgentPort},
};

pid_t StartEcho(const std::string& address)
{
    const pid_t pid = fork();
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    TestSupport::RunEcho(address, kEcho,
                         PortMessage(kManager, kManagerPort, kEcho, "echo",
                                     {
                                         {"status", "success"}
    }));
}

std::string FromManager(const char* app, const char* port, const Values& values)
{
    return PortMessage(app, port, kManager, kManagerPort, values);
}

}  // namespace

Watch::Watch(std::string prefix, const std::string& folder)
    : mPrefix(std::move(prefix)), mRoot(folder), mPeers(Address())
{
    setenv("DBUS_SESSION_BUS_ADDRESS", Address().c_str(), 1);
    setenv("WATCH_ROOT", Root().c_str(), 1);
    setenv("WATCH_LOG", "silent", 1);
    setenv("LC_ALL", kLanguage, 1);
    setenv("TZ", kTimezone, 1);
    for (const char* name : {kService, kBare, kEcho}) {
        mPeers.AddMatch("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                        std::string(name) + "'");
    }
    for (const auto& [app, port] : kPorts) {
        mPeers.RequestName(app);
        mPeers.RequestName(Platform::PortBusName(app, port, true));
    }
    mEcho = StartEcho(Address());
    AwaitOwner(kEcho, true);
}

Watch::~Watch()
{
    kill(mEcho, SIGKILL);
    waitpid(mEcho, nullptr, 0);
}

std::string Watch::FacesFolder() const
{
    return Root() + "/apps/com.corvane.watchface/shared/data/watchlist/";
}

std::string Watch::ShippedFile(const char* suffix) const
{
    return mPrefix + "/share/watch/com.corvane.watchface/shared/res/watchlist/" + kFace + "/" + kFace +
           suffix;
}

void Watch::AwaitOwner(const std::string& name, bool isOwned)
{
    for (;;) {
        const RawBus::Message message = mPeers.Next();
        if (message.Text(0) == name && !message.Text(2).empty() == isOwned) return;
    }
}

const Program& Watch::Service()
{
    if (!mService) {
        mService = std::make_unique<Program>(std::vector{ServiceProgram()});
        AwaitOwner(kService, true);
    }
    return *mService;
}

std::string Watch::ToService(const Values& values)
{
    return FromManager(kService, kServicePort, values);
}

std::string Watch::ToEcho(const Values& values)
{
    return FromManager(kEcho, "echo", values);
}

double Watch::RoundTrip(const std::string& message)
{
    return TimeOf([&] {
        mPeers.Send(message);
        while (Next() != kManagerPort) continue;
    });
}

void Watch::AwaitCaptures(int captures)
{
    while (mCaptures < captures) Next();
}

std::string Watch::Next()
{
    const std::string port(mPeers.Next().Text(0));
    if (port == kCapturePort) ++mCaptures;
    return port;
}

}  // namespace Bench
