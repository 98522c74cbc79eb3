#include "flooder.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "load-messages.h"

namespace Campaign {

namespace {

using TestSupport::Header;

void Run(const RunningService& service, const Identity& peer, const Flood& flood, int calls, int ready,
         int stop)
{
    const auto bus = service.Connect(peer);
    const Sender sender{peer.app, peer.port, kPhone, service.ResultXml()};
    const std::string message = MessageOf(flood.kind, sender, "flood", flood.bytes);
    pollfd stopped{stop, POLLIN, 0};
    for (int sent = 0; poll(&stopped, 1, 0) == 0; ++sent) {
        if (sent == calls && write(ready, "", 1) != 1) return;
        if (!flood.isAnswered)
            bus->Send(message);
        else if (bus->Call(message), sent >= calls)
            while (bus->Next().type == Header::kCall) continue;
    }
    bus->ReplyTo(bus->Call(message));  // the last of what it sent
}

}  // namespace

Flooder::Flooder(const RunningService& service, const Identity& peer, const Flood& flood, int calls)
{
    int ready[2], stop[2];
    if (pipe2(ready, O_CLOEXEC) != 0 || pipe2(stop, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    mStop = Platform::UniqueFd(stop[1]);
    Platform::UniqueFd isReady(ready[0]), sayReady(ready[1]), isStopped(stop[0]);
    mPid = fork();
    if (mPid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        try {
            Run(service, peer, flood, calls, sayReady.Get(), isStopped.Get());
        } catch (const std::exception&) {
            _exit(EXIT_FAILURE);
        }
        _exit(EXIT_SUCCESS);
    }
    sayReady.Reset();
    char byte = 0;
    if (read(isReady.Get(), &byte, 1) != 1) throw std::runtime_error("a peer cannot send");
}

Flooder::~Flooder()
{
    if (write(mStop.Get(), "", 1) != 1) kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
}

}  // namespace Campaign
