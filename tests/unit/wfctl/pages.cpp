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
        typed.emplace_back("--");
        const std::vector<std::string> completed = Completed(typed);
        CLI::App parser;
        Options options;
        DefineVerb(verb, parser, options);
        for (const CLI::Option* option : parser.get_options()) {
            for (const std::string& name : option->get_lnames())
                EXPECT_THAT(completed, Contains("--" + name)) << verb.name;
        }
    }
}

TEST(Completion, has_only_what_begins_as_it_is_typed)
{
    EXPECT_THAT(Completed({"ed"}), testing::ElementsAre("edit"));
    EXPECT_THAT(Completed({"flyx"}), IsEmpty());
}

TEST(Completion, has_the_values_of_options)
{
    EXPECT_THAT(Completed({"render", "x", "--hours", ""}), testing::ElementsAre("12", "24"));
    EXPECT_THAT(Completed({"setting", "set", "lang"}), testing::ElementsAre("language="));
    EXPECT_THAT(Completed({"setting", "get", "lang"}), testing::ElementsAre("language"));
    EXPECT_THAT(Completed({"bg", "add", "--type", "g"}), testing::ElementsAre("gallery-u1", "gallery"));
    EXPECT_THAT(Completed({"key", "set", "--type", "b"}), testing::ElementsAre("bool"));
    EXPECT_THAT(Completed({"launch", "com.corvane.w-h"}), testing::ElementsAre("com.corvane.w-home"));
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
