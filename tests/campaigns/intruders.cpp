// Peers that claim to be somebody else, forge what the bus says, and name paths that are none of theirs.
//
//     intruders PREFIX [--times N]
//
// Every attack runs N times (200; 10,000 in a long campaign), the race for a name a hundred times as often.
// One line for each says how many got through, which is 0; what may not change is compared before and after.

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>

#include "a-running-service.h"

namespace {

using namespace Campaign;
using TestSupport::Header;
namespace fs = std::filesystem;

constexpr char kDriverName[] = "org.freedesktop.DBus";
constexpr uid_t kNobody = 65534;
constexpr std::size_t kPipelined = 64;  // calls on their way at a time

// How an attack went.
struct Outcome {
    int tried = 0;
    int accepted = 0;  // of those, by mistake
    int refused = 0;   // of those that were right
};

struct Scene {
    const RunningService& service;
    int times;
};

Values IdleChange()
{
    return {
        {"type",  "watch-idle-changed"            },
        {"pkgid", "com.corvane.watchface-mirel-c1"},
    };
}

bool IsAccepted(RawBus& bus, const std::string& message)
{
    return bus.ReplyTo(bus.Call(message)).type == Header::kReply;
}

// Sends the message so often, and counts how often it was taken.
Outcome Repeat(RawBus& bus, const std::string& message, int times)
{
    Outcome outcome;
    for (; outcome.tried < times; ++outcome.tried) outcome.accepted += IsAccepted(bus, message);
    return outcome;
}

Outcome OwnNoName(const Scene& scene)
{
    RawBus stranger(scene.service.Address());
    return Repeat(stranger, ToService(kManager, IdleChange()), scene.times);
}

Outcome OwnAnother(const Scene& scene)
{
    const auto home = scene.service.Connect(kHome);
    return Repeat(*home, ToService(kManager, IdleChange()), scene.times);
}

Outcome ClaimSomebodyWhoIsThere(const Scene& scene)
{
    const auto manager = scene.service.Connect(kManager);
    const auto home = scene.service.Connect(kHome);
    return Repeat(*home, ToService(kManager, IdleChange()), scene.times);
}

// Two connections take a name and give it up again, as they please, and speak in its name at any time. The
// bus says who had it when a message was routed: what a connection asked for comes before what it sends then.
class NameRace {
public:
    explicit NameRace(const Scene& scene)
    {
        for (auto& bus : mBuses) bus.bus = std::make_unique<RawBus>(scene.service.Address());
    }

    Outcome Run(int messages)
    {
        while (mOutcome.tried < messages) {
            for (Contender& bus : mBuses) Step(bus);
        }
        for (Contender& bus : mBuses) {
            while (!bus.pending.empty()) ReadOne(bus);
        }
        return mOutcome;
    }

private:
    enum class Kind { kTake, kGiveUp, kSpeak };
    struct Contender {
        std::unique_ptr<RawBus> bus;
        std::map<uint32_t, Kind>
            pending;        // in the order of their serials, which the bus answers the driver's in
        bool owns = false;  // when all is answered that the driver was asked
        std::map<uint32_t, bool> truth;  // of a message: was the name ours when it was routed?
    };

    void Step(Contender& contender)
    {
        static const std::string take = TestSupport::NameRequest(kHome.app);
        static const std::string giveUp = TestSupport::NameRelease(kHome.app);
        static const std::string speak = ToService(kHome, {
                                                              {"type", "an unknown one"}
        });
        for (std::size_t i = 0; i < kPipelined; ++i) {
            const auto kind = static_cast<Kind>(mRandom() % 3);
            const std::string& message = kind == Kind::kTake ? take : kind == Kind::kGiveUp ? giveUp : speak;
            contender.pending[contender.bus->Call(message)] = kind;
        }
        while (!contender.pending.empty()) ReadOne(contender);
        Judge(contender);
    }

