// Completion as a shell does it, on a watch with faces.

#include <filesystem>
#include <sstream>

#include "a-watch.h"

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;

namespace {

class ACompletion : public AWatch {
protected:
    // What bash offers behind these words, the last of which is being typed.
    std::vector<std::string> Offered(const Arguments& words)
    {
        mEnvironment["PATH"] = fs::path(WFCTL).parent_path().string() + ":" + std::getenv("PATH");
        const std::string script =
            "eval \"$(wfctl completion bash)\"; compopt() { :; }\n"
            "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _wfctl\n"
            "printf '%s\\n' \"${COMPREPLY[@]}\"";
        Arguments command = {"bash", "-c", script, "bash", "wfctl"};
        command.insert(command.end(), words.begin(), words.end());
        std::istringstream lines(RunProgram(command, mEnvironment).out);
        std::vector<std::string> offered;
        for (std::string line; std::getline(lines, line);) {
            if (!line.empty()) offered.push_back(line);
        }
        return offered;
    }
};

}  // namespace

TEST_F(ACompletion, finishes_verbs)
{
    EXPECT_THAT(Offered({"ed"}), ElementsAre("edit"));
    EXPECT_THAT(Offered({"setting", "se"}), ElementsAre("set"));
}

TEST_F(ACompletion, knows_the_faces_of_the_watch)
{
    EXPECT_THAT(Offered({"show", "com.corvane.watchface-mirel-c1"}), Contains(kClassic));
    EXPECT_THAT(Offered({"show", "--root", mFolder + "/nowhere", "com."}), testing::IsEmpty());
}

TEST_F(ACompletion, knows_what_the_named_face_offers)
{
    EXPECT_THAT(Offered({"edit", "c1", "--pick", "dial=r"}), Contains("dial=roman"));
    EXPECT_THAT(Offered({"edit", "c1", "--pick", "dial", "=", "r"}), Contains("roman"));
}

TEST_F(ACompletion, knows_the_keys_that_are_stored)
{
    Run({"key", "set", "my/own-key", "1"});
    EXPECT_THAT(Offered({"key", "get", "my/"}), ElementsAre("my/own-key"));
}

TEST_F(ACompletion, finishes_files_where_files_are_taken)
{
    Holding("a-drawing.png", "");
    EXPECT_THAT(Offered({"bg", "add", mFolder + "/a-dr"}), ElementsAre(mFolder + "/a-drawing.png"));
}

TEST_F(ACompletion, knows_faces_by_the_ends_of_their_names)
{
    EXPECT_THAT(Offered({"show", "c1"}), ElementsAre("c1"));
    EXPECT_THAT(Offered({"edit", "mirel-c1"}), ElementsAre("mirel-c1"));
}

TEST_F(ACompletion, knows_the_pictures_of_the_watch)
{
    const std::string picture = Holding("cat.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    ASSERT_EQ(Run({"bg", "add", picture}).status, 0);
    EXPECT_THAT(Offered({"bg", "del", "c"}), ElementsAre("cat.png"));
    EXPECT_THAT(Offered({"bg", "del", "--type", "digital", "c"}), testing::IsEmpty());
    EXPECT_THAT(Offered({"edit", "u1", "--photo", "picture=c"}), ElementsAre("picture=cat.png"));
}

TEST_F(ACompletion, knows_time_zones_and_world_clocks)
{
    EXPECT_THAT(Offered({"render", "c1", "--timezone", "Asia/Seo"}), ElementsAre("Asia/Seoul"));
    EXPECT_THAT(Offered({"setting", "set", "timezone=Asia/Seo"}), ElementsAre("timezone=Asia/Seoul"));
    EXPECT_THAT(Offered({"edit", "c4", "--place", "city=worldclock@Asia/Seo"}),
                ElementsAre("city=worldclock@Asia/Seoul"));
    EXPECT_THAT(Offered({"world-clock", "show", "c4", "z"}), ElementsAre("zone", "zones"));
    ASSERT_EQ(Run({"set", "c4"}).status, 0);
    ASSERT_EQ(Run({"world-clock", "prepare"}).status, 0);
    EXPECT_THAT(Offered({"world-clock", "update", "ci"}), ElementsAre("city"));
    EXPECT_THAT(Offered({"world-clock", "update", "city", "Asia/Seo"}), ElementsAre("Asia/Seoul"));
}

TEST_F(ACompletion, knows_what_was_moved_away)
{
    fs::create_directories(mRoot + "/lost+found/20260102T030405Z");
    EXPECT_THAT(Offered({"doctor", "--undo", ""}), ElementsAre("20260102T030405Z"));
}

TEST_F(ACompletion, knows_the_pages_of_the_manual)
{
    EXPECT_THAT(Offered({"manual", "ed"}), ElementsAre("edit"));
    EXPECT_THAT(Offered({"manual", "setting", "se"}), ElementsAre("set"));
}
