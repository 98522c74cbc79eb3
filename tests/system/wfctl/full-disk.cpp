// A watch that cannot write what it is told to store.

#include <sys/resource.h>

#include <csignal>
#include <filesystem>

#include "a-watch.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

constexpr char kWithWorldClock[] = "com.corvane.watchface-mirel-c4";

// A write past the limit on files then fails, as on a full disk, in all programs that a test starts.
struct FilesMayBeLimited {
    FilesMayBeLimited() { std::signal(SIGXFSZ, SIG_IGN); }
};

class AFullWatch : FilesMayBeLimited, public AWatch {
protected:
    // From now on the service writes no file that is longer than that.
    void LimitFiles(rlim_t bytes) const
    {
        const pid_t service = Run({"status", "--json"}).AsJson()["service"]["pid"].get<pid_t>();
        const rlimit limit{bytes, RLIM_INFINITY};
        ASSERT_EQ(prlimit(service, RLIMIT_FSIZE, &limit, nullptr), 0);
    }
};

}  // namespace

TEST_F(AFullWatch, says_that_nothing_is_stored_and_why)
{
    const std::string document = ReadWriteFace(kClassic) + kClassic + "_result.xml";
    ASSERT_EQ(Run({"install", StagedResultXml(kClassic)}).status, 0);
    const std::string before = ContentsOf(document);
    LimitFiles(before.size() - 1);
    const std::vector<Arguments> verbs = {
        {"edit",             kClassic,             "--pick", "dial=roman"},
        { "update", Holding("new.xml", before + "<!-- -->"), "--name",     kClassic},
    };
    for (const Arguments& verb : verbs) {
        const Result done = Run(verb);
        EXPECT_EQ(done.status, 1);
        EXPECT_EQ(done.out, "");
        EXPECT_THAT(done.err,
                    StartsWith("wfctl: the service could not write [" + document + "]; its log says:\n"));
        EXPECT_THAT(done.err, HasSubstr("File too large"));
    }
    EXPECT_EQ(ContentsOf(document), before);
}

TEST_F(AFullWatch, has_installed_nothing)
{
    LimitFiles(1);  // for the log, too
    const Result installed = Run({"install", StagedResultXml(kClassic)});
    EXPECT_EQ(installed.status, 1);
    EXPECT_EQ(installed.out, "");
    EXPECT_THAT(installed.err, HasSubstr("_result.xml]; make room on its disk"));
    const Result json = Run({"install", StagedResultXml(kClassic), "--json", "--no-wait"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.out, "");
}

TEST_F(AFullWatch, says_which_of_a_faces_files_could_not_be_written)
{
    ASSERT_EQ(Run({"install", StagedResultXml(kClassic)}).status, 0);
    const std::string flat = ReadWriteFace(kClassic) + "watchface.xml";
    fs::remove(flat);
    fs::create_directories(flat + "/in its place");
    const Result requested = Run({"preview", "request", kClassic});
    EXPECT_EQ(requested.status, 1);
    EXPECT_THAT(requested.err, HasSubstr("the service could not write [" + flat + "]; its log says:"));
}

TEST_F(AFullWatch, says_why_a_preview_did_not_come)
{
    const std::string preview = ReadWriteFace(kClassic) + kClassic + ".png";
    fs::create_directories(preview + "/in its place");
    const Result installed = Run({"install", StagedResultXml(kClassic), "--timeout", "1"});
    EXPECT_EQ(installed.status, 3);
    EXPECT_THAT(installed.err, HasSubstr("is stored, but no new preview came"));
    EXPECT_THAT(installed.err, HasSubstr("in time; the log says:\n"));
}

TEST_F(AFullWatch, has_prepared_no_world_clock)
{
    ASSERT_EQ(Run({"set", "c4"}).status, 0);
    LimitFiles(1);
    const Result prepared = Run({"world-clock", "prepare", "--json"});
    EXPECT_EQ(prepared.status, 1);
    EXPECT_EQ(prepared.out, "");
    EXPECT_THAT(prepared.err, HasSubstr("the service did not keep that the next update is for [" +
                                        std::string(kWithWorldClock) + "]; look for watchface-service"));
}

TEST_F(AFullWatch, has_updated_no_world_clock)
{
    ASSERT_EQ(Run({"set", "c4"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "prepare"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "update", "city", "Asia/Seoul"}).status, 0);
    const std::string flat = ReadWriteFace(kWithWorldClock) + "watchface.xml";
    const std::string before = ContentsOf(flat);
    LimitFiles(before.size() / 2);
    for (const Arguments& form : {Arguments{}, Arguments{"--json"}}) {
        Arguments update{"world-clock", "update", "city", "Europe/Paris"};
        update.insert(update.end(), form.begin(), form.end());
        const Result updated = Run(update);
        EXPECT_EQ(updated.status, 1);
        EXPECT_EQ(updated.out, "");
        EXPECT_THAT(updated.err, HasSubstr("the service could not write [" + flat + "]; "));
    }
    EXPECT_EQ(ContentsOf(flat), before);
    EXPECT_THAT(Run({"world-clock", "show", "c4", "zone"}).out, HasSubstr("timezonePath: Asia/Seoul\n"));
    // What is so already is stored.
    EXPECT_EQ(Run({"world-clock", "update", "city", "Asia/Seoul"}).status, 0);
}
