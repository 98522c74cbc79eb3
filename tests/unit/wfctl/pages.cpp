// Manual pages and completions: they have what the table of verbs has.

#include <gmock/gmock.h>

#include <CLI/Formatter.hpp>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "child-process.h"
#include "completion.h"
#include "manual-page.h"
#include "verb-table.h"

using namespace Wfctl;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

std::vector<std::string> WordsOf(std::string_view text)
{
    std::istringstream words{std::string(text)};
    return {std::istream_iterator<std::string>(words), {}};
}

std::vector<std::string> Completed(const std::vector<std::string>& words)
{
    std::vector<std::string> completed;
    for (const Completion& completion : Complete(words).words) completed.push_back(completion.word);
    return completed;
}

// As a page writes it.
std::string Hyphens(std::string text)
{
    for (std::size_t at = 0; (at = text.find('-', at)) != std::string::npos; at += 2) text.insert(at, "\\");
    return text;
}

std::string TextOf(const std::string& path)
{
    for (const InstalledPage& page : InstalledPages()) {
        if (page.path == path) return page.text;
    }
    return {};
}

std::string PathOf(const Verb& verb)
{
    std::string path = "man/man1/wfctl";
    for (const std::string& word : WordsOf(verb.name)) path += "-" + word;
    return path + ".1";
}

// All that is installed, in a folder of its own.
class InstalledBelow : public testing::Test {
protected:
    InstalledBelow()
    {
        std::string folder = testing::TempDir() + "pages-XXXXXX";
        mFolder = mkdtemp(folder.data());
        for (const InstalledPage& page : InstalledPages()) {
            fs::create_directories((mFolder / page.path).parent_path());
            std::ofstream(mFolder / page.path) << page.text;
        }
    }
    ~InstalledBelow() override { fs::remove_all(mFolder); }

    // What the shell command says about the installed files; nothing is good.
    std::string Complaints(const std::string& command) const
    {
        const std::string said = mFolder / "said";
        const std::string line = "cd '" + mFolder.string() + "' && { " + command + "; } >said 2>&1";
        const int status = RunProgram("/bin/sh", {"-c", line});
        std::ifstream file(said);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        return status == 0 ? text : text + "exit status " + std::to_string(status);
    }

    fs::path mFolder;
};

}  // namespace

TEST(Completion, has_every_verb)
{
    for (const Verb& verb : Verbs()) {
        const std::vector<std::string> words = WordsOf(verb.name);
        std::vector<std::string> typed;
        for (const std::string& word : words) {
            typed.push_back(word.substr(0, 1));
            EXPECT_THAT(Completed(typed), Contains(word)) << verb.name;
            typed.back() = word;
        }
    }
}

TEST(Completion, has_every_option)
{
    for (const Verb& verb : Verbs()) {
        std::vector<std::string> typed = WordsOf(verb.name);
        typed.emplace_back("-");
        const std::vector<std::string> completed = Completed(typed);
        CLI::App parser;
        Options options;
        DefineVerb(verb, parser, options);
        for (const CLI::Option* option : parser.get_options()) {
            for (const std::string& name : option->get_lnames())
                EXPECT_THAT(completed, Contains("--" + name)) << verb.name;
            for (const std::string& name : option->get_snames())
                EXPECT_THAT(completed, Contains("-" + name)) << verb.name;
            EXPECT_FALSE(!option->get_positional() && option->get_lnames().empty()) << verb.name;
        }
    }
}

TEST(Completion, has_only_what_begins_as_it_is_typed)
{
    EXPECT_THAT(Completed({"ed"}), ElementsAre("edit"));
    EXPECT_THAT(Completed({"flyx"}), IsEmpty());
}