    void ReadOne(Contender& contender)
    {
        const RawBus::Message reply = contender.bus->Next();
        const auto asked = contender.pending.find(reply.replyTo);
        if (asked == contender.pending.end()) return;
        Answer answer{asked->second, reply.type == Header::kReply, 0};
        if (answer.kind != Kind::kSpeak && reply.body.size() >= 4)
            answer.code = static_cast<unsigned char>(reply.body[0]);
        mAnswers[reply.replyTo] = answer;
        contender.pending.erase(asked);
    }

    // Goes through what was asked in its order.
    void Judge(Contender& contender)
    {
        constexpr unsigned kPrimaryOwner = 1, kAlreadyOwner = 4;
        for (const auto& [serial, answer] : mAnswers) {
            switch (answer.kind) {
                case Kind::kTake:
                    contender.owns = answer.code == kPrimaryOwner || answer.code == kAlreadyOwner;
                    break;
                case Kind::kGiveUp:
                    contender.owns = false;
                    break;
                case Kind::kSpeak:
                    ++mOutcome.tried;
                    if (answer.isGood && !contender.owns) ++mOutcome.accepted;
                    if (!answer.isGood && contender.owns) ++mOutcome.refused;
                    break;
            }
        }
        mAnswers.clear();
    }

    struct Answer {
        Kind kind;
        bool isGood;
        unsigned code;
    };

