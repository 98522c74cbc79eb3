#include "help-text.h"

#include <CLI/Formatter.hpp>
#include <algorithm>

namespace Wfctl {

namespace {

// Of UTF-8 text.
std::size_t LettersOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// "  --name VALUE   what it is": below each other where the name is long.
std::string OptionLine(const std::string& name, const std::string& description)
{
    constexpr std::size_t kColumn = 25;
    std::string line = "  " + name;
    const std::size_t letters = LettersOf(line);
    line += letters < kColumn ? std::string(kColumn - letters, ' ') : "\n" + std::string(kColumn, ' ');
    return line + description + "\n";
}

constexpr char kExitStatuses[] =
    "Exit status: 0 done, 1 error or the service said no, 2 usage, 3 no answer in time, 4 not permitted,\n"
    "  8 no watch running, 9 nothing to do, 10 not found, 130 interrupted.\n";

// "  edit  change what it shows", one a line.
std::string VerbLines(const Names& names)
{
    std::size_t width = 0;
    for (const std::string_view name : names) width = std::max(width, name.size());
    std::string text;
    for (const Verb& verb : Verbs()) {
        if (std::ranges::find(names, verb.name) == names.end()) continue;
        text += "  " + std::string(verb.name) + std::string(width - verb.name.size() + 1, ' ') +
                std::string(verb.help) + "\n";
    }
    return text;
}

}  // namespace

std::string TypeOf(const CLI::Option& option)
{
    if (option.get_items_expected_max() == 0) return {};
    // What follows the type's name is the checks'.
    std::string type = option.get_type_name();
    const auto colon = type.find(':');
    if (colon != std::string::npos && colon > 0 && type[colon - 1] != '[') type.erase(colon);
    return type;
}

std::string OptionText(const CLI::Option& option)
{
    if (option.get_positional()) return option.get_name(true);
    std::string text;
    for (const std::string& name : option.get_snames()) text += (text.empty() ? "-" : ", -") + name;
    for (const std::string& name : option.get_lnames()) text += (text.empty() ? "--" : ", --") + name;
    const std::string type = TypeOf(option);
    return type.empty() ? text : text + " " + type;
}

std::string UsageText(const Verb& verb)
{
    constexpr std::size_t kLongest = 100;
    std::string text = "usage: wfctl " + std::string(verb.name);
    std::size_t letters = text.size(), depth = 0, begin = 0;
    const std::string_view arguments = verb.arguments;
    for (std::size_t i = 0; i <= arguments.size() && !arguments.empty(); ++i) {
        if (i < arguments.size() && arguments[i] == '[') ++depth;
        if (i < arguments.size() && arguments[i] == ']') --depth;
        if (i < arguments.size() && (arguments[i] != ' ' || depth > 0)) continue;
        const std::string_view word = arguments.substr(begin, i - begin);
        const bool breaks = letters + 1 + LettersOf(word) > kLongest;
        text += breaks ? "\n           " : " ";
        letters = (breaks ? 11 : letters + 1) + LettersOf(word);
        text += word;
        begin = i + 1;
    }
    return text + "\n";
}

std::string OverviewText()
{
    Names all;
    for (const Verb& verb : Verbs()) all.push_back(verb.name);
    return "usage: wfctl VERB … [--root DIR] [--json]\n\nTalks to a watch, as whichever application you "
           "say.\n\n" +
           VerbLines(all) +
           "\n`wfctl VERB --help` tells more. Which watch: that of --root DIR, else of the environment\n"
           "(DBUS_SESSION_BUS_ADDRESS, WATCH_ROOT, WATCH_RESOURCES, as DIR/watch.env sets them).\n\n" +
           kExitStatuses;
}

std::string GroupText(const std::string& word)
{
    return "usage: wfctl " + word + " VERB … [--root DIR] [--json]\n\n" + VerbLines(VerbsOf(word)) +
           "\n`wfctl " + word + " VERB --help` tells more.\n\n" + kExitStatuses;
}

std::string HelpText(const Verb& verb)
{
    CLI::App parser;
    Options options;
    DefineVerb(verb, parser, options);
    std::string text = UsageText(verb) + "\n" + std::string(verb.help) + "\n\n";
    for (const CLI::Option* option : parser.get_options())
        text += OptionLine(OptionText(*option), option->get_description());
    if (const Names others = VerbsOf(verb.name); !others.empty())
        text += "\nSee also: " + Listed(others) + "\n";
    return text + "\nExample:\n  " + std::string(verb.example) + "\n\n" + kExitStatuses;
}

}  // namespace Wfctl
