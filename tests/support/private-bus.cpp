#include "private-bus.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "bus-names.h"

namespace TestSupport {

TemporaryFolder::TemporaryFolder(const std::string& parent) : mPath(parent + "/watch-test-XXXXXX")
{
    if (!mkdtemp(mPath.data())) throw std::runtime_error("no temporary folder");
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

PrivateBus::PrivateBus() : mAddress("unix:path=" + mFolder.Path() + "/bus")
{
    std::filesystem::permissions(mFolder.Path(),
                                 std::filesystem::perms::all);  // peers of other users come in
    std::filesystem::create_directory(mFolder.Path() + "/services");
    std::ofstream(mFolder.Path() + "/bus.conf")
        << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
           "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>session</type><listen>"
        << mAddress << "</listen><servicedir>" << mFolder.Path()
        << "/services</servicedir><policy context=\"default\"><allow user=\"*\"/>"
           "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow "
           "own=\"*\"/></policy><limit name=\"max_outgoing_bytes\">"
        << Platform::kMostUnreadBytes << "</limit></busconfig>\n";
    int ready[2];
    if (pipe2(ready, 0) != 0) throw std::runtime_error("no pipe");
    mDaemon = fork();
    if (mDaemon == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that dies takes its bus along
        close(ready[0]);
        const std::string log = mFolder.Path() + "/bus.log";
        dup2(open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
        const std::string config = "--config-file=" + mFolder.Path() + "/bus.conf";
        const std::string print = "--print-address=" + std::to_string(ready[1]);
        execlp("dbus-daemon", "dbus-daemon", config.c_str(), "--nofork", print.c_str(), nullptr);
        _exit(127);
    }
    close(ready[1]);
    char byte = 0;
    const bool up = read(ready[0], &byte, 1) == 1;  // the address comes once the socket listens
    close(ready[0]);
    if (!up) throw std::runtime_error("dbus-daemon did not start");
}

PrivateBus::~PrivateBus()
{
    Kill();
}

void PrivateBus::Kill()
{
    if (mDaemon <= 0) return;
    kill(mDaemon, SIGKILL);
    waitpid(mDaemon, nullptr, 0);
    mDaemon = -1;
}

void PrivateBus::Pause()
{
    if (mDaemon > 0) kill(mDaemon, SIGSTOP);
}

void PrivateBus::Resume()
{
    if (mDaemon > 0) kill(mDaemon, SIGCONT);
}

void PrivateBus::AddActivation(const std::string& name, const std::string& command)
{
    std::ofstream(mFolder.Path() + "/services/" + name + ".service")
        << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, mAddress.c_str());
    sd_bus_set_bus_client(bus, true);
    sd_bus_start(bus);
    constexpr char kDriver[] = "org.freedesktop.DBus";
    const int code = sd_bus_call_method(bus, kDriver, "/org/freedesktop/DBus", kDriver, "ReloadConfig",
                                        nullptr, nullptr, "");
    sd_bus_flush_close_unref(bus);
    if (code < 0) throw std::runtime_error("the bus does not read its folder again");
}

}  // namespace TestSupport
