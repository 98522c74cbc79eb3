// Message ports. An application listens on ports of its own and sends bundles to ports of others, each
// addressed by application id and port name. A trusted port takes messages only from applications that the
// platform vouches for; a message to a peer that is not there is lost.

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "bundle.h"

class CommonUtilIPCControl {
public:
    // local port id, sender's application id, sender's port (may be empty), whether the port is trusted, and
    // the message, which belongs to the platform and ends with the call.
    using Callback = std::function<void(int, const std::string&, const std::string&, bool, bundle*)>;

    // Opens the local port `name`; messages reach `callback` on the main loop.
    CommonUtilIPCControl(const std::string& name, bool trusted, Callback callback);
    ~CommonUtilIPCControl();
    CommonUtilIPCControl(const CommonUtilIPCControl&) = delete;
    CommonUtilIPCControl& operator=(const CommonUtilIPCControl&) = delete;

    // 0 when the platform took the message. The bundle stays the caller's. A message sent through a port
    // object (`from`) carries that port as the sender's, one without an empty one.
    static int SendTrustedMessage(const std::string& appId, const std::string& port, bundle* message,
                                  const CommonUtilIPCControl* from = nullptr);
    static int SendMessage(const std::string& appId, const std::string& port, bundle* message,
                           const CommonUtilIPCControl* from = nullptr);

    // 1 when that trusted port is up, 0 when it is not, negative when that cannot be told.
    static int CheckTrustedRemotePort(const std::string& appId, const std::string& port);

    // The string under the key, or an empty one.
    static std::string BundleGetString(bundle* message, const std::string& key);

private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};
