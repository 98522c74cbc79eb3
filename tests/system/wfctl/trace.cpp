// What the programs of a watch record of themselves.

#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "a-watch.h"

namespace fs = std::filesystem;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char kCapture[] = "com.corvane.watchface-capture";

class AWatchThatIsTraced : public AWatch {
protected:
    std::string Recorded() const { return mRoot + "/common/trace.json"; }

    // Ends the trace; its events.
    Json End()
    {
        const std::string out = mFolder + "/copy.json";
        const Result ended = Run({"trace", "off", "-o", out});
        EXPECT_EQ(ended.status, 0) << ended.err;
        EXPECT_EQ(ended.out, out + "\n");
        return Json::parse(ContentsOf(out));
    }

    static Json Where(const Json& events, const std::map<std::string, Json>& wanted)
    {
        Json found = Json::array();
        for (const Json& event : events) {
            const bool fits = std::all_of(wanted.begin(), wanted.end(), [&](const auto& one) {
                return event.contains(one.first) && event[one.first] == one.second;
            });
            if (fits) found.push_back(event);
        }
        return found;
    }
    static pid_t ProcessOf(const Json& events, const std::string& program)
    {
        const Json named = Where(events, {
                                             {"name", "process_name"     },
                                             {"args", {{"name", program}}}
        });
        EXPECT_FALSE(named.empty()) << program;
        return named.empty() ? pid_t{-1} : named[0]["pid"].get<pid_t>();
    }
    static Json Spans(const Json& events, const std::string& program, const std::string& kind,
                      const std::string& name)
    {
        return Where(events,
                     {
                         {"ph",  "X"             },
                         {"pid", ProcessOf(events, program)},
                         {"cat",     kind                },
                         {"name",     name}
        });
    }

    // Whether a flow goes from one of these spans to one of those.
    static bool AreConnected(const Json& events, const Json& from, const Json& to)
    {
        const auto isIn = [](const Json& flow, const Json& spans) {
            return std::any_of(spans.begin(), spans.end(), [&](const Json& span) {
                const double begin = span["ts"], end = begin + span["dur"].get<double>(), at = flow["ts"];
                return span["tid"] == flow["tid"] && begin <= at && at <= end;
            });
        };
        for (const Json& out : Where(events, {
                                                 {"ph", "s"}
        })) {
            if (!isIn(out, from)) continue;
            for (const Json& in : Where(events, {
                                                    {"ph", "f"      },
                                                    {"id", out["id"]}
            })) {
                if (isIn(in, to)) return out["ts"] <= in["ts"];
            }
        }
        return false;
    }

    Result Install() { return Run({"install", StagedResultXml(kDigital)}); }
    // The picture is there before the service has heard of it.
    bool ServiceHasHeard() const
    {
        return Eventually([&] {
            return ContentsOf(Recorded()).find(R"("args":{"from":"com.corvane.watchface-capture")") !=
                   std::string::npos;
        });
    }
};

// Spans of one thread that overlap without one lying inside the other.
std::vector<std::string> Crossings(const Json& events)
{
    struct Span {
        double begin, end;
        std::string name;
    };
    std::map<int, std::vector<Span>> threads;
    for (const Json& event : events) {
        if (event["ph"] != "X") continue;
        const double begin = event["ts"];
        threads[event["tid"]].push_back({begin, begin + event["dur"].get<double>(), event["name"]});
    }
    std::vector<std::string> crossings;
    for (auto& [thread, spans] : threads) {
        for (const Span& a : spans) {
            for (const Span& b : spans) {
                if (a.begin < b.begin && b.begin < a.end && a.end < b.end - 0.002)
                    crossings.push_back(a.name + " and " + b.name);
            }
        }
    }
    return crossings;
}

}  // namespace

