// The platform's trace: the file, and what of the platform stands in it.

#include "trace-event-json.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "app-control.h"
#include "areas.h"
#include "common-util-keys.h"
#include "common-util-pref.h"
#include "common-util-tasks.h"
#include "files.h"
#include "platform-fixture.h"
#include "unique-fd.h"

namespace PlatformTest {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Platform::Trace;
using Platform::TraceSpan;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string ContentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// All events of the file; throws when it is no JSON once its array is closed.
Json EventsIn(const std::string& path)
{
    return Json::parse(ContentOf(path) + "]");
}

Json Where(const Json& events, const std::string& member, const std::string& value)
{
    Json found = Json::array();
    for (const Json& event : events) {
        if (event.value(member, "") == value) found.push_back(event);
    }
    return found;
}

Json Spans(const Json& events)
{
    return Where(events, "ph", "X");
}

double End(const Json& span)
{
    return span["ts"].get<double>() + span["dur"].get<double>();
}

class ATrace : public testing::Test {
protected:
    ~ATrace() override { Trace::Leave(); }

    std::string Path() const { return folder.Path() + "/trace.json"; }
    bool Begin() const { return Trace::Begin(Path(), "a program"); }
    Json Events() const { return EventsIn(Path()); }

    // Runs it in another program, which is gone when this returns.
    static void InAnotherProgram(const std::function<void()>& body)
    {
        const pid_t program = fork();
        if (program == 0) {
            body();
            _exit(0);
        }
        waitpid(program, nullptr, 0);
    }

    TestSupport::TemporaryFolder folder;
};

// The file

TEST_F(ATrace, records_nothing_before_it_begins)
{
    EXPECT_FALSE(Trace::IsOn());
    {
        const TraceSpan span("kind", "name");
        EXPECT_FALSE(span.IsRecorded());
        span.FlowOut(1);
    }
    EXPECT_THAT(fs::directory_iterator(folder.Path()), fs::directory_iterator());
}

TEST_F(ATrace, has_a_span_with_its_place_time_and_details)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("file", "read", {"path", "/a"}, {"of", "b"});
    }
    const Json spans = Spans(Events());
    ASSERT_THAT(spans, SizeIs(1));
    EXPECT_EQ(spans[0]["cat"], "file");
    EXPECT_EQ(spans[0]["name"], "read");
    EXPECT_EQ(spans[0]["pid"], getpid());
    EXPECT_EQ(spans[0]["tid"], gettid());
    EXPECT_EQ(spans[0]["args"], (Json{
                                    {"path", "/a"},
                                    {"of",   "b" }
    }));
}

TEST_F(ATrace, tells_times_in_microseconds_of_the_monotonic_clock)
{
    ASSERT_TRUE(Begin());
    const auto now = [] {
        const auto time = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration<double, std::micro>(time).count();
    };
    const double before = now();
    {
        const TraceSpan span("kind", "name");
    }
    const double after = now();
    const Json span = Spans(Events())[0];
    EXPECT_GE(span["ts"], before - 0.01);
    EXPECT_LE(End(span), after + 0.01);
}

TEST_F(ATrace, names_the_program_and_its_threads)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("kind", "here");
    }
    pid_t worker = 0;
    std::thread([&] {
        worker = gettid();
        const TraceSpan first("kind", "there");
        const TraceSpan second("kind", "there");
    }).join();
    const Json names = Where(Events(), "ph", "M");
    ASSERT_THAT(names, SizeIs(3));
    EXPECT_EQ(names[0]["name"], "process_name");
    EXPECT_EQ(names[0]["args"]["name"], "a program");
    EXPECT_EQ(names[1]["name"], "thread_name");
    EXPECT_EQ(names[1]["args"]["name"], "main loop");
    EXPECT_EQ(names[2]["args"]["name"], "worker");
    EXPECT_EQ(names[2]["tid"], worker);
}

TEST_F(ATrace, has_spans_inside_each_other)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan outer("kind", "outer");
        {
            const TraceSpan inner("kind", "inner");
        }
        const TraceSpan second("kind", "second");
    }
    const Json events = Events();
    const Json outer = Where(events, "name", "outer")[0], inner = Where(events, "name", "inner")[0],
               second = Where(events, "name", "second")[0];
    EXPECT_LE(outer["ts"], inner["ts"]);
    EXPECT_LE(End(inner), second["ts"].get<double>() + 0.001);
    EXPECT_LE(End(second), End(outer) + 0.001);
}

