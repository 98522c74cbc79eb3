#include "launching.h"

#include <cstring>

#include "bundle-wire-sdbus.h"
#include "exit-status.h"
#include "launch-sdbus.h"
#include "peer.h"

namespace Wfctl {

LaunchAnswer SendLaunch(Connection& connection, const std::string& app, const std::string& as,
                        const Platform::LaunchData& extra, Seconds most)
{
    int code = 0;
    const auto call = Platform::NewLaunchCall(connection.Get(), app, as, extra, &code);
    if (!call) {
        throw Stop(Exit::kError, std::string("the request cannot be sent: ") + std::strerror(-code) +
                                     "; its data must be UTF-8");
    }
    const Answer answer = connection.Call(call.get(), most);
    if (!answer.Good()) StopFor(answer, {app, ""}, as);
    LaunchAnswer given;
    std::string error;
    if (sd_bus_message_read(answer.message.get(), "i", &given.result) < 0 ||
        !Platform::ReadLaunchData(answer.message.get(), &given.extra, &error)) {
        throw Stop(Exit::kError, "[" + app + "] gave an answer that cannot be read: " + error);
    }
    return given;
}

}  // namespace Wfctl