TEST(Completion, has_the_values_of_options)
{
    EXPECT_THAT(Completed({"render", "x", "--hours", ""}), ElementsAre("12", "24"));
    EXPECT_THAT(Completed({"setting", "set", "lang"}), ElementsAre("language="));
    EXPECT_THAT(Completed({"setting", "get", "lang"}), ElementsAre("language"));
    EXPECT_THAT(Completed({"bg", "add", "--type", "g"}), ElementsAre("gallery-u1", "gallery"));
    EXPECT_THAT(Completed({"key", "set", "--type", "b"}), ElementsAre("bool"));
    EXPECT_THAT(Completed({"launch", "com.corvane.w-h"}), ElementsAre("com.corvane.w-home"));
}

TEST(Completion, has_the_options_in_front_of_a_verb)
{
    EXPECT_THAT(Completed({"--"}), testing::UnorderedElementsAre("--help", "--version", "--root", "--json"));
    EXPECT_THAT(Completed({"--root", "/x", "--json", "ed"}), ElementsAre("edit"));
    EXPECT_TRUE(Complete(std::vector<std::string>{"--root", ""}).files);
    EXPECT_THAT(Completed({"bg", "--h"}), ElementsAre("--help"));
}

TEST(Completion, has_the_verbs_behind_help)
{
    EXPECT_THAT(Completed({"help", "ed"}), ElementsAre("edit"));
    EXPECT_THAT(Completed({"help", "setting", "se"}), ElementsAre("set"));
}

TEST(Completion, has_the_ports_of_the_application_that_is_typed)
{
    EXPECT_THAT(Completed({"listen", "--as", "com.corvane.w-home:"}),
                ElementsAre("com.corvane.w-home:w-home::localport"));
    EXPECT_THAT(Completed({"send", "com.corvane.watchface-service:"}),
                ElementsAre("com.corvane.watchface-service:watchface-service::localport",
                            "com.corvane.watchface-service:evaluation-helper-port"));
    // A space behind the application would be in the way of its port.
    EXPECT_THAT(Completed({"listen", "--as", "com.corvane.w-h"}),
                ElementsAre("com.corvane.w-home", "com.corvane.w-home:w-home::localport"));
    EXPECT_THAT(Completed({"listen", "--as", "com.corvane.w-"}),
                ElementsAre("com.corvane.w-home", "com.corvane.w-manager-service"));
}

TEST(Completion, has_the_words_of_messages_and_launch_requests)
{
    EXPECT_THAT(Completed({"send", "com.corvane.watchface-service", "ty"}), ElementsAre("type="));
    EXPECT_THAT(Completed({"send", "com.corvane.watchface-service", "type=watch-idle"}),
                ElementsAre("type=watch-idle-changed"));
    EXPECT_THAT(Completed({"launch", "com.corvane.watchface-service", "oper"}), ElementsAre("operation="));
    EXPECT_THAT(Completed({"launch", "com.corvane.watchface-service", "operation=init"}),
                ElementsAre("operation=init_watch"));
}

TEST(Completion, has_the_values_of_settings)
{
    EXPECT_THAT(Completed({"setting", "set", "language=k"}), ElementsAre("language=ko_KR"));
    EXPECT_THAT(Completed({"setting", "set", "language", "k"}), ElementsAre("ko_KR"));
    EXPECT_THAT(Completed({"setting", "set", "24-hour="}), ElementsAre("24-hour=true", "24-hour=false"));
}

TEST(Completion, goes_on_behind_a_comma)
{
    EXPECT_THAT(Completed({"sheet", "--language", "en_GB,k"}), ElementsAre("en_GB,ko_KR"));
    EXPECT_THAT(Completed({"preview", "--language", "ko_KR,de_DE,k"}), IsEmpty());
    EXPECT_THAT(Completed({"sheet", "--hours", "12,"}), ElementsAre("12,24"));
}

TEST(Completion, offers_what_is_repeated_only_once)
{
    EXPECT_THAT(Completed({"setting", "set", "language=de_DE", "l"}), IsEmpty());
    EXPECT_THAT(Completed({"setting", "set", "language=de_DE", "timez"}), ElementsAre("timezone="));
    EXPECT_THAT(Completed({"send", "com.corvane.w-home", "type=x", "type"}), IsEmpty());
}