TEST_F(ATrace, has_flows_just_inside_their_spans)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan out("message", "send");
        out.FlowOut(uint64_t{0xFFFF} << 48 | 7);
    }
    {
        const TraceSpan in("message", "receive");
        in.FlowIn(uint64_t{0xFFFF} << 48 | 7);
    }
    const Json flows = Where(Events(), "cat", "flow"), spans = Spans(Events());
    ASSERT_THAT(flows, SizeIs(2));
    EXPECT_EQ(flows[0]["ph"], "s");
    EXPECT_EQ(flows[1]["ph"], "f");
    EXPECT_EQ(flows[1]["bp"], "e");
    EXPECT_EQ(flows[0]["id"], flows[1]["id"]);
    EXPECT_LT(flows[0]["id"], uint64_t{1} << 53);
    EXPECT_EQ(flows[0]["name"], flows[1]["name"]);
    for (int i : {0, 1}) {
        EXPECT_GT(flows[i]["ts"], spans[i]["ts"]);
        EXPECT_LE(flows[i]["ts"], End(spans[i]));
    }
}

TEST_F(ATrace, is_json_whatever_the_details_are)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("kind", "name", {"path", "a\"\\\n\x7f\x01시\xFF\xC3"});
    }
    EXPECT_EQ(Spans(Events())[0]["args"]["path"], "a\"\\\n\x7f\x01시ÿÃ");
}

TEST_F(ATrace, cuts_long_details_between_characters)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("kind", "name", {"path", std::string(1023, 'x') + "시"});
    }
    EXPECT_EQ(Spans(Events())[0]["args"]["path"], std::string(1023, 'x'));
}

TEST_F(ATrace, ends_full_and_says_so)
{
    ASSERT_TRUE(Begin());
    const std::string detail(1000, 'x');
    for (int i = 0; i < 100'000 && Trace::IsOn(); ++i) const TraceSpan span("kind", "name", {"path", detail});
    EXPECT_FALSE(Trace::IsOn());
    EXPECT_LE(fs::file_size(Path()), Platform::kMostTraceBytes);
    EXPECT_GT(fs::file_size(Path()), Platform::kMostTraceBytes - 8192);
    const Json events = Events();
    EXPECT_EQ(events.back()["name"], "the trace is full");
    EXPECT_EQ(events.back()["ph"], "i");
}

TEST_F(ATrace, that_is_full_is_joined_by_nobody)
{
    ASSERT_TRUE(Begin());
    Trace::Leave();
    fs::resize_file(Path(), Platform::kMostTraceBytes - 100);
    EXPECT_FALSE(Trace::Join(Path(), "another"));
    EXPECT_FALSE(Trace::IsOn());
    EXPECT_EQ(fs::file_size(Path()), Platform::kMostTraceBytes - 100);
}

TEST_F(ATrace, is_recorded_by_several_programs_into_one_file)
{
    ASSERT_TRUE(Begin());
    InAnotherProgram([&] {
        Trace::Leave();
        if (!Trace::Join(Path(), "another")) return;
        const TraceSpan span("kind", "theirs");
    });
    {
        const TraceSpan span("kind", "ours");
    }
    const Json events = Events();
    EXPECT_NE(Where(events, "name", "theirs")[0]["pid"], Where(events, "name", "ours")[0]["pid"]);
    const Json programs = Where(events, "name", "process_name");
    ASSERT_THAT(programs, SizeIs(2));
    EXPECT_EQ(programs[1]["args"]["name"], "another");
}

TEST_F(ATrace, mixes_no_events_of_programs_that_record_at_once)
{
    ASSERT_TRUE(Begin());
    const pid_t other = fork();
    for (int i = 0; i < 2000; ++i) const TraceSpan span("kind", "name");
    if (other == 0) _exit(0);
    waitpid(other, nullptr, 0);
    EXPECT_THAT(Spans(Events()), SizeIs(4000));
}

TEST_F(ATrace, loses_no_more_than_one_event_when_a_program_is_killed)
{
    ASSERT_TRUE(Begin());
    const pid_t other = fork();
    if (other == 0) {
        for (;;) const TraceSpan span("kind", "name");
    }
    while (fs::file_size(Path()) < 100'000) std::this_thread::yield();
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
    int whole = 0, torn = 0;
    std::istringstream lines(ContentOf(Path()));
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with(',')) line.pop_back();
        ++(Json::accept(line) ? whole : torn);
    }
    EXPECT_GT(whole, 100);
    EXPECT_LE(torn, 2);  // the opening bracket, and what the kernel was writing in that moment
}

