// Start-up, idle memory, round trips and wake-ups of the service, each beside its floor, measured in one run.
//
//     process-bench PREFIX [--idle SECONDS]
//
// Everything is pinned to one processor, so that only work is compared and not the waking of another one; the
// values are medians. The bench plays the phone-side manager and, so that no picture is drawn in between, the
// capture application.

#include <expat.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/ustring.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <pugixml.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common-util-i18n.h"
#include "data-util.h"
#include "figures.h"
#include "log.h"
#include "message-port-sdbus.h"
#include "private-bus.h"

namespace {

using Clock = std::chrono::steady_clock;
using Figures::Median;
using Figures::Print;
using Figures::Row;
using Platform::MessagePtr;

constexpr char kService[] = "com.corvane.watchface-service";
constexpr char kServicePort[] = "watchface-service::localport";
constexpr char kManager[] = "com.corvane.w-manager-service";
constexpr char kManagerPort[] = "w-manager-service::localport";
constexpr char kCapture[] = "com.corvane.watchface-capture";
constexpr char kCapturePort[] = "watchface-capture::localport";
constexpr char kBare[] = "com.example.bare";
constexpr char kFace[] = "com.corvane.watchface-mirel-c1";
constexpr std::size_t kUpdateBytes = 20'000;
constexpr int kStarts = 40;
constexpr int kRoundTrips = 300;
constexpr char kLanguage[] = "en_GB";
constexpr char kTimezone[] = "Europe/London";
constexpr std::string_view kSkeletons[] = {"yMMMd", "jm", "MMMMEEEEd", "Hms"};
constexpr int64_t kInstant = 1'791'965'370'123;

double Microseconds(Clock::duration d)
{
    return std::chrono::duration<double, std::micro>(d).count();
}

// A program of its own, killed with the object.
class Program {
public:
    explicit Program(const std::vector<std::string>& command) : mPid(fork())
    {
        if (mPid != 0) return;
        std::vector<char*> arguments;
        for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    ~Program()
    {
        kill(mPid, SIGTERM);
        waitpid(mPid, nullptr, 0);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    pid_t Pid() const { return mPid; }

private:
    const pid_t mPid;
};

// A number of a file of /proc/PID, behind its label.
long ProcValue(pid_t pid, const char* file, const std::string& label)
{
    std::ifstream stream("/proc/" + std::to_string(pid) + "/" + file);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with(label)) return std::atol(line.c_str() + label.size());
    }
    return -1;
}

// The bench's own connection, and what its ports receive.
class Bench {
public:
    explicit Bench(const std::string& address)
    {
        sd_bus* raw = nullptr;
        sd_bus_new(&raw);
        sd_bus_set_address(raw, address.c_str());
        sd_bus_set_bus_client(raw, true);
        if (sd_bus_start(raw) < 0) throw std::runtime_error("no bus");
        mBus.reset(raw);
        sd_bus_add_filter(raw, nullptr, OnMessage, this);
        for (const char* name : {kManager, kCapture}) {
            sd_bus_request_name(raw, name, 0);
            const char* port = name == kManager ? kManagerPort : kCapturePort;
            sd_bus_request_name(raw, Platform::PortBusName(name, port, true).c_str(), 0);
        }
    }

    sd_bus* Bus() { return mBus.get(); }

    void RunUntil(const std::function<bool()>& condition)
    {
        const auto deadline = Clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (sd_bus_process(Bus(), nullptr) > 0) continue;
            if (Clock::now() > deadline) throw std::runtime_error("a program does not answer");
            if (!condition()) sd_bus_wait(Bus(), 1'000'000);
        }
    }

    // From now until somebody owns the name.
    double TimeUntilOwned(const std::string& name, const std::function<void()>& begin)
    {
        bool owned = false;
        const std::string rule =
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" + name + "'";
        sd_bus_slot* slot = nullptr;
        const auto changed = [](sd_bus_message* m, void* out, sd_bus_error*) {
            const char *changedName = nullptr, *before = nullptr, *after = nullptr;
            sd_bus_message_read(m, "sss", &changedName, &before, &after);
            *static_cast<bool*>(out) = *after != '\0';
            return 0;
        };
        sd_bus_add_match(Bus(), &slot, rule.c_str(), changed, &owned);
        const Platform::SlotPtr match(slot);
        const auto start = Clock::now();
        begin();
        RunUntil([&] { return owned; });
        return Microseconds(Clock::now() - start);
    }