TEST(Completion, leaves_files_to_the_shell)
{
    EXPECT_TRUE(Complete(std::vector<std::string>{"validate", ""}).files);
    EXPECT_TRUE(Complete(std::vector<std::string>{"render", "x", "-o", ""}).files);
    EXPECT_FALSE(Complete(std::vector<std::string>{"setting", "get", ""}).files);
}

TEST(TheManual, has_every_verb)
{
    const std::string overview = TextOf("man/man1/wfctl.1");
    for (const Verb& verb : Verbs()) {
        const std::string name = fs::path(PathOf(verb)).stem();
        EXPECT_THAT(overview, HasSubstr(".BR " + Hyphens(name) + " (1)\n"));
    }
}

TEST(TheManual, has_a_page_with_the_options_and_the_example_of_every_verb)
{
    for (const Verb& verb : Verbs()) {
        const std::string page = TextOf(PathOf(verb));
        CLI::App parser;
        Options options;
        DefineVerb(verb, parser, options);
        for (const CLI::Option* option : parser.get_options()) {
            for (const std::string& name : option->get_lnames())
                EXPECT_THAT(page, HasSubstr(Hyphens("--" + name))) << verb.name;
        }
        EXPECT_THAT(page, HasSubstr("\n.EX\nwfctl " + Hyphens(std::string(verb.name)))) << verb.name;
    }
}

TEST(TheManual, describes_every_verb)
{
    for (const Verb& verb : Verbs()) {
        const std::string page = TextOf(PathOf(verb));
        EXPECT_THAT(page, testing::ContainsRegex("\n.SH DESCRIPTION\n[^.\n][^\n]+\\.\n.SH OPTIONS\n"))
            << verb.name;
        EXPECT_THAT(page, testing::Not(HasSubstr("`"))) << verb.name;
        EXPECT_THAT(page, testing::Not(HasSubstr("\\(ga"))) << verb.name;
    }
}

TEST(TheManual, typesets_what_is_typed)
{
    EXPECT_THAT(TextOf("man/man1/wfctl-down.1"), HasSubstr("take down what \\fBup\\fR started"));
}

TEST(TheManual, names_the_pages_that_belong_together)
{
    EXPECT_THAT(TextOf("man/man1/wfctl-install.1"), HasSubstr(".BR wfctl\\-update (1)"));
    EXPECT_THAT(TextOf("man/man1/wfctl-update.1"), HasSubstr(".BR wfctl\\-install (1)"));
    for (const char* verb : {"add", "del", "save", "cancel"}) {
        const std::string page = TextOf(std::string("man/man1/wfctl-bg-") + verb + ".1");
        EXPECT_THAT(page, HasSubstr(".BR wfctl\\-bg\\-list (1)"));
        EXPECT_THAT(page, testing::Not(HasSubstr(".BR wfctl\\-bg\\-" + std::string(verb) + " (1)")))
            << "itself";
    }
}

TEST_F(InstalledBelow, the_manual_is_taken_by_groff_without_a_warning)
{
    if (FindProgram("groff").empty()) GTEST_SKIP() << "there is no groff here";
    EXPECT_EQ(Complaints("groff -man -ww -Tutf8 -z man/man1/*"), "");
}

TEST_F(InstalledBelow, the_manual_is_taken_by_mandoc_without_a_warning)
{
    if (FindProgram("mandoc").empty()) GTEST_SKIP() << "there is no mandoc here";
    EXPECT_EQ(Complaints("mandoc -T lint -W warning man/man1/*"), "");
}

TEST_F(InstalledBelow, the_completions_are_taken_by_their_shells)
{
    constexpr const char* kScripts[][2] = {
        {"bash", "bash-completion/completions/wfctl"   },
        {"zsh",  "zsh/site-functions/_wfctl"           },
        {"fish", "fish/vendor_completions.d/wfctl.fish"},
    };
    for (const auto& [shell, script] : kScripts) {
        if (FindProgram(shell).empty()) continue;
        EXPECT_EQ(Complaints(std::string(shell) + " -n " + script), "");
    }
}