TEST_F(ATrace, stops_when_it_is_left)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("kind", "cut off");
        Trace::Leave();
    }
    {
        const TraceSpan span("kind", "after");
    }
    EXPECT_THAT(Spans(Events()), IsEmpty());
}

TEST_F(ATrace, begins_anew_in_place_of_an_older_one)
{
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("kind", "old");
    }
    ASSERT_TRUE(Begin());
    {
        const TraceSpan span("kind", "new");
    }
    EXPECT_THAT(Where(Events(), "name", "old"), IsEmpty());
    EXPECT_THAT(Where(Events(), "name", "new"), SizeIs(1));
    EXPECT_THAT(Where(Events(), "name", "thread_name"), SizeIs(1));
}

TEST_F(ATrace, is_joined_once)
{
    ASSERT_TRUE(Begin());
    EXPECT_TRUE(Trace::Join(Path(), "again"));
    EXPECT_THAT(Where(Events(), "name", "process_name"), SizeIs(1));
}

TEST_F(ATrace, is_not_joined_where_there_is_none)
{
    EXPECT_FALSE(Trace::Join(Path(), "a program"));
    EXPECT_FALSE(fs::exists(Path()));
    EXPECT_FALSE(Trace::IsOn());
}

TEST_F(ATrace, follows_no_link_and_waits_for_no_pipe)
{
    std::ofstream(folder.Path() + "/victim") << "x";
    fs::create_symlink(folder.Path() + "/victim", Path());
    EXPECT_FALSE(Trace::Join(Path(), "a program"));
    ASSERT_TRUE(Begin());
    EXPECT_EQ(ContentOf(folder.Path() + "/victim"), "x");
    Trace::Leave();
    fs::remove(Path());
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_FALSE(Trace::Join(Path(), "a program"));
    const Platform::UniqueFd reader(open(Path().c_str(), O_RDONLY | O_NONBLOCK));
    EXPECT_FALSE(Trace::Join(Path(), "a program"));
}

TEST_F(ATrace, that_cannot_be_made_is_none)
{
    EXPECT_FALSE(Trace::Begin("/proc/trace.json", "a program"));
    EXPECT_FALSE(Trace::IsOn());
}

// What stands in it

class ATracedApplication : public AnApplication {
protected:
    ATracedApplication()
    {
        OpenPort();
        Announce();
        CommonUtilPref::SetTTraceEnabled(true);
    }
    ~ATracedApplication() override { Trace::Leave(); }

    static Json Events() { return EventsIn(Platform::TracePath()); }
    // The spans of that kind and name.
    static Json Of(const std::string& kind, const std::string& name)
    {
        return Where(Where(Spans(Events()), "cat", kind), "name", name);
    }
    // The number of the flow that is told inside the span.
    static Json FlowIn(const Json& span, const std::string& phase)
    {
        for (const Json& flow : Where(Events(), "ph", phase)) {
            const double time = flow["ts"];
            if (time >= span["ts"] && time <= End(span)) return flow["id"];
        }
        return nullptr;
    }
    static std::string InArea(const std::string& name)
    {
        const std::string area = Platform::CurrentAreas().DataOf("com.corvane.watchface");
        fs::create_directories(area);
        return area + name;
    }
};

