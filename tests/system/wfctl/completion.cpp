// Completion as a shell does it, on a watch with faces.

#include <filesystem>
#include <sstream>

#include "a-watch.h"
#include "terminal.h"

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;

namespace {

class ACompletion : public AWatch {
protected:
    ACompletion()
    {
        mEnvironment["PATH"] = fs::path(WFCTL).parent_path().string() + ":" + std::getenv("PATH");
    }

    // What bash offers behind these words, the last of which is being typed.
    std::vector<std::string> Offered(const Arguments& words)
    {
        const std::string script =
            "eval \"$(wfctl completion bash)\"; compopt() { :; }\n"
            "COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); COMP_LINE=\"$*\"; COMP_POINT=${#COMP_LINE}; "
            "_wfctl\n"
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

    // What stands on the line of a bash when TAB is pressed behind these letters.
    std::string Completed(const std::string& typed)
    {
        const std::string rc = Holding("rc", R"bash(eval "$(wfctl completion bash)"
bind 'set bell-style none'
bind -x '"\C-t": printf "{%s}\n" "$READLINE_LINE"'
PS1='type> '
)bash");
        ATerminal terminal({"bash", "--noprofile", "--rcfile", rc, "-i"}, mEnvironment);
        terminal.Await("type> ");
        terminal.Type(typed + "\t\x14");
        terminal.Await("{");
        std::string line = terminal.Await("}");
        line.pop_back();
        return line;
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

TEST_F(ACompletion, goes_on_behind_the_marks_at_which_bash_takes_words_apart)
{
    EXPECT_EQ(Completed("wfctl edit c1 --pick dial=rom"), "wfctl edit c1 --pick dial=roman ");
    EXPECT_EQ(Completed("wfctl edit c4 --place east=worldclock@Asia/Seo"),
              "wfctl edit c4 --place east=worldclock@Asia/Seoul ");
    EXPECT_EQ(Completed("wfctl edit c4 --place east=worldclock@Asia/Seoul --pick lay"),
              "wfctl edit c4 --place east=worldclock@Asia/Seoul --pick layout=");
    EXPECT_EQ(Completed("wfctl listen --as com.corvane.w-home:"),
              "wfctl listen --as com.corvane.w-home:w-home::localport ");
    EXPECT_EQ(Completed("wfctl listen --as com.corvane.w-home:w-home::lo"),
              "wfctl listen --as com.corvane.w-home:w-home::localport ");
}

TEST_F(ACompletion, leaves_no_space_where_a_word_goes_on)
{
    EXPECT_EQ(Completed("wfctl setting set lang"), "wfctl setting set language=");
    EXPECT_EQ(Completed("wfctl edit c4 --place east=worldc"), "wfctl edit c4 --place east=worldclock");
}

TEST_F(ACompletion, goes_on_between_quotes)
{
    EXPECT_EQ(Completed("wfctl edit c4 --place 'east=worldclock@Asia/Seo"),
              "wfctl edit c4 --place 'east=worldclock@Asia/Seoul' ");
    EXPECT_EQ(Completed("wfctl edit c4 --place east=\"worldclock@Asia/Seo"),
              "wfctl edit c4 --place east=\"worldclock@Asia/Seoul\" ");
    EXPECT_EQ(Completed("wfctl edit c4 --place east=worldclock@\"Asia/Seo"),
              "wfctl edit c4 --place east=worldclock@\"Asia/Seoul\" ");
}

TEST_F(ACompletion, quotes_what_bash_would_take_apart)
{
    const std::string picture = Holding("my cat.png", ContentsOf(ReadOnlyFace(kClassic) + kClassic + ".png"));
    ASSERT_EQ(Run({"bg", "add", picture}).status, 0);
    EXPECT_EQ(Completed("wfctl edit u1 --photo picture=my"), "wfctl edit u1 --photo picture=my\\ cat.png ");
    EXPECT_EQ(Completed("wfctl edit u1 --photo 'picture=my"), "wfctl edit u1 --photo 'picture=my cat.png' ");
    EXPECT_EQ(Completed("wfctl edit u1 --photo picture=my\\ c"),
              "wfctl edit u1 --photo picture=my\\ cat.png ");
}

TEST_F(ACompletion, offers_no_key_that_the_line_has)
{
    Run({"key", "set", "my/own-key", "1"});
    EXPECT_THAT(Offered({"key", "unset", "my/own-key", "my/"}), testing::IsEmpty());
}

TEST_F(AFolder, has_no_success_of_a_command_whose_words_nobody_takes)
{
    for (const char* verb : {"completion bash", "manual", "list --help"}) {
        const Result printed =
            RunProgram({"sh", "-c", std::string("\"$0\" ") + verb + " >/dev/full", WFCTL}, {});
        EXPECT_EQ(printed.status, 1) << verb;
        EXPECT_THAT(printed.err, testing::HasSubstr("stdout cannot be written")) << verb;
    }
}

TEST_F(AFolder, is_empty_behind_a_completion)
{
    const std::string pref = std::string("pref get ") + kService;
    for (const std::string& typed : {std::string("world-clock update"), std::string("key get"), pref,
                                     std::string("edit c1 --pick"), std::string("bg del")}) {
        std::istringstream words(typed);
        Arguments command = {WFCTL, "--complete"};
        for (std::string word; words >> word;) command.push_back(word);
        command.emplace_back();
        const Environment environment{
            {"WATCH_ROOT", mFolder}
        };
        EXPECT_EQ(RunProgram(command, environment).status, 0);
        EXPECT_TRUE(fs::is_empty(mFolder)) << typed;
    }
}
