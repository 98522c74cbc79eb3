// A bus of its own for one test: a real dbus-daemon on a socket in a folder of its own, ended with the
// object.

#pragma once

#include <sys/types.h>

#include <string>

namespace TestSupport {

// A folder that goes with the object.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::string& parent = "/tmp");
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::string& Path() const { return mPath; }

private:
    std::string mPath;
};

class PrivateBus {
public:
    PrivateBus();  // throws std::runtime_error when there is no dbus-daemon
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& Address() const { return mAddress; }

    // Lets the bus start `command` for `name`.
    void AddActivation(const std::string& name, const std::string& command);

    // Lets the daemon answer nobody, and go on.
    void Pause();
    void Resume();

    // Kills the daemon at once.
    void Kill();

private:
    TemporaryFolder mFolder;
    std::string mAddress;
    pid_t mDaemon = -1;
};

}  // namespace TestSupport
