// The table of verbs: what help says is what is parsed.

#include "verb-table.h"

#include <gmock/gmock.h>

#include <CLI/Formatter.hpp>
#include <set>
#include <sstream>

using namespace Wfctl;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::set<std::string> OptionsIn(std::string_view arguments)
{
    std::set<std::string> options;
    std::string text(arguments);
    for (char& c : text) {
        if (c == '[' || c == ']') c = ' ';
    }
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word.starts_with("-")) options.insert(word);
    }
    return options;
}

// The options that the verb's parser knows, without those of every verb.
std::set<std::string> OptionsOf(const Verb& verb)
{
    CLI::App parser;
    verb.define(parser);
    std::set<std::string> options;
    for (const CLI::Option* option : parser.get_options()) {
        // Usage says the short name of those that have one.
        for (const std::string& name : option->get_snames()) options.insert("-" + name);
        if (!option->get_snames().empty()) continue;
        for (const std::string& name : option->get_lnames()) options.insert("--" + name);
    }
    options.erase("-h");
    return options;
}

struct Output {
    int status;
    std::string out, err;
};

Output RunWfctl(std::vector<std::string> arguments)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Output output;
    output.status = RunCommandLine(std::move(arguments));
    output.out = testing::internal::GetCapturedStdout();
    output.err = testing::internal::GetCapturedStderr();
    return output;
}

}  // namespace

TEST(TheVerbTable, says_what_is_parsed)
{
    for (const Verb& verb : Verbs()) {
        std::set<std::string> said = OptionsIn(verb.arguments);
        said.erase("--root");  // every verb's; `up` and `down` need it
        EXPECT_EQ(said, OptionsOf(verb)) << verb.name;
    }
}

TEST(TheVerbTable, has_examples_of_its_verbs)
{
    for (const Verb& verb : Verbs()) {
        EXPECT_THAT(std::string(verb.example), StartsWith("wfctl " + std::string(verb.name)));
        EXPECT_FALSE(verb.help.empty()) << verb.name;
    }
}

TEST(TheVerbTable, names_each_verb_once)
{
    std::set<std::string_view> names;
    for (const Verb& verb : Verbs()) EXPECT_TRUE(names.insert(verb.name).second) << verb.name;
}

TEST(Help, names_every_verb)
{
    const Output output = RunWfctl({"--help"});
    EXPECT_EQ(output.status, 0);
    for (const Verb& verb : Verbs()) EXPECT_THAT(output.out, HasSubstr("  " + std::string(verb.name) + " "));
}

TEST(Help, of_a_verb_has_its_arguments_and_an_example)
{
    for (const Verb& verb : Verbs()) {
        std::istringstream words{std::string(verb.name)};
        std::vector<std::string> arguments{std::istream_iterator<std::string>(words), {}};
        arguments.emplace_back("--help");
        const Output output = RunWfctl(arguments);
        EXPECT_EQ(output.status, 0) << verb.name;
        EXPECT_THAT(output.out, HasSubstr("usage: wfctl " + std::string(verb.name)));
        EXPECT_THAT(output.out, HasSubstr(std::string(verb.example)));
    }
}

TEST(Help, of_a_verb_has_a_line_for_every_option)
{
    const Output output = RunWfctl({"send", "--help"});
    for (const char* text : {"\n  -h, --help ", "\n  --as APP[:PORT] ", "\n  KEY=VALUE ", "\n  --wait S ",
                             "\n  --untrusted ", "\n  --root DIR ", "\n  --json "}) {
        EXPECT_THAT(output.out, HasSubstr(text));
    }
}

TEST(Help, of_a_group_lists_its_verbs)
{
    for (const std::vector<std::string>& typed : std::vector<std::vector<std::string>>{
             {"bg",     "--help"},
             {"bg",     "-h"    },
             {"--json", "bg",     "--help"},
             {"help",        "bg"          }
    }) {
        const Output output = RunWfctl(typed);
        EXPECT_EQ(output.status, 0) << typed[0];
        EXPECT_THAT(output.out, StartsWith("usage: wfctl bg VERB"));
        for (const char* verb :
             {"\n  bg add ", "\n  bg del ", "\n  bg save ", "\n  bg cancel ", "\n  bg list "})
            EXPECT_THAT(output.out, HasSubstr(verb));
        EXPECT_THAT(output.out, testing::Not(HasSubstr("key get")));
    }
}