    void WaitUntilGone(const std::string& name)
    {
        int has = 1;
        while (has) {
            sd_bus_message* answer = nullptr;
            sd_bus_call_method(Bus(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                               "NameHasOwner", nullptr, &answer, "s", name.c_str());
            sd_bus_message_read(answer, "b", &has);
            sd_bus_message_unref(answer);
        }
    }

    // Sends a message and waits for the one that answers it.
    double RoundTrip(const std::string& app, const std::string& port, const bundle& message)
    {
        int code = 0;
        const int before = mReplies;
        const auto start = Clock::now();
        const MessagePtr call =
            Platform::NewPortMessage(Bus(), app, port, true, kManager, kManagerPort, message, true, &code);
        sd_bus_send(Bus(), call.get(), nullptr);
        RunUntil([&] { return mReplies > before; });
        return Microseconds(Clock::now() - start);
    }

    int Captures() const { return mCaptures; }

private:
    static int OnMessage(sd_bus_message* message, void* data, sd_bus_error*)
    {
        auto* self = static_cast<Bench*>(data);
        if (!sd_bus_message_is_method_call(message, Platform::kPortInterface, "SendTrusted")) return 0;
        const char* port = nullptr;
        sd_bus_message_read(message, "s", &port);
        if (std::string_view(port) == kManagerPort) ++self->mReplies;
        if (std::string_view(port) == kCapturePort) ++self->mCaptures;
        return 1;
    }

    int mReplies = 0;
    int mCaptures = 0;
    Platform::BusPtr mBus;
};

Row StartUp(Bench& bench, const std::string& service, const std::string& bare)
{
    std::vector<double> ours, floor;
    const auto start = [&](const std::vector<std::string>& command, const char* name,
                           std::vector<double>& times) {
        std::unique_ptr<Program> program;
        times.push_back(bench.TimeUntilOwned(name, [&] { program = std::make_unique<Program>(command); }) /
                        1000);
        program.reset();
        bench.WaitUntilGone(name);
    };
    for (int i = 0; i < kStarts; ++i) {
        start({service}, kService, ours);
        start({bare, kBare}, kBare, floor);
    }
    return {"start until the name is owned", "ms", Median(ours), Median(floor),
            "a program with sd-bus alone"};
}

Row Memory(const Program& service, const Program& bare)
{
    const auto kilobytes = [](const Program& p) {
        return static_cast<double>(ProcValue(p.Pid(), "smaps_rollup", "Pss:"));
    };
    return {"idle memory (PSS)", "kB", kilobytes(service), kilobytes(bare), "a program with sd-bus alone"};
}

// What the disk asks for two files that replace others and are there after a power cut.
double TwoDurableFiles(const std::string& folder, const std::string& first, const std::string& second)
{
    const auto start = Clock::now();
    const int parent = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    for (const std::string* text : {&first, &second}) {
        const int file = openat(parent, "new", O_CREAT | O_TRUNC | O_WRONLY, 0644);
        if (write(file, text->data(), text->size()) < 0) std::perror("write");
        fsync(file);
        close(file);
        renameat(parent, "new", parent, text == &first ? "first" : "second");
        fsync(parent);
    }
    close(parent);
    return Microseconds(Clock::now() - start);
}

// What any conversion that refuses what is not well-formed does: expat reads the text, pugixml makes a tree
// of it and writes the tree.
double ReadAndWriteXml(const std::string& text)
{
    const auto start = Clock::now();
    XML_Parser parser = XML_ParserCreate("UTF-8");
    const auto status = XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE);
    XML_ParserFree(parser);
    pugi::xml_document tree;
    std::ostringstream out;
    if (status == XML_STATUS_OK && tree.load_buffer(text.data(), text.size())) tree.save(out);
    return Microseconds(Clock::now() - start);
}

double Convert(const std::string& resultXml, std::string* flat)
{
    const auto start = Clock::now();
    char* text = data_util_resultxml_memory_converter(resultXml.c_str());
    const double time = Microseconds(Clock::now() - start);
    *flat = text ? text : "";
    free(text);
    return time;
}

