// Private watches: up, down, status, and what survives.

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

#include "a-watch.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

pid_t ServiceOf(const Result& status)
{
    const Json service = Json::parse(status.out, nullptr, false);
    if (service.is_discarded() || !service["service"]["running"].get<bool>()) return 0;
    return service["service"]["pid"].get<pid_t>();
}

// The watch at `root`, as long as it lives; also for root, whom no permission keeps out.
class OwnedByAnother {
public:
    explicit OwnedByAnother(std::string root) : mRoot(std::move(root)) { Set(kNobody, 0); }
    ~OwnedByAnother() { Set(0, 0700); }
    OwnedByAnother(const OwnedByAnother&) = delete;
    OwnedByAnother& operator=(const OwnedByAnother&) = delete;

private:
    static constexpr uid_t kNobody = 65534;

    void Set(uid_t owner, mode_t mode) const
    {
        EXPECT_EQ(geteuid() == 0 ? chown((mRoot + "/watch.lock").c_str(), owner, static_cast<gid_t>(-1))
                                 : chmod(mRoot.c_str(), mode),
                  0);
    }

    const std::string mRoot;
};

// A service that is to answer and does not, until something ends it.
class ASilentService : public AWatch {
protected:
    ASilentService()
    {
        EXPECT_EQ(kill(mService, SIGSTOP), 0);
        const auto monitor = Start({"monitor", "--count", "1", kService});
        EXPECT_EQ(monitor->NextErrorLine(), "monitoring");
        mAsking = Start({"preview", "request", kClassic});
        EXPECT_TRUE(monitor->NextLine());
    }

    const pid_t mService = ServiceOf(Run({"status", "--json"}));
    std::unique_ptr<Program> mAsking;
};

}  // namespace

TEST_F(AWatch, comes_up_in_a_folder_with_a_long_and_awkward_name)
{
    EXPECT_GE(mRoot.size(), 200U);
    EXPECT_THAT(mUp.out, HasSubstr("watch.env"));
    EXPECT_GT(ServiceOf(Run({"status", "--json"})), 0);
}

TEST_F(AWatch, has_an_environment_that_a_shell_can_source)
{
    struct stat info {};
    ASSERT_EQ(stat((mRoot + "/watch.env").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0600U);

    const Arguments shell = {
        "sh", "-c",
        ". \"$1\"; printf '%s|%s|%s' \"$DBUS_SESSION_BUS_ADDRESS\" \"$WATCH_ROOT\" \"$WATCH_RESOURCES\"",
        "sh", mRoot + "/watch.env"};
    EXPECT_EQ(RunProgram(shell, {}).out,
              "unix:path=" + State("RUN_FOLDER") + "/bus|" + mRoot + "|" + std::string(STAGED_FACES));
}

TEST_F(AWatch, has_a_socket_with_a_short_name)
{
    EXPECT_LT(State("RUN_FOLDER").size(), 100U);
    EXPECT_TRUE(fs::is_socket(State("RUN_FOLDER") + "/bus"));
}

TEST_F(AWatch, says_what_runs_and_which_trust_holds)
{
    const Json status = Run({"status", "--json"}).AsJson();
    EXPECT_TRUE(status["service"]["running"].get<bool>());
    EXPECT_FALSE(status["capture"]["running"].get<bool>());
    EXPECT_EQ(status["bus"]["kind"], "private");
    EXPECT_EQ(status["trust"], "same-user");
    EXPECT_EQ(status["root"], mRoot);
    EXPECT_EQ(status["faces"], StagedFaces().size());
    EXPECT_THAT(Run({"status"}).out, HasSubstr("trusted means the same user"));
}

TEST_F(AWatch, can_be_named_by_its_folder)
{
    EXPECT_EQ(Wfctl({"status", "--root", mRoot}).status, 0);
    EXPECT_EQ(Wfctl({"--root", mRoot, "key", "set", "a", "1"}).status, 0);
    EXPECT_EQ(Run({"key", "get", "a"}).out, "1\n");
}

TEST_F(AWatch, is_named_by_what_people_are_told_to_type)
{
    const Result missing = Wfctl({"key", "get", "none", "--root", mRoot});
    EXPECT_EQ(missing.status, 10);
    const auto at = missing.err.find("type: wfctl ");
    ASSERT_NE(at, std::string::npos) << missing.err;
    const std::string words = missing.err.substr(at + 12);
    EXPECT_EQ(RunProgram({"sh", "-c", "\"$1\" " + words, "sh", WFCTL}, {}).status, 0) << words;
}

TEST_F(AWatch, that_is_up_already_is_left_alone)
{
    const pid_t service = ServiceOf(Run({"status", "--json"}));
    const Result again = Wfctl({"up", "--root", mRoot});
    EXPECT_EQ(again.status, 9);
    EXPECT_THAT(again.err, HasSubstr("already up"));
    EXPECT_EQ(ServiceOf(Run({"status", "--json"})), service);
}

TEST_F(AWatch, that_goes_down_leaves_its_data_and_no_process)
{
    ASSERT_EQ(Run({"key", "set", "a/b", "kept"}).status, 0);
    const pid_t service = ServiceOf(Run({"status", "--json"}));
    const pid_t supervisor = std::stoi(State("SUPERVISOR")), bus = std::stoi(State("BUS"));
    const std::string runFolder = State("RUN_FOLDER");

    EXPECT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);

    for (const pid_t pid : {service, supervisor, bus}) EXPECT_FALSE(IsRunning(pid)) << pid;
    EXPECT_FALSE(fs::exists(runFolder));
    EXPECT_FALSE(fs::exists(mRoot + "/watch.env"));
    EXPECT_FALSE(fs::exists(mRoot + "/watch.state"));
    EXPECT_TRUE(fs::exists(mRoot + "/watch.log"));
    EXPECT_EQ(Run({"status"}).status, 8);
    EXPECT_EQ(Wfctl({"down", "--root", mRoot}).status, 9);

    EXPECT_EQ(Wfctl({"up", "--root", mRoot}).status, 0);
    EXPECT_EQ(Wfctl({"key", "get", "a/b", "--root", mRoot}).out, "kept\n");
}

