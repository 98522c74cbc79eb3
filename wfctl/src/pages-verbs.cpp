// What is made from the table of verbs for other programs: completion, manual.

#include <cstdio>
#include <filesystem>
#include <memory>

#include "completion.h"
#include "documents.h"
#include "exit-status.h"
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

Exit Manual(const Options& options, const ManualArguments& arguments)
{
    if (!arguments.into.empty()) {
        WritePages(arguments.into);
        return Exit::kDone;
    }
    std::size_t length = 0;
    const Verb* verb = FindVerb(arguments.words, &length);
    if (length != arguments.words.size()) {
        std::string words;
        for (const std::string& word : arguments.words) words += (words.empty() ? "" : " ") + word;
        throw Stop(Exit::kUsage,
                   "there is no verb [" + words + "]; " + VerbHint(arguments.words) + "type: wfctl --help");
    }
    Print(options, "manual", verb ? ManualPage(*verb) : ManualPage());
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

Action DefineManual(CLI::App& parser)
{
    const auto arguments = std::make_shared<ManualArguments>();
    parser.add_option("VERB", arguments->words, "of this verb (default: of wfctl)");
    parser.add_option("--into", arguments->into, "write all pages and completions as below a prefix's share")
        ->type_name("DIR");
    return [arguments](const Options& options) { return Manual(options, *arguments); };
}

}  // namespace Wfctl