std::string Padded(std::string text)
{
    if (text.size() + 9 < kUpdateBytes)
        text += "<!--" + std::string(kUpdateBytes - text.size() - 8, ' ') + "-->\n";
    return text;
}

// The rows of an update of 20 KB: the whole, and the parts of its floor.
std::vector<Row> Update(Bench& bench, const std::string& root, const std::string& resultXml)
{
    const auto message = [&](const char* type) {
        Platform::BundlePtr made(bundle_create());
        made->Set("data/xml_data", resultXml);  // the first key, and sent as bytes
        made->Set("data/label", std::string("Mirel"));
        made->Set("pkgid", std::string(kFace));
        made->Set("type", std::string(type));
        return made;
    };
    Platform::BundlePtr bareMessage(bundle_create());
    bareMessage->Set("data/xml_data", resultXml);
    std::vector<double> ours, bus, convert, xml, disk;
    std::string flat;
    for (int i = 0; i < kRoundTrips; ++i) {
        const int captures = bench.Captures();
        ours.push_back(bench.RoundTrip(kService, kServicePort, *message("watch-setting-updated")));
        bench.RunUntil([&] { return bench.Captures() > captures; });
        bus.push_back(bench.RoundTrip(kBare, "port", *bareMessage));
        convert.push_back(Convert(resultXml, &flat));
        xml.push_back(ReadAndWriteXml(resultXml));
        disk.push_back(TwoDurableFiles(root, resultXml, flat));
    }
    const double floor = Median(bus) + Median(xml) + Median(disk);
    std::printf("\nof the update's floor: bus %.0f us, XML %.0f us, two durable files %.0f us\n", Median(bus),
                Median(xml), Median(disk));
    return {
        {"conversion of 20 KB",         "us", Median(convert), Median(xml), "expat + pugixml, read and write"},
        {"update of 20 KB, round trip", "us", Median(ours),    floor,       "bus + XML + two durable files"  },
    };
}

// ICU with everything open that the dates of kSkeletons need: what any program has to do for their texts. The
// formats stay open until the program ends.
class OpenDates {
public:
    OpenDates()
    {
        UErrorCode status = U_ZERO_ERROR;
        UDateTimePatternGenerator* patterns = udatpg_open(kLanguage, &status);
        for (const std::string_view skeleton : kSkeletons) {
            const std::u16string letters(skeleton.begin(), skeleton.end());
            const std::u16string zone(std::begin(kTimezone), std::end(kTimezone) - 1);
            UChar pattern[64];
            const int32_t length = udatpg_getBestPattern(
                patterns, letters.data(), static_cast<int32_t>(letters.size()), pattern, 64, &status);
            mFormats.push_back(udat_open(UDAT_PATTERN, UDAT_PATTERN, kLanguage, zone.data(),
                                         static_cast<int32_t>(zone.size()), pattern, length, &status));
        }
        udatpg_close(patterns);
        if (U_FAILURE(status)) throw std::runtime_error("no ICU");
    }

    std::string Text(std::size_t skeleton, int64_t instant) const
    {
        UErrorCode status = U_ZERO_ERROR;
        UChar wide[128];
        char text[384];
        int32_t length =
            udat_format(mFormats[skeleton], static_cast<UDate>(instant), wide, 128, nullptr, &status);
        u_strToUTF8(text, sizeof text, &length, wide, length, &status);
        return {text, static_cast<std::size_t>(length)};
    }

private:
    std::vector<UDateFormat*> mFormats;
};

// A formatter of its own for each date, as for each request.
std::string ByAFormatter(std::size_t skeleton, int64_t instant)
{
    return CommonUtilI18NDateFormatter(std::string(kSkeletons[skeleton]), kTimezone, kLanguage, true)
        .Format(instant, kCommonUtilI18NTimestampMilliseconds);
}

