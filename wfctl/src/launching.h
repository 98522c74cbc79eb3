// Launch requests to a watch's applications.

#pragma once

#include <string>

#include "connection.h"
#include "launch-data.h"

namespace Wfctl {

struct LaunchAnswer {
    int result = 0;  // -1 also when the application has done with the request without answering it
    Platform::LaunchData extra;
};

// Starts the application if need be, and waits until it has done with the request. `as` is the caller's id,
// empty for none. Stops with the status that fits when the request cannot be sent or nobody takes it.
LaunchAnswer SendLaunch(Connection& connection, const std::string& app, const std::string& as,
                        const Platform::LaunchData& extra, Seconds most);

}  // namespace Wfctl