TEST_F(AWatchThatIsTraced, shows_an_install_with_its_preview_across_both_programs)
{
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    ASSERT_EQ(Install().status, 0);
    ASSERT_TRUE(ServiceHasHeard());
    const Json events = End();

    EXPECT_NE(ProcessOf(events, kService), ProcessOf(events, kCapture));
    const Json requests = Spans(events, kService, "message", "send");
    const Json asked = Spans(events, kCapture, "message", "receive");
    const Json finished = Spans(events, kCapture, "message", "send");
    const Json told = Spans(events, kService, "message", "receive");
    EXPECT_TRUE(AreConnected(events, requests, asked));
    EXPECT_TRUE(AreConnected(events, finished, told));

    std::vector<std::string> replaced;
    for (const char* program : {kService, kCapture}) {
        for (const Json& span : Spans(events, program, "file", "replace")) {
            replaced.push_back(fs::path(span["args"]["path"].get<std::string>()).filename());
        }
    }
    for (const std::string& file : {kDigital + std::string("_result.xml"), std::string("watchface.xml"),
                                    kDigital + std::string(".png")}) {
        EXPECT_THAT(replaced, Contains(file));
    }
    EXPECT_THAT(Spans(events, kCapture, "task", "job"), Not(IsEmpty()));
    EXPECT_THAT(Crossings(events), IsEmpty());
}

TEST_F(AWatchThatIsTraced, shows_how_the_capture_application_is_started)
{
    ASSERT_TRUE(Eventually([&] { return !Run({"status", "--json"}).AsJson()["capture"].contains("pid"); }));
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    ASSERT_EQ(Install().status, 0);
    ASSERT_TRUE(ServiceHasHeard());
    const Json events = End();
    EXPECT_THAT(Spans(events, kService, "launch", "start"), Not(IsEmpty()));
    EXPECT_THAT(Spans(events, kCapture, "application", "create"), Not(IsEmpty()));
    EXPECT_TRUE(AreConnected(events, Spans(events, kService, "launch", "send"),
                             Spans(events, kCapture, "launch", "request")));
    EXPECT_TRUE(AreConnected(events, Spans(events, kCapture, "launch", "answer"),
                             Spans(events, kService, "launch", "answered")));
}

TEST_F(AWatchThatIsTraced, records_nothing_by_itself)
{
    ASSERT_EQ(Install().status, 0);
    EXPECT_FALSE(fs::exists(Recorded()));
    const Result ended = Run({"trace", "off"});
    EXPECT_EQ(ended.status, 10);
    EXPECT_THAT(ended.err, testing::HasSubstr("wfctl trace on"));
}

TEST_F(AWatchThatIsTraced, is_switched_once)
{
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    EXPECT_EQ(Run({"trace", "on"}).status, 9);
    ASSERT_EQ(Install().status, 0);
    const std::string trace = Run({"trace", "off"}).out;
    const Result again = Run({"trace", "off"});
    EXPECT_EQ(again.status, 9);
    EXPECT_THAT(again.err, testing::HasSubstr(trace.substr(0, trace.size() - 1)));
    EXPECT_EQ(Run({"trace", "off", "-o", mFolder + "/copy.json"}).status, 0) << "what there is can be had";
}

TEST_F(AWatchThatIsTraced, records_nothing_more_once_it_is_off)
{
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    ASSERT_EQ(Install().status, 0);
    const Result ended = Run({"trace", "off"});
    EXPECT_EQ(ended.out, fs::canonical(Recorded()).string() + "\n");
    // The capture application is told by a signal, which its answer to a later request comes behind.
    ASSERT_EQ(Install().status, 0);
    const auto size = fs::file_size(Recorded());
    ASSERT_EQ(Install().status, 0);
    EXPECT_EQ(fs::file_size(Recorded()), size);
}

TEST_F(AWatchThatIsTraced, goes_on_when_the_service_is_killed_and_started_anew)
{
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    const pid_t killed = Run({"status", "--json"}).AsJson()["service"]["pid"];
    kill(killed, SIGKILL);
    ASSERT_TRUE(Eventually([&] { return !IsRunning(killed); }));
    ASSERT_EQ(Install().status, 0);
    const Json events = End();
    const Json programs = Where(events, {
                                            {"name", "process_name"      },
                                            {"args", {{"name", kService}}}
    });
    ASSERT_EQ(programs.size(), 2U);
    EXPECT_EQ(programs[0]["pid"], killed);
    EXPECT_NE(programs[1]["pid"], killed);
}

TEST_F(AWatchThatIsTraced, begins_anew_each_time)
{
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    ASSERT_EQ(Install().status, 0);
    ASSERT_EQ(Run({"trace", "off"}).status, 0);
    ASSERT_EQ(Run({"trace", "on"}).status, 0);
    const Json events = End();
    EXPECT_THAT(Where(events,
                      {
                          {"cat", "file"}
    }),
                IsEmpty());
}