TEST_F(ATracedApplication, connects_a_message_that_it_sent_with_the_one_that_arrived)
{
    process->Ports().Send(kApp, kPort, true, "",
                          *Bundle({
                              {"secret", "content"}
    }));
    ASSERT_TRUE(RunUntil([&] { return !received.empty(); }));
    const Json sent = Of("message", "send"), arrived = Of("message", "receive");
    ASSERT_THAT(sent, SizeIs(1));
    ASSERT_THAT(arrived, SizeIs(1));
    EXPECT_EQ(sent[0]["args"], (Json{
                                   {"to",   kApp },
                                   {"port", kPort}
    }));
    EXPECT_EQ(arrived[0]["args"], (Json{
                                      {"from", kApp },
                                      {"port", kPort}
    }));
    EXPECT_FALSE(FlowIn(sent[0], "s").is_null());
    EXPECT_EQ(FlowIn(sent[0], "s"), FlowIn(arrived[0], "f"));
    EXPECT_THAT(Events().dump(), testing::Not(HasSubstr("content")));
    EXPECT_THAT(Events().dump(), testing::Not(HasSubstr("secret")));
}

TEST_F(ATracedApplication, tells_two_messages_apart)
{
    for (int i = 0; i < 2; ++i) process->Ports().Send(kApp, kPort, true, "", *Bundle({}));
    ASSERT_TRUE(RunUntil([&] { return received.size() == 2; }));
    const Json sent = Of("message", "send");
    EXPECT_NE(FlowIn(sent[0], "s"), FlowIn(sent[1], "s"));
}

TEST_F(ATracedApplication, tells_messages_of_two_senders_apart_that_have_the_same_serial)
{
    for (const char* id : {kHome, "com.corvane.watchface-editor"}) {
        Peer peer(bus.Address());
        peer.Own(id);
        peer.Send(id, *Bundle({}));
        const std::size_t before = received.size();
        ASSERT_TRUE(RunUntil([&] { return received.size() > before; }));
    }
    const Json arrived = Of("message", "receive");
    ASSERT_THAT(arrived, SizeIs(2));
    EXPECT_NE(FlowIn(arrived[0], "f"), FlowIn(arrived[1], "f"));
}

TEST_F(ATracedApplication, connects_a_launch_request_with_its_answer)
{
    const Platform::LaunchReceiver receiver(process->GetBus(), [](app_control_h request) {
        app_control_s reply;
        app_control_reply_to_launch_request(&reply, request, APP_CONTROL_RESULT_SUCCEEDED);
    });
    app_control_s request;
    request.appId = kApp;
    bool isAnswered = false;
    const auto answered = [](app_control_h, app_control_h, app_control_result_e, void* done) {
        *static_cast<bool*>(done) = true;
    };
    ASSERT_EQ(process->Launches().Send(&request, answered, &isAnswered), 0);
    ASSERT_TRUE(RunUntil([&] { return isAnswered; }));
    EXPECT_THAT(Of("launch", "start"), SizeIs(1));
    const Json sent = Of("launch", "send"), arrived = Of("launch", "request"),
               answer = Of("launch", "answer"), back = Of("launch", "answered");
    ASSERT_THAT((std::vector{sent.size(), arrived.size(), answer.size(), back.size()}),
                ElementsAre(1, 1, 1, 1));
    EXPECT_EQ(sent[0]["args"], (Json{
                                   {"to", kApp}
    }));
    EXPECT_FALSE(FlowIn(sent[0], "s").is_null());
    EXPECT_EQ(FlowIn(sent[0], "s"), FlowIn(arrived[0], "f"));
    EXPECT_FALSE(FlowIn(answer[0], "s").is_null());
    EXPECT_EQ(FlowIn(answer[0], "s"), FlowIn(back[0], "f"));
}

TEST_F(ATracedApplication, tells_written_and_watched_keys_by_their_names)
{
    bool isTold = false;
    const CommonUtilVConfCallback watcher("k", [&](keynode_t*) { isTold = true; });
    CommonUtilVConf::SetString("k", "content");
    CommonUtilPref::SetBool("p", true);
    ASSERT_TRUE(RunUntil([&] { return isTold; }));
    const auto names = [](const Json& spans) {
        std::vector<std::string> keys;
        for (const Json& span : spans) keys.push_back(span["args"]["key"]);
        return keys;
    };
    EXPECT_THAT(names(Of("key", "write")), ElementsAre(Platform::kTraceKey, "k", "p"));
    EXPECT_THAT(names(Of("key", "changed")), ElementsAre("k"));
    EXPECT_THAT(Events().dump(), testing::Not(HasSubstr("content")));
}

