// The launch request behind the C interface.
//
// Terms: a *request handle* is an app_control_h that an application received, or a clone of one; all of them
// share one PendingLaunch. The platform that received the request derives from PendingLaunch and answers the
// caller when Reply() is called or, as failed and without data, when the last handle is gone.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "app-control.h"

namespace Platform {

using LaunchValue = std::variant<std::string, std::vector<std::string>>;
using LaunchData = std::map<std::string, LaunchValue, std::less<>>;

// One received request that somebody waits for. Its destructor answers what nobody answered.
class PendingLaunch {
public:
    virtual ~PendingLaunch() = default;

    // Answers the caller; 0 on success. A second call is refused.
    virtual int Reply(app_control_result_e result, const LaunchData& extra) = 0;
};

}  // namespace Platform

struct app_control_s {
    std::string appId;  // the target's; of a received request: the caller's
    Platform::LaunchData extra;
    std::shared_ptr<Platform::PendingLaunch> pending;  // only in a received request and its clones
};