TEST_F(ASilentService, is_gone_in_the_same_words_for_all_when_the_watch_goes_down)
{
    const auto listener = Listen({"--as", kManager});
    const auto monitor = Start({"monitor"});
    ASSERT_EQ(monitor->NextErrorLine(), "monitoring");
    const std::string bus = "unix:path=" + State("RUN_FOLDER") + "/bus";
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    for (Program* program : {mAsking.get(), listener.get(), monitor.get()}) {
        EXPECT_EQ(program->AwaitEnd(), 8);
        const std::string said = program->NextErrorLine().value_or("");
        EXPECT_THAT(said, StartsWith("wfctl: the bus at [" + bus + "] is gone; type: wfctl up --root '"));
        EXPECT_THAT(said, testing::EndsWith("/watch.env'")) << "for the environment has its bus";
    }
}

TEST_F(ASilentService, has_not_answered_when_it_alone_ends)
{
    ASSERT_EQ(kill(mService, SIGKILL), 0);
    EXPECT_EQ(mAsking->AwaitEnd(), 3);
    EXPECT_THAT(mAsking->NextErrorLine().value_or(""), HasSubstr("did not answer (as "));
}

TEST_F(AWatch, of_another_user_is_told_from_one_that_is_down)
{
    const OwnedByAnother another(mRoot);
    for (const char* typed :
         {"doctor", "doctor --fix", "list", "survey list", "status", "key list", "set c1"}) {
        std::istringstream words(typed);
        const Arguments verb{std::istream_iterator<std::string>(words), {}};
        Arguments named = verb;
        named.insert(named.begin(), {"--root", mRoot});
        for (const Result& done : {Run(verb), Wfctl(named)}) {
            EXPECT_EQ(done.status, 4) << typed;
            EXPECT_EQ(done.out, "") << typed;
            EXPECT_THAT(done.err, StartsWith("wfctl: the watch at [")) << typed;
            EXPECT_THAT(done.err, testing::EndsWith("] is another user's; speak to it as that user\n"));
        }
    }
}

TEST_F(AWatch, that_is_down_may_be_another_users_too)
{
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    const OwnedByAnother another(mRoot);
    for (const char* verb : {"doctor", "list", "current"}) EXPECT_EQ(Run({verb}).status, 4) << verb;
    const Result up = Wfctl({"up", "--root", mRoot});
    EXPECT_EQ(up.status, 4);
    EXPECT_THAT(up.err, testing::EndsWith("] is another user's; speak to it as that user\n"));
}