TEST_F(ATracedApplication, tells_file_operations_by_their_paths)
{
    FileOutputStream stream(InArea("a"));
    stream.Write("content");
    stream.Close();
    CommonUtilFile::Copy(InArea("a"), InArea("b"));
    ReadWholeFile(InArea("b"));
    for (Eina_List* list = ecore_file_ls(InArea("").c_str()); list;) {
        free(list->data);
        list = eina_list_remove_list(list, list);
    }
    ecore_file_remove(InArea("b").c_str());
    ecore_file_mkpath(InArea("c").c_str());
    ecore_file_recursive_rm(InArea("c").c_str());
    {
        const CommonUtilFileLock lock(InArea("a"), CommonUtilFileLock::kReadWrite);
    }
    EXPECT_EQ(Of("file", "replace")[0]["args"]["path"], InArea("a"));
    EXPECT_EQ(Of("file", "copy")[0]["args"], (Json{
                                                 {"from", InArea("a")},
                                                 {"to",   InArea("b")}
    }));
    EXPECT_EQ(Of("file", "read")[0]["args"]["path"], InArea("b"));
    EXPECT_EQ(Of("file", "list")[0]["args"]["path"], InArea(""));
    EXPECT_EQ(Of("file", "remove")[0]["args"]["path"], InArea("b"));
    EXPECT_EQ(Of("file", "make folder")[0]["args"]["path"], InArea("c"));
    EXPECT_EQ(Of("file", "remove folder")[0]["args"]["path"], InArea("c"));
    EXPECT_EQ(Of("file", "lock")[0]["args"]["path"], InArea("a"));
    EXPECT_THAT(Events().dump(), testing::Not(HasSubstr("content")));
}

TEST_F(ATracedApplication, tells_jobs_idlers_timers_and_pauses)
{
    int runs = 0;
    CommonUtilJob job([&] { ++runs; });
    const auto once = [&] {
        ++runs;
        return kCommonUtilTaskEnd;
    };
    CommonUtilIdler idler(once);
    CommonUtilTimer timer(0, once);
    job.Start();
    idler.Start();
    timer.Start();
    ASSERT_TRUE(RunUntil([&] { return runs == 3; }));
    usleep(1);
    for (const char* name : {"job", "idler", "timer", "pause"})
        EXPECT_THAT(Of("task", name), SizeIs(1)) << name;
}

TEST_F(ATracedApplication, is_recorded_from_the_request_to_the_next)
{
    EXPECT_EQ(CommonUtilVConf::GetBool(Platform::kTraceKey), std::pair(true, true));
    EXPECT_EQ(Where(Events(), "name", "process_name")[0]["args"]["name"], kApp);
    CommonUtilPref::SetTTraceEnabled(false);
    EXPECT_EQ(CommonUtilVConf::GetBool(Platform::kTraceKey), std::pair(true, false));
    EXPECT_FALSE(Trace::IsOn());
    const auto size = fs::file_size(Platform::TracePath());
    CommonUtilVConf::SetString("k", "x");
    EXPECT_EQ(fs::file_size(Platform::TracePath()), size);
}

TEST_F(ATracedApplication, follows_the_key)
{
    process->Tracing().Follow();
    CommonUtilVConf::SetBool(Platform::kTraceKey, false);
    ASSERT_TRUE(RunUntil([] { return !Trace::IsOn(); }));
    CommonUtilVConf::SetBool(Platform::kTraceKey, true);
    ASSERT_TRUE(RunUntil([] { return Trace::IsOn(); }));
    EXPECT_THAT(Where(Events(), "name", "process_name"), SizeIs(2));
}

TEST_F(ATracedApplication, joins_at_its_start_what_is_recorded)
{
    Trace::Leave();
    process->Tracing().Follow();
    EXPECT_TRUE(Trace::IsOn());
}

TEST_F(ATracedApplication, joins_nothing_at_its_start_where_nothing_is_recorded)
{
    CommonUtilPref::SetTTraceEnabled(false);
    process->Tracing().Follow();
    EXPECT_FALSE(Trace::IsOn());
}

}  // namespace
}  // namespace PlatformTest