    Contender mBuses[2];
    std::map<uint32_t, Answer> mAnswers;
    std::mt19937 mRandom{1};
    Outcome mOutcome;
};

Outcome RaceANameAway(const Scene& scene)
{
    return NameRace(scene).Run(100 * scene.times);
}

// What the driver would say if the name had gone to us.
std::string ForgedOwnerChange(const std::string& destination, const std::string& from, const std::string& to)
{
    TestSupport::Body body;
    for (const std::string& text : {std::string(kManager.app), from, to}) body.Text(text);
    return TestSupport::Layout(
        {Header::kSignal, destination, "/org/freedesktop/DBus", kDriverName, "NameOwnerChanged", "sss"},
        body);
}

Outcome ForgeTheDriver(const Scene& scene)
{
    const auto manager = scene.service.Connect(kManager);
    RawBus forger(scene.service.Address());
    Outcome outcome;
    for (const std::string destination : {kService, ""}) {
        for (int i = 0; i < 40; ++i) {  // of small numbers the unique names are among these
            const std::string unique = ":1." + std::to_string(i);
            forger.Send(ForgedOwnerChange(destination, unique, ":1." + std::to_string(i + 1)));
            forger.Send(ForgedOwnerChange(destination, unique, ""));
        }
    }
    const std::string claim = ToService(kManager, IdleChange());
    for (; outcome.tried < scene.times; ++outcome.tried) {
        forger.Send(ForgedOwnerChange(kService, "", ":1." + std::to_string(outcome.tried % 100)));
        outcome.accepted += IsAccepted(forger, claim);
    }
    outcome.refused += !IsAccepted(*manager, ToService(kManager, {
                                                                     {"type", "an unknown one"}
    }));
    return outcome;
}

// Another user, who really owns the name; on a private bus anybody may.
Outcome BeAnotherUser(const Scene& scene)
{
    if (getuid() != 0) return {};
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    const pid_t pid = fork();
    if (pid == 0) {
        if (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0) _exit(EXIT_FAILURE);
        const auto manager = scene.service.Connect(kManager);
        const Outcome outcome = Repeat(*manager, ToService(kManager, IdleChange()), scene.times);
        _exit(write(ends[1], &outcome, sizeof outcome) == sizeof outcome ? EXIT_SUCCESS : EXIT_FAILURE);
    }
    close(ends[1]);
    Outcome outcome;
    const bool isThere = read(ends[0], &outcome, sizeof outcome) == sizeof outcome;
    close(ends[0]);
    waitpid(pid, nullptr, 0);
    if (!isThere) throw std::runtime_error("the other user failed");
    return outcome;
}

// More than anybody may keep waiting, without reading an answer; then somebody asks a question.
Outcome Flood(const Scene& scene)
{
    const auto manager = scene.service.Connect(kManager);
    {
        RawBus stranger(scene.service.Address());
        const std::string large = ToService(kEditor, {
                                                         {"type", std::string(100'000, 'x')}
        });
        for (int i = 0; i < scene.times; ++i) stranger.Send(large);
    }
    RunningService::AnswerTime(*manager);
    return {scene.times, 0, 0};
}

// Names and paths that lead out of the place where they are used, or are none.
const std::vector<std::string> kPaths{
    "../escaped", "../../escaped", "../../../../escaped",  "/",        ".",
    "..",         "/etc/escaped",  "a/../../escaped",      "link",     "link/x",
    "//",         "./../escaped",  "escaped/..",           "../",      "link/../../escaped",
    "/proc/self", "a/b/..",        std::string(5000, 'x'), "\xff\xfe", "../watchlist/../../escaped",
};

// The kinds of messages whose fields become paths; PATH stands for one.
struct PathMessage {
    Identity from;
    Values values;
};

std::vector<PathMessage> PathMessages(const std::string& resultXml)
{
    const std::string face = "com.corvane.watchface-mirel-c1";
    return {
        {kManager,     {{"type", "watch-setting-created"}, {"pkgid", "PATH"}, {"data/xml_data", resultXml}} },
        {kEditor,      {{"type", "watch-setting-updated"}, {"pkgid", "PATH"}, {"data/xml_data", resultXml}} },
        {kManager,
         {{"type", "watch-setting-updated"},
          {"pkgid", face},
          {"data/xml_data", resultXml},
          {"data/icon_path", "PATH"}}                                                                       },
        {kManager,     {{"type", "watch-setting-deleted"}, {"pkgid", "PATH"}}                               },
        {kManager,     {{"type", "watch-idle-changed"}, {"pkgid", "PATH"}}                                  },
        {kCapture,     {{"type", "watch-capture-finished"}, {"pkgid", "PATH"}}                              },
        {kEditor,      {{"type", "watch-bg-add"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "PATH"}}  },
        {kEditor,
         {{"type", "watch-bg-add"}, {"bg_type", "watch-bg-gallery-PATH"}, {"bg_list", "/etc/hostname"}}     },
        {kEditor,      {{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-u1"}, {"bg_list", "PATH"}}  },
        {kEditor,      {{"type", "watch-bg-del"}, {"bg_type", "watch-bg-gallery-PATH"}, {"bg_list", "link"}}},
        {kBackupAgent,
         {{"operation", "corvane_cloud_restore"},
          {"type", "watch-setting-updated"},
          {"pkgid", "PATH"},
          {"data/xml_data", resultXml}}                                                                     },
    };
}

std::string Replaced(std::string text, const std::string& path)
{
    for (std::size_t at = text.find("PATH"); at != std::string::npos;
         at = text.find("PATH", at + path.size()))
        text.replace(at, 4, path);
    return text;
}

// Every file of the watch that is neither in the service's areas nor the platform's own, and what it holds.
std::map<std::string, std::string> FilesOutside(const RunningService& service)
{
    const std::string own[] = {service.DataArea(), service.TrustedArea(), service.Root() + "/common/"};
    std::map<std::string, std::string> files;
    for (fs::recursive_directory_iterator at(service.Root()), end; at != end; ++at) {
        const std::string path = at->path();
        if (std::ranges::find(own, path + "/") != std::end(own)) {
            at.disable_recursion_pending();
        } else if (at->is_symlink()) {
            files[path] = fs::read_symlink(at->path());
        } else if (at->is_regular_file() && path != service.Root() + "/log" &&
                   path.find(".db") == std::string::npos) {
            files[path] = TestSupport::ReadFile(path);
        }
    }
    return files;
}

// How many files differ; each is told.
int CountChanges(const std::map<std::string, std::string>& before,
                 const std::map<std::string, std::string>& now)
{
    int count = 0;
    const auto tell = [&](const std::string& path, const char* how) {
        std::fprintf(stderr, "%s %s\n", path.c_str(), how);
        ++count;
    };
    for (const auto& [path, content] : before) {
        const auto found = now.find(path);
        if (found == now.end())
            tell(path, "is gone");
        else if (found->second != content)
            tell(path, "has changed");
    }
    for (const auto& [path, content] : now) {
        if (!before.contains(path)) tell(path, "is new");
    }
    return count;
}

// Where links that lead out lie, planted as by a program that may write the areas.
void PlantLinks(const RunningService& service)
{
    const std::string canary = service.Root() + "/canary";
    fs::create_directories(canary + "/x");
    std::ofstream(canary + "/x/kept") << "kept";
    for (const std::string& folder :
         {service.DataArea() + "watchlist", service.TrustedArea() + "theme/Backgrounds",
          service.TrustedArea() + "theme/GalleryBackgrounds/U1"}) {
        fs::create_directories(folder);
        fs::create_directory_symlink(canary, folder + "/link");
    }
}

Outcome NamePaths(const Scene& scene)
{
    std::map<std::string, std::unique_ptr<RawBus>> peers;
    for (const Identity& identity : {kManager, kEditor, kCapture, kBackupAgent})
        peers[identity.app] = scene.service.Connect(identity);
    const std::string face = "com.corvane.watchface-mirel-c1";
    const auto messages =
        PathMessages(TestSupport::ReadFile(scene.service.ShippedFaces() + face + "/" + face + "_result.xml"));
    PlantLinks(scene.service);
    const auto before = FilesOutside(scene.service);
    Outcome outcome;
    while (outcome.tried < scene.times) {
        for (const PathMessage& message : messages) {
            for (const std::string& path : kPaths) {
                Values values = message.values;
                for (auto& [key, value] : values) value = Replaced(value, path);
                RawBus& peer = *peers[message.from.app];
                peer.ReplyTo(peer.Call(ToService(message.from, values)));
                ++outcome.tried;
            }
        }
        outcome.accepted += CountChanges(before, FilesOutside(scene.service));
    }
    return outcome;
}

struct Attack {
    const char* name;
    Outcome (*run)(const Scene&);
};

constexpr Attack kAttacks[] = {
    {"owns no name",                       OwnNoName              },
    {"owns another name",                  OwnAnother             },
    {"claims somebody who is there",       ClaimSomebodyWhoIsThere},
    {"takes a name and gives it up again", RaceANameAway          },
    {"forges the bus driver's signals",    ForgeTheDriver         },
    {"is another user",                    BeAnotherUser          },
    {"floods",                             Flood                  },
    {"names paths out of the areas",       NamePaths              },
};

// Whether nothing got through that may not.
bool Run(const Attack& attack, const RunningService& service, int times)
{
    const Outcome outcome = attack.run({service, times});
    std::printf("%-40s %10d tried %6d accepted %6d refused by mistake%s\n", attack.name, outcome.tried,
                outcome.accepted, outcome.refused, outcome.tried == 0 ? "  (left out: not root)" : "");
    std::fflush(stdout);
    return outcome.accepted == 0 && outcome.refused == 0;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Attacks a service of its own.");
    std::string prefix;
    int times = 200;
    parser.add_option("prefix", prefix, "a build tree")->required();
    parser.add_option("--times", times, "of each attack")->capture_default_str();
    CLI11_PARSE(parser, argc, argv);
    try {
        const RunningService service(prefix);
        bool isWhole = true;
        for (const Attack& attack : kAttacks) isWhole = Run(attack, service, times) && isWhole;
        const auto manager = service.Connect(kManager);
        RunningService::AnswerTime(*manager);
        return isWhole ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "intruders: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