TEST_F(AWatch, gets_its_bus_back_at_the_same_address)
{
    const pid_t service = ServiceOf(Run({"status", "--json"}));
    ASSERT_EQ(kill(std::stoi(State("BUS")), SIGKILL), 0);
    EXPECT_TRUE(Eventually([&] {
        const pid_t now = ServiceOf(Run({"status", "--json"}));
        return now > 0 && now != service;
    }));
    EXPECT_FALSE(IsRunning(service));
    EXPECT_EQ(Run({"key", "set", "a", "1"}).status, 0);
}

TEST_F(AWatch, whose_service_was_killed_starts_it_for_the_next_message)
{
    const pid_t service = ServiceOf(Run({"status", "--json"}));
    ASSERT_EQ(kill(service, SIGKILL), 0);
    EXPECT_TRUE(Eventually([&] { return ServiceOf(Run({"status", "--json"})) == 0; }));
    EXPECT_EQ(Run({"status"}).status, 0);
    EXPECT_EQ(Run({"send", "--as", kManager, kService, "type=watch-req-watchlists"}).status, 0);
    EXPECT_GT(ServiceOf(Run({"status", "--json"})), 0);
}

TEST_F(AWatch, without_its_supervisor_goes_down_and_up_again)
{
    const pid_t service = ServiceOf(Run({"status", "--json"})), bus = std::stoi(State("BUS"));
    ASSERT_EQ(kill(std::stoi(State("SUPERVISOR")), SIGKILL), 0);
    EXPECT_TRUE(Eventually([&] { return !IsRunning(bus) && !IsRunning(service); }));
    EXPECT_EQ(Wfctl({"up", "--root", mRoot}).status, 0);
    EXPECT_EQ(Wfctl({"status", "--root", mRoot}).status, 0);
}

TEST_F(AWatch, goes_down_when_its_folder_is_removed)
{
    const pid_t service = ServiceOf(Run({"status", "--json"}));
    const pid_t supervisor = std::stoi(State("SUPERVISOR")), bus = std::stoi(State("BUS"));
    const std::string runFolder = State("RUN_FOLDER");
    // Unlike remove_all() it bears that the watch removes files of its own meanwhile.
    EXPECT_EQ(RunProgram({"rm", "-rf", mRoot}, {}).status, 0);
    EXPECT_TRUE(Eventually([&] { return !IsRunning(supervisor); }));
    for (const pid_t pid : {service, bus}) EXPECT_FALSE(IsRunning(pid)) << pid;
    EXPECT_FALSE(fs::exists(runFolder));
    EXPECT_FALSE(fs::exists(mRoot));
}

TEST_F(AWatch, comes_up_anew_while_the_one_whose_folder_was_removed_still_ends)
{
    const pid_t service = ServiceOf(Run({"status", "--json"})), supervisor = std::stoi(State("SUPERVISOR"));
    ASSERT_EQ(kill(service, SIGSTOP), 0);  // so that it does not end when it is told to
    EXPECT_EQ(RunProgram({"rm", "-rf", mRoot}, {}).status, 0);
    ASSERT_EQ(Wfctl({"up", "--root", mRoot}).status, 0);
    ASSERT_TRUE(IsRunning(supervisor));
    EXPECT_TRUE(Eventually([&] { return !IsRunning(supervisor); }));
    EXPECT_TRUE(fs::exists(mRoot + "/watch.env"));
    EXPECT_EQ(Wfctl({"status", "--root", mRoot}).status, 0);
}

TEST_F(AWatch, comes_up_anew_while_the_one_whose_folder_was_removed_still_awaits_the_end_of_its_programs)
{
    const pid_t service = ServiceOf(Run({"status", "--json"})), supervisor = std::stoi(State("SUPERVISOR"));
    const std::string runFolder = State("RUN_FOLDER");
    const pid_t bus = std::stoi(State("BUS"));
    ASSERT_EQ(kill(service, SIGSTOP), 0);  // so that it does not end when its bus does
    ASSERT_EQ(kill(bus, SIGKILL), 0);
    ASSERT_TRUE(Eventually([&] { return !IsRunning(bus); }));
    EXPECT_EQ(RunProgram({"rm", "-rf", mRoot}, {}).status, 0);
    ASSERT_EQ(Wfctl({"up", "--root", mRoot}).status, 0);
    ASSERT_TRUE(IsRunning(supervisor));
    EXPECT_TRUE(Eventually([&] { return !IsRunning(supervisor); }));
    EXPECT_FALSE(fs::exists(runFolder));
    EXPECT_EQ(Wfctl({"status", "--root", mRoot}).status, 0);
}

