// What is wrong with a watch, and putting it right: doctor.

#include <unistd.h>

#include <ctime>
#include <memory>
#include <set>

#include "application-table.h"
#include "areas.h"
#include "checkup.h"
#include "exit-status.h"
#include "face-update.h"
#include "json-text.h"
#include "lost-and-found.h"
#include "private-watch.h"
#include "shell-command.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

constexpr long kNanoseconds = 1'000'000'000;

struct DoctorArguments {
    bool isFix = false;
    std::string undo;
};

// When the process began, by the wall clock.
timespec StartOf(pid_t pid)
{
    timespec now{}, upTime{};
    clock_gettime(CLOCK_REALTIME, &now);
    const ProcessMark process = MarkOf(pid);
    if (process.pid == 0) return now;
    clock_gettime(CLOCK_BOOTTIME, &upTime);
    const long long ticks = sysconf(_SC_CLK_TCK);
    const auto start = static_cast<long long>(process.startTime) * (kNanoseconds / ticks);
    const long long age = upTime.tv_sec * 1LL * kNanoseconds + upTime.tv_nsec - start;
    const long long at = now.tv_sec * 1LL * kNanoseconds + now.tv_nsec - age;
    return {static_cast<time_t>(at / kNanoseconds), static_cast<long>(at % kNanoseconds)};
}

// The service of the watch, where it can be asked.
class Service {
public:
    Service()
    {
        try {
            mConnection = std::make_unique<Connection>();
            RequireService(*mConnection);
        } catch (const Stop&) {
            mConnection.reset();
        }
    }

    bool IsThere() const { return mConnection != nullptr; }

    // Files that have not changed since are in nobody's hands.
    timespec Beginning() const
    {
        const std::string id(Platform::kServiceId);
        const auto pid = mConnection ? mConnection->ProcessBehind(id) : std::nullopt;
        return StartOf(pid ? static_cast<pid_t>(*pid) : 0);
    }

    // Whether the face is stored and drawn once more.
    bool Redraw(const std::string& name)
    {
        const auto face = mConnection ? FindFace(name) : std::nullopt;
        if (!face) return false;
        try {
            if (!mUpdater) mUpdater = std::make_unique<FaceUpdater>(*mConnection, kEditorId);
            mUpdater->Store(SameAgain(*face, Seconds(kPatience)));
            return true;
        } catch (const Stop& stop) {
            if (stop.Status() == Exit::kInterrupted) throw;
            Warn(stop.what());
            return false;
        }
    }

private:
    std::unique_ptr<Connection> mConnection;
    std::unique_ptr<FaceUpdater> mUpdater;
};

// What was done about the findings.
struct Treatment {
    std::string time;  // of what was moved away; empty: nothing was
    std::set<std::string> moved, redrawn;
};

// The service holds this while it writes in a face's folder.
std::string LockOf(const Ailment& ailment)
{
    return ailment.face.empty() ? std::string() : WritableFace(ailment.face).WatchfaceXml();
}

Treatment Treat(const std::vector<Ailment>& ailments, Service& service)
{
    std::vector<LostItem> items;
    for (const Ailment& ailment : ailments) {
        if (ailment.kind->remedy == Remedy::kMove)
            items.push_back({ailment.path, std::string(ailment.kind->code), LockOf(ailment)});
    }
    const MovedAway moved = MoveAway(items, service.Beginning());
    Treatment treatment{
        moved.time, {moved.paths.begin(), moved.paths.end()},
         {                   }
    };
    for (const Ailment& ailment : ailments) {
        const bool isAsked = ailment.kind->remedy == Remedy::kPreview;
        if (isAsked && !treatment.redrawn.contains(ailment.face) && service.Redraw(ailment.face))
            treatment.redrawn.insert(ailment.face);
    }
    return treatment;
}

// "moved", "redrawn" or empty.
std::string DoneAbout(const Ailment& ailment, const Treatment& treatment)
{
    if (ailment.kind->remedy == Remedy::kMove && treatment.moved.contains(ailment.path)) return "moved";
    if (ailment.kind->remedy == Remedy::kPreview && treatment.redrawn.contains(ailment.face))
        return "redrawn";
    return {};
}

// Whether it stays: a running service may hold what came after it began.
bool IsHeld(const Ailment& ailment, const timespec& beginning)
{
    return ailment.kind->remedy == Remedy::kMove && !IsUnchangedSince(ailment.path, beginning);
}

