// A service with a bus and a writable root of its own, for peers that keep to no rule. Nothing draws
// pictures: a campaign that needs the capture application plays it.

#pragma once

#include <memory>
#include <string>

#include "private-bus.h"
#include "program.h"
#include "raw-bus.h"

namespace Campaign {

using TestSupport::PortMessage;
using TestSupport::RawBus;
using TestSupport::Values;

inline constexpr char kService[] = "com.corvane.watchface-service";
inline constexpr char kServicePort[] = "watchface-service::localport";
inline constexpr char kEvaluationPort[] = "evaluation-helper-port";

struct Identity {
    const char* app;
    const char* port;
};
inline constexpr Identity kManager{"com.corvane.w-manager-service", "w-manager-service::localport"};
inline constexpr Identity kEditor{"com.corvane.watchface-editor", "watch-face-editor::localport"};
inline constexpr Identity kHome{"com.corvane.w-home", "w-home::localport"};
inline constexpr Identity kSettings{"com.corvane.watch-utils.setting-list", "clocksetting::localport"};
inline constexpr Identity kCapture{"com.corvane.watchface-capture", "watchface-capture::localport"};
inline constexpr Identity kBackupAgent{"com.corvane.watch-utils.service", "watch-utils-service::localport"};
inline constexpr Identity kViewer{"com.corvane.watchface", ""};
inline constexpr Identity kWorldClockMap{"com.corvane.worldclock-map", ""};

// Of those that ship.
inline constexpr char kClassicFace[] = "com.corvane.watchface-mirel-c1";
inline constexpr char kDigitalFace[] = "com.corvane.watchface-mirel-e1";
inline constexpr char kGalleryFace[] = "com.corvane.watchface-mirel-u1";

class RunningService {
public:
    // `prefix` is a build tree or an installed prefix.
    explicit RunningService(const std::string& prefix);

    const std::string& Address() const { return mBus.Address(); }
    const std::string& Root() const { return mRoot.Path(); }
    std::string DataArea() const { return Root() + "/apps/com.corvane.watchface/shared/data/"; }
    std::string TrustedArea() const { return Root() + "/apps/com.corvane.watchface/shared/trusted/"; }
    const std::string& ShippedFaces() const { return mShippedFaces; }
    // The selections of a face that ships.
    std::string ResultXml() const;
    const TestSupport::Program& Process() const { return *mService; }
    std::string Log() const;

    // A connection that is the application, and whose port is up when it has one.
    std::unique_ptr<RawBus> Connect(const Identity& identity, bool trusted = true) const;

    // The service's answer to a date, to the phone-side manager, in microseconds.
    static double AnswerTime(RawBus& manager);

private:
    TestSupport::PrivateBus mBus;
    TestSupport::TemporaryFolder mRoot;
    std::string mShippedFaces;
    std::unique_ptr<TestSupport::Program> mService;
};

// A message to the service's port.
std::string ToService(const Identity& from, const Values& values);
// The same in the name of `app`, who may be anybody.
std::string ToServiceAs(const std::string& app, const std::string& port, const Values& values);

}  // namespace Campaign