TEST_F(AWatch, holds_nothing_open_that_was_open_in_the_shell_that_brought_it_up)
{
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    const std::string lock = Holding("lock", "");
    ASSERT_EQ(RunProgram({"sh", "-c", "exec 9>\"$1\"; \"$2\" up --root \"$3\"", "sh", lock, WFCTL, mRoot}, {})
                  .status,
              0);
    for (const char* process : {"SUPERVISOR", "BUS"}) {
        for (const auto& open :
             fs::directory_iterator("/proc/" + std::to_string(std::stoi(State(process))) + "/fd"))
            EXPECT_NE(fs::read_symlink(open), lock) << process;
    }
}

TEST_F(AWatch, stays_up_when_its_folder_is_moved_or_other_files_there_are_removed)
{
    const std::string moved = mFolder + "/moved";
    fs::rename(mRoot, moved);
    ASSERT_TRUE(fs::remove(moved + "/watch.log"));
    EXPECT_EQ(Wfctl({"status", "--root", moved}).status, 0);
    EXPECT_EQ(Wfctl({"down", "--root", moved}).status, 0);
    fs::rename(moved, mRoot);
}

TEST_F(AWatch, that_lacks_its_environment_has_it_written_by_the_next_up)
{
    ASSERT_TRUE(fs::remove(mRoot + "/watch.env"));
    ASSERT_EQ(Wfctl({"up", "--root", mRoot}).status, 9);
    EXPECT_EQ(
        RunProgram({"sh", "-c", ". \"$1\" && \"$2\" status", "sh", mRoot + "/watch.env", WFCTL}, {}).status,
        0);
}

TEST_F(AWatch, that_is_down_is_looked_at_by_verbs_that_read_files)
{
    // Not those beside the programs: faces are found where the watch had them.
    const std::string faces = mFolder + "/faces";
    fs::copy(STAGED_FACES, faces, fs::copy_options::recursive);
    // Copied before its document, which says nothing of whether it is the document's.
    fs::last_write_time(
        faces + "/com.corvane.watchface/shared/res/watchlist/" + kDigital + "/" + kDigital + ".png",
        fs::file_time_type::min());
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    ASSERT_EQ(Wfctl({"up", "--root", mRoot, "--resources", faces}).status, 0);
    ASSERT_EQ(Wfctl({"edit", "c1", "--pick", "dial=roman", "--root", mRoot}).status, 0);
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    const std::string picture = mFolder + "/c1.png";
    EXPECT_EQ(Wfctl({"render", "c1", "-o", picture, "--root", mRoot}).status, 0);
    for (const char* verb : {"list", "doctor"}) EXPECT_EQ(Wfctl({verb, "--root", mRoot}).status, 0) << verb;
    EXPECT_EQ(Wfctl({"validate", "c1", "--root", mRoot}).status, 0);
    EXPECT_EQ(Wfctl({"preview", "check", "--root", mRoot}).status, 0);
    EXPECT_THAT(Wfctl({"show", "c1", "--root", mRoot}).out, HasSubstr("* roman"));
    EXPECT_THAT(Wfctl({"show", "c4", "--root", mRoot}).out, HasSubstr(faces));
}

TEST_F(AWatch, that_is_down_is_not_taken_for_the_one_of_the_environment)
{
    const std::string other = mFolder + "/other";
    ASSERT_EQ(Wfctl({"up", "--root", other}).status, 0);
    ASSERT_EQ(Wfctl({"down", "--root", other}).status, 0);
    const Result set = Run({"set", "c4", "--root", other});
    EXPECT_EQ(set.status, 8);
    EXPECT_THAT(set.err,
                HasSubstr("no watch is up at [" + other + "]; type: wfctl up --root '" + other + "'"));
    EXPECT_EQ(Run({"current"}).status, 10) << "nothing was set here";
}

TEST_F(AWatch, that_came_up_again_is_found_by_a_shell_with_the_old_environment)
{
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    EXPECT_THAT(Run({"status"}).err, HasSubstr("type: wfctl up --root "));
    ASSERT_EQ(Wfctl({"up", "--root", mRoot}).status, 0);
    const Result status = Run({"status"});
    EXPECT_EQ(status.status, 8);
    const auto at = status.err.find("type: . ");
    ASSERT_NE(at, std::string::npos) << status.err;
    const std::string command = status.err.substr(at + 6, status.err.size() - at - 7) + " && \"$1\" status";
    EXPECT_EQ(RunProgram({"sh", "-c", command, "sh", WFCTL}, mEnvironment).status, 0) << command;
}