TEST(Help, is_a_verb_too)
{
    EXPECT_EQ(RunWfctl({"help", "edit"}).out, RunWfctl({"edit", "--help"}).out);
    EXPECT_EQ(RunWfctl({"help", "key", "get"}).out, RunWfctl({"key", "get", "--help"}).out);
    EXPECT_EQ(RunWfctl({"help", "preview"}).out, RunWfctl({"preview", "--help"}).out);
    EXPECT_EQ(RunWfctl({"help"}).out, RunWfctl({"--help"}).out);
    const Output unknown = RunWfctl({"help", "edt"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_THAT(unknown.err, HasSubstr("did you mean edit?"));
}

TEST(Help, of_a_verb_names_those_of_two_words)
{
    EXPECT_THAT(RunWfctl({"preview", "--help"}).out, HasSubstr("See also: preview request, preview check\n"));
}

TEST(Help, of_a_verb_has_short_lines)
{
    const Output output = RunWfctl({"edit", "--help"});
    EXPECT_THAT(output.out, HasSubstr("\n           [--"));
    EXPECT_THAT(output.out,
                HasSubstr("\n  --place SLOT=SOURCE[@ZONE[:CITY]]\n                         show"));
    std::istringstream lines(output.out);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 110U) << line;
}

TEST(TheCommandLine, without_a_verb_is_a_usage_error)
{
    EXPECT_EQ(RunWfctl({}).status, 2);
    EXPECT_EQ(RunWfctl({"fly"}).status, 2);
    EXPECT_EQ(RunWfctl({"key"}).status, 2);
    EXPECT_THAT(RunWfctl({"key"}).err, HasSubstr("key get, key set"));
}

TEST(TheCommandLine, says_how_to_go_on)
{
    const Output output = RunWfctl({"send", "--as", "com.corvane.w-home"});
    EXPECT_EQ(output.status, 2);
    EXPECT_THAT(output.err, HasSubstr("wfctl send --help"));
}

TEST(TheCommandLine, knows_which_verb_or_option_is_meant)
{
    EXPECT_THAT(RunWfctl({"rendr"}).err, HasSubstr("did you mean render?"));
    EXPECT_THAT(RunWfctl({"render", "x", "--langage", "de"}).err, HasSubstr("did you mean --language?"));
    EXPECT_THAT(RunWfctl({"render", "x", "--langage=de"}).err, HasSubstr("did you mean --language?"));
}

TEST(TheCommandLine, takes_the_common_options_in_front_of_the_verb_too)
{
    EXPECT_EQ(RunWfctl({"--root", "/nonexistent/watch", "status"}).status, 8);
    EXPECT_EQ(RunWfctl({"--json", "status", "--root", "/nonexistent/watch"}).status, 8);
    EXPECT_EQ(RunWfctl({"--root=/nonexistent/watch", "key", "get", "a"}).status, 8);
}

TEST(TheCommandLine, takes_negative_numbers_as_values)
{
    EXPECT_EQ(RunWfctl({"key", "set", "a", "-5", "--root", "/nonexistent/watch"}).status, 8);
}

TEST(TheCommandLine, takes_words_that_are_verbs_as_values)
{
    EXPECT_EQ(RunWfctl({"key", "set", "list", "status", "--root", "/nonexistent/watch"}).status, 8);
}

TEST(TheCommandLine, refuses_a_type_that_there_is_not)
{
    EXPECT_EQ(RunWfctl({"key", "set", "a", "1", "--type", "double"}).status, 2);
}

TEST(TheCommandLine, needs_a_folder_to_bring_up_a_watch)
{
    EXPECT_EQ(RunWfctl({"up"}).status, 2);
    EXPECT_EQ(RunWfctl({"down"}).status, 2);
}