// A date, once each skeleton was asked for; the skeletons take turns.
double DateTime(const std::function<std::string(std::size_t, int64_t)>& write)
{
    constexpr int kRounds = 200;
    const auto round = [&](int64_t instant) {
        for (std::size_t i = 0; i < std::size(kSkeletons); ++i) {
            if (write(i, instant).empty()) throw std::runtime_error("no date");
        }
    };
    std::vector<double> times;
    for (int i = 0; i <= kRounds; ++i) {
        const auto start = Clock::now();
        for (int j = 0; j < 10; ++j) round(kInstant + 1000 * (10 * i + j));
        if (i > 0) times.push_back(Microseconds(Clock::now() - start) / 10 / std::size(kSkeletons));
    }
    return Median(times);
}

// Dates in this process, and asked for as the phone does.
std::vector<Row> Dates(Bench& bench)
{
    const OpenDates open;
    const double floor = DateTime([&](std::size_t i, int64_t instant) { return open.Text(i, instant); });
    std::vector<double> ours, bus;
    Platform::BundlePtr message(bundle_create());
    message->Set("type", std::string("watch-icu-convert"));
    message->Set("data/bestpattern", std::string("true"));
    message->Set("data/timestamp", std::to_string(kInstant));
    for (int i = 0; i < kRoundTrips; ++i) {
        message->Set("data/skeleton",
                     std::string(kSkeletons[static_cast<std::size_t>(i) % std::size(kSkeletons)]));
        ours.push_back(bench.RoundTrip(kService, kServicePort, *message));
        bus.push_back(bench.RoundTrip(kBare, "port", *message));
    }
    return {
        {"date",                     "us", DateTime(ByAFormatter), floor,               "ICU with everything open"},
        {"date request, round trip", "us", Median(ours),           Median(bus) + floor,
         "bus + ICU with everything open"                                                                         },
    };
}

void Idle(const Program& service, const Program& bare, int seconds)
{
    const auto wakeUps = [](const Program& p) {
        return ProcValue(p.Pid(), "status", "voluntary_ctxt_switches:");
    };
    const long before = wakeUps(service), bareBefore = wakeUps(bare);
    sleep(static_cast<unsigned>(seconds));
    std::printf("%-34s %10ld %-4s %10ld %-4s\n",
                ("wake-ups in " + std::to_string(seconds) + " s idle").c_str(), wakeUps(service) - before, "",
                wakeUps(bare) - bareBefore, "");
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("no file " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

// The data library's lines are not this program's business.
int __dlog_print(log_id_t, int, const char*, const char*, ...)
{
    return 0;
}

int main(int argc, char** argv)
try {
    if (argc < 2) {
        std::fprintf(stderr, "usage: process-bench PREFIX [--idle SECONDS]\n");
        return 2;
    }
    const std::string prefix = argv[1];
    const int idle = argc > 3 && std::string_view(argv[2]) == "--idle" ? std::atoi(argv[3]) : 60;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(0, &one);
    sched_setaffinity(0, sizeof one, &one);

    const TestSupport::PrivateBus daemon;
    const TestSupport::TemporaryFolder root(BENCH_FOLDER);
    setenv("DBUS_SESSION_BUS_ADDRESS", daemon.Address().c_str(), 1);
    setenv("WATCH_ROOT", root.Path().c_str(), 1);
    setenv("WATCH_LOG", "silent", 1);
    setenv("LC_ALL", kLanguage, 1);
    setenv("TZ", kTimezone, 1);
    const std::string service = prefix + "/libexec/watch/watchface-service";
    const std::string bare = prefix + "/bench/bare-bus";
    const std::string face =
        prefix + "/share/watch/com.corvane.watchface/shared/res/watchlist/" + kFace + "/" + kFace;
    Bench bench(daemon.Address());

    std::printf("%-34s %15s %15s %7s\n", "", "service", "floor", "ratio");
    Print(StartUp(bench, service, bare));
    std::unique_ptr<Program> ours, floor;
    bench.TimeUntilOwned(kService, [&] { ours = std::make_unique<Program>(std::vector{service}); });
    bench.TimeUntilOwned(kBare, [&] {
        floor = std::make_unique<Program>(std::vector<std::string>{bare, kBare});
    });
    Print(Memory(*ours, *floor));
    Idle(*ours, *floor, idle);
    for (const Row& row : Dates(bench)) Print(row);
    for (const Row& row : Update(bench, root.Path(), Padded(ReadFile(face + "_result.xml")))) Print(row);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "process-bench: %s\n", error.what());
    return 1;
}
