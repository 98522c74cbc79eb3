// The watch that is measured: a private bus, an empty read/write area, and the bench in the place of the
// service's peers. The bench's own side is raw, so that what is measured is the service's.

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "private-bus.h"
#include "program.h"
#include "raw-bus.h"

namespace Bench {

inline constexpr char kService[] = "com.corvane.watchface-service";
inline constexpr char kServicePort[] = "watchface-service::localport";
inline constexpr char kManager[] = "com.corvane.w-manager-service";
inline constexpr char kManagerPort[] = "w-manager-service::localport";
inline constexpr char kCapture[] = "com.corvane.watchface-capture";
inline constexpr char kCapturePort[] = "watchface-capture::localport";
inline constexpr char kBackupAgent[] = "com.corvane.watch-utils.service";
inline constexpr char kBackupAgentPort[] = "watch-utils-service::localport";
inline constexpr char kBare[] = "com.example.bare";
inline constexpr char kEcho[] = "com.example.echo";
inline constexpr char kFace[] = "com.corvane.watchface-mirel-c1";
inline constexpr char kLanguage[] = "en_GB";
inline constexpr char kTimezone[] = "Europe/London";

using TestSupport::Clock;
using TestSupport::PortMessage;
using TestSupport::Program;
using TestSupport::RawBus;
using TestSupport::ReadFile;
using TestSupport::TimeOf;
using TestSupport::Values;

class Watch {
public:
    // `prefix` is a build tree, `folder` lies on the disk that is measured. What the programs need of the
    // environment is set.
    Watch(std::string prefix, const std::string& folder);
    ~Watch();

    const std::string& Address() const { return mBus.Address(); }
    const std::string& Root() const { return mRoot.Path(); }
    std::string FacesFolder() const;  // of the read/write area, with "/" at the end
    std::string ServiceProgram() const { return mPrefix + "/libexec/watch/watchface-service"; }
    std::string CaptureProgram() const { return mPrefix + "/libexec/watch/watchface-capture"; }
    std::string BareProgram() const { return mPrefix + "/bench/bare-bus"; }
    std::string ShippedFile(const char* suffix) const;  // of kFace: "_result.xml", ".png"

    // From now until somebody owns the name.
    template <typename Action>
    double TimeUntilOwned(const std::string& name, const Action& start)
    {
        return TimeOf([&] {
            start();
            AwaitOwner(name, true);
        });
    }
    void AwaitOwner(const std::string& name, bool isOwned);

    // The service's process, started at the first call.
    const Program& Service();

    // A message from the phone-side manager, laid out. To the service, or to the echo, which answers with as
    // much as a short answer of the service is.
    static std::string ToService(const Values& values);
    static std::string ToEcho(const Values& values);

    // Sends and waits for the message to the manager that answers, in microseconds.
    double RoundTrip(const std::string& message);
    // Until the capture application was asked for so many pictures, in all.
    void AwaitCaptures(int captures);
    int Captures() const { return mCaptures; }

    RawBus& Peers() { return mPeers; }
    // Reads one message and counts it; the port that it is for.
    std::string Next();

private:
    const std::string mPrefix;
    TestSupport::PrivateBus mBus;
    TestSupport::TemporaryFolder mRoot;
    RawBus mPeers;
    int mCaptures = 0;
    pid_t mEcho = -1;
    std::unique_ptr<Program> mService;
};

}  // namespace Bench
