// More than a watch's applications ever send: whether messages are lost, how much memory it takes, and how
// long others wait.
//
//     load-campaign PREFIX [--messages N] [--calls N] [--questions N] [--faces N] [--unread MIB] [--timed]
//
// 8 peers and 12 users of the open port send N messages, malformed ones among them. What may not happen ends
// the campaign as failed: a message whose call was answered without an error and that nobody hears of, a
// malformed one that is taken, memory beyond its bounds, and, with --timed, an answer later than 50 ms
// for more than one question of a hundred while four others flood.

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>
#include <unordered_map>

#include "bundle-wire-sdbus.h"
#include "flooder.h"
#include "load-measures.h"
#include "load-messages.h"
#include "message-port-sdbus.h"
#include "stopped-reader.h"

namespace {

using namespace Campaign;
using TestSupport::Clock;
using TestSupport::Header;

constexpr std::size_t kPipelined = 16;      // calls of a sender on their way at a time
constexpr std::chrono::seconds kQuiet{20};  // after which nothing comes any more
constexpr int kMostQuestions = 100'000;
constexpr double kMostMilliseconds = 50;          // of 99 questions of a hundred
constexpr long kMostGrowthAfterwards = 8L << 10;  // KiB, when all is over

// A message on its way: whose effect must be seen unless it is refused.
struct Sent {
    const MessageKind* kind;
    unsigned unseen;  // places
    bool taken = false;
};

struct Totals {
    int sent = 0, taken = 0, malformed = 0, refused = 0, accepted = 0, lost = 0;
    std::size_t bytes = 0;
};

class Traffic {
public:
    explicit Traffic(const RunningService& service) : mService(service)
    {
        Add(kManager, kPhone, service.ResultXml());
        for (const Identity& peer : {kEditor, kHome, kSettings}) Add(peer, kAnsweredPeer);
        for (const Identity& peer : {kViewer, kWorldClockMap, kCapture}) Add(peer, kUnansweredPeer);
        Add(kBackupAgent, kAgent);
        for (int i = 0; i < 12; ++i) {
            const std::string app = "com.example.user" + std::to_string(i);
            Add({app.c_str(), "answers"}, kEvaluationUser);
        }
    }

    // Sends so many messages, each sender in turn, and hears what comes of them.
    Totals Run(int messages)
    {
        while (mTotals.sent < messages) {
            for (Party& party : mParties) {
                if (party.pending.size() < kPipelined && mTotals.sent < messages) SendOne(party);
                HearAll(party, std::chrono::milliseconds(0));
            }
        }
        for (Party& party : mParties) {
            while (!party.pending.empty()) Hear(party);
        }
        WaitForTheRest();
        return mTotals;
    }

private:
    struct Party {
        Sender sender;
        std::unique_ptr<RawBus> bus;
        std::map<uint32_t, std::string> pending;  // markers by the number of the call
        int shares = 0;                           // of all kinds that it sends
    };

    void Add(const Identity& identity, Role role, const std::string& resultXml = "")
    {
        Party& party = mParties.emplace_back();
        party.sender = {identity.app, identity.port, role, resultXml};
        party.bus = mService.Connect(identity, role != kEvaluationUser);
        for (const MessageKind& kind : MessageKinds()) party.shares += kind.roles & role ? kind.share : 0;
    }

    const MessageKind& AnyKind(const Party& party)
    {
        int share = static_cast<int>(mRandom() % static_cast<unsigned>(party.shares));
        for (const MessageKind& kind : MessageKinds()) {
            if (!(kind.roles & party.sender.role)) continue;
            share -= kind.share;
            if (share < 0) return kind;
        }
        throw std::logic_error("no kind of message");
    }

    // Most small, some large, a few at the limit. An answer says more than its question and must fit, too.
    std::size_t AnySize(const MessageKind& kind)
    {
        if (!kind.grows) return 0;
        const auto one = mRandom() % 1000;
        const std::size_t room = kind.seen == kInTheLog ? 0 : 1024;
        if (one == 0) return Platform::kMostBundleBytes - room;
        return one < 20 ? 100'000 : mRandom() % 2000;
    }

    void SendOne(Party& party)
    {
        const MessageKind& kind = AnyKind(party);
        const std::string marker = std::string(kMarkerBegin) + std::to_string(mTotals.sent) + "-";
        const std::string message = kind.layout(party.sender, marker, AnySize(kind));
        mSent[marker] = {&kind, kind.seen};
        ++mTotals.sent;
        mTotals.malformed += kind.IsMalformed();
        mTotals.bytes += message.size();
        party.pending[party.bus->Call(message)] = marker;
    }

