// Peers that claim to be somebody else, forge what the bus says, and name paths that are none of theirs.
//
//     intruders-campaign PREFIX [--times N]
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
#include <map>
#include <random>
#include <stdexcept>

#include "attacks.h"
#include "bus-sdbus.h"
#include "message-port-sdbus.h"

namespace {

using namespace Campaign;
using TestSupport::Header;

constexpr uid_t kNobody = 65534;
constexpr std::size_t kPipelined = 64;  // calls on their way at a time

Values IdleChange()
{
    return {
        {"type",  "watch-idle-changed"},
        {"pkgid", kClassicFace        },
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

// Two connections take a name and give it up again, as they please, and speak in its name at any time. What
// both are to ask for is written before an answer of either is read, so that they compete. The name is
// neither queued for nor replaced: a connection has it from the request that is granted to its release, and
// the bus takes what one connection sent in its order.
class NameRace {
public:
    explicit NameRace(const Scene& scene)
    {
        for (auto& bus : mBuses) bus.bus = std::make_unique<RawBus>(scene.service.Address());
    }

    Outcome Run(int messages)
    {
        while (mOutcome.tried < messages) {
            for (std::size_t i = 0; i < 2 * kPipelined; ++i) Ask(mBuses[mRandom() % 2]);
            for (Contender& bus : mBuses) ReadAll(bus);
            for (Contender& bus : mBuses) Judge(bus);
        }
        std::printf("  the name changed hands within %d batches\n", mContested);
        if (mContested == 0) throw std::runtime_error("nobody has competed for the name");
        return mOutcome;
    }

private:
    enum class Kind { kTake, kGiveUp, kSpeak };
    struct Asked {
        Kind kind;
        bool isGood = false;
        unsigned code = 0;  // the driver's
    };
    struct Contender {
        std::unique_ptr<RawBus> bus;
        std::map<uint32_t, Asked> asked;  // by serial, which is their order
        bool owns = false;                // when all before is answered
    };

    void Ask(Contender& contender)
    {
        static const std::string take = TestSupport::NameRequest(kHome.app);
        static const std::string giveUp = TestSupport::NameRelease(kHome.app);
        static const std::string speak = ToService(kHome, {
                                                              {"type", "an unknown one"}
        });
        const auto kind = static_cast<Kind>(mRandom() % 3);
        const std::string& message = kind == Kind::kTake ? take : kind == Kind::kGiveUp ? giveUp : speak;
        contender.asked[contender.bus->Call(message)] = {kind};
    }

    static void ReadAll(Contender& contender)
    {
        for (std::size_t missing = contender.asked.size(); missing > 0;) {
            const RawBus::Message reply = contender.bus->Next();
            const auto asked = contender.asked.find(reply.replyTo);
            if (asked == contender.asked.end()) continue;
            --missing;
            asked->second.isGood = reply.type == Header::kReply;
            if (asked->second.kind != Kind::kSpeak && !reply.body.empty())
                asked->second.code = static_cast<unsigned char>(reply.body[0]);
        }
    }

    // Goes through what was asked in its order.
    void Judge(Contender& contender)
    {
        constexpr unsigned kPrimaryOwner = 1, kExists = 3, kAlreadyOwner = 4;
        bool hasWon = false, hasLost = false;
        for (const auto& [serial, asked] : contender.asked) {
            switch (asked.kind) {
                case Kind::kTake:
                    contender.owns = asked.code == kPrimaryOwner || asked.code == kAlreadyOwner;
                    hasWon |= asked.code == kPrimaryOwner;
                    hasLost |= asked.code == kExists;
                    break;
                case Kind::kGiveUp:
                    contender.owns = false;
                    break;
                case Kind::kSpeak:
                    ++mOutcome.tried;
                    if (asked.isGood && !contender.owns) ++mOutcome.accepted;
                    if (!asked.isGood && contender.owns) ++mOutcome.refused;
                    break;
            }
        }
        contender.asked.clear();
        mContested += hasWon && hasLost;
    }

    Contender mBuses[2];
    std::mt19937 mRandom{1};
    int mContested = 0;  // batches in which one got the name from the other
    Outcome mOutcome;
};

Outcome RaceANameAway(const Scene& scene)
{
    return NameRace(scene).Run(100 * scene.times);
}

// What the bus driver says, or the library says in its name when the connection is gone.
struct DriverSignal {
    const char* path;
    const char* interface;
    const char* member;
    std::vector<std::string> texts;
};

std::string Forged(const DriverSignal& signal, const std::string& destination)
{
    TestSupport::Body body;
    for (const std::string& text : signal.texts) body.Text(text);
    return TestSupport::Layout({Header::kSignal, destination, signal.path, signal.interface, signal.member,
                                std::string(signal.texts.size(), 's')},
                               body);
}

DriverSignal OwnerChange(const std::string& from, const std::string& to)
{
    return {
        Platform::kDriverPath, Platform::kDriver, "NameOwnerChanged", {kManager.app, from, to}
    };
}

// Its own, and those that its ports have on the bus.
std::vector<std::string> NamesOfTheService()
{
    return {kService, Platform::PortBusName(kService, kServicePort, true),
            Platform::PortBusName(kService, kEvaluationPort, false)};
}

// That the names of the service, or of who speaks with it, have gone or come, and that the bus has.
std::vector<DriverSignal> DriverSignals()
{
    std::vector<DriverSignal> signals;
    for (const char* member : {"NameLost", "NameAcquired"}) {
        for (const std::string& name : NamesOfTheService())
            signals.push_back({Platform::kDriverPath, Platform::kDriver, member, {name}});
        signals.push_back({Platform::kDriverPath, Platform::kDriver, member, {kManager.app}});
    }
    for (const std::string& name : NamesOfTheService())
        signals.push_back({
            Platform::kDriverPath, Platform::kDriver, "NameOwnerChanged", {name, ":1.0", ""}
        });
    for (const char* path : {"/org/freedesktop/DBus/Local", "/local", Platform::kDriverPath}) {
        for (const char* interface : {"org.freedesktop.DBus.Local", "local.Local", Platform::kDriver})
            signals.push_back({path, interface, "Disconnected", {}});
    }
    return signals;
}

// On a connection of its own: the bus throws out who speaks in the library's name.
void Forge(const Scene& scene, const DriverSignal& signal)
{
    for (const std::string destination : {kService, ""}) {
        RawBus forger(scene.service.Address());
        forger.Send(Forged(signal, destination));
    }
}

std::string OwnerOf(RawBus& bus, const std::string& name)
{
    TestSupport::Body body;
    body.Text(name);
    return std::string(bus.ReplyTo(bus.Call(TestSupport::DriverCall("GetNameOwner", "s", body))).Text(0));
}

// Whether all of the service's names are those of this connection.
bool DoesServiceOwnItsNames(RawBus& bus, const std::string& service)
{
    return std::ranges::all_of(NamesOfTheService(),
                               [&](const std::string& name) { return OwnerOf(bus, name) == service; });
}

Outcome ForgeTheDriver(const Scene& scene)
{
    const auto manager = scene.service.Connect(kManager);
    RawBus forger(scene.service.Address());
    const std::string service = OwnerOf(forger, kService);
    for (const std::string destination : {kService, ""}) {
        for (int i = 0; i < 40; ++i) {  // of small numbers the unique names are among these
            const std::string unique = ":1." + std::to_string(i);
            forger.Send(Forged(OwnerChange(unique, ":1." + std::to_string(i + 1)), destination));
            forger.Send(Forged(OwnerChange(unique, ""), destination));
        }
    }
    const std::vector<DriverSignal> signals = DriverSignals();
    const std::string claim = ToService(kManager, IdleChange());
    const std::string rightful = ToService(kManager, {
                                                         {"type", "an unknown one"}
    });
    Outcome outcome;
    for (; outcome.tried < scene.times; ++outcome.tried) {
        const auto n = static_cast<std::size_t>(outcome.tried);
        forger.Send(Forged(OwnerChange("", ":1." + std::to_string(n % 100)), kService));
        Forge(scene, signals[n % signals.size()]);
        outcome.accepted += IsAccepted(forger, claim);
        outcome.refused += !IsAccepted(*manager, rightful);
    }
    if (!DoesServiceOwnItsNames(forger, service)) throw std::runtime_error("the service has lost a name");
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

std::string FloodMessage(const std::string& marker)
{
    return ToService(kEditor, {
                                  {"type", marker + std::string(100'000, 'x')}
    });
}

std::size_t Count(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

// More than anybody may keep waiting. One connection leaves without reading an answer; the log tells the type
// of whatever is taken. Another one reads its answers afterwards. Connections take turns, so that with as
// many of the second nothing of the first waits any more. Then somebody asks a question.
Outcome Flood(const Scene& scene)
{
    constexpr char kMarker[] = "[flood-", kTaken[] = "[flood-of-the-editor-";
    const auto manager = scene.service.Connect(kManager);
    Outcome outcome{scene.times, 0, 0};
    const int half = std::max(1, scene.times / 2);
    {
        RawBus leaving(scene.service.Address());
        for (int i = 0; i < half; ++i) leaving.Call(FloodMessage("flood-" + std::to_string(i) + "-"));
    }
    RawBus reading(scene.service.Address());
    std::vector<uint32_t> calls(static_cast<std::size_t>(half));
    for (uint32_t& call : calls) call = reading.Call(FloodMessage("flood-of-a-reader-"));
    for (const uint32_t call : calls) outcome.accepted += reading.ReplyTo(call).type == Header::kReply;
    RunningService::AnswerTime(*manager);
    outcome.accepted += static_cast<int>(Count(scene.service.Log(), kMarker));
    const auto editor = scene.service.Connect(kEditor);
    const bool isTaken = IsAccepted(*editor, FloodMessage("flood-of-the-editor-"));
    outcome.refused += !isTaken || Count(scene.service.Log(), kTaken) != 1;
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
