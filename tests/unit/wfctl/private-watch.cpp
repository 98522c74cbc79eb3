// The files of a private watch, and what a shell makes of them.

#include "private-watch.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

using namespace Wfctl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {

const char* const kAwkward[] = {
    "",         "plain", "two words", "it's", "''", "a\nb", "$HOME `id` \\ \"q\"", "Zürich/미렐",
    "\xff\xfe", "-n",    "='x'=",     "#a"};

// What `sh` says the word is.
std::string WordOfShell(const std::string& quoted)
{
    const std::string command = "printf %s " + quoted;
    FILE* shell = popen(command.c_str(), "r");
    std::string text;
    for (int c = 0; (c = std::fgetc(shell)) != EOF;) text += static_cast<char>(c);
    pclose(shell);
    return text;
}

}  // namespace

TEST(AShellWord, is_what_was_quoted)
{
    for (const std::string text : kAwkward) EXPECT_EQ(WordOfShell(ShellQuoted(text)), text);
}

TEST(ShellAssignments, are_read_back_as_they_were_written)
{
    for (const std::string text : kAwkward) {
        const std::string file = "export A=" + ShellQuoted(text) + "\nB=" + ShellQuoted("b") + "\n";
        EXPECT_THAT(ParseShellAssignments(file), ElementsAre(Pair("A", text), Pair("B", "b")));
    }
}

TEST(ShellAssignments, leave_out_what_is_none)
{
    EXPECT_THAT(ParseShellAssignments("# a comment\n\nA='1'\nnonsense\nB=2\nexport C='3'"),
                ElementsAre(Pair("A", "1"), Pair("C", "3")));
    EXPECT_TRUE(ParseShellAssignments("A='never closed").contains("A"));
    EXPECT_TRUE(ParseShellAssignments("").empty());
}

TEST(AWatchState, names_processes_by_numbers_that_processes_have)
{
    std::string folder = testing::TempDir() + "watch-state-XXXXXX";
    ASSERT_TRUE(mkdtemp(folder.data()));
    const WatchPaths paths{folder};
    const auto numberOf = [&](const std::string& mark) {
        std::ofstream(paths.State()) << "RUN_FOLDER='/r'\nSUPERVISOR='" << mark << "'\n";
        const auto state = ReadState(paths);
        return state ? state->supervisor.pid : -1;
    };
    EXPECT_EQ(numberOf("12 345"), 12);
    for (const char* mark :
         {"", "x", "12", "12 ", "12 x", "-1 5", "4294967297 5", "12 99999999999999999999"}) {
        EXPECT_EQ(numberOf(mark), 0) << mark;
    }
    std::filesystem::remove_all(folder);
}

TEST(AnActivationFile, quotes_the_program_for_the_bus)
{
    EXPECT_EQ(ActivationFileText("com.example.app", "/opt/it's \\ here/app"),
              "[D-BUS Service]\nName=com.example.app\nExec='/opt/it'\\\\''s \\\\ here/app'\n");
}

TEST(TheBusConfiguration, takes_large_messages_and_lets_everybody_be_anybody)
{
    WatchState state;
    state.runFolder = "/tmp/watch-abc";
    const std::string text = BusConfigText(state);
    EXPECT_THAT(text, HasSubstr("<listen>unix:path=/tmp/watch-abc/bus</listen>"));
    EXPECT_THAT(text, HasSubstr("<servicedir>/tmp/watch-abc/services</servicedir>"));
    EXPECT_THAT(text, HasSubstr("<allow own=\"*\"/>"));
    EXPECT_THAT(text, HasSubstr("<limit name=\"max_message_size\">33554432</limit>"));
    // Who does not read gets no more, long before the bus takes no more from the service.
    EXPECT_THAT(text, HasSubstr("<limit name=\"max_incoming_bytes\">268435456</limit>"));
    EXPECT_THAT(text, HasSubstr("<limit name=\"max_outgoing_bytes\">33554432</limit>"));
}

TEST(ARunFolder, has_a_name_that_leaves_room_for_a_socket)
{
    const std::string folder = MakeRunFolder();
    EXPECT_LT(folder.size() + std::string("/bus").size(), 107U);
    std::remove(folder.c_str());
}

TEST(AProcess, that_is_gone_cannot_be_opened)
{
    EXPECT_FALSE(OpenProcess({0, 0}));
    ProcessMark self = MarkOf(getpid());
    EXPECT_TRUE(OpenProcess(self));
    self.startTime += 1;  // another process that had this number
    EXPECT_FALSE(OpenProcess(self));
}