    void HearAll(Party& party, std::chrono::milliseconds patience)
    {
        while (party.bus->HasNext(patience)) Hear(party);
    }

    void Hear(Party& party)
    {
        const RawBus::Message message = party.bus->Next();
        if (message.type == Header::kCall) {
            const bool isManager = party.sender.role == kPhone;
            See(MarkerOf(message), isManager ? kAtTheSender | kAtTheManager : kAtTheSender);
            return;
        }
        const auto asked = party.pending.find(message.replyTo);
        if (asked == party.pending.end()) return;
        Sent& sent = mSent.at(asked->second);
        sent.taken = message.type == Header::kReply;
        mTotals.taken += sent.taken;
        mTotals.refused += !sent.taken && !sent.kind->IsMalformed();
        mTotals.accepted += sent.taken && sent.kind->IsMalformed();
        party.pending.erase(asked);
    }

    void See(std::string_view marker, unsigned places)
    {
        const auto sent = mSent.find(std::string(marker));
        if (sent == mSent.end()) return;
        if (sent->second.kind->IsMalformed()) ++mTotals.accepted;
        sent->second.unseen &= ~places;
    }

    void ReadTheLog()
    {
        const std::string log = mService.Log();
        for (std::size_t at = log.find(kMarkerBegin); at != std::string::npos;
             at = log.find(kMarkerBegin, at + 1)) {
            const std::size_t end = log.find('-', at + kMarkerBegin.size());
            const auto sent = mSent.find(log.substr(at, end - at + 1));
            if (sent != mSent.end()) sent->second.unseen &= ~kInTheLog;
        }
    }

    int CountUnseen(unsigned places) const
    {
        return static_cast<int>(std::ranges::count_if(mSent, [&](const auto& entry) {
            return entry.second.taken && (entry.second.unseen & places) != 0;
        }));
    }

    // What was answered is on its way to all who hear of it.
    void WaitForTheRest()
    {
        const auto end = Clock::now() + kQuiet;
        while (CountUnseen(kAtTheSender | kAtTheManager) > 0 && Clock::now() < end) {
            for (Party& party : mParties) HearAll(party, std::chrono::milliseconds(1));
        }
        ReadTheLog();
        mTotals.lost = CountUnseen(~0U);
        for (const auto& [marker, sent] : mSent) {
            if (sent.taken && sent.unseen != 0)
                std::fprintf(stderr, "%s lost: %s\n", marker.c_str(), sent.kind->name);
        }
    }

