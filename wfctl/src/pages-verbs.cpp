// What is made from the table of verbs for people and other programs: completion, help, manual.

#include <cstdio>
#include <filesystem>
#include <memory>

#include "completion.h"
#include "documents.h"
#include "exit-status.h"
#include "help-text.h"
#include "hint.h"
#include "json-text.h"
#include "manual-page.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

namespace fs = std::filesystem;

struct ManualArguments {
    std::vector<std::string> words;
    std::string into;
};

void WritePages(const std::string& folder)
{
    for (const InstalledPage& page : InstalledPages()) {
        const fs::path path = fs::path(folder) / page.path;
        std::error_code error;
        fs::create_directories(path.parent_path(), error);
        WriteFile(path.string(), page.text);
    }
}

void Print(const Options& options, const char* name, const std::string& text)
{
    if (options.json)
        PrintLine(JsonLine(Json::object({
            {name, text}
        })));
    else
        std::fputs(text.c_str(), stdout);
}

// Null for no words at all.
const Verb* NamedVerb(const std::vector<std::string>& words)
{
    std::size_t length = 0;
    const Verb* verb = FindVerb(words, &length);
    if (length == words.size()) return verb;
    std::string all;
    for (const std::string& word : words) all += (all.empty() ? "" : " ") + word;
    throw Stop(Exit::kUsage, "there is no verb [" + all + "]; " + VerbHint(words) + "type: wfctl --help");
}

Exit Manual(const Options& options, const ManualArguments& arguments)
{
    if (!arguments.into.empty()) {
        WritePages(arguments.into);
        return Exit::kDone;
    }
    const Verb* verb = NamedVerb(arguments.words);
    Print(options, "manual", verb ? ManualPage(*verb) : ManualPage());
    return Exit::kDone;
}

Exit Help(const Options& options, const std::vector<std::string>& words)
{
    const bool isGroup = words.size() == 1 && !VerbsOf(words[0]).empty();
    std::size_t length = 0;
    const Verb* verb = isGroup ? FindVerb(words, &length) : NamedVerb(words);
    Print(options, "help", verb ? HelpText(*verb) : isGroup ? GroupText(words[0]) : OverviewText());
    return Exit::kDone;
}

}  // namespace

Action DefineCompletion(CLI::App& parser)
{
    const auto shell = std::make_shared<std::string>();
    parser.add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->check(OneOf("the shell", {"bash", "zsh", "fish"}));
    return [shell](const Options& options) {
        Print(options, "script", CompletionScript(*shell));
        return Exit::kDone;
    };
}

Action DefineHelp(CLI::App& parser)
{
    const auto words = std::make_shared<std::vector<std::string>>();
    parser.add_option("VERB", *words, "this verb, or this group of verbs (default: all)");
    return [words](const Options& options) { return Help(options, *words); };
}

Action DefineManual(CLI::App& parser)
{
    const auto arguments = std::make_shared<ManualArguments>();
    parser.add_option("VERB", arguments->words, "of this verb (default: of wfctl)");
    parser.add_option("--into", arguments->into, "write all pages and completions as below a prefix's share")
        ->type_name("DIR");
    return [arguments](const Options& options) { return Manual(options, *arguments); };
}

}  // namespace Wfctl