// Moves away what the service may hold: it ends first.
std::string FixWithoutService()
{
    // Also without --root, since the environment's bus is gone then.
    const std::string& root = Platform::CurrentAreas().root;
    if (IsPrivateWatch()) return CommandOn(root, "down") + " && " + CommandOn(root, "doctor --fix");
    return WatchCommand("doctor --fix") + ", once " + std::string(Platform::kServiceId) + " has ended";
}

// Why nothing is done about it; empty where nothing keeps --fix from it, or it is not asked for.
std::string WhyNotDone(const Ailment& ailment, bool isHeld, bool isFix, const Service& service)
{
    if (isHeld) return "it changed after the service began, which may hold it, so it stays until that ends";
    if (isFix && ailment.kind->remedy == Remedy::kPreview && !service.IsThere())
        return "the service draws it, and does not run";
    return {};
}

void Print(const Ailment& ailment, const std::string& done, const std::string& whyNot)
{
    const std::string& subject = ailment.path.empty() ? ailment.face : ailment.path;
    PrintLine(std::string(ailment.kind->code) + ": [" + subject + "] " + ailment.what);
    PrintLine("    " + std::string(ailment.kind->why));
    if (!done.empty()) return PrintLine("    " + done);
    if (!whyNot.empty()) PrintLine("    " + whyNot);
    PrintLine("    type: " + ailment.advice);
}

Json ToJson(const Ailment& ailment, const std::string& done)
{
    return Json::object({
        {"code", std::string(ailment.kind->code)          },
        {"path", BytesToJson(ailment.path)                },
        {"face", BytesToJson(ailment.face)                },
        {"what", ailment.what                             },
        {"why",  std::string(ailment.kind->why)           },
        {"type", BytesToJson(ailment.advice)              },
        {"done", done.empty() ? Json(nullptr) : Json(done)}
    });
}

Exit Undo(const Options& options, const std::string& time)
{
    const PutBackResult result = PutBack(time);
    Json back = Json::array();
    for (const std::string& path : result.paths) {
        if (!options.json) PrintLine(path);
        back.push_back(BytesToJson(path));
    }
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"back", back       },
            {"kept", result.kept}
        })));
    }
    return result.kept == 0 ? Exit::kDone : Exit::kError;
}

Exit Doctor(const Options& options, const DoctorArguments& arguments)
{
    SelectWatch(options.root);
    const std::string& root = RequireRoot();
    if (!arguments.undo.empty()) return Undo(options, arguments.undo);
    std::vector<Ailment> ailments = Examine();
    Service service;
    const Treatment treatment = arguments.isFix ? Treat(ailments, service) : Treatment{};
    const timespec beginning = service.Beginning();
    std::size_t left = 0;
    Json findings = Json::array();
    if (!options.json) PrintLine("the watch at [" + root + "]" + (ailments.empty() ? " is healthy" : ":"));
    for (Ailment& ailment : ailments) {
        const std::string done = DoneAbout(ailment, treatment);
        const bool isHeld = done.empty() && IsHeld(ailment, beginning);
        if (isHeld) ailment.advice = FixWithoutService();
        if (done.empty()) ++left;
        findings.push_back(ToJson(ailment, done));
        if (!options.json) Print(ailment, done, WhyNotDone(ailment, isHeld, arguments.isFix, service));
    }
    if (options.json) {
        PrintLine(JsonLine(Json::object({
            {"root",     BytesToJson(root)                                            },
            {"findings", findings                                                     },
            {"time",     treatment.time.empty() ? Json(nullptr) : Json(treatment.time)}
        })));
    } else if (!treatment.time.empty()) {
        PrintLine("to put back what was moved, type: " + WatchCommand("doctor --undo " + treatment.time));
    }
    return left == 0 ? Exit::kDone : Exit::kError;
}

}  // namespace

Action DefineDoctor(CLI::App& parser)
{
    const auto arguments = std::make_shared<DoctorArguments>();
    auto* fix = parser.add_flag("--fix", arguments->isFix,
                                "move away what nobody needs, and have the service draw what is stale");
    parser.add_option("--undo", arguments->undo, "put back what --fix moved away then")
        ->type_name("TIME")
        ->excludes(fix);
    return [arguments](const Options& options) { return Doctor(options, *arguments); };
}

}  // namespace Wfctl