TEST_F(AWatch, is_brought_up_once_when_two_try)
{
    ASSERT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    Program first({WFCTL, "up", "--root", mRoot}, {});
    Program second({WFCTL, "up", "--root", mRoot}, {});
    EXPECT_EQ(first.AwaitEnd() + second.AwaitEnd(), 9);
}

// As an `up` that was killed early leaves it.
TEST_F(AWatch, whose_state_lacks_its_processes_goes_down_all_the_same)
{
    const pid_t supervisor = std::stoi(State("SUPERVISOR"));
    const std::string runFolder = State("RUN_FOLDER");
    const std::string state = std::regex_replace(ContentsOf(mRoot + "/watch.state"),
                                                 std::regex("(SUPERVISOR|BUS)='[^']*'"), "$1='0 0'");
    std::ofstream(mRoot + "/watch.state") << state;
    EXPECT_EQ(Wfctl({"down", "--root", mRoot}).status, 0);
    EXPECT_TRUE(Eventually([&] { return !IsRunning(supervisor); }));
    EXPECT_FALSE(fs::exists(runFolder));
    EXPECT_FALSE(fs::exists(mRoot + "/watch.state"));
}

TEST_F(AWatch, keeps_the_log_of_its_programs)
{
    Run({"send", "--as", kManager, kService, "type=watch-idle-changed", "pkgid=x"});
    EXPECT_THAT(ContentsOf(mRoot + "/watch.log"),
                HasSubstr("messageType = [watch-idle-changed], watch_name = [x]"));
}

TEST_F(AFolder, without_a_watch_says_how_to_bring_one_up)
{
    const Result status = Wfctl({"status", "--root", mFolder});
    EXPECT_EQ(status.status, 8);
    EXPECT_THAT(status.err, HasSubstr("wfctl up --root '" + mFolder + "'"));
    EXPECT_EQ(Wfctl({"status"}).status, 8);
    EXPECT_EQ(Wfctl({"down", "--root", mFolder}).status, 9);
    EXPECT_EQ(Wfctl({"down", "--root", mFolder + "/none"}).status, 9);
}

TEST_F(AFolder, without_faces_to_show_gets_no_watch)
{
    EXPECT_EQ(Wfctl({"up", "--root", mFolder + "/w", "--resources", mFolder + "/none"}).status, 10);
    EXPECT_FALSE(fs::exists(mFolder + "/w"));
}

TEST_F(AFolder, may_hold_the_faces)
{
    fs::create_directories(mFolder + "/faces");
    ASSERT_EQ(Wfctl({"up", "--root", mFolder + "/w", "--resources", mFolder + "/faces"}).status, 0);
    EXPECT_EQ(Wfctl({"status", "--json", "--root", mFolder + "/w"}).AsJson()["faces"], 0);
    EXPECT_EQ(Wfctl({"down", "--root", mFolder + "/w"}).status, 0);
}

TEST_F(AWatch, is_not_spoken_to_with_another_folder)
{
    mEnvironment["HOME"] = mEnvironment["XDG_STATE_HOME"] = Path();
    for (const std::string& other : {std::string(), Path()}) {
        mEnvironment["WATCH_ROOT"] = other;
        const Result result = Run({"set", "e1"});
        EXPECT_EQ(result.status, 8);
        EXPECT_THAT(result.err, HasSubstr(other.empty() ? "but WATCH_ROOT is not set; type: . "
                                                        : "but WATCH_ROOT is [" + other + "]; type: . "));
        EXPECT_EQ(Run({"pref", "set", kService, "a", "1"}).status, 8);
    }
    EXPECT_FALSE(fs::exists(Path() + "/watch/common"));
    EXPECT_THAT(Wfctl({"current", "--root", mRoot}).out, testing::Not(HasSubstr(kDigital)));
}

TEST_F(AWatch, is_not_looked_for_on_another_bus)
{
    mEnvironment["DBUS_SESSION_BUS_ADDRESS"] = "";
    const Result result = Run({"set", "e1"});
    EXPECT_EQ(result.status, 8);
    EXPECT_THAT(result.err, HasSubstr("DBUS_SESSION_BUS_ADDRESS is not set"));
    EXPECT_EQ(Run({"list"}).status, 0);  // files alone
}