    const RunningService& mService;
    std::vector<Party> mParties;
    std::unordered_map<std::string, Sent> mSent;  // by marker
    std::mt19937 mRandom{1};
    Totals mTotals;
};

// Each is opened by the first message that needs it, and stays.
void OpenLibraries(const RunningService& service)
{
    const auto manager = service.Connect(kManager);
    const auto capture = service.Connect(kCapture);
    RunningService::AnswerTime(*manager);
    const Sender phone{kManager.app, kManager.port, kPhone, service.ResultXml()};
    manager->ReplyTo(manager->Call(MessageOf("installed face", phone, "first", 0)));
}

// Whether all but a little is given back once it is quiet, and how much it was at most.
bool IsMemoryGivenBack(const RunningService& service, const Memory& before)
{
    const auto end = Clock::now() + kQuiet;
    const auto manager = service.Connect(kManager);
    while (Memory(service).now > before.now + kMostGrowthAfterwards && Clock::now() < end)
        manager->HasNext(std::chrono::milliseconds(100));
    const Memory after(service);
    std::printf(
        "memory: %ld KiB before, %ld at last (at most %ld more); at most %ld resident, %ld before "
        "(at most %ld more)\n",
        before.now, after.now, kMostGrowthAfterwards, after.most, before.most, kMostGrowth);
    return kKeepsFreedMemory ||
           (after.now <= before.now + kMostGrowthAfterwards && after.most <= before.most + kMostGrowth);
}

bool RunTraffic(const RunningService& service, int messages)
{
    const auto begin = Clock::now();
    const Totals totals = Traffic(service).Run(messages);
    const double seconds = TestSupport::Microseconds(Clock::now() - begin) / 1e6;
    std::printf(
        "traffic: %d messages, %.0f MB, in %.1f s; %d malformed, %d taken by mistake; "
        "%d others refused; %d lost\n",
        totals.sent, static_cast<double>(totals.bytes) / 1e6, seconds, totals.malformed, totals.accepted,
        totals.refused, totals.lost);
    const std::string face = "com.corvane.watchface-load";
    const bool isInstalled = TestSupport::ReadFile(service.DataArea() + "watchlist/" + face + "/" + face +
                                                   "_result.xml") == service.ResultXml();
    return totals.lost == 0 && totals.accepted == 0 && totals.refused == 0 && totals.taken > 0 && isInstalled;
}

constexpr Flood kFloods[] = {
    {"small messages",   "unknown type",   100,     true },
    {"large messages",   "unknown type",   100'000, true },
    {"dates",            "date",           100,     true },
    {"faces to install", "installed face", 0,       true },
    {"malformed ones",   "number",         0,       true },
    {"others' names",    "another's name", 100,     true },
 // With a sanitizer the service is slower than the bus, and a question behind a queue that keeps full.
#ifndef WATCH_SANITIZED
    {"unanswered ones",  "unknown type",   100,     false},
#endif
};

double Quantile(std::vector<double>& values, double part)
{
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

bool RunFlood(const RunningService& service, const Flood& flood, int calls, int questions, bool timed)
{
    const auto manager = service.Connect(kManager);
    const auto capture = service.Connect(kCapture);  // or requests for previews wait for it
    std::vector<std::unique_ptr<Flooder>> flooders;
    const Identity peers[] = {kEditor, kHome, kSettings, kViewer};
    flooders.reserve(std::size(peers));
    for (const Identity& peer : peers)
        flooders.push_back(std::make_unique<Flooder>(service, peer, flood, calls));
    std::vector<double> milliseconds;
    milliseconds.reserve(static_cast<std::size_t>(questions));
    for (int i = 0; i < questions; ++i) milliseconds.push_back(MillisecondsUntilAnswered(*manager));
    const double p99 = Quantile(milliseconds, 0.99);
    std::printf("flood of %-16s %d questions answered: median %6.2f, p99 %6.2f, longest %6.2f ms; %ld KiB\n",
                flood.name, questions, Quantile(milliseconds, 0.5), p99, milliseconds.back(),
                Memory(service).now);
    return !timed || p99 <= kMostMilliseconds;
}

// Pauses that previews make: faces wait until the capture application is up, and are then asked for one by
// one. Their answers aside, a question waits for all of them at most.
bool RunPauses(const RunningService& service, int faces)
{
    const auto manager = service.Connect(kManager);
    const auto ask = [&](int face) {
        Values values{
            {"type",          "watch-setting-created"                               },
            {"pkgid",         "com.corvane.watchface-mirel-w" + std::to_string(face)},
            {"data/xml_data", service.ResultXml()                                   },
        };
        manager->ReplyTo(manager->Call(ToService(kManager, values)));
    };
    const auto capture = service.Connect({kCapture.app, ""});  // launched, but its port is not up yet
    for (int face = 0; face < faces; ++face) ask(face);
    capture->ReplyTo(
        capture->Call(TestSupport::NameRequest(Platform::PortBusName(kCapture.app, kCapture.port, true))));
    const auto begin = Clock::now();
    ask(faces);
    const double pause = TestSupport::Microseconds(Clock::now() - begin) / 1e3;
    int requests = 0;
    while (capture->HasNext(std::chrono::milliseconds(100)))
        requests += capture->Next().Text(0) == kCapture.port;
    // One for the missing preview, one because it is the phone's face.
    const int waited = 2 * faces;
    const double next = MillisecondsUntilAnswered(*manager);
    std::printf(
        "pauses: %d of 200 ms before %d requests for previews took %.0f ms; the next answer %.2f ms\n",
        waited, requests, pause, next);
    return requests == waited + 2;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App parser("Loads a service of its own.");
    std::string prefix;
    int messages = 3000, calls = 10, questions = 20, faces = 3, unread = 32;
    bool timed = false;
    parser.add_option("prefix", prefix, "a build tree")->required();
    parser.add_option("--messages", messages, "of all senders")->capture_default_str();
    parser.add_option("--calls", calls, "that one who floods has on their way; the bus allows 128")
        ->capture_default_str();
    parser.add_option("--questions", questions, "in each flood")
        ->check(CLI::Range(1, kMostQuestions))
        ->capture_default_str();
    parser.add_option("--faces", faces, "whose previews wait")->capture_default_str();
    parser.add_option("--unread", unread, "MiB that a peer does not read")->capture_default_str();
    parser.add_flag("--timed", timed, "fail when answers are late");
    CLI11_PARSE(parser, argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    try {
        const RunningService service(prefix);
        OpenLibraries(service);
        const Memory before(service);
        bool isWhole = RunTraffic(service, messages);
        for (const Flood& flood : kFloods)
            isWhole = RunFlood(service, flood, calls, questions, timed) && isWhole;
        isWhole = RunPauses(service, faces) && isWhole;
        isWhole = StoppedReader(service, unread).Run() && isWhole;
        isWhole = IsMemoryGivenBack(service, before) && isWhole;
        return isWhole ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "load: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
